#include "call_surface.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "test_support.h"
#include "tvkcore.h"
#include "tvkgen.h"
#ifdef TVKGEN_FUZZ_BATCH
#include "tvkgen_batch.h"
#endif

namespace tvkfuzz {

namespace {

// The shapes of the list of exports (tvkgen_exports.inc).
enum class Shape {
    KERNEL, DISPATCHER, WHT, WHT_DISPATCHER, WHT_BUFFER_SIZE,
    DCT4_GET_SIZE, DCT4_INIT, DCT4_INIT_ALLOC, DCT4, DCT4_FREE, VERSION
};

// One listed function, and the numbers it reads and writes for a size N
// (or order).
struct Export {
    Shape shape;
    std::string_view name;
    std::string_view type; // "32f", "64f", "32fc" or "64fc"; empty for the version record
    int size;         // the kernel's own N or order; 0 for the size-taking entries
    void (*fn)();

    int realBytes() const { return type.starts_with("64") ? 8 : 4; }
    // Two numbers a complex element, 2^order points in WHT, and n/2 + 1
    // pairs in a CCS spectrum, which the function's name names.
    int count(int n, bool out) const
    {
        if (shape == Shape::WHT || shape == Shape::WHT_DISPATCHER)
            return 1 << n;
        if (type.ends_with("c"))
            return 2 * n;
        return name.find(out ? "RToCCS" : "CCSToR") != std::string::npos ? 2 * (n / 2 + 1) : n;
    }
};

const std::vector<Export> kListed = {
#define TVKG_EXPORT(shape, name, type, size, group) \
    {Shape::shape, #name, #type, size, reinterpret_cast<void (*)()>(name)},
#include "tvkgen_exports.inc"
};

// The listed function of a shape and type, as its own function type.
template <class F>
F listed(Shape shape, std::string_view type)
{
    for (const Export& e : kListed)
        if (e.shape == shape && e.type == type)
            return reinterpret_cast<F>(e.fn);
    std::abort();
}

// The functions a fuzz call picks, in the list's order; the DCT-IV plan's
// life cycle is called around each run of a plan.
const std::vector<Export>& table()
{
    static const std::vector<Export> t = [] {
        std::vector<Export> called;
        for (const Export& e : kListed)
            if (e.shape != Shape::DCT4_GET_SIZE && e.shape != Shape::DCT4_INIT && e.shape != Shape::DCT4_INIT_ALLOC &&
                e.shape != Shape::DCT4_FREE)
                called.push_back(e);
        return called;
    }();
    return t;
}

// The batch entries, each beside the single dispatcher whose bytes its
// members get; none where libtvkgen_batch is not built.
struct BatchEntry {
    const Export* single;
    void* fn;
};

const std::vector<BatchEntry>& batchTable()
{
    static const std::vector<BatchEntry> t = [] {
        std::vector<BatchEntry> entries;
#ifdef TVKGEN_FUZZ_BATCH
#define TVKG_BATCH(single) {"tvkg" #single, reinterpret_cast<void*>(&tvkgBatch##single)},
        const std::pair<std::string_view, void*> named[] = {
            TVKG_BATCH(DFTFwd_CToC_32fc) TVKG_BATCH(DFTInv_CToC_32fc) TVKG_BATCH(DFTFwd_CToC_64fc)
            TVKG_BATCH(DFTInv_CToC_64fc) TVKG_BATCH(DFTFwd_RToCCS_32f) TVKG_BATCH(DFTFwd_RToPack_32f)
            TVKG_BATCH(DFTFwd_RToPerm_32f) TVKG_BATCH(DFTFwd_RToCCS_64f) TVKG_BATCH(DFTFwd_RToPack_64f)
            TVKG_BATCH(DFTFwd_RToPerm_64f) TVKG_BATCH(DFTInv_CCSToR_32f) TVKG_BATCH(DFTInv_PackToR_32f)
            TVKG_BATCH(DFTInv_PermToR_32f) TVKG_BATCH(DFTInv_CCSToR_64f) TVKG_BATCH(DFTInv_PackToR_64f)
            TVKG_BATCH(DFTInv_PermToR_64f) TVKG_BATCH(Hartley_32f) TVKG_BATCH(Hartley_64f) TVKG_BATCH(WHT_32f)
            TVKG_BATCH(WHT_64f)};
#undef TVKG_BATCH
        for (const auto& [name, fn] : named)
            for (const Export& e : kListed)
                if ((e.shape == Shape::DISPATCHER || e.shape == Shape::WHT_DISPATCHER) && e.name == name)
                    entries.push_back({&e, fn});
        if (entries.size() != std::size(named))
            std::abort();
#endif
        return entries;
    }();
    return t;
}

// The fields of one call, read from the front of the fuzz bytes. A batch
// call indexes the batch entries and has a count and the distances'
// gaps beyond one transform (negative: too short).
struct Call {
    size_t index;
    int32_t len;
    int32_t flag;
    int srcOffset, dstOffset;
    bool inPlace, nullSrc, nullDst, callerBuffer;
    const uint8_t* data;
    size_t dataSize;
    bool batch;
    int count, srcGap, dstGap;
};

template <class T>
T take(const uint8_t*& p, const uint8_t* end)
{
    T v{};
    const size_t n = std::min<size_t>(sizeof v, static_cast<size_t>(end - p));
    std::memcpy(&v, p, n);
    p += n;
    return v;
}

// Mostly no gap, often one of up to 15 elements, sometimes 1 to 4 short.
int gapOf(uint8_t byte) { return byte >= 0xF0 ? -1 - (byte & 3) : byte >= 0x80 ? byte & 15 : 0; }

Call decode(const uint8_t* data, size_t size)
{
    const uint8_t* p = data;
    const uint8_t* end = data + size;
    Call c{};
    // Indices from 0x8000 on pick a batch entry; the committed corpus's
    // inputs all lie below.
    const uint16_t index = take<uint16_t>(p, end);
    c.batch = (index & 0x8000) && !batchTable().empty();
    c.index = c.batch ? (index & 0x7fff) % batchTable().size() : index % table().size();
    c.len = take<int32_t>(p, end);
    c.flag = take<int32_t>(p, end);
    const uint8_t offsets = take<uint8_t>(p, end), mode = take<uint8_t>(p, end);
    c.srcOffset = offsets & 15;
    c.dstOffset = offsets >> 4;
    c.inPlace = mode & 1;
    c.nullSrc = mode & 2;
    c.nullDst = mode & 4;
    c.callerBuffer = mode & 8;
    // Most raw flags and lengths are invalid; these bits make valid ones
    // common enough to reach the arithmetic (every order of a batch of
    // Walsh-Hadamard transforms).
    if (mode & 16)
        c.flag = 1 << (c.flag & 3);
    const bool whtBatch = c.batch && batchTable()[c.index].single->shape == Shape::WHT_DISPATCHER;
    if (mode & 32)
        c.len = 1 + static_cast<int32_t>(static_cast<uint32_t>(c.len) % (whtBatch ? 13 : 64));
    if (c.batch) {
        // Counts 0 to 20, past two lane widths of 8; sometimes -1 to -16.
        const uint8_t count = take<uint8_t>(p, end);
        c.count = count < 0xF0 ? count % 21 : 0xEF - count;
        c.srcGap = gapOf(take<uint8_t>(p, end));
        c.dstGap = gapOf(take<uint8_t>(p, end));
    }
    c.data = p;
    c.dataSize = static_cast<size_t>(end - p);
    return c;
}

bool goodFlag(int flag) { return flag == 1 || flag == 2 || flag == 4 || flag == 8; }

// An array `offset` bytes past a 32-byte boundary with guard bytes around,
// all of a value no kernel writes by chance.
struct Guarded : tvktest::OffsetArray<uint8_t> {
    Guarded(size_t bytes, int offset) : OffsetArray(bytes, offset, 0xE7) {}
};

void fill(uint8_t* p, size_t bytes, const Call& c)
{
    for (size_t i = 0; i < bytes; ++i)
        p[i] = c.dataSize ? c.data[i % c.dataSize] : 0;
}

// Calls through the exact function types of the exports (a call through
// another pointer type is undefined, whatever the ABI makes of it).
template <class... Tail>
TvkStatus call(const Export& e, const void* src, void* dst, Tail... tail)
{
    void* const fn = reinterpret_cast<void*>(e.fn);
    if (e.type.ends_with("c"))
        return tvktest::callAs<Tvk32fc, Tvk64fc>(e.realBytes() == 8, fn, src, dst, tail...);
    return tvktest::callAs<Tvk32f, Tvk64f>(e.realBytes() == 8, fn, src, dst, tail...);
}

// One run of a frame call: the entry's function on (src, dst) for size n.
using Runner = std::function<TvkStatus(const void*, void*)>;

// Whether two outputs hold the same numbers: the same bytes, except that a
// NaN may differ from a NaN in sign and payload. Which NaN a sum of two NaNs
// gives depends on the order of its operands, and the compiler may commute
// them differently in the aligned body and its twin.
template <class F>
bool bothNaN(const uint8_t* a, const uint8_t* b)
{
    F x, y;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    return x != x && y != y;
}

bool sameNumbers(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b, int realBytes)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); i += realBytes)
        if (std::memcmp(&a[i], &b[i], realBytes) != 0 &&
            !(realBytes == 4 ? bothNaN<float>(&a[i], &b[i]) : bothNaN<double>(&a[i], &b[i])))
            return false;
    return true;
}

