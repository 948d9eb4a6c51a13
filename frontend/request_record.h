#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The operation that a request asks for.
enum class RequestMode : std::uint32_t { none, generateSignature, verifySignature };

/// How a text is written. `none` stands for all words but the four.
enum class TextEncoding : std::uint32_t {
    none = 0,
    plain = 1,
    base64 = 2,
    urlencode = 3,
    json = 4
};

/// The encoding of this name, compared as a whole and case-sensitively; `none` for any other word.
TextEncoding parseTextEncoding(std::string_view word);

/// A parsed request. Strings are byte strings, and an empty one is the same as an absent parameter.
struct RequestRecord {
    std::string project;  ///< path of the project file; ends at its first zero byte when it is used
    RequestMode mode = RequestMode::none;
    TextEncoding encoding = TextEncoding::none;  ///< how the result is rendered
    bool genPairs = false;                       ///< a result in text carries its name in front
    std::string signatureData;                   ///< as written in the request
    TextEncoding signatureDataEncoding = TextEncoding::none;  ///< how `signatureData` is written
    std::string signatureFile;  ///< path of the file to sign or verify
    std::string signature;      ///< signature text to verify
};
