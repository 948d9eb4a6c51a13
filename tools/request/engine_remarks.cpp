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

void remarkInput(const RequestReading& reading, Remarks& remarks) {
    const RequestRecord& record = reading.record;
    const bool base64 = record.signatureDataEncoding == TextEncoding::base64;
    if (base64 && record.signatureData.size() > 4) {
        remarks.push_back(
            "base64 data of more than four characters decode with one zero byte in "
            "front of their last group, and the signature is over that byte too");
    }
    if (base64 && !record.signatureFile.empty()) {
        remarks.push_back("the content of a file counts as it stands, whatever " +
                          reading.names.dataEncoding + " says");
    }
}

void remarkFileSize(const std::string& path, Remarks& remarks) {
    if (inputFileRefusal(path).has_value()) {
        return;
    }
    if (const std::optional<std::string> remark = inputFileRemark(path)) {
        remarks.push_back("the file " + quotation(path) + ": " + *remark);
    }
}

void remarkProtection(const std::string& path, Remarks& remarks) {
    ProjectFile project;
    if (!project.load(path.c_str())) {
        return;
    }
    const bool holdsScalar = project.attributeSize(privateScalarAttribute) != 0;
    for (const ProjectFinding& finding : checkProtection(path, holdsScalar)) {
        remarks.push_back("the project " + quotation(path) + ": " + finding.text);
    }
}

/// A remark on an unsound key that signs.
void remarkUnsoundKey(const std::string& path, Remarks& remarks) {
    const ProjectReading reading = readProject(path);
    if (reading.refusal.has_value() || signingRefusal(reading.project).has_value()) {
        return;
    }
    if (const std::optional<std::string> unsound = unsoundKey(reading.project)) {
        remarks.push_back("signatures under the key of the project " + quotation(path) +
                          " cannot be relied on: " + *unsound);
    }
}

}  // namespace

std::vector<std::string> engineRemarks(const RequestReading& reading) {
    const RequestRecord& record = reading.record;
    Remarks remarks;
    remarkZeroByte(reading.names.project, record.project, remarks);
    remarkProtection(beforeZero(record.project), remarks);
    remarkInput(reading, remarks);
    if (!record.signatureFile.empty()) {
        remarkZeroByte(reading.names.file, record.signatureFile, remarks);
        remarkFileSize(beforeZero(record.signatureFile), remarks);
    }
    if (record.mode == RequestMode::verifySignature) {
        remarkZeroByte(reading.names.signature, record.signature, remarks);
        for (std::string& remark : signatureRemarks(beforeZero(record.signature))) {
            remarks.push_back(std::move(remark));
        }
    } else {
        remarkUnsoundKey(beforeZero(record.project), remarks);
        if (std::optional<std::string> remark = randomDeviceRemark()) {
            remarks.push_back(std::move(*remark));
        }
    }
    return remarks;
}
