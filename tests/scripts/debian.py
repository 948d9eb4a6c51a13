"""A Debian 12 of a test's own: a package made of the sources, a system to install it into, and
commands inside. Needs root and the network."""

import os
import re
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SECONDS_TO_BUILD = 1800
SECONDS_FOR_A_COMMAND = 120

# Starts a program among mounts and processes of its own; all of them end when it does, and it does
# when the test ends.
APART = ("setpriv", "--pdeathsig", "KILL",
         "unshare", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc")


def output_of(*command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, **options).stdout


def end(process):
    process.kill()
    process.wait()


def make_package(folder, **options):
    """The path of the package that the sources in a folder give."""
    return Path(output_of(*APART, folder / "scripts/package.sh", timeout=SECONDS_TO_BUILD,
                          **options).strip())


def make_system(root, packages, folder, *options):
    """Begins to make a Debian with these packages at `root`; a process to wait for. `folder` is
    for what is needed meanwhile; options go to mmdebstrap."""
    return subprocess.Popen([*APART, "mmdebstrap", "--quiet", "--variant=apt",
                             f"--include={','.join(packages)}", *options, "bookworm", root],
                            env=os.environ | {"TMPDIR": str(folder)})


def guide(heading, page="deployment.md"):
    """The commands of a section of a page of docs/."""
    text = (ROOT / "docs" / page).read_text(encoding="utf-8")
    section = re.search(rf"(?ms)^## {heading}\n(.*?)(?=^## |\Z)", text).group(1)
    commands = "".join(re.findall(r"(?ms)^```sh\n(.*?)^```$", section))
    if not commands:
        raise AssertionError(f"the guide has no commands under '{heading}'")
    return commands


class Machine:
    """A Debian in the folder `root` that runs, with the process `first` as its first."""

    def __init__(self, root, first):
        self.root, self.first = root, first

    def run(self, *command, status=0):
        """Runs a command inside; gives what it says."""
        run = subprocess.run(
            ["nsenter", "--target", str(self.first), "--mount", "--uts", "--ipc", "--pid",
             "--cgroup", "--root", "--wd", *command],
            env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8",
                 "DEBIAN_FRONTEND": "noninteractive", "HOME": "/root"},
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
            check=False, timeout=SECONDS_FOR_A_COMMAND)
        if run.returncode != status:
            raise AssertionError(f"{command} gave {run.returncode}: {run.stdout}")
        return run.stdout

    def shell(self, script):
        return self.run("sh", "-ec", "cd /root\n" + script)

    def change(self, path, old, new):
        """Changes a text inside that must be there."""
        file = self.root / path
        text = file.read_text(encoding="utf-8")
        if old not in text:
            raise AssertionError(f"{path} has no '{old}'")
        file.write_text(text.replace(old, new), encoding="utf-8")
