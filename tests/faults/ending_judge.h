#pragma once

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/faults/whole_request.h"

/// How a disturbed request came to its end.
enum class Ending {
    answered,  ///< as without a disturbance
    refused,   ///< with a refusal, or "false" in the place of "true"
    cut,       ///< with a part of a response that any reader finds short, or with none
    dead,      ///< without a byte, by a signal or with an exit status of failure
};

/// What may happen to a request besides its answer and its refusals.
struct Allowance {
    bool outputFails = false;          ///< the response may be cut, with its own exit status
    bool errorsSpoken = false;         ///< the C library may say something on standard error
    bool answeredBeforeDeath = false;  ///< a signal may follow the whole answer
    std::vector<int> signals{};        ///< by which the program may end
    bool failureStatus = false;        ///< the end may be an exit status with no response
};

/// Judges how disturbed requests end, and counts.
class EndingJudge {
public:
    explicit EndingJudge(const WholeRequests& requests) : requests_(requests) {}

    /// Success when the end is one of the kinds of `Ending`, as far as allowed. A signature must be
    /// one that libcrypto accepts, and each sixteenth one that the program accepts too.
    testing::AssertionResult accepts(const WholeRequest& request, const ProgramEnd& end,
                                     const Allowance& allowance = {});

    /// The ending last accepted.
    Ending last() const { return last_; }

    /// Prints how many there were of each kind.
    void report(std::string_view title) const;

    std::size_t count(Ending ending) const;

private:
    bool isAnswer(const WholeRequest& request, const ProgramEnd& end);
    bool isGoodSignature(const WholeRequest& request, const std::string& text);
    std::optional<Ending> endingOf(const WholeRequest& request, const ProgramEnd& end,
                                   const Allowance& allowance);

    const WholeRequests& requests_;
    std::map<Ending, std::size_t> counts_;
    std::size_t signatures_ = 0;
    Ending last_ = Ending::answered;
};
