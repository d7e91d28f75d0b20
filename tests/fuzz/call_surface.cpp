#include "call_surface.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

#include "tvkcore.h"
#include "tvkgen.h"

namespace tvkfuzz {

namespace {

enum class Shape { Kernel, SizeDispatcher, Wht, WhtDispatcher, WhtBufferSize, Dct4, Version };
enum class Element { F32, F64, C32, C64 };

// A shape of exported function and the numbers it reads and writes for a
// size N (or order).
struct Export {
    std::string name;
    Shape shape;
    Element element;
    int realBytes;
    int size; // the kernel's own N or order; 0 for the size-taking entries
    std::function<int(int)> inCount;
    std::function<int(int)> outCount;
    void* fn;
};

int packedCells(int n) { return 2 * (n / 2 + 1); }

// Every family of the call frame with its arrays; the families a build
// does not hold yet are skipped by name, and join as soon as they exist.
struct Family {
    const char* prefix;
    std::function<int(int)> in;
    std::function<int(int)> out;
    bool complex;
};

std::vector<Export> buildTable()
{
    const auto two = [](int n) { return 2 * n; };
    const auto one = [](int n) { return n; };
    const std::vector<Family> families = {
        {"tvkgDFTFwd_CToC", two, two, true},   {"tvkgDFTInv_CToC", two, two, true},
        {"tvkgDFTFwd_RToCCS", one, packedCells, false}, {"tvkgDFTFwd_RToPack", one, one, false},
        {"tvkgDFTFwd_RToPerm", one, one, false},        {"tvkgDFTInv_CCSToR", packedCells, one, false},
        {"tvkgDFTInv_PackToR", one, one, false},        {"tvkgDFTInv_PermToR", one, one, false},
        {"tvkgHartley", one, one, false},
    };
    std::vector<Export> table;
    const auto add = [&](Export e) {
        e.fn = dlsym(RTLD_DEFAULT, e.name.c_str());
        if (e.fn)
            table.push_back(std::move(e));
    };
    for (const Family& f : families)
        for (int bytes : {4, 8}) {
            const std::string type = std::string(bytes == 4 ? "32f" : "64f") + (f.complex ? "c" : "");
            const Element element = f.complex ? (bytes == 4 ? Element::C32 : Element::C64)
                                              : (bytes == 4 ? Element::F32 : Element::F64);
            for (int n = 2; n <= 64; ++n)
                add({std::string(f.prefix) + "_" + std::to_string(n) + "_" + type, Shape::Kernel, element, bytes, n,
                     f.in, f.out, nullptr});
            add({std::string(f.prefix) + "_" + type, Shape::SizeDispatcher, element, bytes, 0, f.in, f.out, nullptr});
        }
    const auto points = [](int order) { return 1 << order; };
    for (int bytes : {4, 8}) {
        const std::string type = bytes == 4 ? "32f" : "64f";
        const Element element = bytes == 4 ? Element::F32 : Element::F64;
        for (int order = 1; order <= 13; ++order)
            add({"tvkgWHT_" + std::to_string(order) + "_" + type, Shape::Wht, element, bytes, order, points, points,
                 nullptr});
        add({"tvkgWHT_" + type, Shape::WhtDispatcher, element, bytes, 0, points, points, nullptr});
        add({"tvkgWHTGetBufferSize_" + type, Shape::WhtBufferSize, element, bytes, 0, nullptr, nullptr, nullptr});
        add({"tvkgDCT4_" + type, Shape::Dct4, element, bytes, 0, one, one, nullptr});
    }
    add({"tvkgenGetLibVersion", Shape::Version, Element::F64, 0, 0, nullptr, nullptr, nullptr});
    return table;
}

const std::vector<Export>& table()
{
    static const std::vector<Export> t = buildTable();
    return t;
}

// The fields of one call, read from the front of the fuzz bytes.
struct Call {
    size_t index;
    int32_t len;
    int32_t flag;
    int srcOffset, dstOffset;
    bool inPlace, nullSrc, nullDst, callerBuffer;
    const uint8_t* data;
    size_t dataSize;
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

Call decode(const uint8_t* data, size_t size)
{
    const uint8_t* p = data;
    const uint8_t* end = data + size;
    Call c{};
    c.index = take<uint16_t>(p, end) % table().size();
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
    // common enough to reach the arithmetic.
    if (mode & 16)
        c.flag = 1 << (c.flag & 3);
    if (mode & 32)
        c.len = 1 + static_cast<int32_t>(static_cast<uint32_t>(c.len) % 64);
    c.data = p;
    c.dataSize = static_cast<size_t>(end - p);
    return c;
}

bool goodFlag(int flag) { return flag == 1 || flag == 2 || flag == 4 || flag == 8; }

// An array `offset` bytes past a 16-byte boundary with guard bytes around.
class Guarded {
public:
    static constexpr size_t kGuard = 64;
    Guarded(size_t bytes, int offset) : bytes_(bytes), mem_(bytes + 2 * kGuard + 32, 0xE7)
    {
        auto base = reinterpret_cast<uintptr_t>(mem_.data()) + kGuard;
        base = (base + 15) & ~uintptr_t{15};
        at_ = reinterpret_cast<uint8_t*>(base) + offset;
    }
    uint8_t* get() { return at_; }
    size_t bytes() const { return bytes_; }
    const std::vector<uint8_t>& all() const { return mem_; }
    std::vector<uint8_t> contents() const { return {at_, at_ + bytes_}; }

private:
    size_t bytes_;
    std::vector<uint8_t> mem_;
    uint8_t* at_;
};

void fill(uint8_t* p, size_t bytes, const Call& c)
{
    for (size_t i = 0; i < bytes; ++i)
        p[i] = c.dataSize ? c.data[i % c.dataSize] : 0;
}

// Calls through the exact function types of the exports (a call through
// another pointer type is undefined, whatever the ABI makes of it).
template <class T, class... Tail>
TvkStatus callAs(void* fn, const void* src, void* dst, Tail... tail)
{
    return reinterpret_cast<TvkStatus (*)(const T*, T*, Tail...)>(fn)(static_cast<const T*>(src), static_cast<T*>(dst),
                                                                         tail...);
}

template <class... Tail>
TvkStatus call(const Export& e, const void* src, void* dst, Tail... tail)
{
    switch (e.element) {
    case Element::F32: return callAs<Tvk32f>(e.fn, src, dst, tail...);
    case Element::F64: return callAs<Tvk64f>(e.fn, src, dst, tail...);
    case Element::C32: return callAs<Tvk32fc>(e.fn, src, dst, tail...);
    default: return callAs<Tvk64fc>(e.fn, src, dst, tail...);
    }
}

// One run of a frame call: the entry's function on (src, dst) for size n.
using Runner = std::function<TvkStatus(const void*, void*)>;

// Whether two outputs hold the same numbers: the same bytes, except that a
// NaN may differ from a NaN in sign and payload. Which NaN a sum of two NaNs
// gives depends on the order of its operands, and the compiler may commute
// them differently in the aligned body and its twin.
bool sameNumbers(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b, int realBytes)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); i += realBytes) {
        if (std::memcmp(&a[i], &b[i], realBytes) == 0)
            continue;
        if (realBytes == 4) {
            float x, y;
            std::memcpy(&x, &a[i], 4);
            std::memcpy(&y, &b[i], 4);
            if (!(x != x && y != y))
                return false;
        } else {
            double x, y;
            std::memcpy(&x, &a[i], 8);
            std::memcpy(&y, &b[i], 8);
            if (!(x != x && y != y))
                return false;
        }
    }
    return true;
}

