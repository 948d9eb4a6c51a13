#pragma once

#include <array>
#include <climits>

/// The file name of the program that the arguments choose: sign.cgi without an argument, or that of
/// sign.cgi and nph-sign.cgi which is the last component of the only argument. Null for all others.
const char* chosenProgram(int argumentCount, char* const* arguments);

using ProgramPath = std::array<char, PATH_MAX>;

/// Writes the path of the file `name` in the folder that this program was executed from; false if
/// it is too long for the system.
///
/// The folder is that of the path which was given to `execve` (AT_EXECFN, getauxval(3)), relative
/// to the working folder if that was. The kernel keeps this path, so that it takes no /proc, which
/// a chroot may lack, and holds for the working folder of now; links stay unresolved, so that a
/// link to this program, or a copy, starts what stands beside itself. It is no way to have another
/// program started: who can execute this one under a path of his own can execute what stands beside
/// it.
bool pathBeside(const char* name, ProgramPath& path);

/// The variables of a request, with a null behind the last, as `execve` takes them.
using RequestVariables = std::array<char*, 3>;

/// Those variables of the environment that sign.cgi reads, CONTENT_TYPE and CONTENT_LENGTH, as far
/// as they are set; the first of several with one name, as `getenv` has it.
RequestVariables requestVariables(char* const* environment);
