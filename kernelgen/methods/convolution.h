// The convolution form of a prime length.
#pragma once

#include <string>

#include "methods/pairs.h"

namespace kernelgen {

int primitiveRoot(int p);
int powMod(int base, int exponent, int p);
// D[k] = (1/m) * sum_t W^(g^t) * exp(+2*pi*i*t*k/m) for the direction of
// `sign` (-1 forward: W = exp(-2*pi*i/p)); D[0] = -1/m exactly.
void spectrumConstant(int p, int k, int sign, Exact& re, Exact& im);
std::string spectrumName(int p, int k);
// u[q] = x[g^q mod p], q = 0..p-2: the inputs in the order of the powers of g.
Signal rootOrder(const Signal& x);

// The chirp form of a prime p over a transform of length M >= 2p-1:
// X[k] = W^(h k^2) sum_n (x[n] W^(h n^2)) W^(-h (k-n)^2), h = (p+1)/2 (so
// that 2h = 1 mod p), the sum a cyclic convolution of length M.
// The exponent of the chirp, h*n^2 mod p.
int chirpExponent(int p, int n);
// B[k] = (1/M) sum over |m| < p of W^(-h*m^2) exp(-2*pi*i*m*k/M) for the
// direction of `sign`, the gap between m = p-1 and M-(p-1) left empty.
void chirpConstant(int p, int length, long k, int sign, Exact& re, Exact& im);

// The convolution form of a prime p over m = p-1, with g the smallest
// primitive root: u[q] = x[g^q], U = the size-m transform `inner` of u,
// U[k] times the spectrum constant D[k] (x[0] added to bin 0), the inverse
// size-m transform (`inner` with the signs changed) y, X[g^-r] = y[r], and
// X[0] = x[0] + U[0] from the bin 0 before the product. Pairs that the
// forward transform leaves open are multiplied in pair form, with the
// constants 2 Re D[k] and 2 Im D[k]; the other bins, each by D[k] itself,
// where the inverse transform asks for them. A plain `inner` leaves no pair
// open.
Signal convolution(DftArith& ar, const Signal& x, const Method& inner);

} // namespace kernelgen
