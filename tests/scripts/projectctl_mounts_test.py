"""Runs projectctl where other files are mounted over the random devices, and on a full file system.

    projectctl_mounts_test.py FOLDER     the folder of the programs; SIGN_PROGRAM_FOLDER names another

Each command runs in a mount namespace of its own, so that the machine stays as it is.
"""

import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

NAMESPACE = ["unshare", "--mount", *([] if os.geteuid() == 0 else ["--map-root-user"])]
MAKE = "; make the kernel's device there (mknod -m 666 /dev/urandom c 1 9)\n"
MISSING = ("/dev/urandom and /dev/random: neither can be opened, and the clock alone is not a "
           "secret" + MAKE)
FOREIGN = ("/dev/urandom, or /dev/random if that cannot be opened: not the kernel's random device, "
           "so keys and nonces could be guessed" + MAKE)
HIDDEN = "mount -t tmpfs none /dev"
ONE_OF_TWO = ("touch kept && mount --bind {device} kept && mount -t tmpfs none /dev && "
              "touch {device} && mount --bind kept {device}")
USELESS = {
    "no device at all": (HIDDEN, MISSING),
    "a FIFO as /dev/random alone": (HIDDEN + " && mkfifo /dev/random", FOREIGN),
    **{f"{name} over {' and '.join(devices)}":
       (" && ".join(f"mount --bind {path} {device}" for device in devices), FOREIGN)
       for name, path in {"an empty file": "empty", "a constant file": "constant",
                          "a random file": "random", "a FIFO": "fifo", "zeros": "/dev/zero",
                          "nothing": "/dev/null"}.items()
       for devices in (["/dev/urandom"], ["/dev/urandom", "/dev/random"])},
}
USEFUL = {
    "the devices of the machine": "true",
    "/dev/urandom alone": ONE_OF_TWO.format(device="/dev/urandom"),
    "/dev/random alone": ONE_OF_TWO.format(device="/dev/random"),
    "zeros over /dev/random, which is not read": "mount --bind /dev/zero /dev/random",
}


class Mounts(unittest.TestCase):
    programs = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        (self.folder / "empty").touch()
        (self.folder / "constant").write_bytes(b"7" * 4096)
        (self.folder / "random").write_bytes(os.urandom(4096))
        os.mkfifo(self.folder / "fifo")
        self.assertEqual(self.run_among("true", "create", "project"), (0, "", ""))
        self.assertEqual(self.run_among("true", "strip", "project", "public"), (0, "", ""))

    def run_among(self, mounts, *arguments, then=":"):
        """The status, output and errors of a call of projectctl behind these mounts."""
        script = f'{mounts}\nstatus=0\n"$@" || status=$?\n{then}\nexit $status'
        end = subprocess.run(
            [*NAMESPACE, "sh", "-ec", script, "sh", self.programs / "projectctl", *arguments],
            cwd=self.folder, input="data", capture_output=True, text=True, check=False, timeout=60)
        return end.returncode, end.stdout, end.stderr

    def test_no_key_and_no_signature_is_made_from_a_useless_device(self):
        for name, (mounts, reason) in USELESS.items():
            refused = (2, "", "projectctl: " + reason)
            for arguments in (["create", "new"], ["create", "other", "--base", "standard"],
                              ["sign", "project"], ["sign", "project", "-"]):
                with self.subTest(name, arguments=arguments):
                    self.assertEqual(self.run_among(mounts, *arguments), refused)
        self.assertEqual([name for name in ("new", "other") if (self.folder / name).exists()], [])

    def test_keys_and_signatures_are_made_from_the_kernels_device(self):
        for number, (name, mounts) in enumerate(USEFUL.items()):
            with self.subTest(name):
                signatures = [self.run_among(mounts, "sign", "project") for _ in range(2)]
                self.assertEqual([(status, errors) for status, _, errors in signatures],
                                 [(0, "")] * 2)
                self.assertNotEqual(signatures[0], signatures[1])
                self.assertEqual(self.run_among(mounts, "create", f"new{number}"), (0, "", ""))

    def check_among(self, mounts, project):
        """As `run_among`, without the fingerprint."""
        status, output, errors = self.run_among(mounts, "check", project)
        return status, re.sub(r"^.*: fingerprint of the public key: .*\n", "", output), errors

    def test_checking_and_explaining_remark_on_a_useless_device(self):
        remark = "signing here would give the private scalar away: "
        for name, (mounts, reason) in USELESS.items():
            with self.subTest(name):
                self.assertEqual(self.check_among(mounts, "project"),
                                 (0, "project: sound\n", f"projectctl: {remark}{reason}"))
                self.assertEqual(self.check_among(mounts, "public"),
                                 (0, "public: sound, for verifying only\n", ""))
                signing = self.run_among(mounts, "explain", "--project", "project",
                                         "--data", "data")
                if "FIFO" in name:
                    self.assertEqual(signing, (2, "", "projectctl: " + reason))
                else:
                    self.assertIn(f"Note: {remark}{reason[:-1]}.\n", signing[1])
                _, verifying, _ = self.run_among(mounts, "explain", "--project", "project",
                                                 "--data", "data", "--signature", "AAAA")
                self.assertNotIn("/dev/", verifying)
        for name, mounts in USEFUL.items():
            with self.subTest(name):
                self.assertEqual(self.check_among(mounts, "project"),
                                 (0, "project: sound\n", ""))
                self.assertNotIn("/dev/", self.run_among(mounts, "explain", "--project", "project",
                                                         "--data", "data")[1])

    def test_a_full_file_system_is_told_and_nothing_is_left(self):
        (self.folder / "full").mkdir()
        full = "mount -t tmpfs -o size=16k none full && ! cp /dev/zero full/filling 2>/dev/null"
        cases = [full]
        if "SIGN_SANITIZED" not in os.environ:
            cases.append(full + " && mount -t tmpfs none /proc")
        for mounts in cases:
            for arguments in (["create", "full/new"], ["strip", "project", "full/new"]):
                with self.subTest(mounts, arguments=arguments):
                    self.assertEqual(
                        self.run_among(mounts, *arguments, then="ls full"),
                        (2, "filling\n", "projectctl: full/new: No space left on device\n"))


if __name__ == "__main__":
    Mounts.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
