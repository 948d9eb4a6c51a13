"""The built programs: sign.cgi as a web server starts it (RFC 3875), by variables and standard
input, and projectctl, which explains what sign.cgi answers."""

import json
import resource
import subprocess
from pathlib import Path

SECONDS_FOR_A_REQUEST = 60
# posix_spawn refuses an empty argv[0], which a web server may give.
subprocess._USE_POSIX_SPAWN = False
# Under AddressSanitizer, memory that there is not is refused as by any other allocator.
SANITIZED = {b"ASAN_OPTIONS": b"allocator_may_return_null=1"}


def leave_no_core():
    """For this process and those that it starts."""
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def ended(arguments, executable, environment, body):
    """Standard output, standard error and exit status; the status is None if it did not end."""
    with subprocess.Popen(arguments, executable=executable, env=SANITIZED | environment,
                          stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE) as process:
        try:
            output, errors = process.communicate(body, timeout=SECONDS_FOR_A_REQUEST)
        except subprocess.TimeoutExpired:
            process.kill()
            output, errors = process.communicate()
            return output, errors, None
        return output, errors, process.returncode


def run(programs, request):
    """What becomes of the request, as `ended` tells."""
    file = "nph-sign.cgi" if request.name == b"nph-sign.cgi" else "sign.cgi"
    return ended([request.name], Path(programs) / file, request.environment, request.body)


def explain(programs, request):
    """Status, body and rule of the answer as projectctl tells them; what it says instead if not."""
    arguments = [b"projectctl", b"explain", b"--json", b"--body", b"-"]
    if b"CONTENT_TYPE" in request.environment:
        arguments += [b"--content-type", request.environment[b"CONTENT_TYPE"]]
    if b"CONTENT_LENGTH" in request.environment:
        arguments += [b"--content-length", request.environment[b"CONTENT_LENGTH"]]
    else:
        arguments.append(b"--no-content-length")
    output, errors, exit_status = ended(arguments, Path(programs) / "projectctl", {}, request.body)
    if errors != b"" or exit_status != 0 or not output.startswith(b"{"):
        return output, errors, exit_status
    explanation = json.loads(output)
    return explanation["status"], explanation["body"], explanation["rule"]
