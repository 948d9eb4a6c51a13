#pragma once

#include <string>
#include <string_view>

/// Whether libcrypto accepts this text as a signature of `data` under the key of a project file.
/// Throws when the text is not one that signing writes, or the file is no sound project.
bool judgeAcceptsText(const std::string& projectPath, std::string_view data,
                      const std::string& text);