// The checks shared by every src/dst call: status, untouched bytes, and the
// same bytes out of place at the aligned address and in place.
std::string checkArrays(const Export& e, const Call& c, int n, TvkStatus expected, const Runner& run)
{
    const size_t inBytes = static_cast<size_t>(e.inCount(n)) * e.realBytes;
    const size_t outBytes = static_cast<size_t>(e.outCount(n)) * e.realBytes;
    const size_t room = std::max(inBytes, outBytes);
    Guarded src(c.inPlace ? room : inBytes, c.srcOffset), dst(outBytes, c.dstOffset);
    fill(src.get(), inBytes, c);
    const auto srcBefore = src.all(), dstBefore = dst.all();
    void* out = c.inPlace ? src.get() : dst.get();
    const TvkStatus status = run(c.nullSrc ? nullptr : src.get(), c.nullDst ? nullptr : out);
    if (status != expected)
        return e.name + ": status " + std::to_string(status) + ", the frame gives " + std::to_string(expected);
    if (status != StatusOk)
        return src.all() == srcBefore && dst.all() == dstBefore ? "" : e.name + ": a failed call wrote";
    // Only the written cells may change.
    const Guarded& written = c.inPlace ? src : dst;
    const auto& before = c.inPlace ? srcBefore : dstBefore;
    const size_t from = static_cast<size_t>(const_cast<Guarded&>(written).get() - written.all().data());
    for (size_t i = 0; i < before.size(); ++i)
        if ((i < from || i >= from + outBytes) && written.all()[i] != before[i])
            return e.name + ": byte " + std::to_string(static_cast<long>(i - from)) + " outside the output changed";
    if (!c.inPlace && src.all() != srcBefore)
        return e.name + ": src changed";
    const std::vector<uint8_t> result(static_cast<const uint8_t*>(out), static_cast<const uint8_t*>(out) + outBytes);
    // The aligned out-of-place call gives the same bytes.
    Guarded src0(inBytes, 0), dst0(outBytes, 0);
    fill(src0.get(), inBytes, c);
    if (run(src0.get(), dst0.get()) != StatusOk || !sameNumbers(dst0.contents(), result, e.realBytes))
        return e.name + ": another address or in place gives other bytes";
    return "";
}

