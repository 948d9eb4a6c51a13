#pragma once

#include <span>
#include <string>
#include <variant>

#include "curve/signature_primitive.h"
#include "engine/mapped_file.h"
#include "engine/signature_text.h"
#include "frontend/base64_decoder.h"
#include "frontend/request_rules.h"
#include "project/project_file.h"
#include "project/project_key_record.h"
#include "tools/refusal.h"
#include "verifier/verdict_rules.h"

/// What else decides.
enum class Outcome : std::uint8_t {
    made,         ///< a signature is made
    noSignature,  ///< no attempt gives a signature
    unsoundKey,
    notDer,                ///< bytes that are no DER
    notHexadecimal,        ///< text that is no hexadecimal form
    formLengthImpossible,  ///< no string is so long
    formLengthMemory,      ///< there is no memory for the body
    jsonLengthImpossible,
    jsonLengthMemory,
    projectDirectory,   ///< the project is a directory
    projectNotRegular,  ///< nor a directory
};

/// What `projectctl check` finds beyond the faults of a project and its key.
enum class Finding : std::uint8_t {
    owner,
    permissions,
    folder,
    repeatedAttribute,
    shortCoordinate,
    dishonestLength,
    notReduced,
    infinity,
    offCurve,
    xZero,
    wrongOrder,
    negativeScalar,
    scalarRange,
    keyMismatch,
};

/// A rule by the enumerator of whoever reads by it.
using Cause = std::variant<RequestFault, Base64Fault, FileFault, ProjectFault, KeyFault,
                           SignatureFault, core::PairFault, Verdict, Outcome, Finding>;

/// One rule.
struct Rule {
    Cause cause;
    const char* code;      ///< stays the same when words change
    const char* sentence;  ///< what it says of a request
};

/// All rules, by the families of their codes: what stands before the point.
std::span<const Rule> rules();

/// The document that tells more of a rule.
const char* pageOf(const Rule& rule);

/// The rule of this cause, which must have one: raises std::out_of_range otherwise. `dataBase64`
/// and `generation` have none, since others tell why.
const Rule& ruleOf(const Cause& cause);

/// A refusal by this rule, in words.
Refusal refusalBy(const Cause& cause, std::string words);
