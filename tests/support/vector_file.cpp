#include "tests/support/vector_file.h"

#include <fstream>
#include <stdexcept>

namespace {

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    const std::size_t last = text.find_last_not_of(" \t\r");
    return first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
}

}  // namespace

std::string vectorPath(const std::string& name) {
    return std::string(SIGN_VECTOR_FOLDER "/") + name;
}

std::vector<VectorCase> readVectorFile(const std::string& name) {
    std::ifstream file(vectorPath(name));
    std::vector<VectorCase> cases;
    VectorCase current;
    std::string line;
    const auto finishCase = [&] {
        if (!current.empty()) {
            cases.push_back(std::move(current));
            current.clear();
        }
    };
    while (std::getline(file, line)) {
        line = trimmed(line);
        if (line.empty()) {
            finishCase();
        } else if (const std::size_t equals = line.find('=');
                   line[0] != '#' && line[0] != '[' && equals != std::string::npos) {
            current[trimmed(line.substr(0, equals))] = trimmed(line.substr(equals + 1));
        }
    }
    finishCase();
    if (cases.empty()) {
        throw std::runtime_error("no cases in " + vectorPath(name));
    }
    return cases;
}