// The checks shared by every src/dst call: status, untouched bytes, and the
// same bytes out of place at the aligned address and in place.
std::string checkArrays(const Export& e, const Call& c, int n, TvkStatus expected, const Runner& run)
{
    const size_t inBytes = static_cast<size_t>(e.count(n, false)) * e.realBytes();
    const size_t outBytes = static_cast<size_t>(e.count(n, true)) * e.realBytes();
    const size_t room = std::max(inBytes, outBytes);
    Guarded src(c.inPlace ? room : inBytes, c.srcOffset), dst(outBytes, c.dstOffset);
    fill(src.get(), inBytes, c);
    const auto srcBefore = src.all(), dstBefore = dst.all();
    void* out = c.inPlace ? src.get() : dst.get();
    const TvkStatus status = run(c.nullSrc ? nullptr : src.get(), c.nullDst ? nullptr : out);
    if (status != expected)
        return std::string(e.name) + ": status " + std::to_string(status) + ", the frame gives " + std::to_string(expected);
    if (status != StatusOk)
        return src.all() == srcBefore && dst.all() == dstBefore ? "" : std::string(e.name) + ": a failed call wrote";
    // Only the written cells may change.
    if (const auto byte = (c.inPlace ? src : dst).changedOutside(c.inPlace ? srcBefore : dstBefore, outBytes))
        return std::string(e.name) + ": byte " + std::to_string(*byte) + " outside the output changed";
    if (!c.inPlace && src.all() != srcBefore)
        return std::string(e.name) + ": src changed";
    const std::vector<uint8_t> result(static_cast<const uint8_t*>(out), static_cast<const uint8_t*>(out) + outBytes);
    // The aligned out-of-place call gives the same bytes.
    Guarded src0(inBytes, 0), dst0(outBytes, 0);
    fill(src0.get(), inBytes, c);
    if (run(src0.get(), dst0.get()) != StatusOk || !sameNumbers(dst0.snapshot(), result, e.realBytes()))
        return std::string(e.name) + ": another address or in place gives other bytes";
    return "";
}

