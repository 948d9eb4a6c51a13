// Property: against a sound project, a signature's text verifies over data, given as bytes or as a
// file, exactly when the numbers in it, read bit by bit, are a valid signature, to which libcrypto
// agrees. The texts are valid ones, whose numbers, data and characters the input changes, or the
// input itself.
//
// Input: a byte for the nonce and the change to the numbers, one for the length of the halves and
// the way in, one for the number of changed characters with two more for each, then the data; or
// behind the first byte a line of data and a text.

#include <cstdint>

#include "engine/signature_engine.h"
#include "fuzz/input_reader.h"
#include "fuzz/memory_file.h"
#include "fuzz/property.h"
#include "fuzz/signature_oracle.h"

namespace {

constexpr int projectDescriptor = 60;
constexpr int dataDescriptor = 61;

struct Request {
    Bytes data;
    std::string text;
    bool asFile = false;
};

/// Number `change` of the ways to make other numbers of a signature's; some are valid again.
NumberPair changedNumbers(const NumberPair& valid, unsigned change, std::uint8_t detail) {
    const BigNumber n = curveOrder();
    const BigNumber bit = BigNumber::powerOfTwo(detail % 168);
    const auto& [r, s] = valid;
    switch (change) {
        case 1:
            return {.r = r, .s = n - s};
        case 2:
            return {.r = s, .s = r};
        case 3:
            return {.r = r + n, .s = s};
        case 4:
            return {.r = r, .s = s + n};
        case 5:
            return {.r = r + bit, .s = s};
        case 6:
            return {.r = r, .s = s + bit};
        case 7:
            return {.r = 0, .s = s};
        case 8:
            return {.r = r, .s = 0};
        case 9:
            return {.r = n, .s = s};
        case 10:
            return {.r = r, .s = n};
        case 11:
            return {.r = n - r, .s = s};
        case 12:
            return {.r = bit, .s = s};
        case 13:
            return {.r = r, .s = bit};
        default:
            return valid;
    }
}

Request requestFrom(InputReader& input) {
    constexpr unsigned rawText = 15;
    constexpr unsigned changeOfData = 14;
    const unsigned head = input.byte();
    const unsigned change = head & 15;
    if (change == rawText) {
        const std::string line = input.line();
        const std::string text = input.rest();
        return {.data = {line.begin(), line.end()},
                .text = terminatedText(text),
                .asFile = (head & 128) != 0};
    }
    const unsigned form = input.byte();
    const std::size_t edits = input.byte() % 8;
    const std::vector<std::uint8_t> places = input.bytes(2 * edits);
    const std::uint8_t detail = input.byte();
    Request request{.data = input.bytes(input.left()), .text = {}, .asFile = form >= 128};
    const NumberPair valid = soundOracle().sign(request.data, head >> 4 & 7);
    request.text = textOf(changedNumbers(valid, change, detail), form % 24);
    for (std::size_t i = 0; i + 1 < places.size(); i += 2) {
        request.text[places[i] % request.text.size()] = static_cast<char>(places[i + 1]);
    }
    if (change == changeOfData) {
        request.data.push_back(detail);
    }
    return request;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const MemoryFile project(projectDescriptor);
    static const MemoryFile file(dataDescriptor);
    static const bool prepared = [] {
        project.write(projectBytes(keyAttributes(soundOracle().key())));
        return true;
    }();
    require(prepared, "the project is written");

    InputReader input(data, size);
    const Request request = requestFrom(input);
    bool verdict = false;
    if (request.asFile) {
        file.write(request.data);
        verdict = verifyFile(project.path().c_str(), file.path().c_str(), request.text.c_str());
    } else {
        verdict = verifyData(project.path().c_str(), request.data.data(),
                             static_cast<std::uint32_t>(request.data.size()), request.text.c_str());
    }
    require(verdict == soundOracle().accepts(request.data, terminatedText(request.text)),
            "the verdict is the oracle's");
    return 0;
}
