#include "tests/faults/ending_judge.h"

#include <algorithm>
#include <iostream>
#include <numeric>

#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"

namespace {

using Operation = SignRequest::Operation;

/// Whether a reader of the output would find that something is missing: the empty line behind the
/// header, or bytes of the body that the header announces.
bool isProperPart(std::string_view output, std::string_view whole) {
    return output.size() < whole.size() && whole.starts_with(output);
}

}  // namespace

bool EndingJudge::isGoodSignature(const WholeRequest& request, const std::string& text) {
    constexpr std::size_t programShare = 16;
    const SignatureNumbers numbers = readSignatureText(text);
    if (signatureText(numbers) != text ||
        !judgeAccepts(requests_.key(), Bytes(request.data.begin(), request.data.end()), numbers)) {
        return false;
    }
    if (++signatures_ % programShare != 0) {
        return true;
    }
    const SignRequest verifying{.operation = Operation::verify,
                                .project = requests_.project(),
                                .data = request.data,
                                .signature = text};
    return isAnsweredText(::request(InputKind::form, verifying), "true");
}

bool EndingJudge::isAnswer(const WholeRequest& request, const ProgramEnd& end) {
    const std::string content = responseBody(end.output);
    if (!request.signs()) {
        return end.output == request.response(request.answer);
    }
    const std::size_t around = request.answer.size() + request.ending.size();
    return end.output == request.response(content) && content.size() > around &&
           content.starts_with(request.answer) && content.ends_with(request.ending) &&
           isGoodSignature(request, content.substr(request.answer.size(), content.size() - around));
}

std::optional<Ending> EndingJudge::endingOf(const WholeRequest& request, const ProgramEnd& end,
                                            const Allowance& allowance) {
    if (end.signal != 0) {
        const bool allowed =
            std::count(allowance.signals.begin(), allowance.signals.end(), end.signal) != 0;
        if (allowed && end.output.empty()) {
            return Ending::dead;
        }
        return allowed && allowance.answeredBeforeDeath && isAnswer(request, end)
                   ? std::optional(Ending::answered)
                   : std::nullopt;
    }
    if (end.output.empty() && end.status > 0 && allowance.failureStatus) {
        return Ending::dead;
    }
    if (end.status == request.exitStatus() && isAnswer(request, end)) {
        return Ending::answered;
    }
    const auto refused = request.refusals.find(end.output);
    if (refused != request.refusals.end() && refused->second == end.status) {
        return Ending::refused;
    }
    if (allowance.outputFails && end.status == request.exitStatus()) {
        std::string whole = request.response(request.answer);
        if (request.signs()) {
            // Its characters are not known; those that came stand for themselves.
            constexpr std::size_t longestText = 56;
            std::string content = responseBody(end.output);
            content.resize(std::max(content.size(), request.answer.size()), ' ');
            content.replace(0, request.answer.size(), request.answer);
            content.resize(request.answer.size() + longestText + request.ending.size(), ' ');
            whole = request.response(content);
        }
        if (isProperPart(end.output, whole)) {
            return Ending::cut;
        }
    }
    return std::nullopt;
}

testing::AssertionResult EndingJudge::accepts(const WholeRequest& request, const ProgramEnd& end,
                                              const Allowance& allowance) {
    const bool silent = end.errors.empty() || allowance.errorsSpoken;
    const std::optional<Ending> ending =
        end.timedOut || !silent ? std::nullopt : endingOf(request, end, allowance);
    if (!ending.has_value()) {
        return testing::AssertionFailure()
               << request.name << ": status " << end.status << ", signal " << end.signal
               << (end.timedOut ? ", killed at the time limit" : "") << "\nstandard output:\n"
               << testing::PrintToString(end.output) << "\nstandard error:\n"
               << end.errors;
    }
    last_ = *ending;
    ++counts_[last_];
    return testing::AssertionSuccess();
}

std::size_t EndingJudge::count(Ending ending) const {
    const auto found = counts_.find(ending);
    return found == counts_.end() ? 0 : found->second;
}

void EndingJudge::report(std::string_view title) const {
    const std::size_t all =
        std::accumulate(counts_.begin(), counts_.end(), std::size_t{0},
                        [](std::size_t sum, const auto& entry) { return sum + entry.second; });
    std::cout << title << ": " << all << " runs; answered " << count(Ending::answered)
              << ", refused " << count(Ending::refused) << ", cut " << count(Ending::cut)
              << ", dead " << count(Ending::dead) << "; SIGN_TEST_SEED=" << testSeed() << std::endl;
}
