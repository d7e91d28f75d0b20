/* Transforms a two-tone test signal forward and back with the complex size
 * dispatchers, prints the bins that carry the tones, checks the round trip,
 * and times one call. */
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

    tvkFree(back);
    tvkFree(spectrum);
    tvkFree(signal);
    return status == StatusOk && maxError < 1e-14 ? 0 : 1;
}
