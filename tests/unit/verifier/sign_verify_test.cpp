#include "verifier/sign_verify.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <limits>

#include "core/host.h"
#include "tests/support/failing_calls.h"
#include "tests/support/project_builder.h"
#include "tests/support/signature_text.h"
#include "tests/support/signature_vectors.h"
#include "tests/support/stopped_core.h"
#include "tests/support/temporary_folder.h"
#include "verifier/verdict_rules.h"

namespace {

Bytes contentOf(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// What a function of the library says.
struct Ruling {
    int verdict = -1;
    std::string rule;

    bool operator==(const Ruling&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Ruling& ruling) {
    return stream << ruling.verdict << " by " << ruling.rule;
}

Ruling rulingOf(const auto& function, auto... arguments) {
    const char* rule = "none";
    const int verdict = function(arguments..., &rule);
    return {verdict, rule};
}

Ruling refusedBy(const char* code) {
    return {0, code};
}

const Ruling valid = {1, "signature.valid"};

class SignVerify : public testing::Test {
protected:
    /// What all four functions say, which must be the same.
    static Ruling rulingOfAll(const std::string& path, const Bytes& data, const char* text) {
        const TemporaryFolder folder;
        const std::string file = folder.write("data", data);
        const Bytes project = contentOf(path);
        const Ruling ruling = rulingOf(sign_verify_file, path.c_str(), file.c_str(), text);
        EXPECT_EQ(ruling, rulingOf(sign_verify_data, path.c_str(), data.data(), data.size(), text));
        EXPECT_EQ(ruling, rulingOf(sign_verify_file_by_bytes, project.data(), project.size(),
                                   file.c_str(), text));
        EXPECT_EQ(ruling, rulingOf(sign_verify_data_by_bytes, project.data(), project.size(),
                                   data.data(), data.size(), text));
        return ruling;
    }

    Ruling rulingOnFile(const std::string& path) const {
        return rulingOf(sign_verify_file, project, path.c_str(), text);
    }

    Ruling rulingUnder(const std::string& path) const {
        return rulingOf(sign_verify_data, path.c_str(), data.data(), data.size(), text);
    }

    const StoppedCore core;  // which each call starts
    const SignatureCase& sound = signatureCases().front();
    const char* project = sound.project.c_str();
    const char* text = sound.text.c_str();
    const Bytes& data = sound.message;
    const Bytes projectContent = contentOf(project);
    const TemporaryFolder folder;
};

TEST_F(SignVerify, SaysYesOfEachPublishedSignatureOverItsDataAlone) {
    for (const SignatureCase& one : signatureCases()) {
        Bytes other = one.message;
        other.back() ^= 1;
        EXPECT_EQ(rulingOfAll(one.project, one.message, one.text.c_str()), valid) << one.text;
        EXPECT_EQ(rulingOfAll(one.project, other, one.text.c_str()),
                  refusedBy("signature.mismatch"))
            << one.text;
    }
}

TEST_F(SignVerify, NamesTheRuleThatATextBreaks) {
    const std::string n = "40000000000000000000292FE77E70C12A4234C33";
    const std::vector<std::pair<std::string, const char*>> texts = {
        {"", "signature.empty"},
        {std::string(132, 'A'), "signature.too-long"},
        {"AAA", "signature.groups"},
        {std::string(60, 'A'), "signature.too-many-bytes"},
        {"====", "signature.padding"},
        {"A===", "signature.no-bytes"},
        {"AAAA", "signature.odd"},
        {signatureText({.r = "0", .s = "1"}, 21), "signature.r-zero"},
        {signatureText({.r = "1", .s = "0"}, 21), "signature.s-zero"},
        {signatureText({.r = n, .s = "1"}, 21), "signature.r-range"},
        {signatureText({.r = "1", .s = n}, 21), "signature.s-range"},
        {signatureText({.r = "1", .s = "1"}, 21), "signature.r-padded"},
        {signatureText({.r = "1", .s = "1"}, 16), "signature.mismatch"},
    };
    for (const auto& [one, code] : texts) {
        EXPECT_EQ(rulingOfAll(sound.project, data, one.c_str()), refusedBy(code)) << one;
    }
}

TEST_F(SignVerify, NamesTheFirstRuleThatIsBroken) {
    const std::string empty = folder.write("empty", {});
    const std::string keyless = folder.write("keyless", projectBytes({{1, {10}}}));
    const std::string fifo = folder.file("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(rulingOnFile(folder.file("none")), refusedBy("file.open"));
    EXPECT_EQ(rulingOnFile(folder.path()), refusedBy("file.directory"));
    EXPECT_EQ(rulingOnFile(empty), refusedBy("file.empty"));
    EXPECT_EQ(rulingUnder(folder.file("none")), refusedBy("project.open"));
    EXPECT_EQ(rulingUnder(folder.path()), refusedBy("project.unreadable"));
    EXPECT_EQ(rulingUnder(fifo), refusedBy("project.header"));
    EXPECT_EQ(rulingUnder("/dev/null"), refusedBy("project.header"));
    EXPECT_EQ(rulingOfAll(empty, data, text), refusedBy("project.header"));
    EXPECT_EQ(rulingOfAll(keyless, data, text), refusedBy("key.absent"));
    // Data or a file, then the project, then the key, then the text.
    EXPECT_EQ(rulingOf(sign_verify_file, folder.path().c_str(), empty.c_str(), ""),
              refusedBy("file.empty"));
    EXPECT_EQ(rulingOf(sign_verify_data, folder.path().c_str(), data.data(), std::size_t{0}, ""),
              refusedBy("data.empty"));
    EXPECT_EQ(rulingOfAll(empty, data, ""), refusedBy("project.header"));
    EXPECT_EQ(rulingOfAll(keyless, data, ""), refusedBy("key.absent"));
}

TEST_F(SignVerify, TakesNullForWhatIsNotThere) {
    const std::string file = folder.write("data", data);
    const Bytes& bytes = projectContent;
    EXPECT_EQ(rulingOf(sign_verify_data, nullptr, data.data(), data.size(), text),
              refusedBy("project.open"));
    EXPECT_EQ(rulingOf(sign_verify_data_by_bytes, nullptr, std::size_t{24}, data.data(),
                       data.size(), text),
              refusedBy("project.header"));
    EXPECT_EQ(rulingOf(sign_verify_data, project, nullptr, data.size(), text),
              refusedBy("data.empty"));
    EXPECT_EQ(rulingOf(sign_verify_file, project, nullptr, text), refusedBy("file.open"));
    EXPECT_EQ(rulingOf(sign_verify_data, project, data.data(), data.size(), nullptr),
              refusedBy("signature.empty"));
    EXPECT_EQ(sign_verify_file(project, file.c_str(), text, nullptr), 1);
    EXPECT_EQ(sign_verify_data(project, data.data(), data.size(), text, nullptr), 1);
    EXPECT_EQ(sign_verify_file_by_bytes(bytes.data(), bytes.size(), file.c_str(), text, nullptr),
              1);
    EXPECT_EQ(sign_verify_data_by_bytes(bytes.data(), bytes.size(), data.data(), data.size(), "",
                                        nullptr),
              0);
}

TEST_F(SignVerify, ReadsNoneOfDataThatAreTooLarge) {
    constexpr std::size_t tooLarge = 1UL << 31;
    for (const std::size_t size : {tooLarge, std::numeric_limits<std::size_t>::max()}) {
        EXPECT_EQ(rulingOf(sign_verify_data, project, data.data(), size, text),
                  refusedBy("file.too-large"));
    }
}

TEST_F(SignVerify, SaysNoOfAFileThatIsCutMeanwhile) {
    // Before a question for its size: by a byte, so that its last page stays readable.
    for (const auto& [question, code] :
         {std::pair{2U, "file.changed"}, std::pair{3U, "file.cut"}}) {
        const std::string file = folder.write("data", data);
        ScopedFailingCalls calls;
        calls.beforeStatus = [&, question = question](unsigned number) {
            if (number == question) {
                EXPECT_EQ(::truncate(file.c_str(), static_cast<off_t>(data.size() - 1)), 0);
            }
        };
        EXPECT_EQ(rulingOnFile(file), refusedBy(code));
    }
}

TEST_F(SignVerify, TellsThatMemoryIsShortAndGoesOn) {
    {
        ScopedFailingCalls calls;
        calls.blockLimit = 0;
        const char* rule = nullptr;
        EXPECT_EQ(sign_verify_data(project, data.data(), data.size(), text, &rule), 0);
        EXPECT_STREQ(rule, "project.memory");
    }
    EXPECT_EQ(rulingUnder(project), valid);
}

TEST(SignVerifyDeathTest, HasNoRandomBytesToGive) {
    EXPECT_DEATH(core::hostRandomBytes(nullptr, 0), "");
}

TEST(VerdictRules, NameAFileThatTheSystemDoesNotMap) {
    EXPECT_STREQ(codeOf(FileFault::mapping), "file.mapping");
}

TEST(VerdictRules, HaveNoCodeForWhatBreaksNone) {
    for (const VerdictCause& cause :
         {VerdictCause(FileFault::none), VerdictCause(ProjectFault::none),
          VerdictCause(KeyFault::none), VerdictCause(SignatureFault::none),
          VerdictCause(core::PairFault::none)}) {
        EXPECT_EQ(codeOf(cause), nullptr);
    }
}

}  // namespace
