/* A tour of the five families: a two-tone test signal forward and back with
 * the complex size dispatchers (printing the bins that carry the tones), then
 * a round trip through each of the real DFT, Hartley, Walsh-Hadamard and
 * DCT-IV kernels, each checked and one call of each timed. */
#define _POSIX_C_SOURCE 199309L
#include <math.h>
#include <stdio.h>
#include <time.h>

#include "tvkcore.h"
#include "tvkgen.h"

enum { kSize = 16, kCalls = 1000000 };

static double seconds(void)
{
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return (double)t.tv_sec + 1e-9 * (double)t.tv_nsec;
}

/* Largest difference of two real arrays. */
static double largestError(const double* a, const double* b, int n)
{
    double e = 0.0;
    int i;
    for (i = 0; i < n; ++i)
        e = fmax(e, fabs(a[i] - b[i]));
    return e;
}

static const char* statusText(TvkStatus status)
{
    switch (status) {
    case StatusOk: return "ok";
    case StatusSizeError: return "size error";
    case StatusNullPointer: return "null pointer";
    case StatusScaleFlagError: return "scale flag error";
    default: return "bad argument";
    }
}

int main(void)
{
    const double pi = 3.14159265358979323846;
    const LibVersion* version = tvkgenGetLibVersion();
    Tvk64fc* signal = tvkMalloc(kSize * sizeof(Tvk64fc));
    Tvk64fc* spectrum = tvkMalloc(kSize * sizeof(Tvk64fc));
    Tvk64fc* back = tvkMalloc(kSize * sizeof(Tvk64fc));
    TvkStatus status;
    double maxError = 0.0, start, perCall;
    int i;

    printf("%s %s\n", version->fileName, version->versionText);

    /* Tones at bins 2 (amplitude 1) and 5 (amplitude 0.5). */
    for (i = 0; i < kSize; ++i) {
        signal[i].re = cos(2 * pi * 2 * i / kSize) + 0.5 * cos(2 * pi * 5 * i / kSize);
        signal[i].im = sin(2 * pi * 2 * i / kSize) + 0.5 * sin(2 * pi * 5 * i / kSize);
    }

    status = tvkgDFTFwd_CToC_64fc(signal, spectrum, kSize, ScaleDivForwardByN);
    printf("forward, size %d: %s\n", kSize, statusText(status));
    for (i = 0; i < 8; ++i)
        printf("  bin %d: %8.5f %+8.5fi\n", i, spectrum[i].re, spectrum[i].im);

    status = tvkgDFTInv_CToC_64fc(spectrum, back, kSize, ScaleDivForwardByN);
    for (i = 0; i < kSize; ++i) {
        maxError = fmax(maxError, fabs(back[i].re - signal[i].re));
        maxError = fmax(maxError, fabs(back[i].im - signal[i].im));
    }
    printf("inverse: %s, largest round-trip error %.2e\n", statusText(status), maxError);

    start = seconds();
    for (i = 0; i < kCalls; ++i)
        tvkgDFTFwd_CToC_16_64fc(signal, spectrum, ScaleNoDivide);
    perCall = (seconds() - start) / kCalls;
    printf("size-16 forward kernel: %.1f ns per call\n", 1e9 * perCall);

    {
        /* The real tone, its CCS spectrum (N + 2 cells) and back. */
        double x[kSize], cells[kSize + 2], y[kSize], work[kSize];
        int32_t bytes = 0;
        uint8_t* planMemory;
        TvkgDCT4Plan_64f* plan = NULL;
        for (i = 0; i < kSize; ++i)
            x[i] = signal[i].re;
        status |= tvkgDFTFwd_RToCCS_16_64f(x, cells, ScaleNoDivide);
        status |= tvkgDFTInv_CCSToR_16_64f(cells, y, ScaleDivInverseByN);
        printf("real DFT: R[2] = %.3f, R[5] = %.3f, round trip %.2e\n", cells[4], cells[10], largestError(x, y, kSize));
        maxError = fmax(maxError, largestError(x, y, kSize));

        status |= tvkgHartley_16_64f(x, work, ScaleDivBySqrtN);
        status |= tvkgHartley_16_64f(work, y, ScaleDivBySqrtN);
        printf("Hartley: twice with 1/sqrt(N) gives the input back to %.2e\n", largestError(x, y, kSize));
        maxError = fmax(maxError, largestError(x, y, kSize));

        status |= tvkgWHT_4_64f(x, work, ScaleNoDivide, NULL);
        status |= tvkgWHT_4_64f(work, y, ScaleDivForwardByN, NULL);
        printf("Walsh-Hadamard, 16 points: round trip %.2e\n", largestError(x, y, kSize));
        maxError = fmax(maxError, largestError(x, y, kSize));

        /* DCT-IV is its own inverse up to N/2. */
        status |= tvkgDCT4GetSize_64f(kSize, &bytes);
        planMemory = tvkMalloc((uint32_t)bytes);
        status |= tvkgDCT4Init_64f(&plan, kSize, planMemory);
        status |= tvkgDCT4_64f(x, work, plan);
        status |= tvkgDCT4_64f(work, y, plan);
        for (i = 0; i < kSize; ++i)
            y[i] *= 2.0 / kSize;
        printf("DCT-IV, 16 points: round trip %.2e\n", largestError(x, y, kSize));
        maxError = fmax(maxError, largestError(x, y, kSize));

        start = seconds();
        for (i = 0; i < kCalls; ++i)
            tvkgDFTFwd_RToCCS_16_64f(x, cells, ScaleNoDivide);
        printf("size-16 real forward kernel: %.1f ns per call\n", 1e9 * (seconds() - start) / kCalls);
        start = seconds();
        for (i = 0; i < kCalls; ++i)
            tvkgHartley_16_64f(x, work, ScaleNoDivide);
        printf("size-16 Hartley kernel: %.1f ns per call\n", 1e9 * (seconds() - start) / kCalls);
        tvkFree(planMemory);
    }

    tvkFree(back);
    tvkFree(spectrum);
    tvkFree(signal);
    return status == StatusOk && maxError < 1e-14 ? 0 : 1;
}