// The size pointer has no null test by design: a null one is passed only
// with an order out of range, where nothing is stored.
std::string checkWhtBufferSize(const Export& e, const Call& c)
{
    int32_t size = -12345;
    const bool validOrder = c.len >= 1 && c.len <= 13;
    const bool nullSize = c.nullDst && !validOrder;
    const auto status = reinterpret_cast<TvkStatus (*)(int, int32_t*)>(e.fn)(c.len, nullSize ? nullptr : &size);
    if (status == StatusOk)
        return validOrder && size >= 0 ? "" : std::string(e.name) + ": accepted a bad call";
    if (status != StatusSizeError && status != StatusNullPointer)
        return std::string(e.name) + ": status " + std::to_string(status);
    return size == -12345 ? "" : std::string(e.name) + ": a failed call wrote the size";
}

// Plans of small valid lengths: built in exactly the bytes GetSize names,
// run at any address with the bytes of the aligned run, and built again by
// InitAlloc to the same bytes.
template <class Real, class Plan>
std::string checkDct4(const Export& e, const Call& c)
{
    const auto getSize = listed<TvkStatus (*)(int, int32_t*)>(Shape::DCT4_GET_SIZE, e.type);
    const auto init = listed<TvkStatus (*)(Plan**, int, uint8_t*)>(Shape::DCT4_INIT, e.type);
    const auto initAlloc = listed<TvkStatus (*)(Plan**, int)>(Shape::DCT4_INIT_ALLOC, e.type);
    const auto freePlan = listed<TvkStatus (*)(Plan*)>(Shape::DCT4_FREE, e.type);
    const auto runPlan = reinterpret_cast<TvkStatus (*)(const Real*, Real*, const Plan*)>(e.fn);
    // Lengths the plans do not take may still be sized and built (the
    // size rule is integer arithmetic on the length); only powers of two
    // are run and compared.
    int32_t size = -1;
    const TvkStatus sized = getSize(c.len, &size);
    if (sized != StatusOk && sized != StatusSizeError)
        return std::string(e.name) + ": GetSize status " + std::to_string(sized);
    if (sized != StatusOk || size < 0 || size > (1 << 22))
        return "";
    Guarded mem(static_cast<size_t>(size), 0);
    const auto memBefore = mem.all();
    Plan* plan = nullptr;
    const TvkStatus built = init(&plan, c.len, mem.get());
    if (mem.changedOutside(memBefore, mem.bytes()))
        return std::string(e.name) + ": Init wrote outside its block";
    const bool power = c.len >= 2 && (c.len & (c.len - 1)) == 0;
    if (power && (built != StatusOk || plan == nullptr))
        return std::string(e.name) + ": Init of length " + std::to_string(c.len) + " failed in the bytes GetSize gave";
    if (!power || c.len > 4096)
        return "";
    Call plain = c;
    plain.nullSrc = plain.nullDst = false;
    std::string problem = checkArrays(e, plain, c.len, StatusOk, [&](const void* s, void* d) {
        return runPlan(static_cast<const Real*>(s), static_cast<Real*>(d), plan);
    });
    if (!problem.empty() || plain.inPlace)
        return problem;
    Plan* owned = nullptr;
    if (initAlloc(&owned, c.len) != StatusOk)
        return std::string(e.name) + ": InitAlloc failed";
    Guarded src(c.len * sizeof(Real), 0), a(c.len * sizeof(Real), 0), b(c.len * sizeof(Real), 0);
    fill(src.get(), src.bytes(), c);
    runPlan(reinterpret_cast<const Real*>(src.get()), reinterpret_cast<Real*>(a.get()), plan);
    runPlan(reinterpret_cast<const Real*>(src.get()), reinterpret_cast<Real*>(b.get()), owned);
    freePlan(owned);
    return a.snapshot() == b.snapshot() ? "" : std::string(e.name) + ": InitAlloc's plan gives other bytes";
}

