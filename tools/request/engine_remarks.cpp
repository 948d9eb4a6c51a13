#include "tools/request/engine_remarks.h"

#include <optional>
#include <utility>

#include "project/project_key_record.h"
#include "tools/files/input_file.h"
#include "tools/files/random_device.h"
#include "tools/project/key_reading.h"
#include "tools/project/project_check.h"
#include "tools/project/project_protection.h"
#include "tools/project/project_reading.h"
#include "tools/request/quoted_text.h"
#include "tools/signature/signature_reading.h"

namespace {

using Remarks = std::vector<std::string>;

void remarkZeroByte(const std::string& name, const std::string& text, Remarks& remarks) {
    const std::string counting = beforeZero(text);
    if (counting.size() != text.size()) {
        remarks.push_back(name + " ends at its zero byte, and counts as " + quotation(counting));
    }
}

bool isLoaded(const EngineReport& engine) {
    return engine.hasData && engine.loading.fault == ProjectFault::none;
}

void remarkInput(const RequestRun& run, const RequestNames& names, Remarks& remarks) {
    const RequestRecord& record = run.record;
    const bool base64 = record.signatureDataEncoding == TextEncoding::base64;
    if (base64 && record.signatureData.size() > 4) {
        remarks.push_back(
            "base64 data of more than four characters decode with one zero byte in "
            "front of their last group, and the signature is over that byte too");
    }
    if (base64 && !record.signatureFile.empty()) {
        remarks.push_back("the content of a file counts as it stands, whatever " +
                          names.dataEncoding + " says");
    }
}

void remarkFileSize(const RequestRun& run, Remarks& remarks) {
    if (const auto remark = inputFileRemark(run.engine.input)) {
        remarks.push_back("the file " + quotation(beforeZero(run.record.signatureFile)) + ": " +
                          *remark);
    }
}

void remarkProtection(const RequestRun& run, Remarks& remarks) {
    if (!isLoaded(run.engine)) {
        return;
    }
    const std::string path = beforeZero(run.record.project);
    const bool holdsScalar = run.engine.project.attributeSize(privateScalarAttribute) != 0;
    for (const ProjectFinding& finding : checkProtection(path, holdsScalar)) {
        remarks.push_back("the project " + quotation(path) + ": " + finding.text);
    }
}

/// A remark on an unsound key that signs.
void remarkUnsoundKey(const RequestRun& run, Remarks& remarks) {
    if (!isLoaded(run.engine) || run.engine.key.fault != KeyFault::none) {
        return;
    }
    if (const std::optional<std::string> unsound = unsoundKey(run.engine.project)) {
        remarks.push_back("signatures under the key of the project " +
                          quotation(beforeZero(run.record.project)) +
                          " cannot be relied on: " + *unsound);
    }
}

}  // namespace

std::vector<std::string> engineRemarks(const RequestRun& run, const RequestNames& names) {
    const RequestRecord& record = run.record;
    Remarks remarks;
    remarkZeroByte(names.project, record.project, remarks);
    remarkProtection(run, remarks);
    remarkInput(run, names, remarks);
    remarkZeroByte(names.file, record.signatureFile, remarks);
    remarkFileSize(run, remarks);
    if (record.mode == RequestMode::verifySignature) {
        remarkZeroByte(names.signature, record.signature, remarks);
        for (std::string& remark : signatureRemarks(beforeZero(record.signature))) {
            remarks.push_back(std::move(remark));
        }
    } else {
        remarkUnsoundKey(run, remarks);
        if (std::optional<std::string> remark = randomDeviceRemark()) {
            remarks.push_back(std::move(*remark));
        }
    }
    return remarks;
}
