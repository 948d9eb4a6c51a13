#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "tools/request/explanation.h"

/// A member of an object as the text gives it last.
struct JsonMember {
    std::string type{};       ///< of its value, as the library calls it
    std::string text{};       ///< of a string
    std::uint64_t times = 0;  ///< that the text gives it
};

using JsonObject = std::map<std::string, JsonMember>;

/// What a JSON text says on the two levels that count in a request. What lies deeper leaves
/// nothing.
struct JsonText {
    std::optional<Ruling> fault{};  ///< why it is no JSON text, if it is none
    std::string type{};             ///< of the value
    JsonObject request{};           ///< its members, if it is an object
    JsonObject signature{};         ///< those of the last `signature`, if that is an object
};

/// Reads a text. Raises std::bad_alloc when there is no memory for what it says.
JsonText readJsonText(std::string_view text);

/// Fills a `JsonText` from the events of `nlohmann::json::sax_parse`, which go by the parser's
/// names.
class JsonTextReader {
public:
    /// For a text of so many bytes.
    JsonTextReader(JsonText& read, std::size_t size) : read_(read), size_(size) {}

    bool null() { return value("null"); }
    bool boolean(bool) { return value("boolean"); }
    bool number_integer(nlohmann::json::number_integer_t) { return value("number"); }
    bool number_unsigned(nlohmann::json::number_unsigned_t) { return value("number"); }
    bool number_float(nlohmann::json::number_float_t, const std::string&) {
        return value("number");
    }
    bool string(std::string& text);
    bool binary(nlohmann::json::binary_t&) { return value("binary"); }
    bool start_object(std::size_t);
    bool key(const std::string& name);
    bool end_object() { return leave(); }
    bool start_array(std::size_t);
    bool end_array() { return leave(); }
    bool parse_error(std::size_t position, const std::string&,
                     const nlohmann::json::exception& error);

private:
    bool value(const char* type);
    void enter();
    bool leave();

    JsonText& read_;
    const std::size_t size_;
    JsonMember* member_ = nullptr;     ///< that the next value belongs to, if it counts
    JsonMember* signature_ = nullptr;  ///< the request's `signature`, once there is one
    std::size_t depth_ = 0;            ///< arrays and objects that are open
    bool inSignature_ = false;         ///< the second of these is the object `signature`
};
