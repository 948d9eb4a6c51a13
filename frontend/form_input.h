#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "frontend/request_record.h"
#include "frontend/request_rules.h"
#include "frontend/request_source.h"

/// Decoded form names and values, which may hold any byte; names in bytewise order.
using FormParameters = std::map<std::string, std::string>;

/// Replaces `parameters` by those of the request's form text; tells why there is none.
///
/// With `fromBody` the text is the body alone, as far as CONTENT_LENGTH announces it and up to its
/// first zero byte: there is none when the length is unset or 0, is 2^64 - 1 or more, or nothing
/// arrives. A length from 2^63 - 1 to 2^64 - 2 raises what `readRequestBody` raises. Without, it is
/// QUERY_STRING, less a pair of double quotation marks around it.
RequestFault readFormParameters(FormParameters& parameters, const RequestSource& source,
                                bool fromBody);

/// The form text in a body, of which no more is announced: what stands in front of its first zero
/// byte.
std::string_view formText(std::string_view body);

/// The number at the start of `text` as stream extraction reads an unsigned 64-bit one: white space
/// and one sign in front, reading stops at the first byte that is no digit, no digits give 0, a "-"
/// wraps around, and a number out of range gives 2^64 - 1.
std::uint64_t parseContentLength(std::string_view text);

/// Adds the pairs of `text`: pieces between "&", cut at their first "=" and decoded. Pieces without
/// one are dropped; the last occurrence of a decoded name wins.
void parseFormPairs(FormParameters& parameters, std::string_view text);

/// Decodes "+" to a space, and a "%" with two bytes behind it to one byte; at the end of the text
/// there may be fewer.
///
/// These bytes are read as a signed hexadecimal number by the rules of stream extraction (white
/// space and a sign in front, up to the first byte that is no digit, 0 if there is none); its low
/// eight bits are the byte. Nothing is refused: "%zz" gives a zero byte, "%-1" the byte FF.
std::string formDecode(std::string_view text);

/// The value of this name; empty if it is absent.
std::string getFormString(const FormParameters& parameters, const std::string& name);

/// False if the name is absent or its value is "false"; true for any other value, the empty one
/// too.
bool getFormBool(const FormParameters& parameters, const std::string& name);

/// The parameters that `fillRecordFromForm` knows.
inline constexpr std::array<std::string_view, 9> formParameterNames = {
    "project",  "sig_create",        "sig_verify", "encoding", "genpairs",
    "sig_data", "sig_data_encoding", "sig_file",   "sig"};

/// Copies the known parameters to `record`. When neither operation is selected, by a value of
/// exactly "true", `mode` is `none`. Always true.
bool fillRecordFromForm(const FormParameters& parameters, RequestRecord& record);
