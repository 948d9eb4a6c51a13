#include "curve/entry.h"

#include "curve/field.h"
#include "curve/signature_primitive.h"

namespace coreEntry {

void fieldLoad(const std::uint8_t* stored, core::FieldElement& e) {
    core::fieldLoad(stored, e);
}

int fieldCopy(const core::FieldElement& source, core::FieldElement& destination) {
    return core::fieldCopy(source, destination);
}

void curveSign(const core::CurveDomain& domain, const core::CoreInteger& privateScalar,
               const std::uint8_t* data, std::uint64_t length, const core::SignaturePair& pair) {
    core::curveSign(domain, privateScalar, data, length, pair);
}

std::uint8_t curveVerify(const core::CurveDomain& domain, const core::CurvePoint& publicPoint,
                         const std::uint8_t* data, std::uint64_t length,
                         const core::SignaturePair& pair) {
    return core::curveVerify(domain, publicPoint, data, length, pair);
}

void curveSignDigest(const core::CurveDomain& domain, const core::CoreInteger& privateScalar,
                     const std::uint8_t* digest, const core::SignaturePair& pair) {
    core::curveSignDigest(domain, privateScalar, digest, pair);
}

std::uint8_t curveVerifyDigest(const core::CurveDomain& domain, const core::CurvePoint& publicPoint,
                               const std::uint8_t* digest, const core::SignaturePair& pair) {
    return core::curveVerifyDigest(domain, publicPoint, digest, pair);
}

}  // namespace coreEntry
