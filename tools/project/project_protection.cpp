#include "tools/project/project_protection.h"
#include "tools/rules.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <set>
#include <system_error>

namespace {

using Findings = std::vector<ProjectFinding>;
using Status = struct stat;

constexpr uid_t root = 0;
constexpr mode_t writableByOthers = S_IWGRP | S_IWOTH;

std::optional<Status> statusOf(const std::string& path) {
    Status status{};
    return ::stat(path.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

bool isTrusted(uid_t user) {
    return user == root || user == ::geteuid();
}

/// Four octal digits.
std::string modeText(mode_t mode) {
    std::string text;
    for (const unsigned shift : {9U, 6U, 3U, 0U}) {
        text += static_cast<char>('0' + (mode >> shift & 7U));
    }
    return text;
}

void find(Findings& findings, Finding finding, const std::string& text) {
    findings.push_back({.code = ruleOf(finding).code, .attribute = std::nullopt, .text = text});
}

void checkFile(const Status& file, bool holdsScalar, Findings& findings) {
    if (!isTrusted(file.st_uid)) {
        find(findings, Finding::owner,
             "belongs to user " + std::to_string(file.st_uid) +
                 ", who can put another key into it; chown it to root");
    }
    const mode_t ofGroup = file.st_uid == root ? S_IWGRP | S_IXGRP : S_IRWXG;
    if (holdsScalar && (file.st_mode & (ofGroup | S_IRWXO)) != 0) {
        find(findings, Finding::permissions,
             "holds a private scalar and is open to users other than its owner: mode " +
                 modeText(file.st_mode) + "; chmod it to 600, or to 640 if root owns it");
    } else if ((file.st_mode & writableByOthers) != 0) {
        find(findings, Finding::permissions,
             "can be changed by users other than its owner: mode " + modeText(file.st_mode) +
                 "; chmod it to 644");
    }
}

void checkFolder(const std::string& path, uid_t ownerOfFile, Findings& findings) {
    const std::optional<Status> folder = statusOf(path);
    if (!folder.has_value()) {
        return;
    }
    if (!isTrusted(folder->st_uid) && folder->st_uid != ownerOfFile) {
        find(findings, Finding::folder,
             "can be replaced by user " + std::to_string(folder->st_uid) +
                 ", who owns the folder " + path + "; chown that to root");
    }
    if ((folder->st_mode & writableByOthers) != 0 && (folder->st_mode & S_ISVTX) == 0) {
        find(findings, Finding::folder,
             "can be replaced by others, who may write to the folder " + path + ": mode " +
                 modeText(folder->st_mode) + "; chmod that to 755");
    }
}

/// Every folder above the file, by its path and by where the links on it lead.
std::set<std::filesystem::path> foldersAbove(const std::string& file) {
    std::error_code ignored;
    std::set<std::filesystem::path> folders;
    for (std::filesystem::path path :
         {std::filesystem::absolute(file, ignored), std::filesystem::canonical(file, ignored)}) {
        while (path.has_relative_path()) {
            path = path.parent_path();
            folders.insert(path);
        }
    }
    return folders;
}

}  // namespace

std::vector<ProjectFinding> checkProtection(const std::string& path, bool holdsScalar) {
    Findings findings;
    const std::optional<Status> file = statusOf(path);
    if (file.has_value()) {
        checkFile(*file, holdsScalar, findings);
        for (const std::filesystem::path& folder : foldersAbove(path)) {
            checkFolder(folder, file->st_uid, findings);
        }
    }
    return findings;
}
