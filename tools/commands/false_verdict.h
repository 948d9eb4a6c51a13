#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "project/project_file.h"
#include "tools/commands/signature_verdicts.h"
#include "tools/commands/verify_command.h"
#include "tools/files/file_digest.h"

/// Changes of a larger file are not tried: they take up to seven more digests, and memory for three
/// times the file.
inline constexpr std::size_t mostBytesTried = std::size_t{16} << 20;

/// A verdict, and what it was made of.
struct FalseVerdict {
    const VerifyOptions& options;
    const ProjectFile& project;
    const DigestedFile& file;
    const std::string& signature;
    SignatureVerdict verdict;
};

/// Says that the signature is not valid, and why: on standard error the rule; which change of a
/// text (tools/files/text_change.h) would make it valid, if one does; what is strange about the
/// signature; and, to compare between machines, the digest of the file and the fingerprint of the
/// key. With --json the last three are members too. Returns `exitNegative`.
int reportFalse(const FalseVerdict& judged, SignatureVerdicts& verdicts);

/// Names the key of a verdict, to compare it between machines; nothing where it has no fingerprint.
void reportFingerprint(const VerifyOptions& options, const std::optional<std::string>& fingerprint);

/// Where there is no verdict, says that the operands stand in another order, if they look so: one
/// after the first is a project file and that one is not, or the signature comes after a file.
/// What has been read is not opened again.
void reportSwappedOperands(const VerifyOptions& options, bool isProjectLoaded);
