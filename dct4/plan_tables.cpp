// The rotation and twiddle tables of a plan. Each entry is computed on its
// own from an exact integer numerator or from the half-phase f(g), never by
// recurrence, so a table entry has one rounding of the quotient and one of
// the cosine. In binary32 the quotient is rounded to float before the
// cosine: the binary32 table is not the binary64 table rounded.
#include "plan_tables.h"

#include <cmath>

#include "plan_routines.h"

namespace tvkgen::dct4 {

namespace {

constexpr double kPi = 3.141592653589793;

} // namespace

float cosPi32(float x) { return static_cast<float>(std::cos(static_cast<double>(x) * kPi)); }
float sinPi32(float x) { return static_cast<float>(std::sin(static_cast<double>(x) * kPi)); }
double cosPi64(double x) { return std::cos(x * kPi); }
double sinPi64(double x) { return std::sin(x * kPi); }

namespace {

float cosPi(float x) { return cosPi32(x); }
float sinPi(float x) { return sinPi32(x); }
double cosPi(double x) { return cosPi64(x); }
double sinPi(double x) { return sinPi64(x); }

// cos for an even entry, sin for an odd one, of theta = pi n / (8N) with the
// exact integer n = 2 (2a + 1)(2b + 1).
template <class Real>
Real rotationValue(const RotationSource* source, int32_t p, int32_t j)
{
    const int32_t i = source->rowStride * p + j;
    const int32_t k = i / 2;
    const int32_t a = k / source->radix;
    const int32_t b = k % source->radix;
    const int32_t n = (2 * a + 1) * (2 * b + 1) * 2;
    const Real x = static_cast<Real>(n) / static_cast<Real>(source->denominator);
    return (i & 1) ? sinPi(x) : cosPi(x);
}

// f(i) = (i + 1/2) / (m / s): the integer quotient first, the rest in the
// element type.
template <class Real>
Real halfPhase(const HalfPhaseSource* source, int32_t i)
{
    const int32_t rows = source->subLen / source->radix;
    return (static_cast<Real>(i) + static_cast<Real>(0.5)) / static_cast<Real>(rows);
}

// One pair: L copies of cos(pi x), then L copies of sin(pi x).
template <class Real>
Real* storePair(Real* out, Real x)
{
    const Real c = cosPi(x);
    const Real s = sinPi(x);
    for (int32_t l = 0; l < kLanes<Real>; ++l)
        out[l] = c;
    for (int32_t l = 0; l < kLanes<Real>; ++l)
        out[kLanes<Real> + l] = s;
    return out + 2 * kLanes<Real>;
}

} // namespace

template <class Real>
Real sourceValue(const PlanNode* source, int32_t a, int32_t b, int32_t c)
{
    const uint8_t* arena = blockOf(source);
    switch (static_cast<ValueRoutine>(source->prepare)) {
    case ValueRoutine::Rotation:
        return rotationValue<Real>(reinterpret_cast<const RotationSource*>(source), a, b);
    case ValueRoutine::LaneRotation: {
        const auto* lanes = reinterpret_cast<const LaneRotationSource*>(source);
        return rotationValue<Real>(recordAt<RotationSource>(arena, lanes->inner), kLanes<Real> * a + b, c);
    }
    case ValueRoutine::HalfPhase:
        return halfPhase<Real>(reinterpret_cast<const HalfPhaseSource*>(source), a);
    }
    return 0;
}

template float sourceValue<float>(const PlanNode*, int32_t, int32_t, int32_t);
template double sourceValue<double>(const PlanNode*, int32_t, int32_t, int32_t);

template <class Real>
void fillRotationTable(RecombineKernel* kernel)
{
    uint8_t* arena = blockOf(&kernel->head);
    const PlanNode* source = recordAt<PlanNode>(arena, kernel->source);
    Real* out = recordAt<Real>(arena, kernel->table);
    for (int32_t block = 0; block < kernel->blockCount; ++block)
        for (int32_t i = 0; i < kernel->radix; ++i) {
            const int32_t c = columnOrder(kernel->radix, i);
            for (int32_t part = 0; part < 2; ++part)
                for (int32_t lane = 0; lane < kLanes<Real>; ++lane)
                    *out++ = sourceValue<Real>(source, block, lane, 2 * c + part);
        }
}

template <class Real>
void fillTwiddleTable(TwiddleKernel* kernel)
{
    uint8_t* arena = blockOf(&kernel->head);
    const PlanNode* source = recordAt<PlanNode>(arena, kernel->source);
    Real* out = recordAt<Real>(arena, kernel->table);
    const int32_t s = kernel->radix;
    if (kernel->kind <= 3) {
        for (int32_t g = 0; g < kernel->groupCount; ++g) {
            const Real f = sourceValue<Real>(source, g, 0);
            for (int32_t c = 1; c < s; ++c)
                out = storePair(out, f * (static_cast<Real>(2 * c) / static_cast<Real>(s)));
        }
        return;
    }
    // Two levels: s/4-point butterflies, then 4-point ones. Section one holds
    // the twiddles between the levels, section two those before the first.
    const int32_t quarter = s / 4;
    for (int32_t g = 0; g < kernel->groupCount; ++g) {
        const Real f = sourceValue<Real>(source, g, 0);
        for (int32_t j = 0; j < quarter; ++j) {
            const Real base = (f + static_cast<Real>(j)) * (Real(2) / static_cast<Real>(s));
            for (int32_t e = 1; e <= 3; ++e)
                out = storePair(out, base * static_cast<Real>(e));
        }
    }
    for (int32_t g = 0; g < kernel->groupCount; ++g) {
        const Real base = sourceValue<Real>(source, g, 0) * (Real(8) / static_cast<Real>(s));
        for (int32_t e = 1; e < quarter; ++e)
            out = storePair(out, base * static_cast<Real>(e));
    }
}

template void fillRotationTable<float>(RecombineKernel*);
template void fillRotationTable<double>(RecombineKernel*);
template void fillTwiddleTable<float>(TwiddleKernel*);
template void fillTwiddleTable<double>(TwiddleKernel*);

} // namespace tvkgen::dct4
