#include "engine/key_rules.h"

#include <initializer_list>

#include "curve/sect163r2.h"

namespace {

KeyReport firstFault(std::initializer_list<KeyReport> reports) {
    for (const KeyReport& report : reports) {
        if (report.fault != KeyFault::none) {
            return report;
        }
    }
    return {};
}

}  // namespace

KeyReport coordinateFault(const ProjectKeyRecord& record, ProjectAttributeId id) {
    KeyReport report = record.loadingOf(id);
    const auto degree = static_cast<std::uint32_t>(core::sect163r2.domain.degree);
    if (report.fault == KeyFault::none && report.found != degree) {
        report.fault = KeyFault::degree;
        report.allowed = degree;
    }
    return report;
}

KeyReport signingFault(const ProjectKeyRecord& record) {
    return firstFault({record.privateScalarFault(), record.publicPointFault(),
                       coordinateFault(record, basePointXAttribute),
                       coordinateFault(record, basePointYAttribute)});
}

KeyReport verifyingFault(const ProjectKeyRecord& record) {
    return firstFault({record.publicPointFault(), coordinateFault(record, basePointXAttribute),
                       coordinateFault(record, basePointYAttribute),
                       coordinateFault(record, publicPointXAttribute),
                       coordinateFault(record, publicPointYAttribute)});
}
