"""The units of deploy/systemd under a systemd that boots a Debian 12 in a container, with nginx beside
them, set up by the package and the commands of docs/deployment.md.

    units_in_container_test.py              the units as shipped
    units_in_container_test.py --planted    then changes of them, each of which must make a test fail

Needs root and the network; CI runs it by itself. Mounts, processes and the network of the container
are this test's own and end with it, however it ends.
"""

import fcntl
import os
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tests" / folder) for folder in ("scripts", "servers")]
import captured_program  # noqa: E402
import control_groups  # noqa: E402
import debian  # noqa: E402
import key_guides  # noqa: E402
import planted  # noqa: E402
import shipped_units  # noqa: E402
import teams  # noqa: E402
from container import Container  # noqa: E402
from units import Units  # noqa: E402

PACKAGES = ("systemd-sysv", "nginx", "fcgiwrap", "curl", "adduser", "python3", "openssl")
SIOCSIFFLAGS, IFF_UP = 0x8914, 1


def set_up_loopback():
    with socket.socket() as any_socket:
        fcntl.ioctl(any_socket, SIOCSIFFLAGS, struct.pack("16sh", b"lo", IFF_UP))


def install(system, folder, package, groups):
    """Follows the guide; gives the layers of the system, installed."""
    container = Container([system], folder, groups)
    shutil.copy(package, container.root / "root")
    with container as machine:
        machine.change("etc/nginx/sites-available/default", "server_name _;",
                       "server_name _;\n\tinclude snippets/sign-cgi-server.conf;")
        machine.shell(debian.guide("The package"))
        machine.shell(debian.guide("nginx"))
    return [container.layer, system]


def run_inside(folder, package, which, groups):
    """The tests, among mounts, processes and a network of their own."""
    set_up_loopback()
    folder = Path(folder)
    Units.groups = [Path(group) for group in groups]
    Units.folder = folder / "containers"
    Units.folder.mkdir()
    subprocess.run(["mount", "-t", "tmpfs", "tmpfs", Units.folder], check=True)
    Units.layers = install(folder / "system", Units.folder / "installation", package, Units.groups)
    tests = unittest.TestSuite(map(unittest.defaultTestLoader.loadTestsFromModule,
                                   (captured_program, shipped_units, teams, key_guides)))
    passed = unittest.TextTestRunner(verbosity=2).run(tests).wasSuccessful()
    if passed and which == "--planted":
        passed = planted.all_are_found(Units.folder)
    return passed


def run_apart(folder, which, groups):
    """Makes the system and the package, and runs the tests in it, apart from everything else."""
    subprocess.run([ROOT / "scripts/install-packages.sh", "build", "units"], check=True)
    system = debian.make_system(folder / "system", PACKAGES, folder)
    try:
        package = debian.make_package(ROOT)
        if system.wait() != 0:
            raise AssertionError("mmdebstrap could not make a Debian")
    finally:
        debian.end(system)
    tests = subprocess.Popen([*debian.APART, "unshare", "--net", sys.executable, __file__,
                              "--inside", folder, package, which, *groups])
    try:
        return tests.wait()
    finally:
        debian.end(tests)


def main():
    if sys.argv[1:2] == ["--inside"]:
        _, _, folder, package, which, *groups = sys.argv
        return 0 if run_inside(folder, package, which, groups) else 1
    if sys.argv[1:] not in ([], ["--planted"]):
        print(__doc__, file=sys.stderr)
        return 2
    # Whoever ends this test lets it clean up.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    groups = control_groups.make(f"sign-units-{os.getpid()}")
    try:
        with tempfile.TemporaryDirectory(prefix="sign-units.") as folder:
            Path(folder).chmod(0o755)
            return run_apart(Path(folder), "".join(sys.argv[1:]) or "--shipped", groups)
    finally:
        control_groups.remove(groups)


if __name__ == "__main__":
    sys.exit(main())
