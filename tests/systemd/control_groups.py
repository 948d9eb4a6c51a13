"""Control groups of a container's own, in which its systemd limits memory and tasks.

The container's first process is started in the groups of `make`, one group in each hierarchy of this
machine, and `lend` hands it the controllers that stand in hierarchies of version 1: systemd-nspawn
mounts these read-only. `remove` takes the groups away again.
"""

import os
from pathlib import Path

CONTROLLERS = ("memory", "pids")


def hierarchies():
    """The folder of this process's group in each hierarchy that is mounted, by its controllers;
    that of version 2 is called "", and systemd's own "name=systemd"."""
    mounted = {}
    for line in Path("/proc/self/mountinfo").read_text(encoding="utf-8").splitlines():
        left, _, right = line.partition(" - ")
        root, point = left.split()[3:5]
        kind, _, options = right.split()
        if kind == "cgroup2":
            mounted[""] = (root, point)
        elif kind == "cgroup":
            for option in options.split(","):
                mounted[option] = (root, point)
    found = {}
    for line in Path("/proc/self/cgroup").read_text(encoding="utf-8").splitlines():
        _, controllers, group = line.split(":", 2)
        root, point = mounted.get(controllers.split(",")[0], (None, None))
        if root is not None:
            # Of version 2 the topmost group alone may have processes and share its controllers out.
            group = root if controllers == "" else group
            found[controllers] = Path(point) / os.path.relpath(group, root)
    return found


def make(name):
    """A group of this name in each hierarchy that systemd needs, as far as one can be made."""
    made = []
    for controllers, folder in hierarchies().items():
        if {"", "name=systemd", *CONTROLLERS} & set(controllers.split(",")):
            try:
                (folder / name).mkdir(exist_ok=True)
            except OSError as error:
                print(f"no control group in {folder}: {error.strerror}")
            else:
                made.append(folder / name)
    return made


def enter(made):
    """Puts this process into the groups."""
    for folder in made:
        (folder / "cgroup.procs").write_text("0", encoding="ascii")


def lend(machine):
    """Lets the systemd of a container use the controllers, as far as this machine has them."""
    for controller in CONTROLLERS:
        folder = f"/sys/fs/cgroup/{controller}"
        if machine.run("sh", "-c", f"test -d {folder} && echo there || true"):
            machine.run("mount", "-o", "remount,bind,rw", folder)
    # It looks for them once, when it starts.
    machine.run("systemctl", "daemon-reexec")


def empty(group):
    """Removes the groups below a group, of which no process may be left."""
    for folder, below, _ in os.walk(group, topdown=False):
        for name in below:
            (Path(folder) / name).rmdir()


def remove(made):
    for group in made:
        empty(group)
        group.rmdir()
