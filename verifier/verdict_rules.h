#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <variant>

#include "curve/signature_primitive.h"
#include "engine/mapped_file.h"
#include "engine/signature_text.h"
#include "project/project_file.h"
#include "project/project_key_record.h"

// The rules that decide a verdict, for the C library and for the tools, which add rules of their
// own.

/// What decides where no reader finds a fault.
enum class Verdict : std::uint8_t {
    valid,          ///< the signature is valid
    mismatch,       ///< the signature is of other data or of another key
    paddedR,        ///< r has more zeros in front than verifying accepts
    noData,         ///< the data are of no bytes
    projectMemory,  ///< there is not enough memory for the project
};

/// A rule by the enumerator of whoever reads by it.
using VerdictCause =
    std::variant<FileFault, ProjectFault, KeyFault, SignatureFault, core::PairFault, Verdict>;

/// One rule.
struct VerdictRule {
    VerdictCause cause;
    const char* code;      ///< stays the same when words change
    const char* sentence;  ///< what it says of the data, the project or the signature
};

inline constexpr auto verdictRules = std::to_array<VerdictRule>({
    {Verdict::noData, "data.empty", "The data stand for no bytes."},

    {FileFault::open, "file.open", "The file cannot be opened."},
    {FileFault::directory, "file.directory", "The file is a directory."},
    {FileFault::notRegular, "file.no-regular", "The file is not a regular file."},
    {FileFault::empty, "file.empty", "The file is empty."},
    {FileFault::noBytes, "file.no-bytes",
     "The file's size is a multiple of 2^32, so none of its bytes count."},
    {FileFault::tooLarge, "file.too-large", "The file's size modulo 2^32 is 2^31 or more."},
    {FileFault::mapping, "file.mapping", "The file cannot be mapped into memory."},
    {FileFault::changed, "file.changed", "The file became shorter while it was mapped."},
    {FileFault::cut, "file.cut", "The file became shorter while it was read."},

    {ProjectFault::open, "project.open", "The project cannot be opened."},
    {ProjectFault::unreadable, "project.unreadable", "The project cannot be read."},
    {Verdict::projectMemory, "project.memory", "There is not enough memory for the project."},
    {ProjectFault::header, "project.header", "The project is shorter than a header."},
    {ProjectFault::magic, "project.magic", "The file does not begin like a project."},
    {ProjectFault::noBody, "project.no-body", "The project has a header and nothing after it."},
    {ProjectFault::digest, "project.digest", "The project's digest is not that of its body."},
    {ProjectFault::directory, "project.entries", "The project's directory is cut short."},
    {ProjectFault::emptyValue, "project.entry-empty", "A value of the project has no bytes."},
    {ProjectFault::valueRange, "project.entry-range", "A value runs past the end of the project."},

    {KeyFault::absent, "key.absent", "An attribute of the key is absent."},
    {KeyFault::tooLarge, "key.too-large", "An attribute of the key has more bytes than are taken."},
    {KeyFault::tooManyBits, "key.too-many-bits",
     "An attribute of the key states more bits than there is room for."},
    {KeyFault::zeroScalar, "key.zero-scalar", "The private scalar is zero."},
    {KeyFault::noBits, "key.no-bits", "The public point states no bits."},
    {KeyFault::bitsDiffer, "key.bits-differ",
     "The coordinates of the public point state different numbers of bits."},
    {KeyFault::degree, "key.degree", "A coordinate does not state the bits of the curve's field."},

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
     "r has more leading zeros than an accepted signature may have."},
    {Verdict::mismatch, "signature.mismatch", "The signature is of other data or of another key."},
    {Verdict::valid, "signature.valid", "The signature is valid."},
});

/// The code of the rule of this cause; null for the enumerators `none`, which have no rule.
constexpr const char* codeOf(const VerdictCause& cause) {
    const auto* const rule =
        std::find_if(verdictRules.begin(), verdictRules.end(),
                     [&](const VerdictRule& row) { return row.cause == cause; });
    return rule == verdictRules.end() ? nullptr : rule->code;
}
