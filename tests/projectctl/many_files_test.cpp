// Many files signed and verified at once, with sha256sum(1) as the judge of lists and reports.

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/projectctl/projectctl_run.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/signature_judge.h"
#include "tests/support/signature_text.h"
#include "tests/support/temporary_folder.h"

namespace {

using Words = std::vector<std::string>;

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// A list without the signatures or digests in it.
std::vector<std::string> withoutFirstWords(const std::string& list) {
    std::vector<std::string> lines = linesOf(list);
    for (std::string& line : lines) {
        line.erase(line.starts_with('\\') ? 1 : 0, line.find(' ') - (line[0] == '\\' ? 1 : 0));
    }
    return lines;
}

ProgramEnd sha256sum(const Words& arguments) {
    ProgramCall call;
    call.path = "/usr/bin/sha256sum";
    call.arguments = {"sha256sum"};
    call.arguments.insert(call.arguments.end(), arguments.begin(), arguments.end());
    call.environment["LC_ALL"] = "C";
    return runProgram(call);
}

class ManyFiles : public testing::Test {
protected:
    std::string write(const std::string& name, const std::string& content) const {
        return folder.write(name, Bytes(content.begin(), content.end()));
    }

    std::string line(const std::string& content, const std::string& path) const {
        return signatureText(judgeSign(key, Bytes(content.begin(), content.end()))) + "  " + path +
               "\n";
    }

    /// The fingerprint that `show` tells, as a list with a signature that is not valid gives it.
    static std::string fingerprintOf(const std::string& project) {
        const std::string shown = runProjectctl({"show", project}).output;
        return "projectctl: " + project + ": fingerprint of the public key " +
               shown.substr(shown.rfind(' ') + 1);
    }

    static ProgramEnd run(Words words, const Words& more, const std::string& input = "") {
        words.insert(words.end(), more.begin(), more.end());
        return runProjectctl(words, input);
    }

    const TemporaryFolder folder;
    const ProjectKey key = randomProjectKey();
    const std::string project = folder.write("project", projectBytes(keyAttributes(key)));
    const std::string a = write("a", "content of a");
    const std::string b = write("b", "content of b");
    const std::string missing = folder.file("missing");
};

TEST_F(ManyFiles, AreListedAsSha256sumListsThem) {
    Words paths;
    for (const char* name :
         {"plain", "two  spaces ", " first", "*star", "#remark", "back\\slash", "\\", "line\nfeed",
          "\n", "carriage\rreturn", "all\\\n\r", "tab\t\x1b", "\xc3\xa9", "\xff"}) {
        paths.push_back(write(name, name));
    }
    paths.push_back(paths.front());
    const ProgramEnd end = run({"sign", project}, paths);
    EXPECT_EQ(end.status, 0) << end.errors;
    EXPECT_EQ(withoutFirstWords(end.output), withoutFirstWords(sha256sum(paths).output));
    const std::vector<std::string> lines = linesOf(end.output);
    ASSERT_EQ(lines.size(), paths.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::size_t start = lines[i][0] == '\\' ? 1 : 0;
        const std::string signature = lines[i].substr(start, lines[i].find(' ') - start);
        const std::string content = std::filesystem::path(paths[i]).filename();
        EXPECT_TRUE(judgeAcceptsText(project, content, signature)) << lines[i];
    }
    // And they are found by what is listed.
    const ProgramEnd verified = run({"verify", project, "--check", "-"}, {}, end.output);
    EXPECT_EQ(verified.status, 0) << verified.errors;
    EXPECT_EQ(linesOf(verified.output).size(), paths.size());
}

TEST_F(ManyFiles, AreSignedWhateverTheirNamesMeanToTheParser) {
    const Words names = {"++", "[a]", "[a,b]", "[]", "check", "help"};
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    for (const std::string& name : names) {
        write(name, name);
    }
    for (const Words& start : {Words{"sign", project}, {"sign", project, "--"}}) {
        const ProgramEnd list = run(start, names);
        const std::vector<std::string> lines = linesOf(list.output);
        EXPECT_EQ(withoutFirstWords(list.output), withoutFirstWords(sha256sum(names).output));
        ASSERT_EQ(lines.size(), names.size());
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const std::string signature = lines[i].substr(0, lines[i].find(' '));
            EXPECT_TRUE(judgeAcceptsText(project, names[i], signature)) << lines[i];
            EXPECT_TRUE(endedWith(run({"verify", project, signature, names[i]}, {}), 0, "true\n"));
            const ProgramEnd digest = run({"digest", "--json", names[i]}, {});
            EXPECT_EQ(digest.output, run({"digest", "--json"}, {}, names[i]).output);
        }
    }
    EXPECT_TRUE(endedWith(run({"sign", project, "-o", "++"}, {}, "input"), 2, "",
                          "projectctl: ++: already exists; no file is overwritten, so choose "
                          "another name\n"));
    EXPECT_TRUE(endedWith(run({"sign", project, "-o", "[sig]", "[a]"}, {}), 0, ""));
    EXPECT_TRUE(
        endedWith(run({"verify", project, "--signature-file", "[sig]", "[a]"}, {}), 0, "true\n"));
    std::filesystem::current_path(before);
}

