/*
 * tvkgen: straight-line transforms of short vectors.
 *
 * Every function returns a status (TvkStatus). Transform kernels take the
 * source array, the destination array and a scale flag; the size dispatchers
 * take the length between them. Arrays are contiguous; complex arrays hold
 * interleaved (real, imaginary) pairs. src may equal dst.
 *
 * Threads: every function is reentrant; calls may run at once so long as
 * they share no dst, no Walsh-Hadamard buffer and no DCT-IV plan of length
 * 64 or more.
 *
 * Valid C99 and C++.
 */
#ifndef TVKGEN_H
#define TVKGEN_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Marks the library's exported functions; the library is built with hidden
 * visibility, so nothing else leaves it. */
#if defined(__GNUC__)
#define TVKG_API __attribute__((visibility("default")))
#else
#define TVKG_API
#endif

/* ---- Element types --------------------------------------------------- */

typedef float Tvk32f;
typedef double Tvk64f;
typedef struct Tvk32fc { float re; float im; } Tvk32fc;
typedef struct Tvk64fc { double re; double im; } Tvk64fc;

/* ---- Status ------------------------------------------------------------ */

typedef int32_t TvkStatus;

enum TvkStatusValue {
    StatusOk = 0,
    StatusBadArgument = -5,    /* a DCT-IV plan with a damaged kind field */
    StatusSizeError = -6,      /* length or order out of the family's range */
    StatusNullPointer = -8,    /* a required pointer is null */
    StatusScaleFlagError = -16 /* flag is none of 1, 2, 4, 8 */
};

/* ---- Scale flag: one whole value, not a bit mask ------------------------
 * The factor by which a kernel multiplies the transform, as its last step:
 *
 *   flag                    DFTFwd_*    DFTInv_*    Hartley, WHT
 *   ScaleDivForwardByN  1   1/N         1           1/N
 *   ScaleDivInverseByN  2   1           1/N         1/N
 *   ScaleDivBySqrtN     4   1/sqrt(N)   1/sqrt(N)   1/sqrt(N)
 *   ScaleNoDivide       8   1           1           1
 *
 * The flag of the other direction multiplies by 1; the Hartley and
 * Walsh-Hadamard transforms have no direction, so both divide by N there.
 * N is the transform's length (2^order for WHT). 1/N is rounded to the
 * element type; 1/sqrt(N) is the nearest binary32 in 32f and 32fc, and in
 * 64f and 64fc the binary64 quotient 1.0 / sqrt(N), which at some N (2, 3,
 * 8, ...) is one unit in the last place off the nearest binary64. The
 * DCT-IV takes no flag. */

typedef enum ScaleFlags {
    ScaleDivForwardByN = 1,
    ScaleDivInverseByN = 2,
    ScaleDivBySqrtN = 4,
    ScaleNoDivide = 8
} ScaleFlags;

/* ---- Version record ------------------------------------------------------ */

typedef struct LibVersion {
    int32_t versionMajor;
    int32_t versionMinor;
    int32_t buildSeries;
    int32_t buildNumber;
    char cpuCode[4];
    const char* fileName;
    const char* versionText;
    const char* buildDateText;
} LibVersion;

#define TVKG_DECLARE_VERSION(name, t) TVKG_API const LibVersion* name(void);

/* ---- Opaque DCT-IV plans ------------------------------------------------- */

typedef struct TvkgDCT4Plan_32f TvkgDCT4Plan_32f;
typedef struct TvkgDCT4Plan_64f TvkgDCT4Plan_64f;

/* ---- Functions -----------------------------------------------------------
 * Each exported function is a row of tvkgen_exports.inc, declared at the end
 * of this header by its shape, TVKG_DECLARE_<shape> below. Kernel names
 * carry their size: tvkgDFTFwd_CToC_16_64fc, tvkgWHT_13_32f. The same name
 * without the size is the dispatcher, which takes `len` (2..64) or `order`
 * (1..13) after dst. */

/* The kernels and dispatchers of the complex DFT, the real DFT and Hartley: */
#define TVKG_DECLARE_KERNEL(name, t) TVKG_API TvkStatus name(const Tvk##t* src, Tvk##t* dst, int flag);
#define TVKG_DECLARE_DISPATCHER(name, t) TVKG_API TvkStatus name(const Tvk##t* src, Tvk##t* dst, int len, int flag);

/* Complex DFT: X[k] = factor * sum_n x[n] exp(-2 pi i nk/N) forward,
 * exp(+2 pi i nk/N) inverse. */

/* Real DFT. The forward kernels write bins 0..h (h = N/2 rounded down) of
 * X[k] = sum_n x[n] exp(-2 pi i nk/N), R[k] = Re X[k], I[k] = Im X[k], as
 * cells of the element type in one of three layouts:
 *
 *   CCS   cell 2k = R[k], cell 2k+1 = I[k], k = 0..h: 2h+2 cells (N+2 for
 *         even N, N+1 for odd N); numpy.fft.rfft(x) viewed as interleaved
 *         floats. Cell 1 and, for even N, cell N+1 hold +0.0.
 *   Pack  cell 0 = R[0]; cell 2k-1 = R[k], cell 2k = I[k] for 0 < k < N/2;
 *         for even N, cell N-1 = R[N/2]: N cells.
 *   Perm  cell 0 = R[0]; for even N, cell 1 = R[N/2] and cell 2k = R[k],
 *         cell 2k+1 = I[k] for 0 < k < N/2; for odd N as Pack: N cells.
 *
 *   N = 6:  CCS  R0 0 R1 I1 R2 I2 R3 0    N = 5:  CCS  R0 0 R1 I1 R2 I2
 *           Pack R0 R1 I1 R2 I2 R3                Pack R0 R1 I1 R2 I2
 *           Perm R0 R3 R1 I1 R2 I2                Perm R0 R1 I1 R2 I2
 *
 * The inverse kernels read a layout (never CCS cell 1 or, for even N, N+1)
 * as the spectrum X[N-k] = conj X[k] and write the N reals
 * y[n] = factor * (R[0] + (-1)^n R[N/2] + 2 sum_{0<k<N/2} (R[k] cos(2 pi nk/N)
 * - I[k] sin(2 pi nk/N))), the R[N/2] term for even N only: under
 * ScaleNoDivide N times the forward kernel's input. An in-place CCS call
 * needs an array of the CCS length. */

