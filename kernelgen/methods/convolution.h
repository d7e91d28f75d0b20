// The convolution form of a prime length.
#pragma once

#include <functional>
#include <string>

#include "methods/pairs.h"

namespace kernelgen {

// A prime p computed as a product with a constant spectrum, whatever holds
// the values: element e of the transform's input is x[source(e)] (-1: a
// zero), bin k of its output is multiplied by constant(k), and output r of
// the transform back is X[target(r)] (-1: not an output).
struct SpectrumForm {
    int p;
    std::function<int(int)> source;
    std::function<void(int k, Exact& re, Exact& im)> constant;
    std::string constantName;    // the first part of the constants' names
    std::function<int(int)> target;
    bool rootZero = false;       // x[0] added to bin 0 and to output 0 (the convolution form)
    std::function<int(int)> chirp; // W_p^chirp(n) on input and output n; empty: none

    // x[source(e)] for the m = p-1 inputs of the convolution form's transform.
    Signal rootOrder(const Signal& x) const;
    std::string binName(int k) const { return constantName + "Bin" + std::to_string(k); }
};

// The convolution form over m = p-1, with g the smallest primitive root:
// u[q] = x[g^q mod p], D[k] = (1/m) * sum_t W^(g^t) * exp(+2*pi*i*t*k/m) for
// the direction of `sign` (-1 forward: W = exp(-2*pi*i/p)), D[0] = -1/m
// exactly, X[g^-r] = y[r].
SpectrumForm convolutionForm(int p, int sign);

// The chirp form over a transform of length M >= 2p-1:
// X[k] = W^(h k^2) sum_n (x[n] W^(h n^2)) W^(-h (k-n)^2), h = (p+1)/2 (so
// that 2h = 1 mod p), the sum a cyclic convolution of length M. The chirp is
// h*n^2 mod p; B[k] = (1/M) sum over |m| < p of W^(-h*m^2)
// exp(-2*pi*i*m*k/M), the gap between m = p-1 and M-(p-1) left empty.
SpectrumForm chirpForm(int p, int length, int sign);

// The convolution form of a prime p (convolutionForm): U = the size-m
// transform `inner` of u, U[k] times D[k] (x[0] added to bin 0), the inverse
// size-m transform (`inner` with the signs changed) y, X[g^-r] = y[r], and
// X[0] = x[0] + U[0] from the bin 0 before the product. Pairs that the
// forward transform leaves open are multiplied in pair form, with the
// constants 2 Re D[k] and 2 Im D[k]; the other bins, each by D[k] itself,
// where the inverse transform asks for them. A plain `inner` leaves no pair
// open.
Signal convolution(DftArith& ar, const Signal& x, const Method& inner);

} // namespace kernelgen