TEST_F(ManyFiles, AreReportedAsSha256sumReportsThem) {
    Words paths;
    for (const char* name : {"sound", "line\nfeed", "\\\n", "changed", "gone", "two  spaces"}) {
        paths.push_back(write(name, name));
    }
    const std::string ours = write("ours", run({"sign", project}, paths).output);
    const std::string theirs = write("theirs", sha256sum(paths).output);
    write("changed", "otherwise");
    std::filesystem::remove(folder.file("gone"));
    std::filesystem::create_directory(folder.file("gone"));
    for (const Words& options :
         {Words{}, {"--quiet"}, {"--status"}, {"--quiet", "--status"}, {"--ignore-missing"}}) {
        Words judged = options;
        judged.insert(judged.end(), {"--check", theirs});
        const ProgramEnd judge = sha256sum(judged);
        const ProgramEnd end = run({"verify", project, "--check", ours}, options);
        EXPECT_EQ(end.output, judge.output);
        EXPECT_EQ(end.status, judge.status);
    }
}

TEST_F(ManyFiles, AreReportedByTheirNamesWithABackslash) {
    // Newer versions of sha256sum report such a name as it stands in a list, with its escapes.
    const Words names = {write("back\\slash", "a"), write("other", "b")};
    const std::string list = write("list", run({"sign", project}, names).output);
    const ProgramEnd end = run({"verify", project, "--check", list}, {});
    EXPECT_EQ(end.output, names[0] + ": OK\n" + names[1] + ": OK\n");
}

TEST_F(ManyFiles, ThatCannotBeSignedAreToldOfAndTheOthersAreSigned) {
    const std::string empty = write("empty", "");
    const ProgramEnd end =
        run({"sign", project}, {empty, a, missing, folder.path(), b, "-", "-"}, "content of -");
    EXPECT_EQ(end.status, 2);
    EXPECT_EQ(withoutFirstWords(end.output), (Words{"  " + a, "  " + b, "  -"}));
    EXPECT_EQ(end.errors,
              "projectctl: " + empty + ": is empty\nprojectctl: " + missing +
                  ": cannot be opened: No such file or directory\nprojectctl: " + folder.path() +
                  ": is a directory\nprojectctl: standard input: can be read only once; "
                  "name it once\n");
}

TEST_F(ManyFiles, AreSignedInTheirOrder) {
    Words paths;
    for (int i = 0; i < 100; ++i) {
        const std::string name = "file" + std::to_string(i);
        paths.push_back(write(name, std::string(i % 7 == 0 ? 2'000'000 : 1, 'x') + name));
    }
    const ProgramEnd end = run({"sign", project}, paths);
    EXPECT_EQ(end.status, 0) << end.errors;
    Words expected;
    for (const std::string& path : paths) {
        expected.push_back("  " + path);
    }
    EXPECT_EQ(withoutFirstWords(end.output), expected);
    const ProgramEnd verified = run({"verify", project, "--quiet", "--check", "-"}, {}, end.output);
    EXPECT_TRUE(endedWith(verified, 0, ""));
}

TEST_F(ManyFiles, AreListedAndReportedInJson) {
    const ProgramEnd made = run({"sign", project, "--json"}, {a, missing, b});
    EXPECT_EQ(made.status, 2);
    const std::vector<std::string> lines = linesOf(made.output);
    ASSERT_EQ(lines.size(), 2U);
    const auto second = nlohmann::json::parse(lines[1]);
    EXPECT_EQ(second.size(), 2U);
    EXPECT_EQ(second.at("file"), b);
    EXPECT_TRUE(judgeAcceptsText(project, "content of b", second.at("signature")));

    const std::string list = line("content of a", a) + line("other", b) + line("gone", missing);
    const std::string ofB = R"({"file":")" + b + R"(","valid":false,"rule":"signature.mismatch"})";
    const std::string ofMissing =
        R"({"file":")" + missing + R"(","valid":false,"rule":"file.open"})";
    const Words verify = {"verify", project, "--json", "--check", "-"};
    EXPECT_EQ(run(verify, {}, list).output, R"({"file":")" + a +
                                                R"(","valid":true,"rule":"signature.valid"})" +
                                                "\n" + ofB + "\n" + ofMissing + "\n");
    EXPECT_EQ(run(verify, {"--quiet"}, list).output, ofB + "\n" + ofMissing + "\n");
    EXPECT_EQ(run(verify, {"--status"}, list).output, "");
}

