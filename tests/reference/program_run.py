"""The built program, started as a web server starts it (RFC 3875): variables and standard input."""

import resource
import subprocess
from pathlib import Path

SECONDS_FOR_A_REQUEST = 60


def leave_no_core():
    """For this process and those that it starts."""
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run(programs, request):
    """Standard output, standard error and exit status; the status is None if it did not end."""
    file = "nph-sign.cgi" if request.name == b"nph-sign.cgi" else "sign.cgi"
    environment = {b"ASAN_OPTIONS": b"allocator_may_return_null=1"} | request.environment
    with subprocess.Popen([request.name], executable=Path(programs) / file, env=environment,
                          stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE) as process:
        try:
            output, errors = process.communicate(request.body, timeout=SECONDS_FOR_A_REQUEST)
        except subprocess.TimeoutExpired:
            process.kill()
            output, errors = process.communicate()
            return output, errors, None
        return output, errors, process.returncode
