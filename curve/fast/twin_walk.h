#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "curve/fast/fast_field.h"
#include "curve/fast/fast_route.h"
#include "curve/fast/ladder.h"

namespace core {

/// The table and the walk of `pointMultiplyTwin` in other coordinates.
///
/// The points that it meets are multiples of two sound points. Among these the group law of
/// `pointAdd` is right where the two x differ, and where a point is added to infinity or to itself
/// in the same words. Where two summands have one x and are not the same words, the answer depends
/// on a rule on their top words (`pointCompare`), and so this gives up at every such pair but the
/// two doubles of the table. x = 0 and, behind the first summand, infinity cannot come up without
/// one. So what it does not give up is what the definition gives.
template <class Products>
class TwinWalk {
    using Field = FastField<Products>;

public:
    /// False when it gives up. `x` is then as it was.
    static bool multipleX(const Point163& P, const Point163& Q, const Words163& u1,
                          const Words163& u2, Words163& x) {
        Table table;
        table[perP] = P;
        table[perQ] = Q;
        for (const std::span<const Summands> step :
             {std::span<const Summands>(firstSums), std::span<const Summands>(secondSums),
              std::span<const Summands>(thirdSums)}) {
            if (!addSums(step, table)) {
                return false;
            }
        }
        Projective R;
        for (std::size_t bit = words163 * 64; bit > 0;) {
            bit -= 2;
            const std::size_t index =
                perP * (u1[bit / 64] >> bit % 64 & 3) + perQ * (u2[bit / 64] >> bit % 64 & 3);
            if (isZero163(R.Z)) {
                if (index != 0) {
                    R = {.X = table[index].x, .Y = table[index].y, .Z = {1}};
                }
                continue;
            }
            R = twice(twice(R));
            if (index != 0 && !addTo(R, table[index])) {
                return false;
            }
        }
        if (isZero163(R.Z)) {
            return false;
        }
        x = Field::product(R.X, Field::inverse(R.Z));
        return true;
    }

private:
    /// Entry perP * i + perQ * j is i * P + j * Q. Entry 0, infinity, is not read.
    static constexpr std::size_t perP = 4;
    static constexpr std::size_t perQ = 1;
    using Table = std::array<Point163, 16>;

    /// Two entries of the table, whose sum stands in the entry of the sum of their indices.
    struct Summands {
        std::size_t first;
        std::size_t second;
    };
    // In three steps, each of which shares one inversion: the sums that `pointMultiplyTwin` adds.
    static constexpr std::array<Summands, 3> firstSums = {{{4, 4}, {1, 1}, {4, 1}}};
    static constexpr std::array<Summands, 5> secondSums = {
        {{8, 4}, {2, 1}, {8, 1}, {4, 2}, {8, 2}}};
    static constexpr std::array<Summands, 5> thirdSums = {
        {{12, 1}, {12, 2}, {12, 3}, {4, 3}, {8, 3}}};

    static bool addSums(std::span<const Summands> sums, Table& table) {
        // 1 / d of each denominator d by the inverse of the product of all (P. L. Montgomery,
        // 1987).
        std::array<Words163, 5> denominators;
        std::array<Words163, 5> productsBefore;
        Words163 product = {1};
        for (std::size_t i = 0; i < sums.size(); ++i) {
            const auto [first, second] = sums[i];
            denominators[i] =
                first == second ? table[first].x : add163(table[first].x, table[second].x);
            productsBefore[i] = product;
            product = Field::product(product, denominators[i]);
        }
        if (isZero163(product)) {
            return false;
        }
        Words163 inverse = Field::inverse(product);
        for (std::size_t i = sums.size(); i-- > 0;) {
            const auto [first, second] = sums[i];
            table[first + second] = sumOf(table[first], table[second], first == second,
                                          Field::product(inverse, productsBefore[i]));
            inverse = Field::product(inverse, denominators[i]);
        }
        return true;
    }

    /// P + Q by the formulas of `pointAdd` and `pointDouble`, of which those of y are one.
    static Point163 sumOf(const Point163& P, const Point163& Q, bool doubling,
                          const Words163& inverse) {
        const Words163 lambda = doubling ? add163(Field::product(P.y, inverse), P.x)
                                         : Field::product(add163(P.y, Q.y), inverse);
        Words163 x = add163(Field::square(lambda), lambda);
        x[0] ^= 1;
        if (!doubling) {
            x = add163(x, add163(P.x, Q.x));
        }
        const Words163 y = add163(Field::product(lambda, add163(P.x, x)), add163(x, P.y));
        return {.x = x, .y = y};
    }

    /// The point (X / Z, Y / Z^2) (J. Lopez and R. Dahab, 1998); infinity where Z is 0.
    struct Projective {
        Words163 X{};
        Words163 Y{};
        Words163 Z{};
    };

    /// Algorithm 3.24 of the Guide, for a = 1.
    static Projective twice(const Projective& P) {
        const Words163 zSquared = Field::square(P.Z);
        const Words163 xSquared = Field::square(P.X);
        const Words163 bZ4 = Field::square(Field::product(rootOfB163, zSquared));
        const Words163 Z = Field::product(xSquared, zSquared);
        const Words163 X = add163(Field::square(xSquared), bZ4);
        const Words163 Y =
            Field::sumOfProducts(bZ4, Z, X, add163(add163(Z, Field::square(P.Y)), bZ4));
        return {.X = X, .Y = Y, .Z = Z};
    }

    /// P := P + Q by algorithm 3.25, for a = 1; false when both have one x.
    static bool addTo(Projective& P, const Point163& Q) {
        const Words163 A = add163(Field::product(Q.y, Field::square(P.Z)), P.Y);
        const Words163 B = add163(Field::product(Q.x, P.Z), P.X);
        if (isZero163(B)) {
            return false;
        }
        const Words163 C = Field::product(P.Z, B);
        const Words163 Z = Field::square(C);
        const Words163 D = Field::product(Q.x, Z);
        const Words163 X =
            add163(Field::square(A), Field::product(C, add163(add163(A, Field::square(B)), C)));
        const Words163 Y = Field::sumOfProducts(add163(D, X), add163(Field::product(A, C), Z),
                                                add163(Q.x, Q.y), Field::square(Z));
        P = {.X = X, .Y = Y, .Z = Z};
        return true;
    }
};

}  // namespace core
