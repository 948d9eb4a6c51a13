#include "tools/signature/signature_conversion.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "core/integer.h"
#include "engine/signature_text.h"
#include "frontend/hexadecimal_digit.h"
#include "tools/counted_text.h"
#include "tools/signature/byte_string.h"
#include "tools/signature/der_signature.h"

namespace {

/// Bytes that the order, and so each number, is written in.
constexpr std::size_t numberSize = longestSignature / 2;

/// Digits that one limb holds.
constexpr std::size_t limbDigits = 16;

constexpr std::string_view whiteSpace = " \t\n\v\f\r";

std::vector<std::string_view> wordsOf(std::string_view text) {
    std::vector<std::string_view> words;
    std::size_t start = text.find_first_not_of(whiteSpace);
    while (start != std::string_view::npos) {
        const std::size_t end = std::min(text.find_first_of(whiteSpace, start), text.size());
        words.push_back(text.substr(start, end - start));
        start = text.find_first_not_of(whiteSpace, end);
    }
    return words;
}

Refusal refusalOf(const std::string& words) {
    return {.code = "signature.hexadecimal", .text = words};
}

/// Reads a word such as "r=1F" into the number `name`; says what is wrong with it.
std::optional<Refusal> readNumber(std::string_view word, const std::string& name,
                                  core::CoreInteger& number) {
    if (word.substr(0, name.size() + 1) != name + "=") {
        return refusalOf("\"" + name + "=\" is missing in front of a number");
    }
    word.remove_prefix(name.size() + 1);
    if (word.empty()) {
        return refusalOf(name + " has no digits");
    }
    const auto wrong = std::find_if(
        word.begin(), word.end(), [](char digit) { return !hexadecimalValue(digit).has_value(); });
    if (wrong != word.end()) {
        return refusalOf(name + " has a character that is not a hexadecimal digit (number " +
                         std::to_string(wrong - word.begin() + 1) + " of " +
                         std::to_string(word.size()) + ")");
    }
    word.remove_prefix(std::min(word.find_first_not_of('0'), word.size()));
    if (word.size() > limbDigits * signatureLimbs) {
        return refusalOf(name + " is not below the order");
    }
    number = {.lengthAndSign = signatureLimbs, .capacity = signatureLimbs};
    for (std::uint64_t* limb = number.limbs.data(); !word.empty(); ++limb) {
        const std::string_view digits =
            word.substr(word.size() - std::min(limbDigits, word.size()));
        std::from_chars(digits.data(), digits.data() + digits.size(), *limb, 16);
        word.remove_suffix(digits.size());
    }
    core::integerNormalise(number);
    return std::nullopt;
}

SignatureReading readHexadecimal(std::string_view text) {
    const std::vector<std::string_view> words = wordsOf(text);
    if (words.size() != 2) {
        return {.refusal = refusalOf("the signature has " + counted(words.size(), "word") +
                                     R"( instead of two, "r=..." and "s=...")")};
    }
    core::CoreInteger r{};
    core::CoreInteger s{};
    if (auto refusal = readNumber(words[0], "r", r)) {
        return {.refusal = std::move(refusal)};
    }
    if (auto refusal = readNumber(words[1], "s", s)) {
        return {.refusal = std::move(refusal)};
    }
    return signatureOfNumbers(r, s);
}

}  // namespace

SignatureReading readSignatureAs(SignatureForm form, std::string_view bytes) {
    if (form == SignatureForm::der) {
        return readDerSignature(ByteString(bytes.begin(), bytes.end()));
    }
    return form == SignatureForm::hexadecimal ? readHexadecimal(bytes) : readSignature(bytes);
}

std::string writeSignatureAs(SignatureForm form, const SignatureReading& signature) {
    if (form == SignatureForm::der) {
        const ByteString bytes = writeDerSignature(signature.r, signature.s);
        return {bytes.begin(), bytes.end()};
    }
    return form == SignatureForm::hexadecimal
               ? "r=" + numberDigits(signature.r) + "\ns=" + numberDigits(signature.s)
               : writeSignature(signature.r, signature.s);
}

std::string numberDigits(const core::CoreInteger& number) {
    return hexadecimalDigits(bigEndianBytes(number.limbs, numberSize));
}
