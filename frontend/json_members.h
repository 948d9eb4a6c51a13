#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "frontend/json_notes.h"
#include "frontend/request_record.h"
#include "frontend/request_rules.h"

/// Takes the members that fill a record out of a JSON text while `nlohmann::json::sax_parse` reads
/// it. All else is dropped as it comes, so that it takes no memory, however deep it goes, unless
/// somebody wants notes.
///
/// Of several members of one name the last counts, and the types of those before it do not matter;
/// so a `signature` takes away all that an earlier one held, and is passed over itself if it is no
/// object.
class JsonMembers {
public:
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

    /// A member that counts, and the type that its value must have.
    struct KnownMember {
        std::string_view name;
        Member member;
        const char* type;
    };
    static constexpr std::array<KnownMember, 5> requestMembers{
        {{"project", Member::project, "string"},
         {"mode", Member::mode, "string"},
         {"encoding", Member::encoding, "string"},
         {"genPairs", Member::genPairs, "boolean"},
         {"signature", Member::signature, nullptr}}};
    static constexpr std::array<KnownMember, 4> signatureMembers{
        {{"data", Member::data, "string"},
         {"encoding", Member::dataEncoding, "string"},
         {"file", Member::file, "string"},
         {"signature", Member::signatureText, "string"}}};

    /// Fills this record, which must be fresh, and the notes if there are any.
    explicit JsonMembers(RequestRecord& record, JsonNotes* notes = nullptr)
        : record_(record), notes_(notes) {}

    /// The rule that the text breaks, once it is read.
    RequestFault fault() const;

    // The parser's events, under its names. False ends the parsing: the text is no object, or
    // malformed.

    bool null() { return otherValue("null"); }
    bool boolean(bool value);
    bool number_integer(nlohmann::json::number_integer_t /*value*/) { return otherValue("number"); }
    bool number_unsigned(nlohmann::json::number_unsigned_t /*value*/) {
        return otherValue("number");
    }
    bool number_float(nlohmann::json::number_float_t /*value*/, const std::string& /*text*/) {
        return otherValue("number");
    }
    bool string(std::string& value);
    bool binary(nlohmann::json::binary_t& /*value*/) { return otherValue("binary"); }
    bool start_object(std::size_t elements);
    bool key(const std::string& name);
    bool end_object() { return leave(); }
    bool start_array(std::size_t elements);
    bool end_array() { return leave(); }
    bool parse_error(std::size_t place, const std::string& read,
                     const nlohmann::json::exception& error);

private:
    static constexpr std::size_t membersWithAType = static_cast<std::size_t>(Member::signature);

    /// Takes note of the value's type, which fills no field.
    void passOver();
    bool otherValue(const char* type);

    /// Whether a value that is no object may stand here: the text itself may be none.
    bool isInObject();
    void forgetSignature();

    void enter();
    bool leave();

    void noteName(JsonNotes::Object& object, const KnownMember* known, const std::string& name);
    void noteValue(const char* type);

    RequestRecord& record_;
    JsonNotes* notes_;
    JsonNotes::Member* noted_ = nullptr;       ///< that the next value belongs to, if it is noted
    std::bitset<membersWithAType> wrong_;      ///< those whose last value has another type
    RequestFault fault_ = RequestFault::none;  ///< that ended the parsing
    Member member_ = Member::none;             ///< that the next value belongs to
    std::size_t depth_ = 0;                    ///< arrays and objects that are open
    bool inSignature_ = false;                 ///< the second of these is the object `signature`
};