std::string checkVersion(const Export& e)
{
    const auto* v = reinterpret_cast<const LibVersion* (*)()>(e.fn)();
    return v && v == tvkgenGetLibVersion() ? "" : "version record moved";
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
        return validOrder && size >= 0 ? "" : e.name + ": accepted a bad call";
    if (status != StatusSizeError && status != StatusNullPointer)
        return e.name + ": status " + std::to_string(status);
    return size == -12345 ? "" : e.name + ": a failed call wrote the size";
}

// Plans of small valid lengths: built in exactly the bytes GetSize names,
// run at any address with the bytes of the aligned run, and built again by
// InitAlloc to the same bytes.
template <class Real, class Plan>
struct PlanLifeCycle {
    const char* type;
    TvkStatus (*getSize)(int, int32_t*);
    TvkStatus (*init)(Plan**, int, uint8_t*);
    TvkStatus (*initAlloc)(Plan**, int);
    TvkStatus (*run)(const Real*, Real*, const Plan*);
    TvkStatus (*free)(Plan*);
};

template <class Real, class Plan>
std::string checkDct4(const Call& c, const PlanLifeCycle<Real, Plan>& life)
{
    const std::string name = std::string("tvkgDCT4_") + life.type;
    const auto getSize = life.getSize;
    const auto init = life.init;
    const auto initAlloc = life.initAlloc;
    const auto runPlan = life.run;
    const auto freePlan = life.free;
    // Lengths the plans do not take may still be sized and built (the
    // size rule is integer arithmetic on the length); only powers of two
    // are run and compared.
    int32_t size = -1;
    const TvkStatus sized = getSize(c.len, &size);
    if (sized != StatusOk && sized != StatusSizeError)
        return name + ": GetSize status " + std::to_string(sized);
    if (sized != StatusOk || size < 0 || size > (1 << 22))
        return "";
    Guarded mem(static_cast<size_t>(size), 0);
    const auto memBefore = mem.all();
    Plan* plan = nullptr;
    const TvkStatus built = init(&plan, c.len, mem.get());
    const size_t from = static_cast<size_t>(mem.get() - mem.all().data());
    for (size_t i = 0; i < memBefore.size(); ++i)
        if ((i < from || i >= from + mem.bytes()) && mem.all()[i] != memBefore[i])
            return name + ": Init wrote outside its block";
    const bool power = c.len >= 2 && (c.len & (c.len - 1)) == 0;
    if (power && (built != StatusOk || plan == nullptr))
        return name + ": Init of length " + std::to_string(c.len) + " failed in the bytes GetSize gave";
    if (!power || c.len > 4096)
        return "";
    const Export e{name, Shape::Dct4, sizeof(Real) == 4 ? Element::F32 : Element::F64, sizeof(Real), 0,
                   [](int n) { return n; }, [](int n) { return n; }, nullptr};
    Call plain = c;
    plain.nullSrc = plain.nullDst = false;
    std::string problem = checkArrays(e, plain, c.len, StatusOk, [&](const void* s, void* d) {
        return runPlan(static_cast<const Real*>(s), static_cast<Real*>(d), plan);
    });
    if (!problem.empty() || plain.inPlace)
        return problem;
    Plan* owned = nullptr;
    if (initAlloc(&owned, c.len) != StatusOk)
        return name + ": InitAlloc failed";
    Guarded src(c.len * sizeof(Real), 0), a(c.len * sizeof(Real), 0), b(c.len * sizeof(Real), 0);
    fill(src.get(), src.bytes(), c);
    runPlan(reinterpret_cast<const Real*>(src.get()), reinterpret_cast<Real*>(a.get()), plan);
    runPlan(reinterpret_cast<const Real*>(src.get()), reinterpret_cast<Real*>(b.get()), owned);
    freePlan(owned);
    return a.contents() == b.contents() ? "" : name + ": InitAlloc's plan gives other bytes";
}

} // namespace

