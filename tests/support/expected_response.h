#pragma once

#include <string>
#include <string_view>

/// Who the first line of a response is for: the server that started the program, or the client.
enum class FirstLine { forServer, forClient };

/// The bytes of a response with a body, put together from its parts.
std::string expectedResponse(FirstLine firstLine, std::string_view status,
                             std::string_view contentType, std::string_view body);

// The usual ones, for a server.

std::string expectedRefusal(std::string_view message);
std::string expectedText(std::string_view body);
std::string expectedJson(std::string_view body);

/// What stands behind the header of a response; empty when no empty line ends the header.
std::string responseBody(const std::string& response);
