#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/project_builder.h"

// The cases of `signatures.json` in `tests/vectors/`; numbers are hexadecimal digits.

/// What the generator gives after `seedFromWord`.
struct GeneratorCase {
    std::uint32_t seed = 0;
    Bytes stream;       ///< its first 64 bytes
    std::string nonce;  ///< the first nonce below n of a fresh stream
};

/// A signature from the seed to the text.
struct SignatureCase {
    std::string project;  ///< path of the project file
    std::uint32_t seed = 0;
    std::string nonce;
    Bytes message;
    std::string r;
    std::string s;
    std::string text;
};

const std::vector<GeneratorCase>& generatorCases();
const std::vector<SignatureCase>& signatureCases();

/// Paths of the project files among the vectors.
std::vector<std::string> projectVectorPaths();
