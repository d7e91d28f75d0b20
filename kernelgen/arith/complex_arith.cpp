#include "arith/complex_arith.h"

#include <stdexcept>

namespace kernelgen {

Cx ComplexArith::mulComplex(Cx, Exact, Exact, const std::string&)
{
    throw std::logic_error("this arithmetic has no spectrum products");
}

Cx ComplexArith::mulPair(Cx, Exact, const std::string&, Cx, Exact, const std::string&)
{
    throw std::logic_error("this arithmetic has no spectrum products in pair form");
}

Cx ComplexArith::zero() { throw std::logic_error("this arithmetic has no zero values"); }

std::unique_ptr<ComplexArith> ComplexArith::reversed() const
{
    throw std::logic_error("this arithmetic has no reversed twin");
}

Cx ComplexArith::enterSum(Cx a)
{
    a.re = rounding_.enterSum(graph_, a.re);
    if (a.im >= 0)
        a.im = rounding_.enterSum(graph_, a.im);
    return a;
}

Cx ComplexArith::leaveSum(Cx a)
{
    a.re = rounding_.leaveSum(graph_, a.re);
    if (a.im >= 0)
        a.im = rounding_.leaveSum(graph_, a.im);
    return a;
}

} // namespace kernelgen