TEST_F(ManyFiles, OfAListAreJudgedLineByLine) {
    const std::string ofA = line("content of a", a);
    const std::string falseB = line("other", b);
    const std::string gone = line("gone", missing);
    const std::string open =
        "projectctl: " + missing + ": cannot be opened: No such file or directory\n";
    const std::string unread = "projectctl: WARNING: 1 listed file could not be read\n";
    const std::string invalid =
        "projectctl: WARNING: 1 signature is NOT valid\n" + fingerprintOf(project);
    const std::string other = " not have the form 'SIGNATURE  FILE'; the first is line ";
    const std::string none =
        "projectctl: standard input: no line has the form 'SIGNATURE  FILE', in which 'projectctl "
        "sign' lists several files\n";
    struct Row {
        std::string list;
        Words options;
        int status;
        std::string output;
        std::string errors;
    };
    for (const Row& row :
         {Row{ofA, {}, 0, a + ": OK\n", ""}, Row{ofA + ofA, {"--quiet"}, 0, "", ""},
          Row{ofA.substr(0, ofA.size() - 1) + "\r\n", {}, 0, a + ": OK\n", ""},
          Row{falseB + ofA, {}, 1, b + ": FAILED\n" + a + ": OK\n", invalid},
          Row{falseB, {"--status"}, 1, "", ""},
          Row{gone, {}, 2, missing + ": FAILED open or read\n", open + unread},
          Row{gone + falseB,
              {"--quiet"},
              1,
              missing + ": FAILED open or read\n" + b + ": FAILED\n",
              open + unread + invalid},
          Row{gone, {"--status"}, 2, "", open},
          Row{gone + ofA, {"--ignore-missing"}, 0, a + ": OK\n", ""},
          Row{gone,
              {"--ignore-missing"},
              2,
              "",
              "projectctl: standard input: no file was verified\n"},
          Row{"junk\n" + ofA + "junk\n",
              {},
              2,
              a + ": OK\n",
              "projectctl: WARNING: 2 lines do" + other + "1\n"},
          Row{ofA + std::string("AAAA  a\0b\n", 10),
              {},
              2,
              a + ": OK\n",
              "projectctl: WARNING: 1 line does" + other + "2\n"},
          Row{"", {}, 2, "", none}, Row{"# remark\n\njunk\n", {"--status"}, 2, "", none}}) {
        EXPECT_TRUE(endedWith(run({"verify", project, "--check", "-"}, row.options, row.list),
                              row.status, row.output, row.errors))
            << row.list;
    }
    EXPECT_TRUE(endedWith(run({"verify", project, "--check"}, {missing}), 2, "",
                          "projectctl: " + missing + ": No such file or directory\n"));
    EXPECT_TRUE(endedWith(run({"verify", project, "--check"}, {folder.path()}), 2, "",
                          "projectctl: " + folder.path() + ": Is a directory\n"));
    EXPECT_TRUE(endedWith(run({"verify", missing, "--check", "-"}, {}, ofA), 2, "", open));
}

TEST_F(ManyFiles, OfAListOfWhichAPartCountsAreToldOf) {
    const std::string large = write("large", "first");
    std::filesystem::resize_file(large, 4294967301);
    EXPECT_TRUE(endedWith(
        run({"verify", project, "--check", "-"}, {}, line("first", large)), 0, large + ": OK\n",
        "projectctl: " + large + ": only the first 5 bytes of 4294967301 count\n"));
}

TEST_F(ManyFiles, OfAListCannotSteerATerminal) {
    const std::string name = write("\x1b[31mred\r", "content");
    const ProgramEnd end =
        run({"verify", project, "--check", "-"}, {}, run({"sign", project}, {name, a}).output);
    EXPECT_TRUE(endedWith(end, 0, folder.path() + "/\\x1B[31mred\\x0D: OK\n" + a + ": OK\n"));
}

