#include <array>
#include <cstddef>

#include "curve/field.h"
#include "curve/point.h"

namespace core {

namespace {

constexpr std::size_t windowSize = 4;

/// Points with coordinates of their own, held by a scope.
template <std::size_t size>
class PointTable {
public:
    explicit PointTable(std::uint64_t degree) {
        for (CurvePoint& point : points_) {
            pointNew(degree, point);
        }
    }
    ~PointTable() {
        for (CurvePoint& point : points_) {
            pointRelease(point);
        }
    }
    PointTable(const PointTable&) = delete;
    PointTable& operator=(const PointTable&) = delete;

    CurvePoint& operator[](std::size_t index) { return points_[index]; }

private:
    std::array<CurvePoint, size> points_;
};

/// row[i] := i * P.
void fillMultiples(PointTable<windowSize>& row, const CurvePoint& P, const CurveCoefficients& curve,
                   const FieldElement& f) {
    row[0].flags |= pointInfinity;
    for (std::size_t i = 1; i < windowSize; ++i) {
        pointAdd(row[i - 1], P, curve, row[i], f);
    }
}

}  // namespace

void pointMultiplyTwin(const CurvePoint& P, const CurvePoint& Q, const FieldElement& u1,
                       const FieldElement& u2, CurvePoint& out, const CurveCoefficients& curve,
                       const FieldElement& f) {
    const std::uint64_t degree = P.x->degree;
    PointTable<windowSize> multiplesOfP(degree);
    PointTable<windowSize> multiplesOfQ(degree);
    fillMultiples(multiplesOfP, P, curve, f);
    fillMultiples(multiplesOfQ, Q, curve, f);
    PointTable<windowSize * windowSize> sums(degree);
    for (std::size_t i = 0; i < windowSize; ++i) {
        for (std::size_t j = 0; j < windowSize; ++j) {
            pointAdd(multiplesOfP[i], multiplesOfQ[j], curve, sums[windowSize * i + j], f);
        }
    }

    PointTemporary doubled(degree);
    PointTemporary quadrupled(degree);
    out.flags |= pointInfinity;
    constexpr std::uint64_t bitsInHalfWord = 32;
    const std::uint64_t halfWords = (u1.degree + bitsInHalfWord - 1) / bitsInHalfWord;
    for (std::uint64_t bit = halfWords * bitsInHalfWord; bit > 0;) {
        bit -= 2;
        pointDouble(out, curve, *doubled, f);
        pointDouble(*doubled, curve, *quadrupled, f);
        const std::size_t i = u1.words[bit / 64] >> bit % 64 & 3;
        const std::size_t j = u2.words[bit / 64] >> bit % 64 & 3;
        pointAdd(*quadrupled, sums[windowSize * i + j], curve, out, f);
    }
}

}  // namespace core
