// Walsh-Hadamard dispatchers and work-buffer sizes.
#include <cstdint>
#include <iterator>

#include "tvkgen.h"
#include "wht_plans.h"

namespace tvkgen::wht {
namespace {

template <class Real>
using Kernel = TvkStatus (*)(const Real*, Real*, int, uint8_t*);

constexpr Kernel<Tvk32f> kKernels32f[] = {
    tvkgWHT_1_32f, tvkgWHT_2_32f, tvkgWHT_3_32f, tvkgWHT_4_32f, tvkgWHT_5_32f, tvkgWHT_6_32f, tvkgWHT_7_32f,
    tvkgWHT_8_32f, tvkgWHT_9_32f, tvkgWHT_10_32f, tvkgWHT_11_32f, tvkgWHT_12_32f, tvkgWHT_13_32f,
};
constexpr Kernel<Tvk64f> kKernels64f[] = {
    tvkgWHT_1_64f, tvkgWHT_2_64f, tvkgWHT_3_64f, tvkgWHT_4_64f, tvkgWHT_5_64f, tvkgWHT_6_64f, tvkgWHT_7_64f,
    tvkgWHT_8_64f, tvkgWHT_9_64f, tvkgWHT_10_64f, tvkgWHT_11_64f, tvkgWHT_12_64f, tvkgWHT_13_64f,
};
static_assert(std::size(kKernels32f) == kMaxOrder && std::size(kKernels64f) == kMaxOrder);

constexpr bool validOrder(int order) { return order >= kMinOrder && order <= kMaxOrder; }

// The order test comes first, whatever the pointers and the flag are.
template <class Real>
TvkStatus dispatch(const Kernel<Real> (&kernels)[kMaxOrder], const Real* src, Real* dst, int order, int flag,
                   uint8_t* buffer)
{
    if (!validOrder(order))
        return StatusSizeError;
    return kernels[order - kMinOrder](src, dst, flag, buffer);
}

// pSize is not tested: only a valid order stores through it.
template <class Real>
TvkStatus bufferSize(int order, int32_t* pSize)
{
    if (!validOrder(order))
        return StatusSizeError;
    *pSize = bufferBytes<Real>(order);
    return StatusOk;
}

} // namespace
} // namespace tvkgen::wht

TvkStatus tvkgWHT_32f(const Tvk32f* src, Tvk32f* dst, int order, int flag, uint8_t* buffer)
{
    return tvkgen::wht::dispatch(tvkgen::wht::kKernels32f, src, dst, order, flag, buffer);
}

TvkStatus tvkgWHT_64f(const Tvk64f* src, Tvk64f* dst, int order, int flag, uint8_t* buffer)
{
    return tvkgen::wht::dispatch(tvkgen::wht::kKernels64f, src, dst, order, flag, buffer);
}

TvkStatus tvkgWHTGetBufferSize_32f(int order, int32_t* pSize)
{
    return tvkgen::wht::bufferSize<Tvk32f>(order, pSize);
}

TvkStatus tvkgWHTGetBufferSize_64f(int order, int32_t* pSize)
{
    return tvkgen::wht::bufferSize<Tvk64f>(order, pSize);
}
