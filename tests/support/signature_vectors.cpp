#include "tests/support/signature_vectors.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <set>

#include "tests/support/hexadecimal.h"
#include "tests/support/vector_file.h"

namespace {

const nlohmann::json& vectors() {
    static const nlohmann::json parsed =
        nlohmann::json::parse(std::ifstream(vectorPath("signatures.json")));
    return parsed;
}

}  // namespace

const std::vector<GeneratorCase>& generatorCases() {
    static const std::vector<GeneratorCase> cases = [] {
        std::vector<GeneratorCase> read;
        for (const nlohmann::json& entry : vectors().at("generator")) {
            read.push_back({.seed = entry.at("seed"),
                            .stream = bytesFromHexadecimal(entry.at("stream64").get<std::string>()),
                            .nonce = entry.at("nonce")});
        }
        return read;
    }();
    return cases;
}

const std::vector<SignatureCase>& signatureCases() {
    static const std::vector<SignatureCase> cases = [] {
        std::vector<SignatureCase> read;
        for (const nlohmann::json& entry : vectors().at("signatures")) {
            read.push_back({.project = vectorPath(entry.at("project")),
                            .seed = entry.at("seed"),
                            .nonce = entry.at("nonce"),
                            .message = bytesFromHexadecimal(entry.at("message").get<std::string>()),
                            .r = entry.at("r"),
                            .s = entry.at("s"),
                            .text = entry.at("text")});
        }
        return read;
    }();
    return cases;
}

std::vector<std::string> projectVectorPaths() {
    std::set<std::string> paths;
    for (const SignatureCase& signature : signatureCases()) {
        paths.insert(signature.project);
    }
    return {paths.begin(), paths.end()};
}
