#include "tests/program/request_material.h"

#include <filesystem>

#include "tests/program/damaged_project.h"
#include "tests/program/random_choice.h"
#include "tests/support/project_key.h"
#include "tests/support/signature_text.h"

namespace {

using namespace std::string_literals;

constexpr std::size_t damagedProjects = 600;
const std::string message = "abc";

Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

}  // namespace

RequestMaterial::RequestMaterial() {
    const ProjectKey key = randomProjectKey();
    addProject(projectBytes(keyAttributes(key)));
    soundProject_ = projects_.front();
    for (std::size_t i = 0; i < damagedProjects; ++i) {
        addProject(damagedProject(keyAttributes(oneIn(3) ? randomProjectKey() : key)));
    }
    // Under this key every s of the message is zero: r is 1 for every nonce.
    AttributeValues unsound = keyAttributes(key);
    unsound[72] = elementValue(163, "1");
    unsound[73] = elementValue(163, "0");
    unsound[74] = integerValue(scalarOfZeroS(bytesOf(message), "1"));
    for (int i = 0; i < 60; ++i) {
        addProject(projectBytes(unsound));
    }
    // What damage at random seldom makes.
    ProjectImage headerAlone;
    headerAlone.entryCount = 1;
    ProjectImage shortDirectory = projectImage({{1, {10}}, {2, {20}}, {3, {30}}});
    shortDirectory.entryCount = 5;
    shortDirectory.values = Bytes(5, 1);
    ProjectImage emptyValue = projectImage({{1, {10}}});
    emptyValue.directory[0].size = 0;
    for (int i = 0; i < 10; ++i) {
        addProject(headerAlone.bytes());
        addProject(shortDirectory.bytes());
        addProject(emptyValue.bytes());
        addProject({'V', 'L'});
        projects_.push_back(folder_.file("absent"));
        projects_.push_back(folder_.path());
        projects_.emplace_back("/dev/null");
    }
    addFiles();
    for (int i = 0; i < 10; ++i) {
        signatures_.push_back(signatureText(judgeSign(key, bytesOf(message))));
        signatures_.push_back(signatureText(judgeSign(key, bytesOf(message)), 21));
    }
}

void RequestMaterial::addProject(const Bytes& bytes) {
    projects_.push_back(folder_.write("project-" + std::to_string(projects_.size()), bytes));
}

void RequestMaterial::addFiles() {
    const std::string whole = folder_.write("message", bytesOf(message));
    const std::string other = folder_.write("other", bytesOf("other"));
    const std::string empty = folder_.write("empty", {});
    const std::string half = folder_.write("half", {});
    const std::string four = folder_.write("four", {});
    const std::string part = folder_.write("part", bytesOf(message));
    std::filesystem::resize_file(half, std::uintmax_t{1} << 31);
    std::filesystem::resize_file(four, std::uintmax_t{1} << 32);
    std::filesystem::resize_file(part, (std::uintmax_t{1} << 32) + message.size());
    files_ = {
        whole,          whole,      whole, part, other, empty, half, four, folder_.file("none"),
        folder_.path(), "/dev/null"};
}

const std::string& RequestMaterial::project() const {
    return oneIn(3) ? soundProject_ : oneOf(projects_);
}

const std::string& RequestMaterial::file() const {
    return oneOf(files_);
}

std::string RequestMaterial::data() {
    if (oneIn(3)) {
        return message;
    }
    std::string text = anyOf({"YWJj", "QUJDREVG", "====", "A===", "QQ==", "ab+/", "QUI=QUJD",
                              "QUJDQ==D", "QU!DQUJD", "QUJ", "\0AAA"s, "AAAA===="});
    if (oneIn(3)) {
        mutate(text);
    }
    return oneIn(10) ? randomText() : text;
}

std::string RequestMaterial::signature() const {
    if (oneIn(5)) {
        std::string padded(56, 'b');
        padded.back() = '=';
        return oneOf(std::vector<std::string>{"\0AAA"s, "====", "A===", std::string(132, 'A'),
                                              std::string(60, 'b'), padded,
                                              signatureText({.r = "1", .s = "1"}, 21)});
    }
    std::string text = oneOf(signatures_);
    if (oneIn(3)) {
        return text;
    }
    if (oneIn(3)) {
        const std::string order = curveOrderDigits;
        const std::vector<std::string> numbers = {
            "0", "1", order, order + "0", randomNumber(20), randomNumber(3)};
        return signatureText({oneOf(numbers), oneOf(numbers)}, randomBelow(23));
    }
    for (std::uint64_t left = randomBelow(4); left != 0; --left) {
        mutate(text);
    }
    return oneIn(8) ? text + std::string(randomBelow(80), oneIn(2) ? '=' : 'A') : text;
}
