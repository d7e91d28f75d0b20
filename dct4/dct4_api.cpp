// The exported life cycle and run of DCT-IV plans in both element types.
#include "plan_build.h"
#include "plan_run.h"
#include "tvkcore.h"
#include "tvkgen.h"

namespace tvkgen::dct4 {

namespace {

template <class Real, class Public>
TvkStatus initAlloc(Public** plan, int len)
{
    if (plan == nullptr)
        return StatusNullPointer;
    int32_t size = 0;
    const TvkStatus sized = planSize<Real>(len, &size);
    if (sized != StatusOk)
        return sized;
    // Not tested: an exhausted allocator shows as StatusNullPointer from Init.
    auto* block = static_cast<uint8_t*>(tvkMalloc(static_cast<uint32_t>(size)));
    const TvkStatus status = planInit<Real>(reinterpret_cast<Dct4Plan**>(plan), len, block);
    if (status != StatusOk)
        tvkFree(block);
    return status;
}

template <class Public>
TvkStatus freePlan(Public* plan)
{
    if (plan == nullptr)
        return StatusNullPointer;
    auto* root = reinterpret_cast<Dct4Plan*>(plan);
    uint8_t* block = blockOf(&root->head);
    planDestroy(root);
    tvkFree(block);
    return StatusOk;
}

} // namespace

} // namespace tvkgen::dct4

using namespace tvkgen::dct4;

TvkStatus tvkgDCT4GetSize_32f(int len, int32_t* size) { return planSize<float>(len, size); }
TvkStatus tvkgDCT4GetSize_64f(int len, int32_t* size) { return planSize<double>(len, size); }

TvkStatus tvkgDCT4Init_32f(TvkgDCT4Plan_32f** plan, int len, uint8_t* mem)
{
    return planInit<float>(reinterpret_cast<Dct4Plan**>(plan), len, mem);
}

TvkStatus tvkgDCT4Init_64f(TvkgDCT4Plan_64f** plan, int len, uint8_t* mem)
{
    return planInit<double>(reinterpret_cast<Dct4Plan**>(plan), len, mem);
}

TvkStatus tvkgDCT4InitAlloc_32f(TvkgDCT4Plan_32f** plan, int len) { return initAlloc<float>(plan, len); }
TvkStatus tvkgDCT4InitAlloc_64f(TvkgDCT4Plan_64f** plan, int len) { return initAlloc<double>(plan, len); }

TvkStatus tvkgDCT4Free_32f(TvkgDCT4Plan_32f* plan) { return freePlan(plan); }
TvkStatus tvkgDCT4Free_64f(TvkgDCT4Plan_64f* plan) { return freePlan(plan); }

TvkStatus tvkgDCT4_32f(const Tvk32f* src, Tvk32f* dst, const TvkgDCT4Plan_32f* plan)
{
    return runPlan<float>(src, dst, reinterpret_cast<const Dct4Plan*>(plan));
}

TvkStatus tvkgDCT4_64f(const Tvk64f* src, Tvk64f* dst, const TvkgDCT4Plan_64f* plan)
{
    return runPlan<double>(src, dst, reinterpret_cast<const Dct4Plan*>(plan));
}
