#pragma once

#include <bitset>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "frontend/request_record.h"

/// Takes the members that fill a record out of a JSON text while `nlohmann::json::sax_parse` reads
/// it. All else is dropped as it comes, so that it takes no memory, however deep it goes.
///
/// Of several members of one name the last counts, and the types of those before it do not matter;
/// so a `signature` takes away all that an earlier one held, and is passed over itself if it is no
/// object.
class JsonMembers {
public:
    /// Fills this record, which must be fresh.
    explicit JsonMembers(RequestRecord& record) : record_(record) {}

    /// Whether each member that counts has its type, once the text is read.
    bool haveTheirTypes() const { return wrong_.none(); }

    // The parser's events, under its names. False ends the parsing: the text is no object, or
    // malformed.

    bool null() { return otherValue(); }
    bool boolean(bool value);
    bool number_integer(nlohmann::json::number_integer_t /*value*/) { return otherValue(); }
    bool number_unsigned(nlohmann::json::number_unsigned_t /*value*/) { return otherValue(); }
    bool number_float(nlohmann::json::number_float_t /*value*/, const std::string& /*text*/) {
        return otherValue();
    }
    bool string(std::string& value);
    bool binary(nlohmann::json::binary_t& /*value*/) { return otherValue(); }
    bool start_object(std::size_t elements);
    bool key(std::string_view name);
    bool end_object() { return leave(); }
    bool start_array(std::size_t elements);
    bool end_array() { return leave(); }
    static bool parse_error(std::size_t /*place*/, const std::string& /*read*/,
                            const nlohmann::json::exception& /*error*/) {
        return false;
    }

private:
    enum class Member {
        project,
        mode,
        encoding,
        genPairs,
        data,
        dataEncoding,
        file,
        signatureText,
        signature,  ///< the object around the last four; from here on, any type will do
        none,
    };
    static constexpr std::size_t membersWithAType = static_cast<std::size_t>(Member::signature);

    static Member memberOfRequest(std::string_view name);
    static Member memberOfSignature(std::string_view name);

    /// Takes note of the value's type, which fills no field.
    void passOver();
    bool otherValue();
    void forgetSignature();

    void enter();
    bool leave();

    RequestRecord& record_;
    std::bitset<membersWithAType> wrong_;  ///< those whose last value has another type
    Member member_ = Member::none;         ///< that the next value belongs to
    std::size_t depth_ = 0;                ///< arrays and objects that are open
    bool inSignature_ = false;             ///< the second of these is the object `signature`
};
