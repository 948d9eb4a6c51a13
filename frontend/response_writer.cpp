#include "frontend/response_writer.h"

#include <cstdio>
#include <nlohmann/json.hpp>

bool nphOutput = false;

Response respondOk(const ResponseBody& body) {
    return {.status = "200 OK", .contentType = "text/plain", .body = body, .exitStatus = 0};
}

Response respondBadRequest(const ResponseBody& body) {
    return {
        .status = "400 Bad Request", .contentType = "text/plain", .body = body, .exitStatus = -1};
}

Response respondServerError(const ResponseBody& body) {
    return {
        .status = "500 Server Error", .contentType = "text/plain", .body = body, .exitStatus = -1};
}

Response respondJson(const nlohmann::json& value, std::string& text) {
    text = value.dump();
    return {.status = "200 OK", .contentType = "application/json", .body = text, .exitStatus = 0};
}

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
