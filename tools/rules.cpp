#include "tools/rules.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>
#include <utility>

namespace {

/// The rules beside those that decide a verdict.
constexpr auto otherRules = std::to_array<Rule>({
    {RequestFault::formLengthUnset, "form.length-unset",
     "A form needs CONTENT_LENGTH: without it there is no body."},
    {RequestFault::formLengthZero, "form.length-zero",
     "The number at the start of CONTENT_LENGTH is 0, or there is none."},
    {RequestFault::formLengthRange, "form.length-range",
     "CONTENT_LENGTH counts as 2^64 - 1, which no buffer has room for."},
    {RequestFault::formBodyEmpty, "form.body-empty", "A body is announced, and nothing arrives."},
    {Outcome::formLengthImpossible, "form.length-impossible",
     "2^63 - 1 bytes or more are announced: the program ends without a response."},
    {Outcome::formLengthMemory, "form.length-memory",
     "There is no memory for the announced body: the program ends without a response."},
    {RequestFault::formParameters, "form.parameters",
     "The parameters make no record, which does not happen."},

    {RequestFault::jsonLengthUnset, "json.length-unset",
     "JSON needs CONTENT_LENGTH: without it there is no body."},
    {RequestFault::jsonLengthZero, "json.length-zero",
     "CONTENT_LENGTH is 0, or it is not a decimal number and counts as 0."},
    {Outcome::jsonLengthImpossible, "json.length-impossible",
     "2^63 - 1 bytes or more are announced: the program ends without a response."},
    {Outcome::jsonLengthMemory, "json.length-memory",
     "There is no memory for the announced body: the program ends without a response."},
    {RequestFault::jsonBodyShort, "json.body-short", "Fewer bytes arrive than are announced."},
    {RequestFault::jsonZeroByte, "json.zero-byte",
     "The body holds a zero byte, which JSON does not allow."},
    {RequestFault::jsonSyntax, "json.syntax", "The body is malformed JSON."},
    {RequestFault::jsonNumber, "json.number", "The body holds a number that no double can hold."},
    {RequestFault::jsonNoObject, "json.no-object", "The body is JSON, but not an object."},
    {RequestFault::jsonMemberType, "json.member-type", "A known member has the wrong type."},
    {RequestFault::jsonMemory, "json.memory",
     "There is not enough memory for the values of the body."},

    {RequestFault::noMode, "request.mode", "No operation is selected."},
    {RequestFault::noProject, "request.project", "No project is named."},
    {RequestFault::noSignature, "request.no-signature", "There is no signature to verify."},
    {RequestFault::noInput, "request.no-input", "There is neither data nor a file."},
    {RequestFault::twoInputs, "request.two-inputs", "There are both data and a file."},
    {RequestFault::dataEncoding, "request.data-encoding",
     "The encoding of the data is neither plain nor base64."},
    {RequestFault::unknownMode, "request.mode-unknown",
     "The record asks for an operation that the program does not have, which does not happen."},

    {Base64Fault::length, "base64.length",
     "Base64 data are whole groups of four characters, and at least one."},
    {Base64Fault::character, "base64.character",
     "A character of the base64 data is outside the alphabet."},
    {Base64Fault::padding, "base64.padding", "\"=\" may stand only at the end of base64 data."},

    {Outcome::projectDirectory, "project.directory", "The project is a directory."},
    {Outcome::projectNotRegular, "project.no-regular", "The project is not a regular file."},
    {Finding::repeatedAttribute, "project.repeated-attribute",
     "An attribute stands more than once in the project's directory."},
    {Finding::owner, "project.owner", "The project belongs to somebody who can replace its key."},
    {Finding::permissions, "project.permissions",
     "Others can read the private scalar or change the project."},
    {Finding::folder, "project.folder",
     "Others can replace the project through a folder above it."},

    {Outcome::unsoundKey, "key.unsound", "Signatures under the key cannot be relied on."},
    {Finding::shortCoordinate, "key.short-coordinate",
     "A coordinate has fewer bytes than it states."},
    {Finding::dishonestLength, "key.dishonest-length",
     "An attribute of the key has another length than it states."},
    {Finding::notReduced, "key.not-reduced",
     "A coordinate has bits at or above the degree of the field."},
    {Finding::infinity, "key.infinity",
     "A point of the key is (0, 0), which is not a point of the curve."},
    {Finding::offCurve, "key.off-curve", "A point of the key is not on the curve."},
    {Finding::xZero, "key.x-zero", "A point of the key is the one of order 2."},
    {Finding::wrongOrder, "key.wrong-order", "A point of the key is not of order n."},
    {Finding::negativeScalar, "key.negative-scalar",
     "The private scalar is marked as negative, which the program ignores."},
    {Finding::scalarRange, "key.scalar-range", "The private scalar is not from 1 to n - 1."},
    {Finding::keyMismatch, "key.mismatch",
     "The public point is not the product of the private scalar and the base point."},

    {Outcome::notDer, "signature.der", "The bytes are not a signature in DER."},
    {Outcome::notHexadecimal, "signature.hexadecimal",
     "The text is not a signature in hexadecimal digits."},
    {Outcome::noSignature, "signature.none", "No attempt under the key gives a signature."},
    {Outcome::made, "signature.made", "A signature is made."},
});

std::string_view familyOf(const Rule& rule) {
    const std::string_view code = rule.code;
    return code.substr(0, code.find('.'));
}

std::array<Rule, verdictRules.size() + otherRules.size()> allRules() {
    std::array<Rule, verdictRules.size() + otherRules.size()> all;
    const auto others = std::transform(
        verdictRules.begin(), verdictRules.end(), all.begin(), [](const VerdictRule& rule) -> Rule {
            return {std::visit([](auto fault) { return Cause(fault); }, rule.cause), rule.code,
                    rule.sentence};
        });
    std::copy(otherRules.begin(), otherRules.end(), others);
    std::stable_sort(all.begin(), all.end(), [](const Rule& one, const Rule& other) {
        return familyOf(one) < familyOf(other);
    });
    return all;
}

}  // namespace

std::span<const Rule> rules() {
    static const auto table = allRules();
    return table;
}

const char* pageOf(const Rule& rule) {
    const std::string_view family = familyOf(rule);
    if (family == "project" || family == "key") {
        return "project-file(5)";
    }
    return family == "signature" || family == "file" ? "docs/formats.md" : "docs/http-interface.md";
}

const Rule& ruleOf(const Cause& cause) {
    static const auto table = [] {
        std::map<Cause, const Rule*> byCause;
        for (const Rule& rule : rules()) {
            byCause.emplace(rule.cause, &rule);
        }
        return byCause;
    }();
    return *table.at(cause);
}

Refusal refusalBy(const Cause& cause, std::string words) {
    return {ruleOf(cause).code, std::move(words)};
}