template <class T, class... Tail>
TvkStatus callBatchAs(void* fn, const void* src, int srcDist, void* dst, int dstDist, int len, int count, int flag,
                      Tail... tail)
{
    return reinterpret_cast<TvkStatus (*)(const T*, int, T*, int, int, int, int, Tail...)>(fn)(
        static_cast<const T*>(src), srcDist, static_cast<T*>(dst), dstDist, len, count, flag, tail...);
}

// A batch call: the status of the first check that fails in the entries'
// order (length, count, distances, src, dst, flag), nothing touched on
// failure, and on success every member the bytes of the single call at its
// place (a NaN's sign and payload aside, as between the single call's
// bodies), nothing else in dst touched, src untouched out of place. The
// Walsh-Hadamard entries take an order for the length, and the caller's
// work buffer or none.
std::string checkBatch(const Call& c)
{
    const BatchEntry& b = batchTable()[c.index];
    const Export& e = *b.single;
    const std::string name = "tvkgBatch" + std::string(e.name.substr(4));
    const bool complex = e.type.ends_with("c"), wht = e.shape == Shape::WHT_DISPATCHER;
    const size_t elementBytes = (complex ? 2 : 1) * e.realBytes();
    const bool goodLen = wht ? c.len >= 1 && c.len <= 13 : c.len >= 2 && c.len <= 64;
    const int n = goodLen ? c.len : wht ? 1 : 2;
    const int in = e.count(n, false) / (complex ? 2 : 1), out = e.count(n, true) / (complex ? 2 : 1);
    const int srcDist = (c.inPlace ? std::max(in, out) : in) + c.srcGap;
    const int dstDist = c.inPlace ? srcDist : out + c.dstGap;
    const TvkStatus expected = !goodLen || c.count < 0 || srcDist < in || dstDist < out ? StatusSizeError
                               : c.nullSrc || c.nullDst                             ? StatusNullPointer
                               : goodFlag(c.flag)                                   ? StatusOk
                                                                                    : StatusScaleFlagError;
    // Bytes from the first member to the end of the last (of one where the
    // count is not positive).
    const auto reach = [&](int dist, int extent) {
        return ((static_cast<size_t>(std::max(c.count, 1)) - 1) * std::max(dist, extent) + extent) * elementBytes;
    };
    const size_t srcBytes = reach(srcDist, c.inPlace ? std::max(in, out) : in);
    Guarded src(srcBytes, c.srcOffset), dst(c.inPlace ? 0 : reach(dstDist, out), c.dstOffset);
    fill(src.get(), srcBytes, c);
    Guarded& outArray = c.inPlace ? src : dst;
    std::vector<uint8_t> want = outArray.snapshot();
    for (int m = 0; expected == StatusOk && m < c.count; ++m) {
        Guarded one(out * elementBytes, 0);
        const void* member = src.get() + m * srcDist * elementBytes;
        if ((wht ? call(e, member, one.get(), c.len, c.flag, static_cast<uint8_t*>(nullptr))
                 : call(e, member, one.get(), c.len, c.flag)) != StatusOk)
            return std::string(e.name) + ": the single call failed";
        std::memcpy(want.data() + m * dstDist * elementBytes, one.get(), one.bytes());
    }
    int32_t bufferBytes = 0;
    const bool withBuffer = wht && c.callerBuffer && expected == StatusOk &&
                            listed<TvkStatus (*)(int, int32_t*)>(Shape::WHT_BUFFER_SIZE, e.type)(c.len, &bufferBytes) ==
                                StatusOk &&
                            bufferBytes > 0;
    Guarded buffer(withBuffer ? static_cast<size_t>(bufferBytes) : 0, 0);
    const auto srcBefore = src.all(), dstBefore = dst.all();
    const auto run = [&](auto... tail) {
        const auto as = complex ? (e.realBytes() == 8 ? callBatchAs<Tvk64fc, decltype(tail)...>
                                                      : callBatchAs<Tvk32fc, decltype(tail)...>)
                                : (e.realBytes() == 8 ? callBatchAs<Tvk64f, decltype(tail)...>
                                                      : callBatchAs<Tvk32f, decltype(tail)...>);
        return as(b.fn, c.nullSrc ? nullptr : src.get(), srcDist, c.nullDst ? nullptr : outArray.get(), dstDist,
                  c.len, c.count, c.flag, tail...);
    };
    const TvkStatus status = wht ? run(withBuffer ? buffer.get() : nullptr) : run();
    if (status != expected)
        return name + ": status " + std::to_string(status) + ", the checks' order gives " + std::to_string(expected);
    if (status != StatusOk)
        return src.all() == srcBefore && dst.all() == dstBefore ? "" : name + ": a failed call wrote";
    if (!c.inPlace && src.all() != srcBefore)
        return name + ": src changed";
    if (const auto byte = outArray.changedOutside(c.inPlace ? srcBefore : dstBefore, outArray.bytes()))
        return name + ": byte " + std::to_string(*byte) + " past the rows changed";
    // The members as sameNumbers reads them; then the bytes between them.
    std::vector<uint8_t> got = outArray.snapshot();
    for (int m = 0; m < c.count; ++m) {
        const auto first = static_cast<std::ptrdiff_t>(m * dstDist * elementBytes);
        const auto last = first + static_cast<std::ptrdiff_t>(out * elementBytes);
        if (!sameNumbers({got.begin() + first, got.begin() + last}, {want.begin() + first, want.begin() + last},
                         e.realBytes()))
            return name + ": member " + std::to_string(m) + " differs from the single call";
        std::copy(want.begin() + first, want.begin() + last, got.begin() + first);
    }
    return got == want ? "" : name + ": a byte between members changed";
}

