#include "tools/commands/digest_command.h"

#include <nlohmann/json.hpp>

#include "tools/exit_status.h"
#include "tools/files/file_digest.h"
#include "tools/report.h"
#include "tools/signature/byte_string.h"

int digestCommand(const DigestOptions& options) {
    if (!options.json && isOutputTerminal()) {
        return reportFailure(
            "standard output is a terminal, and a digest is binary; redirect it to a file, or "
            "use --json");
    }
    const FileDigest file = digestFile(options.file, Progress::silent);
    if (file.refusal.has_value()) {
        return reportFailure(file.refusal->text);
    }
    if (file.remark.has_value()) {
        reportRemark(*file.remark);
    }
    const ByteString reversed(file.digest.rbegin(), file.digest.rend());
    if (options.json) {
        printJson({{"digest", hexadecimalDigits(reversed)},
                   {"ripemd160", hexadecimalDigits(file.digest)}});
    } else {
        printText({reversed.begin(), reversed.end()});
    }
    return exitDone;
}
