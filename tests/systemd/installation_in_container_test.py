"""scripts/install-packages.sh on a Debian 12 that systemd has booted in a container: the servers that
it installs are neither started nor enabled, and do not run after the next boot either.

Needs root and the network; CI runs it by itself.
"""

import os
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tests" / folder) for folder in ("scripts", "servers")]
import control_groups  # noqa: E402
import debian  # noqa: E402
from container import Container  # noqa: E402

PACKAGES = ("systemd-sysv",)
SERVERS = ("lighttpd", "nginx", "apache2-bin", "fcgiwrap", "haproxy", "curl")
UNITS = ("lighttpd.service", "nginx.service", "fcgiwrap.service", "fcgiwrap.socket",
         "apache2.service", "haproxy.service")
# Fetched into the system beforehand: the container has no network.
FETCH = ("APT_CONFIG=$MMDEBSTRAP_APT_CONFIG apt-get install --yes --download-only "
         "--no-install-recommends " + " ".join(SERVERS))


class Servers(unittest.TestCase):
    """Of the container that ran the installation, and of the same after its next boot."""

    system = None
    folder = None
    groups = None

    def assert_quiet(self, machine):
        there = 0
        for unit in UNITS:
            with self.subTest(unit):
                state = machine.run("sh", "-c", f"systemctl is-enabled {unit} || true").strip()
                there += "No such file" not in state
                self.assertNotIn("enabled", state.split())
                self.assertEqual(machine.run("sh", "-c", f"systemctl is-active {unit} || true")
                                 .strip(), "inactive")
        self.assertEqual(there, 5)  # of apache2 there is the program alone
        self.assertEqual(machine.run("sh", "-c", "ls /etc/rc?.d | grep -E "
                                     "'^S.*(lighttpd|nginx|apache2|fcgiwrap|haproxy)' || true"), "")
        self.assertEqual(machine.run("sh", "-c", "ls /usr/sbin/policy-rc.d || true").split("\n")[0],
                         "ls: cannot access '/usr/sbin/policy-rc.d': No such file or directory")

    def test_that_are_installed_stay_quiet(self):
        installation = Container([self.system], self.folder / "installation", self.groups)
        shutil.copy(ROOT / "scripts/install-packages.sh", installation.root / "root")
        # The purposes that name the servers, without what else they name.
        installation.change("root/install-packages.sh", "[suite]=\"", "[servers]=\""
                            + " ".join(SERVERS) + "\"\n    [suite]=\"")
        with installation as machine:
            machine.run("/root/install-packages.sh", "servers")
            self.assert_quiet(machine)
            self.assertEqual(machine.run("/root/install-packages.sh", "servers"), "")
        layers = [installation.layer, self.system]
        with Container(layers, self.folder / "next", self.groups) as machine:
            self.assert_quiet(machine)
            # Whoever wants one has it by the usual command.
            machine.run("systemctl", "enable", "--now", "lighttpd.service")
            self.assertEqual(machine.run("systemctl", "is-active", "lighttpd.service"), "active\n")


def run_inside(folder, groups):
    """The tests, among mounts, processes and a network of their own."""
    Servers.system = Path(folder) / "system"
    Servers.folder = Path(folder) / "containers"
    Servers.groups = [Path(group) for group in groups]
    Servers.folder.mkdir()
    subprocess.run(["mount", "-t", "tmpfs", "tmpfs", Servers.folder], check=True)
    tests = unittest.defaultTestLoader.loadTestsFromTestCase(Servers)
    return unittest.TextTestRunner(verbosity=2).run(tests).wasSuccessful()


def run_apart(folder, groups):
    subprocess.run([ROOT / "scripts/install-packages.sh", "units"], check=True)
    system = debian.make_system(folder / "system", PACKAGES, folder,
                                "--skip=cleanup/apt", f"--customize-hook={FETCH}")
    try:
        if system.wait() != 0:
            raise AssertionError("mmdebstrap could not make a Debian")
    finally:
        debian.end(system)
    tests = subprocess.Popen([*debian.APART, "unshare", "--net", sys.executable, __file__,
                              "--inside", folder, *groups])
    try:
        return tests.wait()
    finally:
        debian.end(tests)


def main():
    if sys.argv[1:2] == ["--inside"]:
        return 0 if run_inside(sys.argv[2], sys.argv[3:]) else 1
    if sys.argv[1:]:
        print(__doc__, file=sys.stderr)
        return 2
    # Whoever ends this test lets it clean up.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    groups = control_groups.make(f"sign-installation-{os.getpid()}")
    try:
        with tempfile.TemporaryDirectory(prefix="sign-installation.") as folder:
            Path(folder).chmod(0o755)
            return run_apart(Path(folder), groups)
    finally:
        control_groups.remove(groups)


if __name__ == "__main__":
    sys.exit(main())
