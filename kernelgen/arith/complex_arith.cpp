#include "arith/complex_arith.h"

namespace kernelgen {

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
