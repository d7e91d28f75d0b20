#include "core/exact.h"

#include <cstdio>
#include <quadmath.h>

namespace kernelgen {

namespace {

// cos or sin of 2*pi*num/den by the symmetries of the circle: the angle is
// brought into [0, pi/4] with its multiple of pi/4 handled exactly.
Exact trigTurn(long num, long den, bool wantSin)
{
    // Work in units of 1/(8*den) of a turn: octant = u / den, rest = u % den.
    long u = ((num % den) + den) % den * 8;
    const long octant = u / den;
    const long rest = u % den; // angle within the octant: 2*pi*rest/(8*den)
    const Exact angle = 2 * M_PIq * rest / (8 * static_cast<Exact>(den));
    const Exact angleDown = 2 * M_PIq * (den - rest) / (8 * static_cast<Exact>(den));
    Exact c = 0, s = 0;
    // Within octant o the angle is o*pi/4 + a; use first-octant values of
    // a or of pi/4 - a.
    switch (octant) {
    case 0: c = rest ? cosq(angle) : 1; s = rest ? sinq(angle) : 0; break;
    case 1: c = sinq(angleDown); s = cosq(angleDown); break;
    case 2: c = rest ? -sinq(angle) : 0; s = rest ? cosq(angle) : 1; break;
    case 3: c = -cosq(angleDown); s = sinq(angleDown); break;
    case 4: c = rest ? -cosq(angle) : -1; s = rest ? -sinq(angle) : 0; break;
    case 5: c = -sinq(angleDown); s = -cosq(angleDown); break;
    case 6: c = rest ? sinq(angle) : 0; s = rest ? -cosq(angle) : -1; break;
    default: c = cosq(angleDown); s = -sinq(angleDown); break;
    }
    return wantSin ? s : c;
}

} // namespace

Exact cosTurn(long num, long den) { return trigTurn(num, den, false); }

std::string trigMagnitudeName(bool sine, long num, long den)
{
    long u = ((num % den) + den) % den * 8;
    const long octant = u / den;
    long rest = u % den;
    // Odd octants measure from the next multiple of pi/4, and there cos and
    // sin trade places; quadrants 1 and 3 trade them once more.
    bool useSin = sine;
    if (octant % 2 == 1) {
        rest = den - rest;
        useSin = !useSin;
    }
    if ((octant / 2) % 2 == 1)
        useSin = !useSin;
    // angle = 2*pi*rest/(8*den) = pi * rest / (4*den)
    long p = rest, q = 4 * den;
    for (long a = p, b = q; b != 0;) {
        const long t = a % b;
        a = b;
        b = t;
        if (b == 0) {
            p /= a;
            q /= a;
        }
    }
    if (p == 1 && q == 4)
        useSin = false; // sin(pi/4) = cos(pi/4): one name
    std::string name = useSin ? "kSin" : "kCos";
    if (p != 1)
        name += std::to_string(p);
    return name + "PiOver" + std::to_string(q);
}
Exact sinTurn(long num, long den) { return trigTurn(num, den, true); }
Exact sqrtExact(Exact x) { return sqrtq(x); }

std::string hexLiteral(double x)
{
    char text[64];
    std::snprintf(text, sizeof text, "%a", x);
    return text;
}

std::string hexLiteral(float x)
{
    char text[64];
    std::snprintf(text, sizeof text, "%af", static_cast<double>(x));
    return text;
}

} // namespace kernelgen
