#include "tools/signature/signature_reading.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "core/core_base64.h"
#include "core/integer.h"
#include "curve/signature_primitive.h"
#include "engine/signature_text.h"
#include "frontend/hexadecimal_digit.h"
#include "tools/counted_text.h"
#include "tools/rules.h"
#include "verifier/pair_rules.h"

namespace {

/// The fault of a text of `length` characters, which has one.
std::string wordsOf(const ParsedSignature& text, std::size_t length) {
    const std::int64_t groupBytes = static_cast<std::int64_t>(length / 4) * 3;
    const auto bytes = static_cast<std::uint64_t>(text.bytes);
    switch (text.fault) {
        case SignatureFault::empty:
            return "the signature is empty";
        case SignatureFault::tooLong:
            return "the signature has " + std::to_string(length) + " characters, more than " +
                   std::to_string(longestSignatureText);
        case SignatureFault::groups:
            return "the signature has " + counted(length, "character") +
                   ", which is not a multiple of four";
        case SignatureFault::padding:
            return "the signature has " + std::to_string(groupBytes - text.bytes) +
                   " \"=\", but its groups hold only " +
                   counted(static_cast<std::uint64_t>(groupBytes), "byte");
        case SignatureFault::tooManyBytes:
            return "the signature stands for " + counted(bytes, "byte") + ", more than " +
                   std::to_string(longestSignature);
        case SignatureFault::noBytes:
            return "the signature stands for no bytes";
        case SignatureFault::odd:
        case SignatureFault::none:
            break;
    }
    return "the signature's halves are of odd length (" + counted(bytes, "byte") + ")";
}

/// Why no signature has these numbers, in the words of the rule.
std::optional<Refusal> numbersRefusal(const core::CoreInteger& r, const core::CoreInteger& s) {
    const core::PairFault fault = pairFault(r, s);
    if (fault == core::PairFault::none) {
        return std::nullopt;
    }
    const std::string_view sentence = ruleOf(fault).sentence;
    return refusalBy(fault, std::string(sentence.substr(0, sentence.size() - 1)));
}

/// Whether decoding takes the character for the "A" that it is not.
bool countsAsA(char character) {
    const std::array<char, 4> group = {character, 'A', 'A', 'A'};
    std::array<std::uint8_t, 4> bytes{};
    core::coreBase64Decode(group.data(), group.size(), bytes.data());
    return bytes[0] == 0 && character != 'A' && character != '=';
}

bool isHexadecimalDigit(char character) {
    return hexadecimalValue(character).has_value();
}

std::string quoted(std::string_view characters) {
    std::string text = "\"";
    text += characters;
    text += '"';
    return text;
}

/// What the character at this place is, which is not of the alphabet of signatures, and where it
/// comes from.
std::string wordsOfStrange(std::string_view signature, std::size_t place) {
    const std::string_view text = signature.substr(place);
    if (text[0] == '%' && text.size() > 2 && isHexadecimalDigit(text[1]) &&
        isHexadecimalDigit(text[2])) {
        return quoted(text.substr(0, 3)) +
               ", as characters are written in a URL or a form: decode it first";
    }
    switch (text[0]) {
        case ' ':
            return place == 0 || text.size() == 1
                       ? "a space, which is not part of it"
                       : R"(a space, which a "+" becomes in a URL or a form: write it as "%2B" there)";
        case '\n':
            return "a line feed, which is not part of it";
        case '\r':
            return "a carriage return, which is not part of it";
        case '\t':
            return "a tab, which is not part of it";
        case '"':
        case '\'':
            return "a quote, which is not part of it";
        case '-':
        case '_':
            return quoted(text.substr(0, 1)) + ", which base64 for URLs has instead of " +
                   quoted(text[0] == '-' ? "+" : "/");
        default:
            return quoted(text.substr(0, 1)) + ", which no signature has";
    }
}

}  // namespace

SignatureReading readSignature(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    const ParsedSignature parsed = parseSignatureText(text);
    if (parsed.fault != SignatureFault::none) {
        return {.refusal = refusalBy(parsed.fault, wordsOf(parsed, text.size()))};
    }
    SignatureReading reading{.refusal = numbersRefusal(parsed.r, parsed.s),
                             .halfSize = static_cast<std::size_t>(parsed.bytes) / 2,
                             .r = parsed.r,
                             .s = parsed.s};
    core::integerNormalise(reading.r);
    core::integerNormalise(reading.s);
    if (!reading.refusal.has_value() && isPadded(parsed.r)) {
        reading.refusal = refusalBy(
            Verdict::paddedR, "r is below 2^64 but padded to " + counted(reading.halfSize, "byte") +
                                  ", a form that no signature is accepted in");
    }
    return reading;
}

std::string mismatchReason(const SignatureReading& signature) {
    std::string reason =
        "the signature was made over other data or under another key, or was altered";
    if (signature.r.lengthAndSign == signatureLimbs) {
        return reason;
    }
    return reason +
           ", or it is one of the few (one in 2^35) that are made and not accepted: its r is below "
           "2^128";
}

std::vector<std::string> signatureRemarks(const std::string& text) {
    std::vector<std::string> remarks;
    if (text.starts_with("signature:")) {
        remarks.emplace_back(
            "the signature begins with \"signature:\", which is the name in front of it and no "
            "part of it");
    } else if (const auto strange = std::find_if(text.begin(), text.end(), countsAsA);
               strange != text.end()) {
        const auto place = static_cast<std::size_t>(strange - text.begin());
        remarks.push_back("character " + std::to_string(place + 1) + " of the signature is " +
                          wordsOfStrange(text, place));
    }
    // Of other lengths a text is not decoded.
    const SignatureFault fault = parseSignatureText(text).fault;
    const bool isDecoded = fault != SignatureFault::tooLong && fault != SignatureFault::groups;
    const auto strange = std::count_if(text.begin(), text.end(), countsAsA);
    if (strange != 0 && isDecoded) {
        remarks.push_back(counted(static_cast<std::uint64_t>(strange),
                                  "character of the signature is",
                                  "characters of the signature are") +
                          " outside its alphabet, read as \"A\"");
    }
    return remarks;
}

SignatureReading signatureOfNumbers(const core::CoreInteger& r, const core::CoreInteger& s) {
    if (std::optional<Refusal> refusal = numbersRefusal(r, s)) {
        return {.refusal = std::move(refusal), .halfSize = shortestHalf(r, s), .r = r, .s = s};
    }
    return readSignature(writeSignature(r, s));
}

std::string writeSignature(const core::CoreInteger& r, const core::CoreInteger& s) {
    std::array<char, longestSignatureText> text{};
    return {text.data(), writeSignatureText(r, s, text.data())};
}
