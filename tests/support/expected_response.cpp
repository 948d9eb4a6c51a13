#include "tests/support/expected_response.h"

std::string expectedResponse(FirstLine firstLine, std::string_view status,
                             std::string_view contentType, std::string_view body) {
    std::string response = firstLine == FirstLine::forClient ? "HTTP/1.0 " : "Status: ";
    response.append(status).append("\r\nContent-Type: ").append(contentType);
    response.append("\r\nContent-Length: ").append(std::to_string(body.size()));
    return response.append("\r\n\r\n").append(body);
}

std::string expectedRefusal(std::string_view message) {
    return expectedResponse(FirstLine::forServer, "400 Bad Request", "text/plain", message);
}

std::string expectedText(std::string_view body) {
    return expectedResponse(FirstLine::forServer, "200 OK", "text/plain", body);
}

std::string expectedJson(std::string_view body) {
    return expectedResponse(FirstLine::forServer, "200 OK", "application/json", body);
}

std::string responseBody(const std::string& response) {
    constexpr std::string_view headerEnd = "\r\n\r\n";
    const std::size_t end = response.find(headerEnd);
    return end == std::string::npos ? std::string() : response.substr(end + headerEnd.size());
}