std::string checkCall(const Call& c)
{
    if (c.batch)
        return checkBatch(c);
    const Export& e = table()[c.index];
    const bool nulls = c.nullSrc || c.nullDst;
    const TvkStatus frame = nulls ? StatusNullPointer : goodFlag(c.flag) ? StatusOk : StatusScaleFlagError;
    switch (e.shape) {
    case Shape::WHT_BUFFER_SIZE: return checkWhtBufferSize(e, c);
    case Shape::DCT4:
        return e.realBytes() == 4 ? checkDct4<Tvk32f, TvkgDCT4Plan_32f>(e, c)
                                  : checkDct4<Tvk64f, TvkgDCT4Plan_64f>(e, c);
    case Shape::KERNEL:
        return checkArrays(e, c, e.size, frame, [&](const void* s, void* d) { return call(e, s, d, c.flag); });
    case Shape::DISPATCHER: {
        const Runner run = [&](const void* s, void* d) { return call(e, s, d, c.len, c.flag); };
        if (c.len < 2 || c.len > 64)
            return checkArrays(e, c, 2, StatusSizeError, run);
        return checkArrays(e, c, c.len, frame, run);
    }
    case Shape::WHT:
    case Shape::WHT_DISPATCHER: {
        const int order = e.shape == Shape::WHT ? e.size : c.len;
        const bool badOrder = order < 1 || order > 13;
        const int n = badOrder ? 1 : order;
        const TvkStatus expected = badOrder ? StatusSizeError : frame;
        const auto runWith = [&](uint8_t* buffer) {
            return [&e, &c, order, buffer](const void* s, void* d) {
                return e.shape == Shape::WHT ? call(e, s, d, c.flag, buffer) : call(e, s, d, order, c.flag, buffer);
            };
        };
        std::string problem = checkArrays(e, c, n, expected, runWith(nullptr));
        // The same checks with a buffer of the caller's.
        int32_t bufferSize = 0;
        const auto getSize = listed<TvkStatus (*)(int, int32_t*)>(Shape::WHT_BUFFER_SIZE, e.type);
        if (problem.empty() && c.callerBuffer && !badOrder && getSize(order, &bufferSize) == StatusOk &&
            bufferSize > 0) {
            auto* buffer = static_cast<uint8_t*>(tvkMalloc(static_cast<uint32_t>(bufferSize)));
            problem = checkArrays(e, c, n, expected, runWith(buffer));
            tvkFree(buffer);
        }
        return problem;
    }
    default: return "";
    }
}

} // namespace

