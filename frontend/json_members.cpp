#include "frontend/json_members.h"

#include <algorithm>
#include <utility>

namespace {

RequestMode parseMode(std::string_view word) {
    if (word == "generateSignature") {
        return RequestMode::generateSignature;
    }
    if (word == "verifySignature") {
        return RequestMode::verifySignature;
    }
    return RequestMode::none;
}

/// The member of this name; null if none counts.
template <std::size_t Count>
const JsonMembers::KnownMember* memberOf(const std::array<JsonMembers::KnownMember, Count>& members,
                                         std::string_view name) {
    const auto* known = std::find_if(members.begin(), members.end(),
                                     [name](const auto& member) { return member.name == name; });
    return known == members.end() ? nullptr : known;
}

}  // namespace

RequestFault JsonMembers::fault() const {
    if (fault_ != RequestFault::none) {
        return fault_;
    }
    return wrong_.none() ? RequestFault::none : RequestFault::jsonMemberType;
}

bool JsonMembers::key(const std::string& name) {
    const bool ofSignature = depth_ == 2 && inSignature_;
    if (depth_ != 1 && !ofSignature) {
        return true;
    }
    const KnownMember* known =
        ofSignature ? memberOf(signatureMembers, name) : memberOf(requestMembers, name);
    member_ = known == nullptr ? Member::none : known->member;
    if (notes_ != nullptr) {
        noteName(ofSignature ? notes_->signature : notes_->request, known, name);
    }
    return true;
}

void JsonMembers::noteName(JsonNotes::Object& object, const KnownMember* known,
                           const std::string& name) {
    noted_ = known == nullptr ? nullptr : &object.known[known->name];
    if (member_ == Member::signature) {
        notes_->signature = {};
    }
    const std::string start = name.substr(0, JsonNotes::longestText);
    std::vector<std::string>& unknown = object.unknown;
    if (known != nullptr || std::find(unknown.begin(), unknown.end(), start) != unknown.end()) {
        return;
    }
    if (++object.unknownCount <= JsonNotes::mostUnknown) {
        unknown.push_back(start);
    }
}

void JsonMembers::noteValue(const char* type) {
    if (depth_ == 0 && notes_ != nullptr) {
        notes_->type = type;
    }
    if (noted_ != nullptr) {
        *noted_ = {.type = type, .times = noted_->times + 1};
    }
}

bool JsonMembers::string(std::string& value) {
    noteValue("string");
    if (noted_ != nullptr) {
        noted_->text = value.substr(0, JsonNotes::longestText);
    }
    switch (member_) {
        case Member::project:
            record_.project = std::move(value);
            break;
        case Member::mode:
            record_.mode = parseMode(value);
            break;
        case Member::encoding:
            record_.encoding = parseTextEncoding(value);
            break;
        case Member::data:
            record_.signatureData = std::move(value);
            break;
        case Member::dataEncoding:
            record_.signatureDataEncoding = parseTextEncoding(value);
            break;
        case Member::file:
            record_.signatureFile = std::move(value);
            break;
        case Member::signatureText:
            record_.signature = std::move(value);
            break;
        default:
            passOver();
            return isInObject();
    }
    wrong_.reset(static_cast<std::size_t>(member_));
    return true;
}

bool JsonMembers::boolean(bool value) {
    if (member_ != Member::genPairs) {
        return otherValue("boolean");
    }
    noteValue("boolean");
    record_.genPairs = value;
    wrong_.reset(static_cast<std::size_t>(member_));
    return true;
}

bool JsonMembers::start_object(std::size_t /*elements*/) {
    if (depth_ == 1) {
        inSignature_ = member_ == Member::signature;
    }
    noteValue("object");
    passOver();
    enter();
    return true;
}

bool JsonMembers::start_array(std::size_t /*elements*/) {
    const bool inObject = otherValue("array");
    enter();
    return inObject;
}

bool JsonMembers::otherValue(const char* type) {
    noteValue(type);
    passOver();
    return isInObject();
}

bool JsonMembers::isInObject() {
    if (depth_ == 0) {
        fault_ = RequestFault::jsonNoObject;
    }
    return depth_ != 0;
}

bool JsonMembers::parse_error(std::size_t place, const std::string& /*read*/,
                              const nlohmann::json::exception& error) {
    // A number that no double holds is the one text that is well-formed and cannot be read.
    const bool malformed = dynamic_cast<const nlohmann::json::parse_error*>(&error) != nullptr;
    fault_ = malformed ? RequestFault::jsonSyntax : RequestFault::jsonNumber;
    if (notes_ != nullptr) {
        notes_->place = place;
        notes_->complaint = error.what();
    }
    return false;
}

void JsonMembers::passOver() {
    if (member_ == Member::signature) {
        forgetSignature();
    } else if (member_ != Member::none) {
        wrong_.set(static_cast<std::size_t>(member_));
    }
}

void JsonMembers::forgetSignature() {
    record_.signatureData.clear();
    record_.signatureDataEncoding = TextEncoding::none;
    record_.signatureFile.clear();
    record_.signature.clear();
    for (const Member member :
         {Member::data, Member::dataEncoding, Member::file, Member::signatureText}) {
        wrong_.reset(static_cast<std::size_t>(member));
    }
}

void JsonMembers::enter() {
    // Nothing inside counts before a member's name is read.
    member_ = Member::none;
    noted_ = nullptr;
    ++depth_;
}

bool JsonMembers::leave() {
    --depth_;
    return true;
}
