#include "tools/commands/list_verification.h"

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tools/commands/false_verdict.h"
#include "tools/commands/signature_verdicts.h"
#include "tools/counted_text.h"
#include "tools/exit_status.h"
#include "tools/files/file_content.h"
#include "tools/files/file_digest.h"
#include "tools/files/input_file.h"
#include "tools/report.h"
#include "tools/signature/key_fingerprint.h"
#include "tools/signature/signature_list.h"

namespace {

struct Counts {
    std::size_t valid = 0;
    std::size_t invalid = 0;
    std::size_t unread = 0;
};

/// Prints what has become of a file, which the word says and the code tells.
void printResult(const VerifyOptions& options, const std::string& file,
                 const SignatureVerdict& verdict, const char* word) {
    if (options.status || (options.quiet && verdict.isValid)) {
        return;
    }
    if (options.json) {
        printJson({{"file", file}, {"valid", verdict.isValid}, {"rule", verdict.ruling.code}});
    } else {
        printLine(reportedName(file) + ": " + word);
    }
}

void verifyFile(const VerifyOptions& options, const ListedSignature& listed, const FileDigest& file,
                SignatureVerdicts& verdicts, Counts& counts) {
    if (file.refusal.has_value()) {
        if (options.ignoreMissing && file.isMissing) {
            return;
        }
        ++counts.unread;
        reportRemark(file.refusal->text);
        printResult(options, listed.file, {.ruling = *file.refusal}, "FAILED open or read");
        return;
    }
    if (file.remark.has_value()) {
        reportRemark(*file.remark);
    }
    const SignatureVerdict verdict = verdicts.of(file, listed.signature);
    ++(verdict.isValid ? counts.valid : counts.invalid);
    printResult(options, listed.file, verdict, verdict.isValid ? "OK" : "FAILED");
}

void reportWarnings(const SignatureList& list, const Counts& counts) {
    if (list.otherLines != 0) {
        reportRemark("WARNING: " + counted(list.otherLines, "line does", "lines do") +
                     " not have the form 'SIGNATURE  FILE'; the first is line " +
                     std::to_string(list.firstOther));
    }
    if (counts.unread != 0) {
        reportRemark("WARNING: " + counted(counts.unread, "listed file") + " could not be read");
    }
    if (counts.invalid != 0) {
        reportRemark("WARNING: " + counted(counts.invalid, "signature is", "signatures are") +
                     " NOT valid");
    }
}

}  // namespace

int verifyList(const VerifyOptions& options, const ProjectFile& project) {
    const std::string name = inputName(*options.list);
    std::string content;
    if (const auto failure = readContent(*options.list, content)) {
        return reportFailure(*failure);
    }
    const SignatureList list = readSignatureList(content);
    if (list.entries.empty()) {
        return reportFailure(name +
                             ": no line has the form 'SIGNATURE  FILE', in which 'projectctl "
                             "sign' lists several files");
    }
    std::vector<std::string> files;
    for (const ListedSignature& listed : list.entries) {
        files.push_back(listed.file);
    }
    SignatureVerdicts verdicts(options.project, project);
    Counts counts;
    digestFiles(files, [&](std::size_t place, const FileDigest& file) {
        verifyFile(options, list.entries[place], file, verdicts, counts);
    });
    if (!options.status) {
        reportWarnings(list, counts);
        if (counts.invalid != 0) {
            reportFingerprint(options, keyFingerprint(project));
        }
    }
    if (counts.invalid != 0 && verdicts.keyFault().has_value()) {
        reportRemark(*verdicts.keyFault());
    }
    if (counts.valid + counts.invalid == 0 && counts.unread == 0) {
        return reportFailure(name + ": no file was verified");
    }
    if (counts.invalid != 0) {
        return exitNegative;
    }
    return counts.unread == 0 && list.otherLines == 0 ? exitDone : exitFailed;
}
