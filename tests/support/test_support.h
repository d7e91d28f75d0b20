// Helpers shared by the test programs: arrays at chosen byte offsets from a
// 16-byte boundary, sentinel fills, bit comparison, seeded random data and
// the direct DFT in long double.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "tvkgen.h"

namespace tvktest {

// Every exported function with its size (or order) and dispatcher, from
// the one list of exports.
struct Export {
    const char* name;
    int size;
    const char* group;
    void* fn;
};

inline const std::vector<Export>& exports()
{
    static const std::vector<Export> all = {
#define TVKG_EXPORT(shape, name, type, size, group) {#name, size, #group, reinterpret_cast<void*>(&name)},
#include "tvkgen_exports.inc"
    };
    return all;
}

// The exported function `name`; null where the list has none.
inline void* exportedFunction(const std::string& name)
{
    for (const Export& e : exports())
        if (name == e.name)
            return e.fn;
    return nullptr;
}

// The kernel of `size` that the dispatcher `group` runs; its name is empty
// and its function null where the list has none.
inline Export listedKernel(const std::string& group, int size)
{
    for (const Export& e : exports())
        if (e.size == size && group == e.group && group != e.name)
            return e;
    return {"", size, "", nullptr};
}

// Bad flag values: whole values other than 1, 2, 4, 8, including would-be
// bit-mask combinations.
inline constexpr int kBadFlags[] = {0, 3, 5, 6, 7, 9, 10, 12, 16, 264, -1, 2147483647};
inline constexpr int kGoodFlags[] = {1, 2, 4, 8};

// Byte offsets from a 16-byte boundary that the alignment tests use.
inline constexpr int kOffsets[] = {0, 4, 8, 1, 2, 3};

// `count` elements of T placed `offset` bytes past a 32-byte boundary
// between kGuard guard bytes on either side; all of it holds `fill` at first.
template <class T>
class OffsetArray {
public:
    static constexpr std::size_t kGuard = 256;
    OffsetArray(std::size_t count, int offset, unsigned char fill = 0)
        : count_(count), storage_(count * sizeof(T) + offset + 2 * kGuard + 32, fill)
    {
        auto base = reinterpret_cast<std::uintptr_t>(storage_.data()) + kGuard;
        base = (base + 31) & ~std::uintptr_t{31};
        data_ = reinterpret_cast<unsigned char*>(base) + offset;
    }
    T* get() { return reinterpret_cast<T*>(data_); }
    std::size_t bytes() const { return count_ * sizeof(T); }
    void copyFrom(const void* src) { std::memcpy(data_, src, bytes()); }
    std::vector<unsigned char> snapshot(std::size_t extra = 0) const
    {
        return std::vector<unsigned char>(data_, data_ + bytes() + extra);
    }
    // Every byte, the guards' included.
    const std::vector<unsigned char>& all() const { return storage_; }
    // The first byte outside the first `bytes` of the array that differs
    // from `before` (all() at an earlier time), as an offset from the
    // array; none if every one is the same.
    std::optional<long> changedOutside(const std::vector<unsigned char>& before, std::size_t bytes) const
    {
        const auto from = static_cast<std::size_t>(data_ - storage_.data());
        for (std::size_t i = 0; i < before.size(); ++i)
            if ((i < from || i >= from + bytes) && storage_[i] != before[i])
                return static_cast<long>(i) - static_cast<long>(from);
        return std::nullopt;
    }

private:
    std::size_t count_;
    std::vector<unsigned char> storage_;
    unsigned char* data_;
};

// The kernels of a list that a test applies to.
template <class Kernel, class Applies>
std::vector<Kernel> kernelsWhere(std::vector<Kernel> kernels, Applies applies)
{
    std::erase_if(kernels, [&](const Kernel& k) { return !applies(k); });
    return kernels;
}

// Names a parameterised test by its kernel's label().
struct ByLabel {
    template <class Info>
    std::string operator()(const Info& info) const
    {
        return label(info.param);
    }
};

// Whether `work(thread)` in four threads at once gives in each the result
// of a single run on its own.
template <class Work>
bool threadsGiveTheResultOfOne(Work work)
{
    const auto alone = work(0);
    std::vector<std::remove_const_t<decltype(alone)>> results(4);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&results, &work, t] { results[t] = work(t); });
    for (std::thread& t : threads)
        t.join();
    return std::ranges::all_of(results, [&alone](const auto& result) { return result == alone; });
}

template <class T>
bool sameBits(const T* a, const T* b, std::size_t count)
{
    return std::memcmp(a, b, count * sizeof(T)) == 0;
}

