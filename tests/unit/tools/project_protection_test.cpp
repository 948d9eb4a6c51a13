#include "tools/project/project_protection.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"
#include "tests/unit/tools/file_status.h"

namespace {

using Strings = std::vector<std::string>;

constexpr uid_t alice = 1000;
constexpr uid_t bob = 1001;

class CheckProtection : public testing::Test {
protected:
    CheckProtection() {
        std::filesystem::path above = path;
        while (above.has_relative_path()) {
            above = above.parent_path();
            status.files[above] = Access{0, 0755};
        }
        status.files[path] = Access{0, 0600};
    }

    /// The code and the words of each finding for this user.
    Strings found(uid_t user, bool holdsScalar = true) { return foundAt(path, user, holdsScalar); }

    Strings foundAt(const std::string& name, uid_t user, bool holdsScalar = true) {
        status.user = user;
        Strings texts;
        for (const ProjectFinding& finding : checkProtection(name, holdsScalar)) {
            EXPECT_EQ(finding.attribute, std::nullopt);
            EXPECT_EQ(finding.damage, KeyDamage::none);
            texts.push_back(finding.code + ": " + finding.text);
        }
        return texts;
    }

    Strings foundWith(Access file, uid_t user, bool holdsScalar = true) {
        status.files[path] = file;
        return found(user, holdsScalar);
    }

    const TemporaryFolder folder;
    const std::string path = folder.write("project", {1});
    ScopedFileStatus status;
};

TEST_F(CheckProtection, FindsNothingWhereRootOrWhoeverAsksIsInCharge) {
    for (const Access file : {Access{0, 0600}, {0, 0640}, {0, 0400}, {0, 0440}}) {
        for (const uid_t user : {uid_t{0}, alice}) {
            EXPECT_EQ(foundWith(file, user), Strings{}) << file.mode;
        }
    }
    status.files[folder.path()] = Access{alice, 0700};
    for (const mode_t mode : {0600U, 0400U, 0700U}) {
        EXPECT_EQ(foundWith({alice, mode}, alice), Strings{}) << mode;
    }
}

TEST_F(CheckProtection, FindsAScalarThatOthersCanReach) {
    for (const auto& [file, mode] :
         std::vector<std::pair<Access, std::string>>{{{0, 0604}, "0604"},
                                                     {{0, 0602}, "0602"},
                                                     {{0, 0601}, "0601"},
                                                     {{0, 0620}, "0620"},
                                                     {{0, 0610}, "0610"},
                                                     {{0, 0644}, "0644"},
                                                     {{0, 0660}, "0660"},
                                                     {{alice, 0640}, "0640"},
                                                     {{alice, 0620}, "0620"},
                                                     {{alice, 0610}, "0610"},
                                                     {{alice, 0604}, "0604"},
                                                     {{alice, 04604}, "4604"}}) {
        EXPECT_EQ(
            foundWith(file, alice),
            Strings{"project.permissions: holds a private scalar and is open to users other than "
                    "its owner: mode " +
                    mode + "; chmod it to 600, or to 640 if root owns it"});
    }
}

TEST_F(CheckProtection, LetsEverybodyReadAProjectWithoutAScalarAndNobodyChangeIt) {
    for (const uid_t owner : {uid_t{0}, alice}) {
        for (const mode_t mode : {0644U, 0444U, 0755U}) {
            EXPECT_EQ(foundWith({owner, mode}, alice, false), Strings{}) << mode;
        }
        for (const auto& [mode, text] :
             {std::pair<mode_t, std::string>{0664, "0664"}, {0646, "0646"}, {0666, "0666"}}) {
            EXPECT_EQ(
                foundWith({owner, mode}, alice, false),
                Strings{"project.permissions: can be changed by users other than its owner: mode " +
                        text + "; chmod it to 644"});
        }
    }
}

TEST_F(CheckProtection, FindsAnotherOwner) {
    for (const bool holdsScalar : {false, true}) {
        for (const uid_t user : {uid_t{0}, alice}) {
            EXPECT_EQ(
                foundWith({bob, 0600}, user, holdsScalar),
                Strings{
                    "project.owner: belongs to user 1001, who can put another key into it; chown "
                    "it to root"});
        }
    }
    // The owner's own folder adds nothing.
    status.files[folder.path()] = Access{bob, 0700};
    EXPECT_EQ(foundWith({bob, 0600}, 0).size(), 1U);
}

TEST_F(CheckProtection, FindsEachFolderAboveThatAnotherOwns) {
    const std::string parent = std::filesystem::path(folder.path()).parent_path();
    for (const std::string& above : {folder.path(), parent, std::string("/")}) {
        status.files[above] = Access{bob, 0755};
        for (const bool holdsScalar : {false, true}) {
            EXPECT_EQ(found(alice, holdsScalar),
                      Strings{"project.folder: can be replaced by user 1001, who owns the folder " +
                              above + "; chown that to root"});
        }
        EXPECT_EQ(found(bob), Strings{});
        status.files[above] = Access{0, 0755};
    }
}

TEST_F(CheckProtection, FindsEachFolderAboveThatOthersMayWriteTo) {
    const std::string parent = std::filesystem::path(folder.path()).parent_path();
    for (const std::string& above : {folder.path(), parent, std::string("/")}) {
        for (const auto& [mode, text] :
             {std::pair<mode_t, std::string>{0777, "0777"}, {0775, "0775"}, {02757, "2757"}}) {
            status.files[above] = Access{0, mode};
            EXPECT_EQ(
                found(alice),
                Strings{"project.folder: can be replaced by others, who may write to the folder " +
                        above + ": mode " + text + "; chmod that to 755"});
        }
        // Where each removes what is their own alone.
        status.files[above] = Access{0, 01777};
        EXPECT_EQ(found(alice), Strings{});
        status.files[above] = Access{0, 0755};
    }
}

TEST_F(CheckProtection, FollowsLinksAndLooksAtTheFoldersOfBothEnds) {
    const TemporaryFolder other;
    const std::string link = other.file("link");
    std::filesystem::create_symlink(path, link);
    status.files[link] = status.files[path];
    for (const auto& [unsafe, safe] :
         {std::pair(folder.path(), other.path()), {other.path(), folder.path()}}) {
        status.files[unsafe] = Access{0, 0777};
        status.files[safe] = Access{0, 0755};
        EXPECT_EQ(
            foundAt(link, 0),
            Strings{"project.folder: can be replaced by others, who may write to the folder " +
                    unsafe + ": mode 0777; chmod that to 755"});
    }
}

TEST_F(CheckProtection, TakesARelativePathFromTheWorkingFolder) {
    const std::filesystem::path before = std::filesystem::current_path();
    status.files["project"] = Access{0, 0600};
    status.files[folder.path()] = Access{bob, 0755};
    std::filesystem::current_path(folder.path());
    EXPECT_EQ(foundAt("project", alice).size(), 1U);
    std::filesystem::current_path(before);
}

TEST_F(CheckProtection, PassesOverWhatCannotBeLookedAt) {
    status.files[folder.path()] = std::nullopt;
    EXPECT_EQ(found(alice), Strings{});
    status.files[path] = std::nullopt;
    EXPECT_EQ(found(alice), Strings{});
}

}  // namespace
