#include "tests/program/random_request.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "tests/program/random_choice.h"
#include "tests/program/sign_program.h"

namespace {

using nlohmann::json;
using Pairs = std::vector<std::pair<std::string, std::string>>;

/// What a request says, before it becomes a form or JSON.
struct Words {
    bool generates = oneIn(2);
    std::string project;
    std::string encoding;
    std::string pairs;
    std::string data;
    std::string dataEncoding;
    std::string file;
    std::string signature;
};

Words randomWords(const RequestMaterial& material) {
    Words words;
    words.project = oneIn(40) ? randomText() : material.project();
    if (oneIn(3)) {
        words.encoding = anyOf({"plain", "base64", "urlencode", "json", "JSON", "xml"});
    }
    if (oneIn(4)) {
        words.pairs = anyOf({"true", "false", "1", "no"});
    }
    (oneIn(2) ? words.data : words.file) = oneIn(2) ? "" : "x";
    if (!words.file.empty() || oneIn(20)) {
        words.file = material.file();
    }
    if (words.file.empty() || oneIn(20)) {
        words.data = oneIn(20) ? "" : RequestMaterial::data();
    }
    if (oneIn(3)) {
        words.dataEncoding = oneIn(4) ? anyOf({"json", "urlencode", "hex", "Base64"})
                                      : anyOf({"plain", "base64", "base64"});
    }
    if (!words.generates || oneIn(10)) {
        words.signature = oneIn(30) ? "" : material.signature();
    }
    return words;
}

std::string formBody(const Words& words) {
    Pairs pairs;
    const auto add = [&](const std::string& name, const std::string& value) {
        if (!value.empty() || oneIn(8)) {
            pairs.emplace_back(oneIn(100) ? name + "x" : name, value);
        }
    };
    const std::string selected = oneIn(20) ? anyOf({"True", "1", "", "false", " true"}) : "true";
    add(words.generates ? "sig_create" : "sig_verify", selected);
    if (oneIn(20)) {
        add("sig_create", anyOf({"true", "false"}));
    }
    add("project", words.project);
    add("encoding", words.encoding);
    add("genpairs", words.pairs);
    add("sig_data", words.data);
    add("sig_data_encoding", words.dataEncoding);
    add("sig_file", words.file);
    add("sig", words.signature);
    if (oneIn(20)) {
        add(oneOf(pairs).first, randomText());
    }
    return formText(pairs);
}

json valueOfAnyType() {
    return oneOf(std::vector<json>{nullptr,
                                   true,
                                   false,
                                   1,
                                   -1.5,
                                   "x",
                                   "",
                                   json::array({"a"}),
                                   json::object(),
                                   {{"data", "abc"}},
                                   {{"file", 1}}});
}

/// Text of a JSON value, with a rare number in it that no number holds.
std::string jsonText(const json& value) {
    std::string text = value.dump(oneIn(4) ? 2 : -1, ' ', oneIn(2), json::error_handler_t::replace);
    return oneIn(60) ? "{\"n\":1e999," + text.substr(1) : text;
}

std::string jsonBody(const Words& words) {
    const auto add = [](json& object, const char* name, const std::string& value) {
        if (oneIn(100)) {
            object[name] = valueOfAnyType();
        } else if (!value.empty() || oneIn(8)) {
            object[name] = value;
        }
    };
    json body;
    const std::string mode = words.generates ? "generateSignature" : "verifySignature";
    add(body, "mode", oneIn(25) ? anyOf({"sign", "", "GenerateSignature"}) : mode);
    add(body, "project", words.project);
    add(body, "encoding", words.encoding);
    if (!words.pairs.empty()) {
        body["genPairs"] = oneIn(8) ? json(words.pairs) : json(words.pairs == "true");
    }
    json signature = json::object();
    add(signature, "data", words.data);
    add(signature, "encoding", words.dataEncoding);
    add(signature, "file", words.file);
    add(signature, "signature", words.signature);
    if (!oneIn(40)) {
        body["signature"] = oneIn(40) ? valueOfAnyType() : signature;
    }
    if (oneIn(40)) {
        body[randomText()] = valueOfAnyType();
    }
    if (oneIn(40)) {
        body = valueOfAnyType();
    }
    return jsonText(body);
}

std::optional<std::string> randomLength(const std::string& body) {
    const std::string size = std::to_string(body.size());
    if (!oneIn(8)) {
        return size;
    }
    if (oneIn(8)) {
        return std::nullopt;
    }
    return anyOf({std::to_string(body.size() + 1 + randomBelow(20)),
                  std::to_string(randomBelow(body.size() + 1)),
                  size + "x",
                  " " + size,
                  "+" + size,
                  "0" + size,
                  "-" + size,
                  size + " ",
                  "0",
                  "-0",
                  "",
                  "x",
                  "-1",
                  "-2",
                  "9223372036854775807",
                  "9223372036854775808",
                  "18446744073709551614",
                  "18446744073709551615",
                  "18446744073709551616",
                  "18446744073709551618",
                  "-18446744073709551615",
                  "-18446744073709551600",
                  "-9223372036854775808",
                  "1000000000",
                  "99999999999999999999999999"});
}

std::optional<std::string> randomType(bool isJson) {
    const std::string usual = isJson ? "application/json" : "application/x-www-form-urlencoded";
    if (!oneIn(30)) {
        return usual;
    }
    return oneIn(4) ? std::nullopt
                    : std::optional(anyOf({"application/json; charset=utf-8", "Application/json",
                                           "application/json", "text/plain", ""}));
}

}  // namespace

RawRequest randomRequest(const RequestMaterial& material) {
    const bool isJson = oneIn(2);
    const Words words = randomWords(material);
    RawRequest request;
    request.body = isJson ? jsonBody(words) : formBody(words);
    if (oneIn(6)) {
        mutate(request.body);
    }
    if (oneIn(60)) {
        request.body.insert(randomBelow(request.body.size() + 1), 1, '\0');
    }
    if (oneIn(60)) {
        request.body = randomText();
    }
    request.contentLength = randomLength(request.body);
    if (oneIn(100)) {
        request.body.clear();
    }
    request.contentType = randomType(isJson);
    return request;
}
