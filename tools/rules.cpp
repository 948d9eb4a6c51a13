#include "tools/rules.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace {

constexpr auto table = std::to_array<Rule>({
    {RequestFault::formLengthUnset, "form.length-unset",
     "A form needs CONTENT_LENGTH: without it there is no body."},
    {RequestFault::formLengthZero, "form.length-zero",
     "The number at the start of CONTENT_LENGTH is 0, or there is none."},
    {RequestFault::formLengthRange, "form.length-range",
     "CONTENT_LENGTH counts as 2^64 - 1, which no buffer has room for."},
    {RequestFault::formBodyEmpty, "form.body-empty", "A body is announced, and nothing arrives."},
    {Verdict::formLengthImpossible, "form.length-impossible",
     "2^63 - 1 bytes or more are announced: the program ends without a response."},
    {Verdict::formLengthMemory, "form.length-memory",
     "There is no memory for the announced body: the program ends without a response."},
    {RequestFault::formParameters, "form.parameters",
     "The parameters make no record, which does not happen."},

    {RequestFault::jsonLengthUnset, "json.length-unset",
     "JSON needs CONTENT_LENGTH: without it there is no body."},
    {RequestFault::jsonLengthZero, "json.length-zero",
     "CONTENT_LENGTH is 0 or no decimal number, which counts as 0."},
    {Verdict::jsonLengthImpossible, "json.length-impossible",
     "2^63 - 1 bytes or more are announced: the program ends without a response."},
    {Verdict::jsonLengthMemory, "json.length-memory",
     "There is no memory for the announced body: the program ends without a response."},
    {RequestFault::jsonBodyShort, "json.body-short", "Fewer bytes arrive than are announced."},
    {RequestFault::jsonZeroByte, "json.zero-byte",
     "The body holds a zero byte, which no JSON text does."},
    {RequestFault::jsonSyntax, "json.syntax", "The body is malformed JSON."},
    {RequestFault::jsonNumber, "json.number", "The body holds a number that no double can hold."},
    {RequestFault::jsonNoObject, "json.no-object",
     "The body is another JSON value than an object."},
    {RequestFault::jsonMemberType, "json.member-type",
     "A known member has another type than its own."},
    {RequestFault::jsonMemory, "json.memory",
     "There is not enough memory for the values of the body."},

    {RequestFault::noMode, "request.mode", "No operation is selected."},
    {RequestFault::noProject, "request.project", "No project is named."},
    {RequestFault::noSignature, "request.no-signature", "There is no signature to verify."},
    {RequestFault::noInput, "request.no-input", "There is neither data nor a file."},
    {RequestFault::twoInputs, "request.two-inputs", "There are both data and a file."},
    {RequestFault::dataEncoding, "request.data-encoding",
     "The data are written neither as plain nor as base64."},
    {RequestFault::unknownMode, "request.mode-unknown",
     "The record asks for an operation that the program does not have, which does not happen."},

    {Base64Fault::length, "base64.length",
     "Base64 data are whole groups of four characters, and at least one."},
    {Base64Fault::character, "base64.character",
     "A character of the base64 data is outside the alphabet."},
    {Base64Fault::padding, "base64.padding", "\"=\" stands only at the end of base64 data."},
    {Verdict::noData, "data.empty", "The data stand for no bytes."},

    {FileFault::open, "file.open", "The file cannot be opened."},
    {FileFault::directory, "file.directory", "The file is a directory."},
    {FileFault::notRegular, "file.no-regular", "The file is not a regular file."},
    {FileFault::empty, "file.empty", "The file is empty."},
    {FileFault::noBytes, "file.no-bytes",
     "The file's size is a multiple of 2^32, of which nothing counts."},
    {FileFault::tooLarge, "file.too-large", "The file's size modulo 2^32 is 2^31 or more."},
    {FileFault::mapping, "file.mapping", "The file cannot be mapped into memory."},
    {FileFault::changed, "file.changed", "The file became shorter while it was mapped."},
    {FileFault::cut, "file.cut", "The file became shorter while it was read."},

    {ProjectFault::open, "project.open", "The project cannot be opened."},
    {Verdict::projectDirectory, "project.directory", "The project is a directory."},
    {Verdict::projectNotRegular, "project.no-regular", "The project is not a regular file."},
    {ProjectFault::unreadable, "project.unreadable", "The project cannot be read."},
    {Verdict::projectMemory, "project.memory", "There is not enough memory for the project."},
    {ProjectFault::header, "project.header", "The project is shorter than a header."},
    {ProjectFault::magic, "project.magic", "The file does not begin as a project."},
    {ProjectFault::noBody, "project.no-body", "The project has a header and nothing behind it."},
    {ProjectFault::digest, "project.digest", "The project's digest is not that of its body."},
    {ProjectFault::directory, "project.entries", "The project's directory is cut short."},
    {ProjectFault::emptyValue, "project.entry-empty", "A value of the project has no bytes."},
    {ProjectFault::valueRange, "project.entry-range", "A value runs past the end of the project."},
    {Finding::repeatedAttribute, "project.repeated-attribute",
     "An attribute stands more than once in the project's directory."},
    {Finding::owner, "project.owner", "The project belongs to somebody who can replace its key."},
    {Finding::permissions, "project.permissions",
     "Others can read the private scalar or change the project."},
    {Finding::folder, "project.folder",
     "Others can replace the project by way of a folder above it."},

    {KeyFault::absent, "key.absent", "An attribute of the key is absent."},
    {KeyFault::tooLarge, "key.too-large", "An attribute of the key has more bytes than are taken."},
    {KeyFault::tooManyBits, "key.too-many-bits",
     "An attribute of the key states more bits than there is room for."},
    {KeyFault::zeroScalar, "key.zero-scalar", "The private scalar is zero."},
    {KeyFault::noBits, "key.no-bits", "The public point states no bits."},
    {KeyFault::bitsDiffer, "key.bits-differ",
     "The coordinates of the public point state different numbers of bits."},
    {KeyFault::degree, "key.degree", "A coordinate does not state the bits of the curve's field."},
    {Verdict::unsoundKey, "key.unsound", "Signatures under the key cannot be relied on."},
    {Finding::shortCoordinate, "key.short-coordinate",
     "A coordinate has fewer bytes than it states."},
    {Finding::dishonestLength, "key.dishonest-length",
     "An attribute of the key has another length than it states."},
    {Finding::notReduced, "key.not-reduced",
     "A coordinate has bits at or above the degree of the field."},
    {Finding::infinity, "key.infinity",
     "A point of the key is (0, 0), which is no point of the curve."},
    {Finding::offCurve, "key.off-curve", "A point of the key is not on the curve."},
    {Finding::xZero, "key.x-zero", "A point of the key is the one of order 2."},
    {Finding::wrongOrder, "key.wrong-order", "A point of the key is not of order n."},
    {Finding::negativeScalar, "key.negative-scalar",
     "The private scalar is marked as negative, which the program ignores."},
    {Finding::scalarRange, "key.scalar-range", "The private scalar is not from 1 to n - 1."},
    {Finding::keyMismatch, "key.mismatch",
     "The public point is not the product of the private scalar and the base point."},

    {SignatureFault::empty, "signature.empty", "The signature is empty."},
    {SignatureFault::tooLong, "signature.too-long", "The signature has more than 128 characters."},
    {SignatureFault::groups, "signature.groups",
     "The signature's characters are not whole groups of four."},
    {SignatureFault::padding, "signature.padding",
     "The signature has more \"=\" than its groups have bytes."},
    {SignatureFault::tooManyBytes, "signature.too-many-bytes",
     "The signature stands for more than 42 bytes."},
    {SignatureFault::noBytes, "signature.no-bytes", "The signature stands for no bytes."},
    {SignatureFault::odd, "signature.odd", "The signature stands for an odd number of bytes."},
    {core::PairFault::rZero, "signature.r-zero", "r is zero."},
    {core::PairFault::sZero, "signature.s-zero", "s is zero."},
    {core::PairFault::rRange, "signature.r-range", "r is not below the order."},
    {core::PairFault::sRange, "signature.s-range", "s is not below the order."},
    {Verdict::paddedR, "signature.r-padded",
     "r has more zeros in front than any accepted signature."},
    {Verdict::notDer, "signature.der", "The bytes are no signature in DER."},
    {Verdict::notHexadecimal, "signature.hexadecimal",
     "The text is no signature in hexadecimal digits."},
    {Verdict::mismatch, "signature.mismatch", "The signature is of other data or of another key."},
    {Verdict::noSignature, "signature.none", "No attempt under the key gives a signature."},
    {Verdict::made, "signature.made", "A signature is made."},
    {Verdict::valid, "signature.valid", "The signature is valid."},
});

}  // namespace

std::span<const Rule> rules() {
    return table;
}

const char* pageOf(const Rule& rule) {
    const std::string_view code = rule.code;
    if (code.starts_with("project.") || code.starts_with("key.")) {
        return "project-file(5)";
    }
    return code.starts_with("signature.") ? "docs/formats.md" : "docs/http-interface.md";
}

const Rule& ruleOf(const Cause& cause) {
    const auto rule = std::find_if(table.begin(), table.end(),
                                   [&](const Rule& row) { return row.cause == cause; });
    if (rule == table.end()) {
        std::abort();
    }
    return *rule;
}

Refusal refusalBy(const Cause& cause, std::string words) {
    return {ruleOf(cause).code, std::move(words)};
}
