#include "tests/unit/frontend/random_json.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tests/support/random_operands.h"

namespace {

bool oneIn(std::uint64_t count) {
    return randomBelow(count) == 0;
}

template <std::size_t count>
std::string oneOf(const std::array<const char*, count>& choices) {
    return choices[randomBelow(count)];
}

constexpr std::array knownNames{"project",   "mode",      "encoding", "genPairs",
                                "signature", "signature", "data",     "file"};
constexpr std::array otherNames{"Project", "genpairs", "\\u0064ata",      "\\u006dode",
                                "dat",     "files",    "sign\\u0061ture", "mode\\u0000",
                                "",        "x",        "\xC3\xA9"};
constexpr std::array words{
    "generateSignature", "verifySignature", "plain", "base64", "urlencode", "json", "Plain"};
constexpr std::array pieces{"plain",
                            "x",
                            "/",
                            "a longer text than a string holds in itself",
                            "\\n",
                            "\\\"",
                            "\\\\",
                            "\\u0000",
                            "\\u00e9",
                            "\\ud83d\\ude00",
                            "\xE2\x82\xAC",
                            "\xF0\x9F\x98\x80"};
constexpr std::array badPieces{"\xFF",     "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                               "\xE2\x82", "\\ud800",  "\\udc00",      "\\x",
                               "\\u12",    "\n",       "\x1F"};
constexpr std::array numbers{"0",
                             "-0",
                             "1",
                             "-1",
                             "1.5",
                             "1E-5",
                             "1e308",
                             "1e-999",
                             "9223372036854775807",
                             "-9223372036854775808",
                             "-9223372036854775809",
                             "18446744073709551615",
                             "18446744073709551616",
                             "123456789012345678901234567890"};
constexpr std::array badEnds{"e999", "01", "e", ".", "x", "e+", "-"};

std::string space() {
    return oneIn(8) ? oneOf(std::array{" ", "\n", "\t\r"}) : "";
}

std::string text() {
    if (oneIn(2)) {
        return '"' + oneOf(words) + '"';
    }
    std::string result = "\"";
    for (std::uint64_t left = randomBelow(4); left > 0; --left) {
        result += oneIn(200) ? oneOf(badPieces) : oneOf(pieces);
    }
    return result + '"';
}

std::string value(unsigned depth);

std::string object(unsigned depth, bool isRequest) {
    std::string result = "{" + space();
    for (std::uint64_t left = randomBelow(6); left > 0; --left) {
        const std::string name = oneIn(6) ? oneOf(otherNames) : oneOf(knownNames);
        result += '"' + name + '"' + space() + ':' + space();
        // Mostly of the right type, since one wrong member decides.
        if (oneIn(12)) {
            result += value(depth);
        } else if (isRequest && depth > 0 && name == "signature") {
            result += object(depth - 1, false);
        } else {
            result += name == "genPairs" ? oneOf(std::array{"true", "false"}) : text();
        }
        result += space() + (left > 1 ? "," : "") + space();
    }
    return result + "}";
}

std::string array(unsigned depth) {
    std::string result = "[" + space();
    for (std::uint64_t left = randomBelow(4); left > 0; --left) {
        result += value(depth) + space() + (left > 1 ? "," : "");
    }
    return result + "]";
}

/// A value of any type, with so many levels of arrays and objects in it at most.
std::string value(unsigned depth) {
    switch (randomBelow(depth == 0 ? 4 : 7)) {
        case 0:
            return text();
        case 1:
            return oneOf(numbers) + (oneIn(100) ? oneOf(badEnds) : "");
        case 2:
            return oneOf(std::array{"true", "false"});
        case 3:
            return "null";
        case 4:
            return array(depth - 1);
        default:
            return object(depth - 1, oneIn(2));
    }
}

std::string damaged(std::string body) {
    static constexpr std::string_view telling("{}[]:,\"\\ 0e.tn\xFF\0\x01", 17);
    const std::size_t place = randomBelow(body.size());
    switch (randomBelow(4)) {
        case 0:
            return body.erase(place, 1 + randomBelow(3));
        case 1:
            return body.substr(0, place);
        case 2:
            return body.insert(place, 1, telling[randomBelow(telling.size())]);
        default:
            body[place] = static_cast<char>(randomBelow(256));
            return body;
    }
}

}  // namespace

std::string randomJsonRequest() {
    std::string body = oneIn(20) ? "\xEF\xBB\xBF" : "";
    body += oneIn(30) ? value(3) : object(3, true);
    if (oneIn(30)) {
        body += oneOf(std::array{" x", "{}", ",", "\xEF\xBB\xBF", "]", "}", "//"});
    }
    return oneIn(3) ? damaged(body) : body;
}
