#include "frontend/json_members.h"

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

}  // namespace

JsonMembers::Member JsonMembers::memberOfRequest(std::string_view name) {
    if (name == "project") {
        return Member::project;
    }
    if (name == "mode") {
        return Member::mode;
    }
    if (name == "encoding") {
        return Member::encoding;
    }
    if (name == "genPairs") {
        return Member::genPairs;
    }
    return name == "signature" ? Member::signature : Member::none;
}

JsonMembers::Member JsonMembers::memberOfSignature(std::string_view name) {
    if (name == "data") {
        return Member::data;
    }
    if (name == "encoding") {
        return Member::dataEncoding;
    }
    if (name == "file") {
        return Member::file;
    }
    return name == "signature" ? Member::signatureText : Member::none;
}

bool JsonMembers::key(std::string_view name) {
    if (depth_ == 1) {
        member_ = memberOfRequest(name);
    } else if (depth_ == 2 && inSignature_) {
        member_ = memberOfSignature(name);
    }
    return true;
}

bool JsonMembers::string(std::string& value) {
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
            return otherValue();
    }
    wrong_.reset(static_cast<std::size_t>(member_));
    return true;
}

bool JsonMembers::boolean(bool value) {
    if (member_ != Member::genPairs) {
        return otherValue();
    }
    record_.genPairs = value;
    wrong_.reset(static_cast<std::size_t>(member_));
    return true;
}

bool JsonMembers::start_object(std::size_t /*elements*/) {
    if (depth_ == 1) {
        inSignature_ = member_ == Member::signature;
    }
    passOver();
    enter();
    return true;
}

bool JsonMembers::start_array(std::size_t /*elements*/) {
    const bool inObject = otherValue();
    enter();
    return inObject;
}

bool JsonMembers::otherValue() {
    passOver();
    return depth_ != 0;
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
    ++depth_;
}

bool JsonMembers::leave() {
    --depth_;
    return true;
}
