#include "tests/program/damaged_project.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "tests/support/random_operands.h"

namespace {

constexpr std::array<std::uint32_t, 12> oddNumbers = {0,   1,   2,   4,   6,          24,
                                                      162, 164, 512, 513, 0x80000000, 0xFFFFFFFF};

std::uint32_t oddNumber() {
    return oddNumbers[randomBelow(oddNumbers.size())];
}

Bytes& anyValue(AttributeValues& attributes) {
    return std::next(attributes.begin(),
                     static_cast<std::ptrdiff_t>(randomBelow(attributes.size())))
        ->second;
}

/// A value that is another number, states another size, or has another.
void damageValue(Bytes& value) {
    switch (randomBelow(5)) {
        case 0: {
            const std::uint32_t bits = oddNumber();
            for (std::size_t i = 0; i < 4; ++i) {
                value[i] = static_cast<std::uint8_t>(bits >> 8 * i);
            }
            break;
        }
        case 1:
            value.resize(1 + randomBelow(value.size()));
            break;
        case 2:
            value.resize(295 + randomBelow(4));
            break;
        case 3:
            std::fill(value.begin() + 8, value.end(), std::uint8_t{0});
            break;
        default:
            value[4 + randomBelow(value.size() - 4)] ^= 1;
    }
}

Bytes oddScalar() {
    const std::vector<Bytes> scalars = {integerValue(0, {}),
                                        integerValue(64, Bytes(8)),
                                        integerValue(65, Bytes(9)),
                                        integerValue(320, Bytes(40, 1)),
                                        integerValue(321, Bytes(41, 1)),
                                        integerValue(0x800000A3, Bytes(21, 1)),
                                        {0},
                                        integerValue("1")};
    return scalars[randomBelow(scalars.size())];
}

/// An image whose directory or header says something else; its digest fits.
void damageImage(ProjectImage& image) {
    ImageEntry& entry = image.directory[randomBelow(image.directory.size())];
    switch (randomBelow(8)) {
        case 0:
            entry.size = oddNumber();
            break;
        case 1:
            entry.offset = oddNumber();
            break;
        case 2:
            entry.id = image.directory[randomBelow(image.directory.size())].id;
            break;
        case 3:
            image.entryCount = static_cast<std::uint32_t>(randomBelow(9));
            break;
        case 4:
            image.entryCount = oddNumber();
            break;
        case 5:
            image.magic = "VLT1";
            break;
        case 6:
            image.bodyDigest = randomBytes(16);
            break;
        default:
            image.values.resize(randomBelow(image.values.size()));
    }
}

}  // namespace

Bytes damagedProject(const AttributeValues& attributes) {
    AttributeValues values = attributes;
    ProjectImage image = projectImage(values);
    switch (randomBelow(8)) {
        case 0:
            values.erase(72 + static_cast<std::uint32_t>(randomBelow(5)));
            return projectBytes(values);
        case 1:
        case 2:
            damageValue(anyValue(values));
            return projectBytes(values);
        case 3:
            values[74] = oddScalar();
            return projectBytes(values);
        case 4:
        case 5:
            damageImage(image);
            return image.bytes();
        case 6: {
            Bytes bytes = image.bytes();
            bytes.resize(randomBelow(bytes.size() + 2));
            return bytes;
        }
        default: {
            Bytes bytes = image.bytes();
            bytes[randomBelow(randomBelow(2) == 0 ? 24 : bytes.size())] ^=
                static_cast<std::uint8_t>(1 + randomBelow(255));
            return bytes;
        }
    }
}
