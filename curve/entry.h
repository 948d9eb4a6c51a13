#pragma once

#include <cstdint>

#include "core/core_integer.h"
#include "curve/curve_domain.h"
#include "curve/field_element.h"

/// What the rest of the program may call of `curve/`: each operation hands its arguments on to the
/// body of the same name in namespace core, where its contract stands, and does nothing else.
namespace coreEntry {

void fieldLoad(const std::uint8_t* stored, core::FieldElement& e);
int fieldCopy(const core::FieldElement& source, core::FieldElement& destination);

void curveSign(const core::CurveDomain& domain, const core::CoreInteger& privateScalar,
               const std::uint8_t* data, std::uint64_t length, const core::SignaturePair& pair);
std::uint8_t curveVerify(const core::CurveDomain& domain, const core::CurvePoint& publicPoint,
                         const std::uint8_t* data, std::uint64_t length,
                         const core::SignaturePair& pair);
void curveSignDigest(const core::CurveDomain& domain, const core::CoreInteger& privateScalar,
                     const std::uint8_t* digest, const core::SignaturePair& pair);
std::uint8_t curveVerifyDigest(const core::CurveDomain& domain, const core::CurvePoint& publicPoint,
                               const std::uint8_t* digest, const core::SignaturePair& pair);

}  // namespace coreEntry
