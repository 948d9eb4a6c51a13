#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/program_run.h"

/// A call of the built projectctl with these arguments behind its name. Standard input gives
/// `input`.
ProgramCall projectctlCall(std::vector<std::string> arguments, const std::string& input = "");

/// The end of that call.
ProgramEnd runProjectctl(std::vector<std::string> arguments, const std::string& input = "");

/// Whether it ended by itself with this status and these texts.
testing::AssertionResult endedWith(const ProgramEnd& end, int status, const std::string& output,
                                   const std::string& errors = "");

/// Whether `check` found the project at `path` sound, and printed the fingerprint of its key too.
/// `what` stands behind the verdict, as in ", for verifying only".
testing::AssertionResult isFoundSound(const ProgramEnd& end, const std::string& path,
                                      const std::string& what = "");
