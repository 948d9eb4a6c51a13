"""Runs scripts/demo.sh --serve, repeats the commands that it prints, and interrupts it.

It builds the release programs where they belong, in build/release, so CI runs it by itself.
"""

import os
import re
import signal
import socket
import subprocess
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SECONDS_FOR_A_COMMAND = 30
SECONDS_TO_STOP = 30


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def start_demo(*arguments):
    return subprocess.Popen(
        [ROOT / "scripts" / "demo.sh", *arguments],
        cwd="/",
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
        start_new_session=True,
        # A shell that was started with a signal ignored, as in the background, cannot trap it.
        preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL),
    )


def stop(process):
    try:
        os.killpg(process.pid, signal.SIGTERM)
    except ProcessLookupError:
        pass  # it has ended, as it should have
    process.wait(SECONDS_TO_STOP)
    process.stdout.close()


def read_until(process, words):
    """The output so far: up to the line that holds these words, or its end."""
    lines = []
    for line in process.stdout:
        lines.append(line)
        if words in line:
            break
    return "".join(lines)


class Demo(unittest.TestCase):
    def test_shows_every_exchange_and_serves_until_interrupted(self):
        port = free_port()
        demo = start_demo("--serve", str(port))
        self.addCleanup(stop, demo)
        output = read_until(demo, "until Ctrl-C")
        print(output)
        self.assertIn("demo: all 22 answers are as they must be\n", output)
        self.assertNotIn("WRONG", output)
        requests = re.findall(r"^  CONTENT_TYPE=\S+ CONTENT_LENGTH=\d+ (.*)$", output, re.MULTILINE)
        self.assertEqual(requests, ["sign.cgi"] * 11)
        self.assertLess(output.count("\n"), 200)
        self.assertLessEqual(max(map(len, output.splitlines())), 120)

        answers = [subprocess.run(["bash", "-c", command], capture_output=True, text=True,
                                  check=True, timeout=SECONDS_FOR_A_COMMAND).stdout
                   for command in re.findall(r"(?ms)^(curl .*?)\n    \| ", output)]
        text = "[A-Za-z0-9+/]{4,56}={0,2}"
        self.assertRegex("\n".join(answers), rf'\A{text}\ntrue\n\{{"signature":"{text}"\}}\n'
                                             r'\{"valid":true\}\Z')

        folder = Path(re.search(r"/tmp/sign-demo\.\w+", output).group())
        self.assertTrue(folder.is_dir())
        os.killpg(demo.pid, signal.SIGINT)  # as Ctrl-C does: to the script and to the server
        self.assertEqual(demo.wait(SECONDS_TO_STOP), 0)
        self.assertFalse(folder.exists())
        with socket.socket() as probe:
            self.assertNotEqual(probe.connect_ex(("127.0.0.1", port)), 0)

    def test_tells_that_the_port_is_in_use_before_anything_else(self):
        with socket.socket() as other:
            other.bind(("127.0.0.1", 0))
            other.listen()
            port = other.getsockname()[1]
            demo = start_demo("--serve", str(port))
            output, _ = demo.communicate(timeout=SECONDS_FOR_A_COMMAND)
        self.assertEqual(demo.returncode, 1)
        self.assertEqual(output, f"demo: port {port} of 127.0.0.1 is in use; choose another: "
                                 "scripts/demo.sh --serve PORT\n")

    def test_runs_twice_at_once(self):
        demos = [start_demo("--serve", str(free_port())), start_demo()]
        for demo in demos:
            self.addCleanup(stop, demo)
        self.assertIn("until Ctrl-C", read_until(demos[0], "until Ctrl-C"))
        output, _ = demos[1].communicate()
        self.assertEqual(demos[1].returncode, 0, output)

    def test_refuses_other_arguments(self):
        for arguments in (["--server"], ["--serve", "0"], ["--serve", "65536"],
                          ["--serve", "x"], ["--serve", "1", "2"]):
            with self.subTest(arguments):
                demo = start_demo(*arguments)
                output, _ = demo.communicate(timeout=SECONDS_FOR_A_COMMAND)
                self.assertEqual(output, "usage: scripts/demo.sh [--serve [PORT]]\n")
                self.assertEqual(demo.returncode, 2)


if __name__ == "__main__":
    unittest.main()
