#include "tests/faults/project_model.h"

#include <optional>

#include "tests/support/big_number.h"
#include "tests/support/libcrypto_curve.h"

namespace {

constexpr std::uint64_t longestKeyAttribute = 296;

std::uint64_t read32(const Bytes& bytes, std::size_t position) {
    std::uint64_t value = 0;
    for (std::size_t i = 4; i-- > 0;) {
        value = value << 8 | bytes.at(position + i);
    }
    return value;
}

/// The value with zeros behind it; nothing when it is missing or too long to be read.
std::optional<Bytes> keyValue(const AttributeValues& attributes, std::uint32_t id) {
    const auto found = attributes.find(id);
    if (found == attributes.end() || found->second.size() > longestKeyAttribute) {
        return std::nullopt;
    }
    Bytes value = found->second;
    value.resize(longestKeyAttribute);
    return value;
}

/// A coordinate of the field's degree, with all bits of its words.
std::optional<BigNumber> coordinate(const AttributeValues& attributes, std::uint32_t id) {
    constexpr std::size_t wordsOffset = 8;
    constexpr std::size_t wordsSize = 24;
    const std::optional<Bytes> value = keyValue(attributes, id);
    if (!value.has_value() || read32(*value, 0) != curveDegree) {
        return std::nullopt;
    }
    const auto words = value->begin() + wordsOffset;
    return BigNumber::fromBytes(Bytes(words, words + wordsSize));
}

/// A scalar that counts as one: with a limb that is not zero, or with two limbs and more.
std::optional<BigNumber> scalar(const AttributeValues& attributes) {
    constexpr std::uint64_t longestScalar = 320;
    constexpr std::uint64_t limbBits = 64;
    const std::optional<Bytes> value = keyValue(attributes, 74);
    if (!value.has_value()) {
        return std::nullopt;
    }
    const std::uint64_t bits = read32(*value, 0) & 0x7FFFFFFF;
    if (bits == 0 || bits > longestScalar) {
        return std::nullopt;
    }
    const auto magnitude = value->begin() + 4;
    const BigNumber number = BigNumber::fromBytes(
        Bytes(magnitude, magnitude + static_cast<std::ptrdiff_t>((bits + 7) / 8)));
    return number.isZero() && bits <= limbBits ? std::nullopt : std::optional(number);
}

bool isSound(const AffinePoint& point) {
    static const CurveJudge curve;
    return point.x.bitLength() <= curveDegree && point.y.bitLength() <= curveDegree &&
           curve.isOnCurve(point) && curve.multiply(curve.order(), point).infinity;
}

}  // namespace

ModelKey readKey(const AttributeValues& attributes) {
    ModelKey read;
    std::vector<BigNumber> coordinates;
    for (const std::uint32_t id : {72U, 73U, 75U, 76U}) {
        if (const std::optional<BigNumber> value = coordinate(attributes, id)) {
            coordinates.push_back(*value);
        }
    }
    if (const std::optional<BigNumber> number = scalar(attributes)) {
        read.hasScalar = true;
        read.key.scalar = number->toHexadecimal();
    }
    if (coordinates.size() == 4) {
        read.hasPoints = true;
        read.key.baseX = coordinates[0].toHexadecimal();
        read.key.baseY = coordinates[1].toHexadecimal();
        read.key.publicX = coordinates[2].toHexadecimal();
        read.key.publicY = coordinates[3].toHexadecimal();
        read.arePointsSound = isSound({.x = coordinates[0], .y = coordinates[1]}) &&
                              isSound({.x = coordinates[2], .y = coordinates[3]});
    }
    return read;
}
