"""What `limited` starts, and with what; and where it refuses.

    launcher_test.py FOLDER     FOLDER holds the built programs; SIGN_PROGRAM_FOLDER names another
"""

import json
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from denied_calls import CALLS, deny

STAND_IN = Path(__file__).with_name("stand_in.py")
LIMITS = {"cpu time": ["60", "60"], "data size": [str(512 << 20)] * 2, "core file size": ["0", "0"]}
SECONDS_FOR_A_RUN = 30

# Mounts of its own, in which an ordinary user is root as well.
APART = ["unshare", "--map-root-user", "--mount", "sh", "-ec"]


class Variables(dict):
    """Environment variables of which some come several times."""

    def __init__(self, *pairs):
        super().__init__(pairs)
        self.pairs = pairs

    def items(self):
        return self.pairs

    def keys(self):
        return [name for name, _ in self.pairs]

    def values(self):
        return [value for _, value in self.pairs]


class TestLauncher(unittest.TestCase):
    programs = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.limited = self.install("programs")

    def install(self, name):
        """The path of a launcher in a folder of its own, with stand-ins beside it."""
        folder = self.folder / name
        folder.mkdir()
        shutil.copy(self.programs / "limited", folder)
        for program in ("sign.cgi", "nph-sign.cgi"):
            shutil.copy(STAND_IN, folder / program)
        return folder / "limited"

    def start(self, *command, **options):
        return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              check=False, timeout=SECONDS_FOR_A_RUN, **{"env": {}, **options})

    def told(self, *arguments, **options):
        """What the stand-in tells that it starts."""
        run = self.start(self.limited, *arguments, **options)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        return json.loads(run.stdout)

    def assert_refuses(self, run, what, why):
        """With one line of its own, which ends with what to do, and not a byte for the client."""
        self.assertEqual((run.returncode, run.stdout), (1, ""))
        self.assertRegex(run.stderr, rf"\Alimited: {re.escape(what)}: {re.escape(why)}; [^\n]+\n\Z")

    def test_a_program_has_the_limits(self):
        own = {name: [str(value) if value != resource.RLIM_INFINITY else "unlimited"
                      for value in resource.getrlimit(number)]
               for name, number in (("stack size", resource.RLIMIT_STACK),
                                    ("address space", resource.RLIMIT_AS),
                                    ("open files", resource.RLIMIT_NOFILE),
                                    ("file size", resource.RLIMIT_FSIZE))}

        def allow_core_dumps():
            _, most = resource.getrlimit(resource.RLIMIT_CORE)
            resource.setrlimit(resource.RLIMIT_CORE, (most, most))

        limits = self.told(preexec_fn=allow_core_dumps)["limits"]
        for name, values in (LIMITS | own).items():
            self.assertEqual(limits[name], values, name)

    def test_lower_limits_of_the_server_stay(self):
        def lower():
            resource.setrlimit(resource.RLIMIT_CPU, (7, 100))
            resource.setrlimit(resource.RLIMIT_DATA, (200 << 20, 300 << 20))

        limits = self.told(preexec_fn=lower)["limits"]
        self.assertEqual(limits["cpu time"], ["7", "60"])
        self.assertEqual(limits["data size"], [str(200 << 20), str(300 << 20)])
        self.assertEqual(limits["core file size"], ["0", "0"])

    def test_the_alarm_is_set_and_an_earlier_one_stays(self):
        for inherited, most in ((0, 60), (61, 60), (59, 59), (40, 40)):
            with self.subTest(inherited=inherited):
                start = time.monotonic()
                left = self.told(preexec_fn=lambda: signal.alarm(inherited))["seconds left"]
                self.assertLessEqual(left, most)
                # An earlier one is set again in whole seconds.
                rounded = 1 if inherited in range(1, 60) else 0
                self.assertGreaterEqual(left, most - rounded - (time.monotonic() - start))

    def test_a_program_that_hangs_is_ended_though_its_signals_were_ignored_and_blocked(self):
        def be_deaf():
            for number in (signal.SIGALRM, signal.SIGXCPU):
                signal.signal(number, signal.SIG_IGN)
            signal.pthread_sigmask(signal.SIG_BLOCK, signal.valid_signals())

        for number in (signal.SIGALRM, signal.SIGXCPU):
            with self.subTest(number), subprocess.Popen(
                    [self.limited], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                    preexec_fn=be_deaf) as process:
                process.stdin.write(b"hang")
                process.stdin.close()
                signals = json.loads(process.stdout.readline())["signals"]
                self.assertEqual(signals["SigBlk"], 0)
                process.send_signal(number)
                self.assertEqual(process.wait(SECONDS_FOR_A_RUN), -number)

    def test_it_hands_on_what_a_request_is_and_nothing_else(self):
        request = [("CONTENT_TYPE", "application/json"), ("CONTENT_LENGTH", "5")]
        others = [("PATH", "/nowhere"), ("LD_PRELOAD", "/nowhere"),
                  ("GLIBC_TUNABLES", "glibc.malloc.perturb=1"), ("CONTENT_TYPE_", "x"),
                  ("CONTENT_LENGTH_", "x"), ("CONTENT", "x"), ("QUERY_STRING", "x"),
                  ("HTTP_CONTENT_LENGTH", "x"), ("content_type", "x")]
        for given, handed in (
                ([*others, *request], request),
                ([*request, *others, ("CONTENT_LENGTH", "6"), ("CONTENT_TYPE", "x")], request),
                ([request[1], *others], request[1:]),
                ([("CONTENT_TYPE", "")], [("CONTENT_TYPE", "")]),
                (others, []), ([], [])):
            with self.subTest(given=given):
                self.assertEqual(self.told(env=Variables(*given))["environment"],
                                 [f"{name}={value}" for name, value in handed])

    def test_descriptors_of_the_server_are_closed(self):
        ends = os.pipe()
        self.addCleanup(lambda: [os.close(end) for end in ends])
        # The fourth is the one by which the stand-in looks.
        self.assertEqual(self.told(pass_fds=ends)["descriptors"], [0, 1, 2, 3])

    def test_the_last_component_of_an_argument_chooses_of_two_programs(self):
        for arguments, name in (([], "sign.cgi"), (["sign.cgi"], "sign.cgi"),
                                (["/nowhere/sign.cgi"], "sign.cgi"),
                                (["nph-sign.cgi"], "nph-sign.cgi"),
                                (["../x/nph-sign.cgi"], "nph-sign.cgi")):
            with self.subTest(arguments):
                self.assertEqual(self.told(*arguments)["arguments"],
                                 [str(self.limited.with_name(name))])

    def test_no_other_argument_starts_anything(self):
        self.install("other")
        for arguments in ([""], ["/bin/sh"], ["sh"], ["limited"], ["sign.cgi/"], ["Sign.cgi"],
                          ["nph-nph-sign.cgi"], ["sign.cgi\n"], ["sign.cgi "], ["--help"],
                          [self.folder / "other"], ["sign.cgi", "sign.cgi"], ["", "sign.cgi"]):
            with self.subTest(arguments):
                self.assert_refuses(self.start(self.limited, *arguments), "arguments",
                                    "they name no program beside it")

    def test_a_program_is_the_one_beside_the_path_that_was_executed(self):
        self.install("other")
        elsewhere = self.folder / "elsewhere"
        elsewhere.mkdir()
        (elsewhere / "linked").symlink_to(self.limited)
        shutil.copy(STAND_IN, elsewhere / "sign.cgi")
        for command, folder, started in (
                (self.limited, "elsewhere", self.folder / "programs/sign.cgi"),
                (elsewhere / "linked", ".", elsewhere / "sign.cgi"),
                ("./programs/limited", ".", "./programs/sign.cgi"),
                ("../programs/limited", "other", "../programs/sign.cgi"),
                ("limited", "programs", "sign.cgi")):
            with self.subTest(command=command, folder=folder):
                # Without a folder in the command, Python looks for it in those of PATH.
                run = self.start("x", executable=command, cwd=self.folder / folder,
                                 env={"PATH": ""})
                self.assertEqual(json.loads(run.stdout)["arguments"], [str(started)])

    def test_it_needs_no_proc_and_no_folder_but_its_own(self):
        shutil.copy(self.programs / "sign.cgi", self.limited.with_name("sign.cgi"))
        run = self.start(*APART, """
            mkdir dev
            touch dev/urandom
            mount --bind /dev/urandom dev/urandom
            exec chroot . /programs/limited""", cwd=self.folder, env={"PATH": os.environ["PATH"]})
        self.assertEqual((run.returncode, run.stderr), (255, ""))
        self.assertTrue(run.stdout.startswith("Status: 400 "), run.stdout)

    def test_a_path_too_long_is_refused(self):
        slashes = "/" * (os.pathconf("/", "PC_PATH_MAX") - len(str(self.limited)) - 1)
        self.assert_refuses(self.start(f"{slashes}{self.limited}"), "its own path", "too long")

    def test_a_program_that_cannot_be_started_is_named(self):
        program = self.limited.with_name("sign.cgi")
        for damage, reason in ((lambda: program.write_bytes(b"\x7fELF"), "Exec format error"),
                               (lambda: program.chmod(0o644), "Permission denied"),
                               (program.unlink, "No such file or directory")):
            damage()
            with self.subTest(reason):
                self.assert_refuses(self.start(self.limited), str(program), reason)

    def test_without_the_kernels_random_generator_nothing_is_started(self):
        (self.folder / "constant").write_bytes(b"x" * 4096)
        for mount, reason in (
                ("mount -t tmpfs none /dev", "cannot be opened"),
                ("mkfifo fifo; mount --bind fifo /dev/urandom", "a FIFO"),
                ("mount --bind constant /dev/urandom", "not the kernel's random generator"),
                ("mount --bind /dev/null /dev/urandom", "not the kernel's random generator"),
                ("mount --bind /dev/zero /dev/urandom", "not the kernel's random generator")):
            with self.subTest(mount):
                run = self.start(*APART, f"{mount}; exec programs/limited", cwd=self.folder,
                                 env={"PATH": os.environ["PATH"]})
                self.assert_refuses(run, "random device", reason)

    def test_the_kernels_other_random_device_serves_as_well(self):
        run = self.start(*APART, "mount --bind /dev/random /dev/urandom; exec programs/limited",
                         cwd=self.folder, env={"PATH": os.environ["PATH"]})
        self.assertEqual((run.returncode, run.stderr), (0, ""))

    def test_nothing_is_started_where_a_call_is_denied(self):
        denied = "Operation not permitted"
        others = {"close_range": ("open files", denied),
                  "read": ("random device", "gives too few bytes for a seed")}
        for name in CALLS:
            with self.subTest(name):
                run = self.start(self.limited, preexec_fn=lambda name=name: deny(name))
                self.assert_refuses(run, *others.get(name, ("limits", denied)))


if __name__ == "__main__":
    TestLauncher.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
