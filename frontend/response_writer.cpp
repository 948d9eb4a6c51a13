#include "frontend/response_writer.h"

#include <cstdio>
#include <nlohmann/json.hpp>

bool nphOutput = false;

void writeResponse(const char* status, const char* contentType, const ResponseBody& body) {
    std::printf(nphOutput ? "HTTP/1.0 %s\r\n" : "Status: %s\r\n", status);
    if (body.length == 0) {
        std::printf("\r\n\n");
        return;
    }
    std::printf("Content-Type: %s\r\n", contentType);
    std::printf("Content-Length: %d\r\n\r\n", static_cast<std::int32_t>(body.length));
    std::printf("%s", body.text);
}

void respondOk(const ResponseBody& body) {
    writeResponse("200 OK", "text/plain", body);
}

std::int32_t respondBadRequest(const ResponseBody& body) {
    writeResponse("400 Bad Request", "text/plain", body);
    return -1;
}

std::int32_t respondServerError(const ResponseBody& body) {
    writeResponse("500 Server Error", "text/plain", body);
    return -1;
}

void respondJson(const nlohmann::json& value) {
    const std::string text = value.dump();
    writeResponse("200 OK", "application/json", text);
}