size_t exportCount() { return table().size(); }

size_t batchEntryCount() { return batchTable().size(); }

std::string checkOneCall(const uint8_t* data, size_t size) { return checkCall(decode(data, size)); }

std::string checkEdgeCalls(size_t& calls)
{
    // Every bad argument of the call frames, and the good ones beside them,
    // on every export: null arrays, whole flag values that are not 1, 2, 4,
    // 8, and lengths and orders out of range.
    static const uint8_t kData[16] = {0x00, 0x00, 0xc0, 0x7f, 0x00, 0x00, 0x80, 0xff,
                                      0x01, 0x00, 0x00, 0x00, 0xff, 0xff, 0x7f, 0x7f};
    const int32_t flags[] = {0, 3, 5, 6, 7, 9, 10, 12, 16, 264, -1, 2147483647, 1, 2, 4, 8};
    const int32_t lens[] = {0, 1, -1, 65, 14, -2147483647 - 1, 2147483647, 2, 13, 64};
    const auto edges = [&](Call c) {
        for (int nulls = 0; nulls < 4; ++nulls)
            for (int32_t flag : flags)
                for (int32_t len : lens) {
                    ++calls;
                    c.nullSrc = (nulls & 1) != 0;
                    c.nullDst = (nulls & 2) != 0;
                    c.flag = flag;
                    c.len = len;
                    if (std::string problem = checkCall(c); !problem.empty())
                        return problem;
                }
        return std::string();
    };
    Call base{};
    base.srcOffset = 1;
    base.dstOffset = 3;
    base.data = kData;
    base.dataSize = sizeof kData;
    calls = 0;
    std::string problem;
    for (size_t index = 0; index < table().size() && problem.empty(); ++index) {
        Call c = base;
        c.index = index;
        problem = edges(c);
    }
    // The batch entries with a bad count, each distance one short, and good
    // ones in and out of place.
    const struct {
        int count, srcGap, dstGap;
        bool inPlace;
    } shapes[] = {{-1, 0, 0, false}, {0, 0, 0, false}, {3, -1, 0, false}, {3, 0, -1, false}, {17, 2, 5, false},
                  {9, 1, 1, true}};
    for (size_t index = 0; index < batchTable().size() && problem.empty(); ++index)
        for (const auto& shape : shapes) {
            Call c = base;
            c.index = index;
            c.batch = true;
            c.count = shape.count;
            c.srcGap = shape.srcGap;
            c.dstGap = shape.dstGap;
            c.inPlace = shape.inPlace;
            if (problem = edges(c); !problem.empty())
                break;
        }
    return problem;
}

} // namespace tvkfuzz
