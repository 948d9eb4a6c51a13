#include "verifier/sign_verify.h"

#include <cstdint>
#include <limits>
#include <mutex>
#include <span>

#include "core/entry.h"
#include "engine/mapped_file.h"
#include "engine/signature_text.h"
#include "engine/verify.h"
#include "project/project_file.h"
#include "verifier/pair_rules.h"
#include "verifier/verdict_rules.h"

namespace {

using Bytes = std::span<const std::uint8_t>;

/// The core, which serves one thread at a time, for the length of a call.
class CoreScope {
public:
    CoreScope() { coreEntry::coreStart(); }
    ~CoreScope() { coreEntry::coreStop(); }
    CoreScope(const CoreScope&) = delete;
    CoreScope& operator=(const CoreScope&) = delete;

private:
    static inline std::mutex calls;
    std::lock_guard<std::mutex> turn_{calls};
};

struct ProjectAtPath {
    const char* path;

    ProjectFault load(ProjectFile& project) const {
        return path == nullptr ? ProjectFault::open : project.loadReporting(path).fault;
    }
};

struct ProjectInMemory {
    Bytes bytes;

    ProjectFault load(ProjectFile& project) const { return project.loadBytes(bytes).fault; }
};

Bytes bytesAt(const void* start, std::size_t size) {
    return start == nullptr ? Bytes() : Bytes(static_cast<const std::uint8_t*>(start), size);
}

/// Why the text is not valid: for what it stands for, else for the data or the key.
VerdictCause causeOfText(const char* signature) {
    const ParsedSignature parsed = parseSignatureText(signature);
    if (parsed.fault != SignatureFault::none) {
        return parsed.fault;
    }
    if (const core::PairFault fault = pairFault(parsed.r, parsed.s);
        fault != core::PairFault::none) {
        return fault;
    }
    return isPadded(parsed.r) ? Verdict::paddedR : Verdict::mismatch;
}

VerdictCause causeForData(const auto& source, Bytes data, const char* signature) {
    if (data.empty()) {
        return Verdict::noData;
    }
    if (data.size() > std::numeric_limits<std::int32_t>::max()) {
        return FileFault::tooLarge;
    }
    ProjectFile project;
    if (const ProjectFault fault = source.load(project); fault != ProjectFault::none) {
        return fault;
    }
    const char* text = signature == nullptr ? "" : signature;
    KeyReport key;
    if (verifyWithRecord(project, data.data(), static_cast<std::uint32_t>(data.size()), text,
                         key)) {
        return Verdict::valid;
    }
    return key.fault != KeyFault::none ? VerdictCause(key.fault) : causeOfText(text);
}

VerdictCause causeForFile(const auto& source, const char* path, const char* signature) {
    if (path == nullptr) {
        return FileFault::open;
    }
    MappedInput input;
    const Bytes data = mapInputFile(input, path);
    if (input.fault != FileFault::none) {
        return input.fault;
    }
    const VerdictCause cause = causeForData(source, data, signature);
    return input.endWhole() ? cause : VerdictCause(input.fault);
}

/// The verdict of the cause that `decide` gives. No exception gets out, into C: only memory can run
/// out.
int verdict(const char** rule, const auto& decide) {
    VerdictCause cause = Verdict::projectMemory;
    try {
        const CoreScope core;
        cause = decide();
    } catch (...) {
    }
    if (rule != nullptr) {
        *rule = codeOf(cause);
    }
    return cause == VerdictCause(Verdict::valid) ? 1 : 0;
}

}  // namespace

int sign_verify_data(const char* project, const void* data, size_t size, const char* signature,
                     const char** rule) {
    return verdict(
        rule, [&] { return causeForData(ProjectAtPath{project}, bytesAt(data, size), signature); });
}

int sign_verify_file(const char* project, const char* file, const char* signature,
                     const char** rule) {
    return verdict(rule, [&] { return causeForFile(ProjectAtPath{project}, file, signature); });
}

int sign_verify_data_by_bytes(const void* project, size_t project_size, const void* data,
                              size_t size, const char* signature, const char** rule) {
    return verdict(rule, [&] {
        return causeForData(ProjectInMemory{bytesAt(project, project_size)}, bytesAt(data, size),
                            signature);
    });
}

int sign_verify_file_by_bytes(const void* project, size_t project_size, const char* file,
                              const char* signature, const char** rule) {
    return verdict(rule, [&] {
        return causeForFile(ProjectInMemory{bytesAt(project, project_size)}, file, signature);
    });
}
