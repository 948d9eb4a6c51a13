"""The systemd units of deploy/systemd: what systemd finds wrong with them, and how confined they are."""

import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

from servers import DEPLOY

MOST_EXPOSURE = 1.0  # on the scale from 0 to 10 of systemd-analyze security


def analyze(*arguments):
    return subprocess.run(["systemd-analyze", *arguments], capture_output=True, text=True,
                          check=False)


class TestUnits(unittest.TestCase):
    def setUp(self):
        # Apart from the units that a machine may have installed.
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.units = Path(folder.name) / "units"
        shutil.copytree(DEPLOY / "systemd", self.units)
        self.service = self.units / "sign-fcgiwrap.service"

    def exposure(self):
        result = analyze("security", "--offline=true", "--no-pager", self.service)
        return float(re.search(r"Overall exposure level for .*: ([0-9.]+)", result.stdout).group(1))

    def test_systemd_finds_nothing_wrong(self):
        result = analyze("verify", self.service, self.units / "sign-fcgiwrap.socket")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def test_the_drop_in_confines_the_service(self):
        confined = self.exposure()
        shutil.rmtree(self.units / "sign-fcgiwrap.service.d")
        print(f"exposure {confined}, without the drop-in {self.exposure()}")
        self.assertLessEqual(confined, MOST_EXPOSURE)
        self.assertGreater(self.exposure(), MOST_EXPOSURE)


if __name__ == "__main__":
    unittest.main()
