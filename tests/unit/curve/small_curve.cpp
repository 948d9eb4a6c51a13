#include "tests/unit/curve/small_curve.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

namespace {

/// The remainder of polynomials.
unsigned remainder(unsigned dividend, unsigned divisor) {
    while (std::bit_width(dividend) >= std::bit_width(divisor)) {
        dividend ^= divisor << (std::bit_width(dividend) - std::bit_width(divisor));
    }
    return dividend;
}

bool isIrreducible(unsigned polynomial) {
    for (unsigned divisor = 2; 2 * std::bit_width(divisor) <= std::bit_width(polynomial) + 1;
         ++divisor) {
        if (remainder(polynomial, divisor) == 0) {
            return false;
        }
    }
    return true;
}

unsigned leastIrreducible(unsigned degree) {
    unsigned polynomial = 1U << degree;
    while (!isIrreducible(polynomial)) {
        ++polynomial;
    }
    return polynomial;
}

std::size_t oddPart(std::size_t number) {
    return number >> std::countr_zero(number);
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const SmallPoint& point) {
    if (point.infinity) {
        return stream << "infinity";
    }
    return stream << "(" << point.x << ", " << point.y << ")";
}

SmallCurve::SmallCurve(unsigned degree, unsigned a, unsigned b)
    : degree_(degree), polynomial_(leastIrreducible(degree)), a_(a), b_(b) {}

std::vector<SmallPoint> SmallCurve::points() const {
    std::vector<SmallPoint> found = {{.x = 0, .y = 0, .infinity = true}};
    for (unsigned x = 0; x < 1U << degree_; ++x) {
        for (unsigned y = 0; y < 1U << degree_; ++y) {
            if (isOnCurve({.x = x, .y = y})) {
                found.push_back({.x = x, .y = y});
            }
        }
    }
    return found;
}

bool SmallCurve::isOnCurve(const SmallPoint& point) const {
    const unsigned x = point.x;
    const unsigned y = point.y;
    const unsigned left = multiply(y, y) ^ multiply(x, y);
    return point.infinity || left == (multiply(multiply(x, x), x ^ a_) ^ b_);
}

SmallPoint SmallCurve::negative(const SmallPoint& P) {
    return P.infinity ? P : SmallPoint{.x = P.x, .y = P.x ^ P.y};
}

SmallPoint SmallCurve::add(const SmallPoint& P, const SmallPoint& Q) const {
    if (P.infinity || Q.infinity) {
        return P.infinity ? Q : P;
    }
    if (P == negative(Q)) {
        return {.x = 0, .y = 0, .infinity = true};
    }
    // The line y = slope * x + c through P and Q meets the curve where
    // x^3 + (slope^2 + slope + a) * x^2 + ... = 0, whose roots add up to the factor of x^2.
    const unsigned slope = P == Q ? P.x ^ divide(P.y, P.x) : divide(P.y ^ Q.y, P.x ^ Q.x);
    const unsigned x = multiply(slope, slope) ^ slope ^ a_ ^ P.x ^ Q.x;
    const unsigned y = P.y ^ multiply(slope, P.x ^ x);
    return negative({.x = x, .y = y});
}

unsigned SmallCurve::multiply(unsigned p, unsigned q) const {
    unsigned product = 0;
    for (unsigned bit = 0; bit < degree_; ++bit) {
        product ^= (q >> bit & 1) * (p << bit);
    }
    return remainder(product, polynomial_);
}

unsigned SmallCurve::divide(unsigned p, unsigned q) const {
    unsigned quotient = 0;
    while (multiply(quotient, q) != p) {
        ++quotient;
    }
    return quotient;
}

OddSubgroup::OddSubgroup(const SmallCurve& curve) {
    const std::vector<SmallPoint> all = curve.points();
    const std::size_t order = oddPart(all.size());
    for (const SmallPoint& point : all) {
        SmallPoint multiple = point;
        for (std::size_t i = 1; i < order; ++i) {
            multiple = curve.add(multiple, point);
        }
        if (multiple.infinity) {
            points_.push_back(point);
        }
    }
    if (points_.size() != order) {
        throw std::logic_error("the odd subgroup has another order");
    }
    for (const SmallPoint& P : points_) {
        for (const SmallPoint& Q : points_) {
            const auto sum = std::find(points_.begin(), points_.end(), curve.add(P, Q));
            if (sum == points_.end()) {
                throw std::logic_error("the odd subgroup is not closed");
            }
            sums_.push_back(static_cast<std::size_t>(sum - points_.begin()));
        }
    }
}

std::size_t OddSubgroup::multiple(unsigned factor, std::size_t i) const {
    std::size_t result = 0;
    for (unsigned count = 0; count < factor; ++count) {
        result = sum(result, i);
    }
    return result;
}

std::size_t OddSubgroup::generator() const {
    for (std::size_t i = 1; i < order(); ++i) {
        std::size_t steps = 1;
        for (std::size_t multiple = i; multiple != 0; multiple = sum(multiple, i)) {
            ++steps;
        }
        if (steps == order()) {
            return i;
        }
    }
    return 0;
}

std::vector<SmallCurve> curvesOfLargeOddOrder(unsigned degree) {
    const unsigned size = 1U << degree;
    std::vector<SmallCurve> curves;
    for (const unsigned a : {0U, 1U, size - 1}) {
        unsigned best = 1;
        std::size_t largest = 0;
        for (unsigned b = 1; b < size; ++b) {
            const std::size_t order = oddPart(SmallCurve(degree, a, b).points().size());
            if (order > largest) {
                largest = order;
                best = b;
            }
        }
        curves.emplace_back(degree, a, best);
    }
    return curves;
}

SmallCurve curveOfOddOrder(unsigned degree, std::size_t order) {
    for (unsigned a = 0; a <= 1; ++a) {
        for (unsigned b = 1; b < 1U << degree; ++b) {
            const SmallCurve curve(degree, a, b);
            if (oddPart(curve.points().size()) == order) {
                return curve;
            }
        }
    }
    throw std::logic_error("no curve of that order");
}