size_t exportCount() { return table().size(); }

namespace {

std::string checkCall(const Call& c)
{
    const Export& e = table()[c.index];
    const bool nulls = c.nullSrc || c.nullDst;
    const TvkStatus frame = nulls ? StatusNullPointer : goodFlag(c.flag) ? StatusOk : StatusScaleFlagError;
    switch (e.shape) {
    case Shape::Version: return checkVersion(e);
    case Shape::WhtBufferSize: return checkWhtBufferSize(e, c);
    case Shape::Dct4:
        if (e.realBytes == 4)
            return checkDct4(c, PlanLifeCycle<Tvk32f, TvkgDCT4Plan_32f>{"32f", tvkgDCT4GetSize_32f, tvkgDCT4Init_32f,
                                                                        tvkgDCT4InitAlloc_32f, tvkgDCT4_32f,
                                                                        tvkgDCT4Free_32f});
        return checkDct4(c, PlanLifeCycle<Tvk64f, TvkgDCT4Plan_64f>{"64f", tvkgDCT4GetSize_64f, tvkgDCT4Init_64f,
                                                                    tvkgDCT4InitAlloc_64f, tvkgDCT4_64f,
                                                                    tvkgDCT4Free_64f});
    case Shape::Kernel:
        return checkArrays(e, c, e.size, frame, [&](const void* s, void* d) { return call(e, s, d, c.flag); });
    case Shape::SizeDispatcher: {
        const Runner run = [&](const void* s, void* d) { return call(e, s, d, c.len, c.flag); };
        if (c.len < 2 || c.len > 64)
            return checkArrays(e, c, 2, StatusSizeError, run);
        return checkArrays(e, c, c.len, frame, run);
    }
    case Shape::Wht:
    case Shape::WhtDispatcher: {
        const int order = e.shape == Shape::Wht ? e.size : c.len;
        const bool badOrder = order < 1 || order > 13;
        const int n = badOrder ? 1 : order;
        std::vector<uint8_t*> buffers = {nullptr};
        int32_t bufferSize = 0;
        const auto getSize = e.realBytes == 4 ? tvkgWHTGetBufferSize_32f : tvkgWHTGetBufferSize_64f;
        if (c.callerBuffer && !badOrder && getSize(order, &bufferSize) == StatusOk && bufferSize > 0)
            buffers.push_back(static_cast<uint8_t*>(tvkMalloc(static_cast<uint32_t>(bufferSize))));
        std::string problem;
        for (uint8_t* buffer : buffers) {
            const auto run = [&](const void* s, void* d) {
                return e.shape == Shape::Wht ? call(e, s, d, c.flag, buffer) : call(e, s, d, order, c.flag, buffer);
            };
            problem = checkArrays(e, c, n, badOrder ? StatusSizeError : frame, run);
            if (!problem.empty())
                break;
        }
        if (buffers.size() > 1)
            tvkFree(buffers[1]);
        return problem;
    }
    }
    return "";
}

} // namespace

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
    calls = 0;
    for (size_t index = 0; index < table().size(); ++index)
        for (int nulls = 0; nulls < 4; ++nulls)
            for (int32_t flag : flags)
                for (int32_t len : lens) {
                    Call c{};
                    c.index = index;
                    c.len = len;
                    c.flag = flag;
                    c.srcOffset = 1;
                    c.dstOffset = 3;
                    c.nullSrc = nulls & 1;
                    c.nullDst = nulls & 2;
                    c.data = kData;
                    c.dataSize = sizeof kData;
                    ++calls;
                    const std::string problem = checkCall(c);
                    if (!problem.empty())
                        return problem;
                }
    return "";
}

} // namespace tvkfuzz
