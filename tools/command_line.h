#pragma once

/// Runs the command that the arguments name and returns its exit status. Wrong arguments are
/// reported with what is wrong and give `exitFailed`; help and version are printed.
int runCommandLine(int argumentCount, const char* const* arguments);
