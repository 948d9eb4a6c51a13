#pragma once

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "curve/curve_domain.h"
#include "tests/support/big_number.h"
#include "tests/support/curve_keys.h"
#include "tests/support/project_key.h"

struct NumberPair {
    BigNumber r;
    BigNumber s;
};

/// The two numbers in a signature's text, read bit by bit; empty when the text is none that is
/// taken for a signature.
std::optional<NumberPair> referenceSignature(const std::string& text);

/// A sound key with some nonces, whose signatures cost no multiplication of a point.
///
/// It knows a valid signature without asking anybody: nobody finds one with another nonce than
/// these and their negatives. libcrypto has to agree with each that it accepts.
class SignatureOracle {
public:
    static constexpr std::size_t nonceCount = 8;

    explicit SignatureOracle(const ProjectKey& key);

    const ProjectKey& key() const { return key_; }
    const core::CurvePoint& basePoint() const { return records_.domain().basePoint; }
    const core::CurvePoint& publicPoint() const { return records_.publicPoint(); }

    /// The signature of the data with one of the nonces.
    NumberPair sign(const Bytes& data, std::size_t nonce) const;

    bool accepts(const Bytes& data, const std::string& text);

private:
    struct Nonce {
        BigNumber inverse;
        BigNumber r;
    };

    void askLibcrypto(const Bytes& data, const SignatureNumbers& numbers);

    ProjectKey key_;
    KeyRecords records_;
    BigNumber scalar_;
    std::vector<Nonce> nonces_;
    Bytes judgedData_;
    std::set<std::pair<std::string, std::string>> judged_;
};

/// The oracle of one key, made at the first call, which starts the core for it.
SignatureOracle& soundOracle();

/// A signature's text with halves of at least this many bytes.
std::string textOf(const NumberPair& signature, std::size_t half = 0);