TEST_F(ManyFiles, UnderAnUnsoundKeyAreToldOfOnce) {
    ProjectKey mixed = key;
    const ProjectKey other = keyWithScalar("123456789", key.baseX, key.baseY);
    mixed.publicX = other.publicX;
    mixed.publicY = other.publicY;
    const std::string unsound = folder.write("unsound", projectBytes(keyAttributes(mixed)));
    const std::string reason =
        "the public point is not the product of the private scalar and the base point\n";
    const ProgramEnd made = run({"sign", unsound}, {a, b});
    EXPECT_EQ(made.status, 0);
    EXPECT_EQ(made.errors, "projectctl: " + unsound +
                               ": signatures under this key cannot be relied on: " + reason);
    const std::string told = fingerprintOf(unsound) + "projectctl: " + unsound + ": " + reason;
    EXPECT_TRUE(endedWith(run({"verify", unsound, "--check", "-"}, {}, made.output), 1,
                          a + ": FAILED\n" + b + ": FAILED\n",
                          "projectctl: WARNING: 2 signatures are NOT valid\n" + told));
    EXPECT_TRUE(
        endedWith(run({"verify", unsound, "--check", "-"}, {}, linesOf(made.output)[0] + "\n"), 1,
                  a + ": FAILED\n", "projectctl: WARNING: 1 signature is NOT valid\n" + told));
}

TEST_F(ManyFiles, GoToANewFileThatIsWholeOrNotThere) {
    const std::string list = folder.file("list");
    EXPECT_TRUE(endedWith(run({"sign", project, "-o", list}, {a, missing, b}), 2, "",
                          "projectctl: " + missing +
                              ": cannot be opened: No such file or directory\nprojectctl: " + list +
                              ": not written, because a file could not be signed\n"));
    EXPECT_FALSE(std::filesystem::exists(list));
    EXPECT_TRUE(endedWith(run({"sign", project, "--output", list}, {a, b}), 0, ""));
    const Bytes written = fileBytes(list);
    EXPECT_EQ(withoutFirstWords({written.begin(), written.end()}), (Words{"  " + a, "  " + b}));
    EXPECT_TRUE(
        endedWith(run({"sign", project, "-o", list}, {a, b}), 2, "",
                  "projectctl: " + list +
                      ": already exists; no file is overwritten, so choose another name\n"));
    EXPECT_EQ(fileBytes(list), written);
    EXPECT_EQ(linesOf(run({"sign", project, "-o", "-"}, {a}).output).size(), 1U);
}

TEST_F(ManyFiles, SignatureOfOneIsReadFromAFile) {
    const std::string file = folder.file("signature");
    ASSERT_TRUE(endedWith(run({"sign", project, a, "-o", file}, {}), 0, ""));
    EXPECT_TRUE(endedWith(run({"verify", project, "--signature-file", file, a}, {}), 0, "true\n"));
    EXPECT_TRUE(endedWith(run({"verify", project, "--signature-file", file}, {}, "content of a"), 0,
                          "true\n"));
    const std::string text = signatureText(judgeSign(key, fileBytes(a)));
    const std::string several =
        "projectctl: standard input: has more than one line, and a signature has one; --check "
        "reads a list\n";
    struct Row {
        std::string content;
        int status;
        std::string output;
        std::string errors;
    };
    for (const Row& row : {Row{text, 0, "true\n", ""}, Row{text + "\n", 0, "true\n", ""},
                           Row{text + "\r\n", 0, "true\n", ""}, Row{text + "\n\n", 2, "", several},
                           Row{"\n" + text, 2, "", several},
                           Row{std::string(4097, 'A'), 2, "",
                               "projectctl: standard input: has more than 4096 bytes, too many for "
                               "a signature\n"}}) {
        EXPECT_TRUE(endedWith(run({"verify", project, "--signature-file", "-", a}, {}, row.content),
                              row.status, row.output, row.errors))
            << row.content;
    }
    const ProgramEnd empty = run({"verify", project, "--signature-file", "-", a}, {}, "");
    EXPECT_EQ(empty.status, 1);
    EXPECT_TRUE(empty.errors.starts_with("projectctl: the signature is empty\n")) << empty.errors;
    EXPECT_TRUE(endedWith(run({"verify", project, "--signature-file", missing, a}, {}), 2, "",
                          "projectctl: " + missing + ": No such file or directory\n"));
}

TEST_F(ManyFiles, SignatureThatNamesAFileIsToldOf) {
    const std::string remark =
        "projectctl: SIGNATURE is the name of a file; --signature-file reads a signature from it\n";
    const std::string errors = run({"verify", project, a, b}, {}).errors;
    EXPECT_NE(errors.find("\n" + remark), std::string::npos) << errors;
    EXPECT_EQ(errors.find(" of the signature is "), std::string::npos) << errors;
    EXPECT_EQ(run({"verify", project, missing, b}, {}).errors.find(remark), std::string::npos);
}

}  // namespace
