#include "frontend/request_record.h"

TextEncoding parseTextEncoding(std::string_view word) {
    if (word == "plain") {
        return TextEncoding::plain;
    }
    if (word == "base64") {
        return TextEncoding::base64;
    }
    if (word == "urlencode") {
        return TextEncoding::urlencode;
    }
    if (word == "json") {
        return TextEncoding::json;
    }
    return TextEncoding::none;
}
