#pragma once

#include <map>
#include <string>

#include "tests/support/program_run.h"
#include "tests/support/request_answer.h"
#include "tools/request/raw_request.h"

using Answerer = RequestAnswer (*)(const RawRequest&);

/// The call of the built program with this request.
ProgramCall programCall(const RawRequest& request);

/// What the program wrote before it ended; nothing if it was aborted. A failure of the test if its
/// exit status does not go with the answer.
RequestAnswer answerOf(const ProgramEnd& end);

/// Explains random requests until each is told as it is answered; the number of each rule. Needs
/// the core started.
std::map<std::string, int> compareRequests(int count, Answerer answererOf);
