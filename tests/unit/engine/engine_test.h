#pragma once

#include <gtest/gtest.h>
#include <openssl/ripemd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

#include "engine/sign.h"
#include "engine/signature_engine.h"
#include "engine/verify.h"
#include "random/random_generator.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/temporary_folder.h"

/// A test with a folder for projects and files.
class EngineTest : public testing::Test {
protected:
    /// The path of a project with these attributes.
    std::string project(const AttributeValues& attributes) const {
        return folder.write("project", projectBytes(attributes));
    }
    std::string project(const ProjectKey& key) const { return project(keyAttributes(key)); }

    TemporaryFolder folder;
};

using SignatureBuffer = std::array<char, signatureBufferSize>;

/// The text that an operation of signing leaves in a zero-filled buffer. An empty text stands for
/// false; with false the buffer must be as it was, and behind a text it must be too.
template <typename Operation>
std::string textOf(const Operation& operation) {
    SignatureBuffer buffer{};
    const bool done = operation(buffer.data());
    const auto end = std::find(buffer.begin(), buffer.end(), '\0');
    EXPECT_TRUE(std::all_of(end, buffer.end(), [](char c) { return c == '\0'; }));
    EXPECT_EQ(done, end != buffer.begin());
    return {buffer.begin(), end};
}

inline std::string signedText(const std::string& project, const Bytes& data) {
    return textOf([&](char* signature) {
        return signData(project.c_str(), data.data(), static_cast<std::uint32_t>(data.size()),
                        signature);
    });
}

inline std::string signedFileText(const std::string& project, const std::string& file) {
    return textOf(
        [&](char* signature) { return signFile(project.c_str(), file.c_str(), signature); });
}

inline bool verifies(const std::string& project, const Bytes& data, const std::string& text) {
    return verifyData(project.c_str(), data.data(), static_cast<std::uint32_t>(data.size()),
                      text.c_str());
}

/// The digest of the data, by libcrypto.
inline Bytes digestOf(const Bytes& data) {
    Bytes digest(RIPEMD160_DIGEST_LENGTH);
    RIPEMD160(data.data(), data.size(), digest.data());
    return digest;
}

inline std::string signedDigestText(const std::string& project, const Bytes& data) {
    ProjectFile file;
    KeyReport key;
    if (!file.load(project.c_str())) {
        return "";
    }
    return textOf([&](char* signature) {
        return signDigestWithRecord(file, digestOf(data).data(), signature, key);
    });
}

inline bool digestVerifies(const std::string& project, const Bytes& data, const std::string& text) {
    ProjectFile file;
    KeyReport key;
    return file.load(project.c_str()) &&
           verifyDigestWithRecord(file, digestOf(data).data(), text.c_str(), key);
}

inline bool fileVerifies(const std::string& project, const std::string& file,
                         const std::string& text) {
    return verifyFile(project.c_str(), file.c_str(), text.c_str());
}

/// Makes the nonces that follow repeatable.
inline void seedNonces(std::uint32_t seed) {
    RandomGenerator::instance().seedFromWord(seed);
}
