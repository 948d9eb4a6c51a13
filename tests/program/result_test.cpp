// Every form that a result can take, to the byte, under both names of the program.

#include "tests/program/sign_program.h"
#include "tests/support/signature_judge.h"
#include "tests/support/signature_vectors.h"
#include "tests/support/temporary_folder.h"

namespace {

using Pairs = SignRequest::Pairs;

/// How a cell of the output looks: the content type, and what stands around the result.
struct Form {
    std::string contentType;
    std::string before;
    std::string after;
};

/// The form of a result called `name`; `quote` surrounds it in JSON.
Form expectedForm(InputKind kind, const SignRequest& request, const std::string& name,
                  const std::string& quote) {
    const bool chosen = request.encoding == "json" || request.encoding == "plain" ||
                        request.encoding == "base64" || request.encoding == "urlencode";
    const bool json = chosen ? request.encoding == "json" : kind == InputKind::json;
    if (json) {
        return {"application/json", "{\"" + name + "\":" + quote, quote + "}"};
    }
    return {"text/plain", request.pairs == Pairs::on ? name + ":" : "", ""};
}

/// One cell of the output and the program's end in it.
struct Cell {
    InputKind kind;
    FirstLine firstLine;
    SignRequest request;
    ProgramEnd end;
};

/// Sends the request in every combination of input, program, encoding and pairs.
std::vector<Cell> runAllCells(SignRequest base) {
    std::vector<Cell> cells;
    for (const InputKind kind : {InputKind::form, InputKind::json}) {
        for (const FirstLine firstLine : {FirstLine::forServer, FirstLine::forClient}) {
            for (const char* encoding : {"json", "plain", "base64", "urlencode", "", "JSON"}) {
                for (const Pairs pairs : {Pairs::absent, Pairs::off, Pairs::on}) {
                    base.encoding = encoding;
                    base.pairs = pairs;
                    const std::string_view program =
                        firstLine == FirstLine::forClient ? clientProgram : serverProgram;
                    cells.push_back(
                        {kind, firstLine, base, request(kind, bodyText(kind, base), program)});
                }
            }
        }
    }
    return cells;
}

std::string describe(const Cell& cell) {
    return (cell.firstLine == FirstLine::forClient ? "nph, " : "") +
           bodyText(cell.kind, cell.request);
}

const SignatureCase& known() {
    return signatureCases().front();
}

/// Signs in every cell; libcrypto judges each signature over `data`.
void expectSignatures(const SignRequest& base, std::string_view data) {
    const std::vector<Cell> cells = runAllCells(base);
    EXPECT_EQ(cells.size(), 72U);
    for (const Cell& cell : cells) {
        SCOPED_TRACE(describe(cell));
        const Form form = expectedForm(cell.kind, cell.request, "signature", "\"");
        const std::string body = responseBody(cell.end.output);
        ASSERT_TRUE(body.starts_with(form.before) && body.ends_with(form.after)) << body;
        EXPECT_TRUE(endedWith(cell.end, 0,
                              expectedResponse(cell.firstLine, "200 OK", form.contentType, body)));
        const std::size_t length = body.size() - form.before.size() - form.after.size();
        EXPECT_TRUE(
            judgeAcceptsText(known().project, data, body.substr(form.before.size(), length)));
    }
}

void expectVerdicts(const SignRequest& base, const std::string& verdict) {
    const std::vector<Cell> cells = runAllCells(base);
    EXPECT_EQ(cells.size(), 72U);
    for (const Cell& cell : cells) {
        SCOPED_TRACE(describe(cell));
        const Form form = expectedForm(cell.kind, cell.request, "valid", "");
        EXPECT_TRUE(endedWith(cell.end, 0,
                              expectedResponse(cell.firstLine, "200 OK", form.contentType,
                                               form.before + verdict + form.after)));
    }
}

}  // namespace

TEST(ProgramResult, OfSigningDataTakesTheFormOfItsCell) {
    expectSignatures({.project = known().project, .data = "abc"}, "abc");
}

TEST(ProgramResult, OfSigningAFileTakesTheFormOfItsCell) {
    const TemporaryFolder folder;
    expectSignatures({.project = known().project, .file = folder.write("data", {'a', 'b', 'c'})},
                     "abc");
}

TEST(ProgramResult, OfVerifyingTakesTheFormOfItsCell) {
    const TemporaryFolder folder;
    SignRequest base{.operation = SignRequest::Operation::verify,
                     .project = known().project,
                     .file = folder.write("message", known().message),
                     .signature = known().text};
    expectVerdicts(base, "true");
    base.file.clear();
    base.data = "another message";
    expectVerdicts(base, "false");
}

TEST(ProgramResult, OfVerifyingDoesNotFailOnWhatItCannotUse) {
    for (const InputKind kind : {InputKind::form, InputKind::json}) {
        const SignRequest base{.operation = SignRequest::Operation::verify,
                               .project = known().project,
                               .encoding = "plain",
                               .data = "abc",
                               .signature = known().text};
        SignRequest other = base;
        other.project = "/nowhere/at/all";
        EXPECT_TRUE(isAnsweredText(request(kind, other), "false"));
        for (const char* text : {"x", "====", "%%%%", "AAAA"}) {
            other = base;
            other.signature = text;
            EXPECT_TRUE(isAnsweredText(request(kind, other), "false")) << text;
        }
        other = base;
        other.signature = std::string(129, 'A');
        EXPECT_TRUE(isAnsweredText(request(kind, other), "false"));
        other = base;
        other.data.clear();
        other.file = "/nowhere/at/all";
        EXPECT_TRUE(isAnsweredText(request(kind, other), "false"));
        other = base;
        other.data = "====";
        other.dataEncoding = "base64";
        EXPECT_TRUE(isAnsweredText(request(kind, other), "false"));
    }
}
