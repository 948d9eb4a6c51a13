#pragma once

#include <string>
#include <vector>

/// How the program answers a request, and why.
struct Explanation {
    /// Short name of the rule that decides; it stays the same when words change.
    std::string rule{};

    /// What makes the rule decide so, in words.
    std::string reason{};

    /// "200 OK", say; empty when the process ends without a response.
    std::string status{};

    /// Text of the response. In the place of a signature stands `signaturePlaceholder`.
    std::string body{};

    /// What a person should know and what does not decide.
    std::vector<std::string> remarks{};
};

/// Stands for a signature that is made: a new one each time.
inline constexpr const char* signaturePlaceholder = "<signature>";
