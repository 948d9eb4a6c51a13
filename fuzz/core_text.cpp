// Property: a text of any characters decodes, in the core's radix-64 form, to the bytes and the
// count that a slow decoder finds bit by bit, and any bytes are encoded as a slow encoder does, the
// byte behind them in the last character included. As a signature under a sound key, the text
// verifies exactly when the slow decoder finds the two numbers of a known signature in it; of the
// texts that take the verification as far as the curve, one in sixteen is tried.

#include <algorithm>
#include <numeric>
#include <string>

#include "core/core_base64.h"
#include "engine/verify.h"
#include "fuzz/input_reader.h"
#include "fuzz/property.h"
#include "fuzz/reference_core_text.h"
#include "fuzz/signature_oracle.h"
#include "tests/support/signature_text.h"

namespace {

void checkDecoding(const std::string& text) {
    constexpr std::uint8_t untouched = 0xA5;
    const CoreTextMeaning meaning = referenceCoreText(text);
    Bytes output(meaning.bytes.size() + 2, untouched);
    const std::uint64_t count = core::coreBase64Decode(text.data(), text.size(), output.data());
    require(count == meaning.count, "the count is the slow decoder's");
    require(std::equal(meaning.bytes.begin(), meaning.bytes.end(), output.begin()),
            "the bytes are the slow decoder's");
    require(output.back() == untouched, "at most one byte behind the groups is written");
    require(!meaning.bytes.empty() || output.front() == untouched,
            "an incomplete group writes nothing");
}

void checkEncoding(const Bytes& bytes, std::uint8_t behind) {
    Bytes input = bytes;
    input.insert(input.end(), {behind, 0, 0});
    std::string expected = textFromBytes(input).substr(0, (8 * bytes.size() + 5) / 6);
    expected.resize((bytes.size() + 2) / 3 * 4, '=');
    std::string output(expected.size(), ' ');
    const std::uint64_t count = core::coreBase64Encode(input.data(), bytes.size(), output.data());
    require(count == expected.size() && output == expected, "the text is the slow encoder's");
    const CoreTextMeaning meaning = referenceCoreText(output);
    require(meaning.count == bytes.size() &&
                std::equal(bytes.begin(), bytes.end(), meaning.bytes.begin()),
            "what is encoded is decoded");
}

/// Whether verifying the text takes a thousand times as long as all else.
bool reachesCurve(const std::string& text) {
    const auto numbers = referenceSignature(text);
    return numbers.has_value() && !numbers->r.isZero() && !numbers->s.isZero() &&
           numbers->r < curveOrder() && numbers->s < curveOrder();
}

void checkVerification(const std::string& text) {
    if (reachesCurve(terminatedText(text)) &&
        std::accumulate(text.begin(), text.end(), 0U) % 16 != 0) {
        return;
    }
    SignatureOracle& oracle = soundOracle();
    static const Bytes message = {'s', 'o', 'm', 'e', ' ', 'd', 'a', 't', 'a'};
    const bool verdict =
        checkSignatureText(message.data(), static_cast<std::uint32_t>(message.size()),
                           oracle.publicPoint(), oracle.basePoint(), text.c_str());
    require(verdict == oracle.accepts(message, terminatedText(text)),
            "the verdict is the oracle's");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string text(data, data + size);
    checkDecoding(text);
    if (size > 1) {
        checkEncoding(Bytes(data, data + size - 1), data[size - 1]);
    }
    checkVerification(text);
    return 0;
}
