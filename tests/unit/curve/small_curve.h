#pragma once

#include <compare>
#include <cstddef>
#include <ostream>
#include <vector>

// Curves y^2 + xy = x^3 + a*x^2 + b over fields of a few dozen elements, by naive means: division
// by trial, points by trial, multiples by repeated addition. The judge of the core's group law.

struct SmallPoint {
    unsigned x = 0;
    unsigned y = 0;
    bool infinity = false;

    auto operator<=>(const SmallPoint&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const SmallPoint& point);

class SmallCurve {
public:
    /// Over the field of 2^degree elements with the least irreducible polynomial.
    SmallCurve(unsigned degree, unsigned a, unsigned b);

    unsigned degree() const { return degree_; }
    unsigned polynomial() const { return polynomial_; }
    unsigned a() const { return a_; }

    /// All of them, infinity first.
    std::vector<SmallPoint> points() const;

    bool isOnCurve(const SmallPoint& point) const;
    static SmallPoint negative(const SmallPoint& P);
    SmallPoint add(const SmallPoint& P, const SmallPoint& Q) const;

private:
    unsigned multiply(unsigned p, unsigned q) const;
    unsigned divide(unsigned p, unsigned q) const;

    unsigned degree_;
    unsigned polynomial_;
    unsigned a_;
    unsigned b_;
};

/// The points of odd order of a curve, as indices with a table of their sums.
class OddSubgroup {
public:
    explicit OddSubgroup(const SmallCurve& curve);

    std::size_t order() const { return points_.size(); }
    /// Index 0 is infinity.
    const SmallPoint& point(std::size_t index) const { return points_.at(index); }
    std::size_t sum(std::size_t i, std::size_t j) const { return sums_.at(order() * i + j); }
    std::size_t multiple(unsigned factor, std::size_t i) const;
    /// The index of a point whose multiples are all others; 0 when there is none.
    std::size_t generator() const;

private:
    std::vector<SmallPoint> points_;
    std::vector<std::size_t> sums_;
};

/// Over the field of 2^degree elements, for some values of a: the curve of the largest odd order.
std::vector<SmallCurve> curvesOfLargeOddOrder(unsigned degree);

/// The first curve over that field whose points of odd order are `order` in number.
SmallCurve curveOfOddOrder(unsigned degree, std::size_t order);
