#include "tools/signature/der_signature.h"

#include <cstddef>
#include <optional>
#include <string>

#include "core/integer.h"
#include "engine/signature_text.h"
#include "tools/counted_text.h"
#include "tools/rules.h"
#include "tools/signature/der.h"

namespace {

/// Bytes of a number in the limbs of a half, which have room for more than the order.
constexpr std::size_t longestNumber = std::size_t{8} * signatureLimbs;

constexpr std::uint8_t signBit = 0x80;

ByteString numberBytes(const core::CoreInteger& value) {
    return bigEndianBytes(value.limbs, static_cast<std::size_t>(core::integerByteLength(value)));
}

/// Takes values off the front of an encoding. After a refusal, which is the first and stays, what
/// it gives means nothing.
class DerReader {
public:
    explicit DerReader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    const std::optional<Refusal>& refusal() const { return refusal_; }

    /// The content of the next value, which must have this tag; `name` is what messages call it.
    std::span<const std::uint8_t> take(std::uint8_t tag, const std::string& name) {
        if (refusal_.has_value()) {
            return {};
        }
        if (rest_.empty()) {
            return refuse(name + " is missing");
        }
        if (rest_[0] != tag) {
            return refuse(name + " has the tag " + hexadecimalDigits(rest_.first(1)) +
                          " instead of " + hexadecimalDigits({&tag, 1}));
        }
        if (rest_.size() == 1) {
            return refuse(name + " ends before its length");
        }
        const std::size_t size = rest_[1];
        if (size == derLongForm) {
            return refuse(name + " is of indefinite length");
        }
        if (size > derLongForm) {
            return refuse(name + " has a length of more than one byte, which no signature needs");
        }
        rest_ = rest_.subspan(2);
        if (size > rest_.size()) {
            return refuse(name + " ends after " + std::to_string(rest_.size()) + " of " +
                          counted(size, "byte"));
        }
        const std::span<const std::uint8_t> content = rest_.first(size);
        rest_ = rest_.subspan(size);
        return content;
    }

    /// The next value, a number that is not negative, in the three limbs of a half.
    core::CoreInteger takeNumber(const std::string& name) {
        const std::span<const std::uint8_t> content = take(derIntegerTag, name);
        if (refusal_.has_value()) {
            return {};
        }
        if (content.empty()) {
            refuse(name + " has no bytes");
        } else if ((content[0] & signBit) != 0) {
            refuse(name + " is negative");
        } else if (content.size() > 1 && content[0] == 0 && (content[1] & signBit) == 0) {
            refuse(name + " has a zero byte too many in front");
        } else if (content.size() > longestNumber) {
            refuse(name + " is not below the order");
        }
        return refusal_.has_value() ? core::CoreInteger{}
                                    : integerFromBytes(content, signatureLimbs);
    }

    void expectEnd(const std::string& name) {
        if (!rest_.empty() && !refusal_.has_value()) {
            refuse(counted(rest_.size(), "byte stands", "bytes stand") + " behind " + name);
        }
    }

private:
    std::span<const std::uint8_t> refuse(const std::string& words) {
        refusal_ = refusalBy(Outcome::notDer, words);
        return {};
    }

    std::span<const std::uint8_t> rest_;
    std::optional<Refusal> refusal_;
};

}  // namespace

ByteString writeDerSignature(const core::CoreInteger& r, const core::CoreInteger& s) {
    return derSequence({derInteger(numberBytes(r)), derInteger(numberBytes(s))});
}

SignatureReading readDerSignature(std::span<const std::uint8_t> bytes) {
    DerReader outer(bytes);
    DerReader inner(outer.take(derSequenceTag, "the signature"));
    outer.expectEnd("the signature");
    if (outer.refusal().has_value()) {
        return {.refusal = outer.refusal()};
    }
    const core::CoreInteger r = inner.takeNumber("r");
    const core::CoreInteger s = inner.takeNumber("s");
    inner.expectEnd("s");
    if (inner.refusal().has_value()) {
        return {.refusal = inner.refusal()};
    }
    return signatureOfNumbers(r, s);
}
