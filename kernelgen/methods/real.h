// Methods on real data. A real signal is a Signal whose imaginary parts are
// missing (see ScalarArith); a real transform of length n returns its half
// spectrum, bins 0 .. n/2, the imaginary parts of bin 0 and (even n) bin
// n/2 missing. Complex methods run on real data compute only what real data
// needs, and what no kept bin uses is never stored, so never printed.
#pragma once

#include "arith/scalar_arith.h"
#include "methods/joins.h"

namespace kernelgen {

// A transform of real data, run by the scalar arithmetic of the real
// kernels. A complex Transform runs there too.
using RealTransform = std::function<Signal(ScalarArith&, const Signal&)>;

// The half spectrum of a complex method run on real data.
RealTransform halfSpectrumOf(const Transform& complexMethod);

// The even-odd recursion, N a power of two: with s[n] = x[n] + x[n+N/2] and
// d[n] = x[n] - x[n+N/2], the even bins are the real transform `half` of s,
// and the odd bins come from the complex size-N/4 transform `odd` of
// z[n] = d[n] - i d[n+N/4]: its output j is X[4j+1], and conjugated
// X[N-4j-1] where 4j+1 passes N/2. `odd` takes z untwisted.
Signal evenOdd(ScalarArith& ar, const Signal& x, const RealTransform& half, const Transform& odd);

// The odd-bin stage of N = 8 and 16: the twist W_N^n on z[n], then the
// plain complex transform `plain` of size N/4.
Transform twistThen(int N, const Transform& plain);

// The odd-bin stage of N = 8 with its eighth-turn twist summed before the
// product: W8 z = c (z + W4 z), one product per part, where twistThen takes
// c z first. In its adjoint, each input is multiplied by c before the sum
// and the difference that join them.
Transform summedTwistThen(const Transform& plain);

// The odd-bin stage of N >= 32 in four steps, M = N/4 complex points,
// r = M/4, point n + 4l: W_M^l on each point with l >= 1; the plain complex
// r-point transform `across` over l for each n; W_N^(n(1+4q)) on its output
// q for n >= 1; a plain complex 4-point transform over n, whose output p is
// output q + r p of the stage.
Transform fourStep(int N, const Transform& across);

// Real data through a join (coprime or twiddled): the real transforms
// `first` on the groups; twiddles on the bins they keep; then, for every
// row k1 <= n1/2, the real transform `secondReal` where the row is real and
// the complex one `secondComplex` elsewhere. The rows above n1/2 are the
// conjugates of those below, so every bin above N/2 that a row gives is a
// conjugate of one below, and every bin below is found.
Signal realJoin(ScalarArith& ar, const Signal& x, const JoinMap& map, const RealTransform& first,
                const RealTransform& secondReal, const Transform& secondComplex);

// The adjoint of a real block inside a kernel: `forward` maps n reals to a
// half spectrum of `bins` bins; applied to given bins (their parts as the
// spectrum's cells, a missing part a zero), its adjoint graph gives n
// reals. The block is built on a graph of its own, made adjoint, and copied
// in: the data flow backwards through the forward method.
Signal adjointBlock(ScalarArith& ar, const RealTransform& forward, int n, const Signal& bins);

// The adjoint of the real transform `forward` of size n as the body of a
// kernel on `g`: the block is built apart in binary64, made adjoint, and
// copied in with the statements of `element` (core/statements.h). `bins`
// are variables of `element`, a missing part an exact zero.
Signal adjointTransform(Graph& g, Kind element, const RealTransform& forward, int n, const Signal& bins);

// The bins of a real transform of size m = 2n whose second half of input is
// zero, as transforms of the n reals of the first half: the even bins
// 0, 2, .., (the real size-n transform) and the odd bins 1, 3, .. up to n
// (the half-bin transform). The zeros are missing parts, so only what those
// bins need of `forward` is built.
RealTransform evenBinsOfHalf(const RealTransform& forward);
RealTransform oddBinsOfHalf(const RealTransform& forward);

// The convolution form of a prime p on real data, over m = p-1 and g the
// smallest primitive root:
//  1. U = the real size-m transform `forward` of u[j] = x[g^j];
//  2. R[0] = x[0] + U[0], and T = x[0] + D[0] U[0] (D[0] = -1/m);
//  3. V[k] = U[k] D[k] for 0 < k <= m/2, with the spectrum constants of the
//     convolution form: doubled for the bins below m/2, and times -i for
//     the odd ones;
//  4. with y the inverse transform of the whole product spectrum, whose
//     outputs r < m/2 are X[g^-r] - x[0]: Re y[r] and Im y[r] are the two
//     symmetric parts of the adjoint real size-m transform `back`, the
//     adjoints of its even bins (T in bin 0) and of its odd bins on the
//     first half of its input. `back` is best one whose first stage joins
//     x[r] with x[r + m/2].
Signal realConvolution(ScalarArith& ar, const Signal& x, const RealTransform& forward, const RealTransform& back);

} // namespace kernelgen
