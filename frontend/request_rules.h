#pragma once

#include <cstdint>

#include "frontend/request_record.h"

/// The rules that a request can break, in the order in which they are tried; but those on JSON
/// text, from `jsonSyntax` to `jsonMemory`, are met as it is read.
enum class RequestFault : std::uint8_t {
    none,

    formLengthUnset,  ///< CONTENT_LENGTH is not set
    formLengthZero,   ///< it counts as 0
    formLengthRange,  ///< it counts as 2^64 - 1, and no buffer has that room
    formBodyEmpty,    ///< nothing arrives
    formParameters,   ///< the parameters make no record, which does not happen

    jsonLengthUnset,
    jsonLengthZero,
    jsonBodyShort,   ///< fewer bytes arrive than are announced
    jsonZeroByte,    ///< no JSON text holds one
    jsonSyntax,      ///< the text is malformed
    jsonNumber,      ///< a number is out of the range of a double
    jsonNoObject,    ///< the text begins as another value
    jsonMemberType,  ///< a known member has another type than its own
    jsonMemory,      ///< there is no memory for the values

    noMode,
    noProject,
    unknownMode,   ///< the record asks for an operation that there is not
    noSignature,   ///< to verify
    noInput,       ///< neither data nor file
    twoInputs,     ///< data and file
    dataEncoding,  ///< neither plain nor base64
    dataBase64,    ///< the data are no base64
    generation,    ///< the engine makes no signature
};

/// The message that answers a request which breaks this rule; `none` is no rule and has none.
const char* messageOf(RequestFault fault);

/// The first rule on operation and project that a record breaks.
RequestFault selectionFault(const RequestRecord& record);

/// The first rule on what an operation works on that a record breaks.
RequestFault inputFault(const RequestRecord& record);