template <class T>
std::vector<T> randomReals(std::size_t count, unsigned seed, T lo = -1, T hi = 1)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> dist(lo, hi);
    std::vector<T> v(count);
    for (T& x : v)
        x = static_cast<T>(dist(rng));
    return v;
}

// Calls `fn`, a kernel or dispatcher on arrays of T32 or (is64) T64, on raw
// arrays.
template <class T32, class T64, class... Args>
TvkStatus callAs(bool is64, void* fn, const void* src, void* dst, Args... args)
{
    if (is64)
        return reinterpret_cast<TvkStatus (*)(const T64*, T64*, Args...)>(fn)(static_cast<const T64*>(src),
                                                                              static_cast<T64*>(dst), args...);
    return reinterpret_cast<TvkStatus (*)(const T32*, T32*, Args...)>(fn)(static_cast<const T32*>(src),
                                                                          static_cast<T32*>(dst), args...);
}

// Number i of an array of a kernel's element type.
template <class Kernel>
long double numberAt(const Kernel& k, const void* data, int i)
{
    return k.is64() ? static_cast<const double*>(data)[i] : static_cast<const float*>(data)[i];
}

template <class Kernel>
void setNumber(const Kernel& k, void* data, int i, long double v)
{
    if (k.is64())
        static_cast<double*>(data)[i] = static_cast<double>(v);
    else
        static_cast<float*>(data)[i] = static_cast<float>(v);
}

// The factor a flag picks: 1/N correctly rounded in the element type (where
// the kernel divides by N on that flag), 1/sqrt(N) as the binary64 quotient
// 1.0/sqrt(N) in binary64 and as the nearest binary32 in binary32, else 1.
inline double scaleFactor(bool is64, int n, int flag, bool dividesByN)
{
    if (flag == ScaleDivBySqrtN)
        return is64 ? 1.0 / std::sqrt(static_cast<double>(n))
                    : static_cast<float>(1.0L / std::sqrt(static_cast<long double>(n)));
    if (dividesByN)
        return is64 ? 1.0 / n : 1.0f / static_cast<float>(n);
    return 1.0;
}

// The numbers in an array of a kernel's element type, and such an array
// of numbers.
template <class Kernel>
std::vector<long double> numbersOf(const Kernel& k, const std::vector<unsigned char>& bytes)
{
    std::vector<long double> v(bytes.size() / k.realBytes());
    for (size_t i = 0; i < v.size(); ++i)
        v[i] = numberAt(k, bytes.data(), i);
    return v;
}

template <class Kernel, class Number>
std::vector<unsigned char> bytesOf(const Kernel& k, const std::vector<Number>& v)
{
    std::vector<unsigned char> bytes(v.size() * k.realBytes());
    for (size_t i = 0; i < v.size(); ++i)
        setNumber(k, bytes.data(), i, v[i]);
    return bytes;
}

// Random numbers in (-1, 1), or one value, in every input cell of a kernel.
template <class Kernel>
std::vector<unsigned char> randomInput(const Kernel& k, unsigned seed)
{
    return bytesOf(k, randomReals<double>(k.inCells(), seed));
}

template <class Kernel>
std::vector<unsigned char> filledInput(const Kernel& k, long double value)
{
    return bytesOf(k, std::vector<long double>(k.inCells(), value));
}

// The output cells of an out-of-place call on 16-byte aligned arrays. A
// call that fails (the call-frame checks report its status) leaves NaN
// bytes, 0xFF, which no value check accepts.
template <class Kernel>
std::vector<unsigned char> runKernel(const Kernel& k, const std::vector<unsigned char>& input, int flag)
{
    OffsetArray<unsigned char> src(input.size(), 0), dst(k.outCells() * k.realBytes(), 0, 0xFF);
    src.copyFrom(input.data());
    k.run(src.get(), dst.get(), flag);
    return dst.snapshot();
}

// The angle 2 pi j/n in long double.
inline long double turn(int n, int j) { return 2 * std::numbers::pi_v<long double> * (j % n) / n; }

// Direct DFT in long double, the accuracy oracle.
inline std::vector<std::complex<long double>> directDft(const std::vector<std::complex<long double>>& x, bool inverse)
{
    const int n = static_cast<int>(x.size());
    std::vector<std::complex<long double>> X(n);
    for (int k = 0; k < n; ++k)
        for (int j = 0; j < n; ++j)
            X[k] += x[j] * std::polar(1.0L, (inverse ? 1 : -1) * turn(n, j * k));
    return X;
}

} // namespace tvktest