/* Hartley: H[k] = factor * sum_n x[n] (cos(2 pi nk/N) + sin(2 pi nk/N)),
 * N cells in natural order; its own inverse up to N. */

/* Walsh-Hadamard: orders 1..13 (N = 2..8192 points), rows in natural
 * (Hadamard) order: dst[k] = factor * sum_j (-1)^popcount(j & k) src[j]; its
 * own inverse up to N.
 * `buffer` is the work buffer of orders 8..13 (orders 1..7 ignore it):
 * 16-byte aligned, of the bytes tvkgWHTGetBufferSize_* gives, all of which a
 * call writes. That is the data's size, N elements, except at orders 11..13
 * in 64f and 12..13 in 32f, where it is one chunk (2048 or 8192 bytes)
 * more. A null buffer makes the kernel allocate its own for the call. The
 * buffer may be src or dst itself only if that array has the buffer's size;
 * buffer == src overwrites src. One that overlaps src or dst in any other
 * way is not used (the kernel allocates its own), so the result in dst is
 * always that of a separate buffer. */
#define TVKG_DECLARE_WHT(name, t) \
    TVKG_API TvkStatus name(const Tvk##t* src, Tvk##t* dst, int flag, uint8_t* buffer);
#define TVKG_DECLARE_WHT_DISPATCHER(name, t) \
    TVKG_API TvkStatus name(const Tvk##t* src, Tvk##t* dst, int order, int flag, uint8_t* buffer);
#define TVKG_DECLARE_WHT_BUFFER_SIZE(name, t) TVKG_API TvkStatus name(int order, int32_t* pSize);

/* DCT-IV, unnormalised, with no scale flag:
 *   y[k] = sum_{n=0}^{N-1} x[n] cos(pi/N (n + 1/2)(k + 1/2)),  k = 0..N-1,
 * half of scipy.fft.dct(x, type=4); applied twice it gives N/2 times x.
 * Lengths are the powers of two, 2 to 2^26 in 32f and 2 to 2^25 in 64f.
 * GetSize gives the bytes of a plan for Init's `mem` (any alignment);
 * InitAlloc takes them from tvkMalloc, and Free hands such a block to
 * tvkFree (a plan in the caller's own memory needs no call).
 * A plan of length 64 or more overwrites its work area on every run: one
 * thread at a time per plan (build one per thread). Plans of lengths 2 to 32
 * are only read and may be shared.
 * Lengths that these functions accept without giving a DCT-IV (the C++ and
 * Python interfaces refuse them):
 *   - 2^k + 1 (32f from 33, 64f from 9): the plan runs the tree of 2^k; it
 *     reads src[N] and writes dst[N], one element past each array, and
 *     leaves some of dst unwritten;
 *   - the plan's size is a 32-bit sum that wraps: GetSize refuses 2^27 to
 *     2^29 in 32f and 2^26 to 2^28 in 64f, but for 2^30 in 32f and 2^29 and
 *     2^30 in 64f (and those plus one) it returns a wrapped, far too small
 *     size, and Init and InitAlloc then build the plan past the end of its
 *     block. */
#define TVKG_DECLARE_DCT4_GET_SIZE(name, t) TVKG_API TvkStatus name(int len, int32_t* size);
#define TVKG_DECLARE_DCT4_INIT(name, t) TVKG_API TvkStatus name(TvkgDCT4Plan_##t** plan, int len, uint8_t* mem);
#define TVKG_DECLARE_DCT4_INIT_ALLOC(name, t) TVKG_API TvkStatus name(TvkgDCT4Plan_##t** plan, int len);
#define TVKG_DECLARE_DCT4(name, t) \
    TVKG_API TvkStatus name(const Tvk##t* src, Tvk##t* dst, const TvkgDCT4Plan_##t* plan);
#define TVKG_DECLARE_DCT4_FREE(name, t) TVKG_API TvkStatus name(TvkgDCT4Plan_##t* plan);

/* Every exported function, by its shape. */
#define TVKG_EXPORT(shape, name, type, size, group) TVKG_DECLARE_##shape(name, type)
#include "tvkgen_exports.inc"

#undef TVKG_DECLARE_VERSION
#undef TVKG_DECLARE_KERNEL
#undef TVKG_DECLARE_DISPATCHER
#undef TVKG_DECLARE_WHT
#undef TVKG_DECLARE_WHT_DISPATCHER
#undef TVKG_DECLARE_WHT_BUFFER_SIZE
#undef TVKG_DECLARE_DCT4_GET_SIZE
#undef TVKG_DECLARE_DCT4_INIT
#undef TVKG_DECLARE_DCT4_INIT_ALLOC
#undef TVKG_DECLARE_DCT4
#undef TVKG_DECLARE_DCT4_FREE

#ifdef __cplusplus
}
#endif

#endif /* TVKGEN_H */
