#include "methods/signal.h"

#include <algorithm>
#include <stdexcept>

namespace kernelgen {

PairedInput binsOf(ComplexArith& ar, const Signal& x)
{
    const int n = static_cast<int>(x.size());
    return {n, [x](int k) { return x[k]; },
            [&ar, x, n](int k) { return SumDif{ar.add(x[k], x[(n - k) % n]), ar.sub(x[k], x[(n - k) % n])}; }};
}

void PairedOutput::setPair(int k, Cx h, Cx d)
{
    const int partner = (size() - k) % size();
    if (partner == k)
        throw std::logic_error("a bin that is its own partner");
    const int lower = std::min(k, partner);
    open[lower] = true;
    half[lower] = h;
    diff[lower] = k == lower ? d : ComplexArith::neg(d);
}

void PairedOutput::setFactoredPair(int k, Cx h, Cx d, Cx b, Trig f)
{
    setPair(k, h, d);
    const int lower = std::min(k, (size() - k) % size());
    base[lower] = k == lower ? b : ComplexArith::neg(b);
    factor[lower] = f;
}

Trig PairedOutput::factorAt(int k) const { return factor[std::min(k, (size() - k) % size())]; }

Cx PairedOutput::baseAt(int k) const
{
    const int partner = (size() - k) % size();
    return k <= partner ? base[k] : ComplexArith::neg(base[partner]);
}

bool PairedOutput::isOpen(int k) const { return open[std::min(k, (size() - k) % size())]; }

Cx PairedOutput::halfAt(int k) const { return half[std::min(k, (size() - k) % size())]; }

Cx PairedOutput::diffAt(int k) const
{
    const int partner = (size() - k) % size();
    return k <= partner ? diff[k] : ComplexArith::neg(diff[partner]);
}

Signal close(ComplexArith& ar, const PairedOutput& y)
{
    Signal X = y.bin;
    for (int k = 0; k < y.size(); ++k)
        if (y.open[k]) {
            X[k] = ar.add(y.half[k], y.diff[k]);
            X[y.size() - k] = ar.sub(y.half[k], y.diff[k]);
        }
    return X;
}

} // namespace kernelgen
