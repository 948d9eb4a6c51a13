#pragma once

#include <cstdio>

/// Where a request comes from: the variables of CGI that count (RFC 3875, section 4.1), null where
/// they are not set, and the stream that its body arrives on. It owns nothing.
struct RequestSource {
    const char* contentType = nullptr;
    const char* contentLength = nullptr;
    const char* queryString = nullptr;
    std::FILE* body = nullptr;
};

/// The request of this process: its environment and its standard input. The query string is not
/// looked at.
RequestSource requestOfProcess();
