#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>

#include "tests/support/project_builder.h"
#include "tests/support/signature_vectors.h"
#include "tests/support/temporary_folder.h"
#include "tools/request/request_explanation.h"

/// Tests on requests around a message that has a known signature.
class ExplanationTest : public testing::Test {
protected:
    /// A file of the folder that its owner alone may read.
    std::string write(const std::string& name, const Bytes& bytes) const {
        const std::string path = folder.write(name, bytes);
        std::filesystem::permissions(
            path, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
        return path;
    }

    static Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

    static RawRequest requestOf(const std::string& type, const std::string& body) {
        return {type, std::to_string(body.size()), body};
    }
    static RawRequest form(const std::string& body) {
        return requestOf("application/x-www-form-urlencoded", body);
    }
    static RawRequest json(const std::string& body) { return requestOf("application/json", body); }

    static Explanation explainForm(const std::string& body) { return explainRequest(form(body)); }
    static Explanation explainJson(const std::string& body) { return explainRequest(json(body)); }

    /// A signature as a form writes it.
    static std::string inForm(const std::string& signature) {
        std::string escaped;
        for (const char character : signature) {
            escaped += character == '+' ? "%2B" : std::string(1, character);
        }
        return escaped;
    }

    static std::string reasonOf(const Explanation& explanation) {
        return explanation.rule + ": " + explanation.reason;
    }

    static bool hasRemark(const Explanation& explanation, const std::string& remark) {
        return std::find(explanation.remarks.begin(), explanation.remarks.end(), remark) !=
               explanation.remarks.end();
    }

    const TemporaryFolder folder;
    const SignatureCase& known = signatureCases().front();
    const std::string project = write("project", fileBytes(known.project));
    const std::string message = write("message", known.message);
};
