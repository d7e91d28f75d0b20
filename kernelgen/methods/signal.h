// The vocabulary of the method builders: a transform between signals, and
// the partner-pair forms in which one stage hands its outputs to the next.
// A method builder is a short function that writes one way of computing a
// DFT as complex arithmetic on Cx values; it knows nothing of element
// types, registers or printing.
#pragma once

#include <functional>
#include <vector>

#include "arith/complex_arith.h"

namespace kernelgen {

// A transform between signals in the arithmetic `Arith`; Transform is the
// DFT kernels' own.
template <class Arith>
using TransformOf = std::function<Signal(Arith&, const Signal&)>;
using Transform = TransformOf<DftArith>;

// Partner bins k and n-k (k != 0, 2k != n) seen together. A stage whose
// first butterfly joins partners can take them as their sum and difference,
// and a stage whose last butterfly makes them can leave it undone.
struct SumDif {
    Cx sum; // x[k] + x[n-k]
    Cx dif; // x[k] - x[n-k]
};

// The inputs of a stage, asked for bin by bin or as partner sums and
// differences, whichever the stage can use. `pair` may be asked for either
// bin of a pair: for the upper one the difference changes sign.
struct PairedInput {
    int size;
    std::function<Cx(int)> bin;
    std::function<SumDif(int)> pair;
};
// Plain inputs: a pair costs its addition and subtraction.
PairedInput binsOf(ComplexArith& ar, const Signal& x);

// The outputs of a stage with some partner pairs left open as
// X[k] = half[k] + diff[k], X[n-k] = half[k] - diff[k], held at the lower
// bin k; all other bins are in `bin`.
// A difference that is a constant times a value (diff = factor * base,
// as numbers) records both, so that the next constant can absorb the
// factor and the product itself falls away.
struct PairedOutput {
    Signal bin;
    Signal half;
    Signal diff;
    std::vector<bool> open;
    Signal base;
    std::vector<Trig> factor; // den 0: none
    explicit PairedOutput(int n) : bin(n), half(n), diff(n), open(n, false), base(n), factor(n, Trig{false, 0, 0}) {}
    int size() const { return static_cast<int>(bin.size()); }
    // Leaves X[k] = h + d, X[n-k] = h - d open, for either bin k of the pair.
    void setPair(int k, Cx h, Cx d);
    // The same with d = f * b.
    void setFactoredPair(int k, Cx h, Cx d, Cx b, Trig f);
    // Whether bin k's pair is open, and its half and difference as seen from k.
    bool isOpen(int k) const;
    Cx halfAt(int k) const;
    Cx diffAt(int k) const;
    bool isFactored(int k) const { return isOpen(k) && factorAt(k).den != 0; }
    Trig factorAt(int k) const;
    Cx baseAt(int k) const;
};
// The last butterflies of the open pairs.
Signal close(ComplexArith& ar, const PairedOutput& y);

} // namespace kernelgen
