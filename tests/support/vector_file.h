#pragma once

#include <map>
#include <string>
#include <vector>

/// One case of a vector file: the values of its "name = value" lines by name.
using VectorCase = std::map<std::string, std::string>;

/// The cases of a file in `tests/vectors/`, in order: runs of "name = value" lines, parted by empty
/// lines; lines that begin with "#" or "[" are passed over. Throws std::runtime_error when the file
/// cannot be read or holds no case, so that a test cannot pass over nothing.
std::vector<VectorCase> readVectorFile(const std::string& name);

/// The path of a file in `tests/vectors/`.
std::string vectorPath(const std::string& name);
