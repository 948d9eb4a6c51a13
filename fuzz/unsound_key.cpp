// Property: whatever the four coordinates and the scalar of a project's key are, signing and
// verifying under it end. A signature that is made stands in two numbers below the order, and a
// signature under the sound key verifies under no other public point and base point.
//
// Input: a byte for what becomes of the sound key's coordinates, then 24 bytes for each of them,
// which are added to it bit by bit, and up to 40 for the scalar; none leave the sound key.

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "engine/sign.h"
#include "engine/signature_engine.h"
#include "engine/verify.h"
#include "fuzz/input_reader.h"
#include "fuzz/property.h"
#include "fuzz/signature_oracle.h"
#include "project/project_key_record.h"
#include "tests/support/field_judge.h"

namespace {

constexpr std::size_t coordinateSize = 24;

using Coordinates = std::array<Bytes, 4>;

Bytes coordinate(const std::string& digits) {
    Bytes bytes = littleEndianBytes(digits);
    bytes.resize(coordinateSize);
    return bytes;
}

const Coordinates& soundCoordinates() {
    static const ProjectKey& key = soundOracle().key();
    static const Coordinates coordinates = {coordinate(key.baseX), coordinate(key.baseY),
                                            coordinate(key.publicX), coordinate(key.publicY)};
    return coordinates;
}

/// One of the relations between coordinates that no single bit leads to.
void relate(Coordinates& coordinates, unsigned relation) {
    auto& [baseX, baseY, publicX, publicY] = coordinates;
    switch (relation) {
        case 1:
            publicX = baseX;
            break;
        case 2:
            publicX = baseX;
            publicY = baseY;
            break;
        case 3:
            std::swap(baseX, baseY);
            break;
        case 4:
            baseX.assign(coordinateSize, 0);
            break;
        case 5:
            publicX.assign(coordinateSize, 0);
            break;
        case 6:
            // The negative of the base point.
            publicX = baseX;
            std::transform(baseX.begin(), baseX.end(), baseY.begin(), publicY.begin(),
                           [](unsigned x, unsigned y) { return static_cast<std::uint8_t>(x ^ y); });
            break;
        case 7:
            for (Bytes& each : coordinates) {
                each.assign(coordinateSize, 0);
            }
            break;
        default:
            break;
    }
}

/// The elements of the field that they stand for, bits above the degree being reduced.
std::vector<BigNumber> elementsOf(const Coordinates& coordinates) {
    const FieldJudge field(curvePolynomial());
    std::vector<BigNumber> elements;
    for (const Bytes& each : coordinates) {
        elements.push_back(field.reduce(BigNumber::fromBytes(each)));
    }
    return elements;
}

/// The stored form under a bit count of 163.
Bytes storedElement(const Bytes& words) {
    Bytes value(8 + words.size());
    value[0] = 163;
    std::copy(words.begin(), words.end(), value.begin() + 8);
    return value;
}

ProjectFile projectOf(const Coordinates& coordinates, const Bytes& scalar) {
    ProjectFile project;
    project.insertAttribute(basePointXAttribute, storedElement(coordinates[0]));
    project.insertAttribute(basePointYAttribute, storedElement(coordinates[1]));
    project.insertAttribute(publicPointXAttribute, storedElement(coordinates[2]));
    project.insertAttribute(publicPointYAttribute, storedElement(coordinates[3]));
    project.insertAttribute(privateScalarAttribute,
                            integerValue(static_cast<std::uint32_t>(8 * scalar.size()), scalar));
    return project;
}

void checkSigning(const ProjectFile& project, const Bytes& message) {
    std::array<char, signatureBufferSize> text{};
    KeyReport key;
    const bool made = signWithRecord(project, message.data(),
                                     static_cast<std::uint32_t>(message.size()), text.data(), key);
    const auto numbers = referenceSignature(text.data());
    require(made == numbers.has_value(), "a signature is made where there is a text");
    require(!made || (numbers->r < curveOrder() && numbers->s < curveOrder()),
            "the halves are below the order");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Bytes message = {'s', 'o', 'm', 'e', ' ', 'd', 'a', 't', 'a'};
    static const std::string valid = textOf(soundOracle().sign(message, 0));

    InputReader input(data, size);
    const unsigned head = input.byte();
    Coordinates coordinates = soundCoordinates();
    relate(coordinates, head % 8);
    for (Bytes& each : coordinates) {
        const Bytes change = input.bytes(coordinateSize);
        std::transform(change.begin(), change.end(), each.begin(), each.begin(),
                       [](unsigned a, unsigned b) { return static_cast<std::uint8_t>(a ^ b); });
    }
    const ProjectFile project = projectOf(coordinates, input.bytes(40));
    if (head % 16 < 8) {
        checkSigning(project, message);
    }
    KeyReport key;
    const bool verdict = verifyWithRecord(
        project, message.data(), static_cast<std::uint32_t>(message.size()), valid.c_str(), key);
    require(verdict || coordinates != soundCoordinates(), "the sound key has the signature");
    require(!verdict || elementsOf(coordinates) == elementsOf(soundCoordinates()),
            "no other key has the signature");
    return 0;
}
