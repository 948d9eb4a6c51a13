"""A Debian whose systemd runs as the first process of a container, with what it writes in a layer of
its own:

    with Container([system], folder, groups) as machine:
        machine.run("systemctl", "start", ...)
    with Container([machine.layer, system], another_folder, groups) as machine:
        ...

It shares the network of this process, which should therefore have one of its own, and ends with the
block, by a poweroff inside.
"""

import os
import socket
import subprocess
import time

import control_groups
import debian

SECONDS_TO_BOOT = 60
SECONDS_TO_POWER_OFF = 60


class Container(debian.Machine):
    def __init__(self, layers, folder, groups):
        """`layers` are folders, the topmost first. The system can be changed below `root` before
        it boots."""
        super().__init__(folder / "root", first=None)
        self.layer, self.groups = folder / "layer", groups
        self.console = folder / "console"
        self.notices = folder / "notices"
        work = folder / "work"
        for made in (folder, self.root, self.layer, work):
            made.mkdir()
        lower = ":".join(str(layer) for layer in layers)
        subprocess.run(["mount", "-t", "overlay", "-o",
                        f"lowerdir={lower},upperdir={self.layer},workdir={work}", "overlay",
                        self.root], check=True)
        self.process = None

    def __enter__(self):
        with open(self.console, "wb") as console, \
                socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as notices:
            notices.bind(str(self.notices))
            self.process = subprocess.Popen(
                # Unlike a container with a network of its own, one that shares ours is not given
                # the right to set up more of them, which PrivateNetwork= takes.
                ["systemd-nspawn", "--boot", "--register=no", "--keep-unit", "--quiet",
                 "--notify-ready=yes", "--capability=CAP_NET_ADMIN", "--console=pipe",
                 f"--directory={self.root}"],
                stdin=subprocess.DEVNULL, stdout=console, stderr=subprocess.STDOUT,
                env=os.environ | {"NOTIFY_SOCKET": str(self.notices)},
                preexec_fn=lambda: control_groups.enter(self.groups))
            try:
                self.wait_until_it_is_ready(notices)
                control_groups.lend(self)
                # Not with units that failed.
                state = self.run("sh", "-c", "systemctl is-system-running --wait || true").strip()
                if state != "running":
                    raise AssertionError(f"the container is {state}: "
                                         + self.run("systemctl", "--failed", "--no-legend"))
            except BaseException:
                debian.end(self.process)
                raise
        return self

    def wait_until_it_is_ready(self, notices):
        """Until systemd has reached its target and says so (sd_notify(3))."""
        deadline = time.monotonic() + SECONDS_TO_BOOT
        notices.settimeout(1)
        notice = ""
        while "READY=1" not in notice.split("\n"):
            try:
                notice = notices.recv(4096).decode()
            except TimeoutError:
                notice = ""
            for line in notice.split("\n"):
                if line.startswith("X_NSPAWN_LEADER_PID="):
                    self.first = line.partition("=")[2]
            if self.process.poll() is not None or time.monotonic() > deadline:
                raise AssertionError(f"the container does not reach its target: {self.all_it_said()}")

    def all_it_said(self):
        said = self.console.read_text(encoding="utf-8", errors="replace")
        if self.first and self.process.poll() is None:
            said += self.run("systemctl", "list-jobs")
            said += self.run("journalctl", "--boot", "--no-pager", "--lines=50")
        return said

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.run("systemctl", "poweroff")
        try:
            status = self.process.wait(SECONDS_TO_POWER_OFF)
        except subprocess.TimeoutExpired:
            said = self.all_it_said()
            debian.end(self.process)
            raise AssertionError(f"the container does not power off: {said}") from None
        if status != 0:
            raise AssertionError(f"the container ended with {status}: {self.all_it_said()}")
        self.first = None
        subprocess.run(["umount", self.root], check=True)
        for group in self.groups:
            control_groups.empty(group)
