#include "core/interpret.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace kernelgen {

namespace {

// The lanes of one value, each as the bits of its element type (binary32
// lanes in the low 32 bits).
using Lanes = std::array<std::uint64_t, 16>;

std::uint64_t bitsOf(float x) { return std::bit_cast<std::uint32_t>(x); }
std::uint64_t bitsOf(double x) { return std::bit_cast<std::uint64_t>(x); }

template <class Real>
Real numberOf(std::uint64_t bits)
{
    if constexpr (sizeof(Real) == 4)
        return std::bit_cast<float>(static_cast<std::uint32_t>(bits));
    else
        return std::bit_cast<double>(bits);
}

template <class Real>
std::uint64_t arithmetic(Op op, std::uint64_t a, std::uint64_t b)
{
    const Real x = numberOf<Real>(a), y = numberOf<Real>(b);
    switch (op) {
    case Op::Add: return bitsOf(x + y);
    case Op::Sub: return bitsOf(x - y);
    case Op::Mul: return bitsOf(x * y);
    case Op::Neg: return bitsOf(-x);
    default: throw std::logic_error("not an arithmetic operation");
    }
}

std::uint64_t rounded(Kind kind, Exact x)
{
    return isSingle(kind) ? bitsOf(roundToFloat(x)) : bitsOf(roundToDouble(x));
}

class Run {
public:
    Run(const Graph& g, std::span<const std::byte> src, std::span<std::byte> dst, double scale)
        : g_(g), src_(src), dst_(dst), scale_(scale), values_(g.nodes().size())
    {
    }

    void all()
    {
        const std::vector<bool> live = g_.liveNodes();
        for (size_t i = 0; i < g_.nodes().size(); ++i)
            if (live[i])
                values_[i] = node(g_.nodes()[i]);
    }

private:
    static size_t numberBytes(Kind kind) { return isSingle(kind) ? 4 : 8; }

    // The byte position of number `offset` of `kind` in an array of `bytes`.
    static size_t position(Kind kind, int offset, size_t bytes)
    {
        const size_t size = numberBytes(kind), at = static_cast<size_t>(offset) * size;
        if (offset < 0 || at + size > bytes)
            throw std::out_of_range("a move outside the arrays");
        return at;
    }

    std::uint64_t read(Kind kind, int offset) const
    {
        const std::byte* p = src_.data() + position(kind, offset, src_.size());
        if (isSingle(kind)) {
            float x;
            std::memcpy(&x, p, sizeof x);
            return bitsOf(x);
        }
        double x;
        std::memcpy(&x, p, sizeof x);
        return bitsOf(x);
    }

    void write(Kind kind, int offset, std::uint64_t bits)
    {
        std::byte* p = dst_.data() + position(kind, offset, dst_.size());
        if (isSingle(kind)) {
            const float x = numberOf<float>(bits);
            std::memcpy(p, &x, sizeof x);
        } else {
            const double x = numberOf<double>(bits);
            std::memcpy(p, &x, sizeof x);
        }
    }

    // A vector's lanes to or from consecutive numbers; a 256-bit vector
    // moved from two places moves each half from its own.
    Lanes load(const Node& n) const
    {
        Lanes v{};
        const int lanes = laneCount(n.kind), half = lanes / 2;
        for (int l = 0; l < lanes; ++l)
            v[l] = n.offset2 >= 0 && l >= half ? read(n.kind, n.offset2 + l - half) : read(n.kind, n.offset + l);
        return v;
    }

    void store(const Node& n, const Lanes& v)
    {
        const int lanes = laneCount(n.kind), half = lanes / 2;
        for (int l = 0; l < lanes; ++l) {
            if (n.offset2 >= 0 && l >= half)
                write(n.kind, n.offset2 + l - half, v[l]);
            else
                write(n.kind, n.offset + l, v[l]);
        }
    }

    Lanes shuffle(const Node& n) const
    {
        Lanes v{};
        for (int l = 0; l < laneCount(n.kind); ++l) {
            const LaneSource from = shuffleSource(n.pattern, n.kind, l);
            if (from.operand == 1 && n.b < 0)
                throw std::logic_error("a two-vector lane pattern with one operand");
            v[l] = values_[from.operand == 0 ? n.a : n.b][from.lane];
        }
        return v;
    }

    Lanes node(const Node& n)
    {
        Lanes v{};
        const int lanes = laneCount(n.kind);
        switch (n.op) {
        case Op::Load: return load(n);
        case Op::LoadElement:
            v[0] = read(Kind::F32, n.offset);
            v[1] = read(Kind::F32, n.offset + 1);
            return v;
        case Op::Store: store(n, values_[n.a]); return v;
        case Op::StoreLowElement:
        case Op::StoreHighElement: {
            const int first = n.op == Op::StoreHighElement ? 2 : 0;
            write(Kind::F32, n.offset, values_[n.a][first]);
            write(Kind::F32, n.offset + 1, values_[n.a][first + 1]);
            return v;
        }
        case Op::Constant: {
            const ConstantDef& c = g_.constants()[n.constant];
            if (static_cast<int>(c.lanes.size()) != lanes)
                throw std::logic_error("constant " + c.name + " with another lane count than its node");
            for (int l = 0; l < lanes; ++l)
                v[l] = rounded(n.kind, c.lanes[l]);
            return v;
        }
        case Op::ScaleArg:
            v.fill(isSingle(n.kind) ? bitsOf(static_cast<float>(scale_)) : bitsOf(scale_));
            return v;
        case Op::Xor:
            for (int l = 0; l < lanes; ++l)
                v[l] = values_[n.a][l] ^ values_[n.b][l];
            return v;
        case Op::Widen:
            for (int l = 0; l < lanes; ++l)
                v[l] = bitsOf(static_cast<double>(numberOf<float>(values_[n.a][l])));
            return v;
        case Op::Narrow:
            for (int l = 0; l < lanes; ++l)
                v[l] = bitsOf(static_cast<float>(numberOf<double>(values_[n.a][l])));
            return v;
        case Op::Shuffle: return shuffle(n);
        default: break;
        }
        for (int l = 0; l < lanes; ++l) {
            const std::uint64_t b = n.b >= 0 ? values_[n.b][l] : 0;
            v[l] = isSingle(n.kind) ? arithmetic<float>(n.op, values_[n.a][l], b)
                                    : arithmetic<double>(n.op, values_[n.a][l], b);
        }
        return v;
    }

    const Graph& g_;
    std::span<const std::byte> src_;
    std::span<std::byte> dst_;
    double scale_;
    std::vector<Lanes> values_;
};

} // namespace

void interpret(const Graph& g, std::span<const std::byte> src, std::span<std::byte> dst, double scale)
{
    Run(g, src, dst, scale).all();
}

} // namespace kernelgen
