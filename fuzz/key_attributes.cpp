// Property: whatever bytes stand under the ids of a key, or none, the key record holds what a slow
// reader takes from them, with an attribute that is too long, or claims more bits than there is
// room for, counted as absent and told of. Its two tests and the copies of its values follow from
// that, for each choice of outputs, and what is not copied stays as it was.
//
// Input: a byte for the choice of outputs, then for each id from 72 to 76 a byte for the length of
// the value (255: absent) and the value; lengths of 250 and more stand for those around 296 bytes.

#include <algorithm>
#include <array>
#include <optional>

#include "fuzz/input_reader.h"
#include "fuzz/property.h"
#include "project/project_key_record.h"
#include "tests/support/big_number.h"

namespace {

using Value = std::optional<std::vector<std::uint8_t>>;

constexpr std::size_t longestValue = 296;
constexpr std::uint64_t pattern = 0x5A5A5A5A5A5A5A5A;

Value valueFrom(InputReader& input) {
    const std::size_t head = input.byte();
    if (head == 255) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> value = input.bytes(head);
    if (head >= 250) {
        value.resize(longestValue - 2 + (head - 250));
    }
    return value;
}

/// The value with zero bytes behind it as far as the reader may look.
std::optional<std::vector<std::uint8_t>> readable(Value value) {
    if (!value.has_value() || value->size() > longestValue) {
        return std::nullopt;
    }
    value->resize(longestValue);
    return value;
}

std::uint32_t bitCount(const std::vector<std::uint8_t>& value) {
    return static_cast<std::uint32_t>(value[0] + 256U * value[1] + 65536U * value[2]) +
           16777216U * value[3];
}

/// The element that a value stands for: the degree 0 of an absent one included.
core::FieldElement expectedElement(const Value& value) {
    core::FieldElement e{.capacity = 64};
    const auto bytes = readable(value);
    if (!bytes.has_value() || bitCount(*bytes) > 512) {
        return e;
    }
    e.degree = bitCount(*bytes);
    for (std::size_t i = 0; i < (e.degree + 31) / 32 * 4; ++i) {
        e.words[i / 8] |= std::uint64_t{(*bytes)[8 + i]} << 8 * (i % 8);
    }
    return e;
}

/// The scalar that a value stands for; without a value, one of no limb.
core::CoreInteger expectedScalar(const Value& value) {
    core::CoreInteger scalar;
    const auto bytes = readable(value);
    if (!bytes.has_value() || bitCount(*bytes) % 0x80000000 > 320) {
        return scalar;
    }
    const std::uint32_t count = (bitCount(*bytes) % 0x80000000 + 7) / 8;
    scalar.lengthAndSign = (count + 7) / 8;
    for (std::size_t i = 0; i < count; ++i) {
        scalar.limbs[i / 8] |= std::uint64_t{(*bytes)[4 + i]} << 8 * (i % 8);
    }
    return scalar;
}

/// What the loading of a value meets.
KeyFault expectedFault(const Value& value, bool isScalar) {
    if (!value.has_value()) {
        return KeyFault::absent;
    }
    const auto bytes = readable(value);
    if (!bytes.has_value()) {
        return KeyFault::tooLarge;
    }
    const bool fits = isScalar ? bitCount(*bytes) % 0x80000000 <= 320 : bitCount(*bytes) <= 512;
    return fits ? KeyFault::none : KeyFault::tooManyBits;
}

bool same(const core::FieldElement& a, const core::FieldElement& b) {
    return a.degree == b.degree && a.capacity == b.capacity && a.words == b.words;
}

bool same(const core::CoreInteger& a, const core::CoreInteger& b) {
    return a.lengthAndSign == b.lengthAndSign && a.capacity == b.capacity && a.limbs == b.limbs;
}

core::FieldElement usedElement() {
    core::FieldElement e{.degree = 5, .capacity = 112, .words = {}};
    e.words.fill(pattern);
    return e;
}

/// What an output of this kind holds after `source` was copied to it.
core::FieldElement copied(const core::FieldElement& source) {
    core::FieldElement e = usedElement();
    e.degree = source.degree;
    std::copy_n(source.words.begin(), 8, e.words.begin());
    return e;
}

struct Expected {
    std::array<core::FieldElement, 4> elements;
    core::CoreInteger scalar;

    bool hasPublicPoint() const {
        return elements[2].degree != 0 && elements[2].degree == elements[3].degree;
    }
    bool hasPrivateScalar() const {
        return scalar.lengthAndSign > 1 || (scalar.lengthAndSign == 1 && scalar.limbs[0] != 0);
    }
};

void checkCopies(const ProjectKeyRecord& record, const Expected& expected, unsigned outputs) {
    std::array<core::FieldElement, 4> elements;
    elements.fill(usedElement());
    const core::CoreInteger before{.lengthAndSign = 0, .capacity = 15, .limbs = {}};
    core::CoreInteger scalar = before;
    const auto wanted = [&](std::size_t i) {
        return (outputs >> i & 1) != 0 ? &elements.at(i) : nullptr;
    };
    const bool scalarWanted = (outputs & 16) != 0;
    record.copyKeyMaterial(wanted(0), wanted(1), wanted(2), wanted(3),
                           scalarWanted ? &scalar : nullptr);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const bool written = expected.hasPublicPoint() && wanted(i) != nullptr;
        require(same(elements.at(i), written ? copied(expected.elements.at(i)) : usedElement()),
                "an element is copied, or stays as it was");
    }
    core::CoreInteger after = before;
    if (scalarWanted && expected.hasPrivateScalar()) {
        after = expected.scalar;
        after.capacity = before.capacity;
    }
    require(same(scalar, after), "the scalar is copied, or stays as it was");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const unsigned outputs = input.byte();
    ProjectFile file;
    std::array<Value, 5> values;
    for (std::uint32_t i = 0; i < values.size(); ++i) {
        values.at(i) = valueFrom(input);
        if (values.at(i).has_value()) {
            file.insertAttribute(72 + i, *values.at(i));
        }
    }
    const Expected expected = {.elements = {expectedElement(values[0]), expectedElement(values[1]),
                                            expectedElement(values[3]), expectedElement(values[4])},
                               .scalar = expectedScalar(values[2])};

    ProjectKeyRecord record;
    record.basePointX = usedElement();
    record.privateScalar = core::integerOne;
    record.loadFromAttributes(file);
    require(same(record.basePointX, expected.elements[0]) &&
                same(record.basePointY, expected.elements[1]) &&
                same(record.publicPointX, expected.elements[2]) &&
                same(record.publicPointY, expected.elements[3]),
            "the elements are the slow reader's");
    require(same(record.privateScalar.value_or(core::CoreInteger()), expected.scalar),
            "the scalar is the slow reader's");
    for (std::uint32_t i = 0; i < values.size(); ++i) {
        require(record.loadingOf(72 + i).fault == expectedFault(values.at(i), i == 2),
                "each attribute meets what the slow reader finds");
    }
    require(record.hasPublicPoint() == expected.hasPublicPoint(), "the public point is told of");
    require(record.hasPrivateScalar() == expected.hasPrivateScalar(), "the scalar is told of");
    checkCopies(record, expected, outputs);
    return 0;
}
