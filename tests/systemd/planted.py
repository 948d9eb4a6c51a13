"""Changes of the units, and of the launcher, each of which must make a test fail."""

import re
import subprocess
import unittest
from dataclasses import dataclass

from captured_program import Captured
from debian import ROOT
from shipped_units import Shipped
from teams import Teams
from units import LAUNCHER, UNITS, Units

SERVICE, SOCKET = (f"{UNITS}/sign-fcgiwrap@.{kind}" for kind in ("service", "socket"))
CONFINEMENT = f"{UNITS}/sign-fcgiwrap@.service.d/confine.conf"
LOCATION = "etc/nginx/snippets/sign-cgi-location.conf"


def replace(path, old, new):
    text = path.read_text(encoding="utf-8")
    if text.count(old) != 1:
        raise AssertionError(f"{path} has '{old}' {text.count(old)} times")
    path.write_text(text.replace(old, new), encoding="utf-8")


@dataclass(frozen=True)
class InFile:
    """Another text in the place of one in a file."""
    path: str
    old: str
    new: str

    def apply(self, root):
        replace(root / self.path, self.old, self.new)


@dataclass(frozen=True)
class InLauncher:
    """The launcher without a text of one of its sources."""
    source: str
    old: str

    def apply(self, root):
        folder = root.parent / "launcher"
        folder.mkdir()
        changed = folder / self.source
        changed.write_bytes((ROOT / "launcher" / self.source).read_bytes())
        replace(changed, self.old, "")
        others = [path for path in (ROOT / "launcher").glob("*.cpp") if path.name != self.source]
        subprocess.run(["g++", "-std=c++20", "-static", "-I", ROOT, changed, *others,
                        ROOT / "random/random_device.cpp", "-o", root / LAUNCHER[1:]], check=True)


def without(line, unit=CONFINEMENT):
    return InFile(unit, f"\n{line}\n", "\n")


def instead(line, other, unit=CONFINEMENT):
    return InFile(unit, f"\n{line}\n", f"\n{other}\n")


def hidden(devices):
    return InFile(CONFINEMENT, "[Service]\n", f"[Service]\nInaccessiblePaths={devices}\n")


PLANTED = (
    # Who reaches the socket, and what it starts.
    (instead("SocketMode=0600", "SocketMode=0666", SOCKET),
     Shipped.test_the_socket_opens_for_the_user_of_nginx_alone),
    (instead("SocketMode=0600", "SocketMode=0660", SOCKET),
     Shipped.test_the_socket_opens_for_the_user_of_nginx_alone),
    (instead("SocketUser=www-data", "SocketUser=root", SOCKET),
     Shipped.test_the_socket_opens_for_the_user_of_nginx_alone),
    (instead("SocketUser=www-data", "SocketUser=sign-%i", SOCKET),
     Shipped.test_signs_and_verifies_behind_nginx),
    (InFile(SOCKET, "/run/sign-fcgiwrap/%i.socket", "/run/fcgiwrap.socket"),
     Shipped.test_signs_and_verifies_behind_nginx),
    (instead("User=sign-%i", "User=www-data", SERVICE),
     Shipped.test_a_program_has_a_user_of_its_own_and_no_rights),
    (instead("Group=sign-%i", "Group=www-data", SERVICE),
     Shipped.test_a_program_has_a_user_of_its_own_and_no_rights),
    (InFile(SERVICE, ' -p "/usr/libexec/sign-cgi/limited"', ""),
     Shipped.test_the_socket_starts_no_other_program),
    (InFile(SERVICE, " -c 8 ", " -c 80 "), Shipped.test_eight_at_once_and_the_ninth_waits),
    (InFile(SERVICE, " -c 8 ", " -c 9 "), Shipped.test_eight_at_once_and_the_ninth_waits),
    (InFile(SERVICE, " -c 8 ", " -c 7 "), Shipped.test_eight_at_once_and_the_ninth_waits),
    (without("Restart=on-failure", SERVICE), Shipped.test_starts_again_when_it_was_killed),

    # Whose keys it is that sign.
    (instead("User=sign-%i", "User=root", SERVICE), Teams.test_no_team_signs_as_another),
    (instead("Group=sign-%i", "Group=sign-blue", SERVICE), Teams.test_no_team_signs_as_another),
    (InFile(LOCATION, "/$sign_service.socket", "/blue.socket"),
     Teams.test_no_team_signs_as_another),

    # What a program may take.
    (without("MemoryMax=2G"), Captured.test_all_together_have_memory_to_a_limit),
    (without("OOMPolicy=continue"), Captured.test_all_together_have_memory_to_a_limit),
    (without("TasksMax=64"), Captured.test_all_together_start_processes_to_a_limit),
    (instead("TasksMax=64", "TasksMax=2"), Shipped.test_eight_at_once_and_the_ninth_waits),
    (instead("TasksMax=64", "TasksMax=16"), Shipped.test_eight_at_once_and_the_ninth_waits),
    (InLauncher("limits.cpp", "lowerLimit(RLIMIT_CORE, coreBytes) &&"),
     Shipped.test_a_program_has_limits),
    (InLauncher("limits.cpp", "lowerLimit(RLIMIT_CPU, processorSeconds) &&"),
     Shipped.test_a_program_has_limits),
    (InLauncher("limits.cpp", "lowerLimit(RLIMIT_DATA, dataBytes) &&"),
     Captured.test_has_memory_to_a_limit_of_its_own),
    (InLauncher("limits.cpp", "    setAlarm();\n"), Captured.test_is_ended_within_a_minute),

    # The random devices.
    (hidden("/dev/urandom"), Captured.test_opens_no_devices_but_harmless_ones),
    (hidden("/dev/urandom /dev/random"), Shipped.test_signs_and_verifies_behind_nginx),
    (InFile(CONFINEMENT, "[Service]\n", "[Service]\nBindPaths=/dev/zero:/dev/urandom\n"),
     Shipped.test_signs_and_verifies_behind_nginx),

    # What a program sees and may do.
    (without("CapabilityBoundingSet="), Shipped.test_a_program_has_a_user_of_its_own_and_no_rights),
    (without("UMask=0077"), Shipped.test_a_program_has_a_user_of_its_own_and_no_rights),
    (without("ProtectSystem=strict"), Captured.test_can_write_nothing),
    (without("ReadOnlyPaths=/run"), Captured.test_can_write_nothing),
    (without("ProtectHome=yes"), Shipped.test_nothing_in_a_hidden_place_is_signed),
    (InFile(CONFINEMENT, "=/tmp ", "="), Shipped.test_nothing_in_a_hidden_place_is_signed),
    (InFile(CONFINEMENT, " /var/tmp", ""), Shipped.test_nothing_in_a_hidden_place_is_signed),
    (InFile(CONFINEMENT, " -/dev/shm", ""), Captured.test_can_write_nothing),
    (InFile(CONFINEMENT, " -/dev/mqueue", ""), Captured.test_can_write_nothing),
    (without("PrivateDevices=yes"), Captured.test_opens_no_devices_but_harmless_ones),
    (without("ProtectProc=invisible"), Captured.test_sees_no_processes_but_its_own),
    (without("ProcSubset=pid"), Captured.test_sees_no_processes_but_its_own),
    (without("RemoveIPC=yes"), Captured.test_leaves_no_shared_memory_behind),
    (without("PrivateNetwork=yes"), Shipped.test_a_program_has_namespaces_of_its_own),
    (without("RestrictAddressFamilies=none"), Captured.test_opens_no_sockets),
    (instead("RestrictAddressFamilies=none", "RestrictAddressFamilies=AF_UNIX"),
     Captured.test_opens_no_sockets),
    (without("ProtectControlGroups=yes"), Shipped.test_no_mount_can_be_written),
    (without("ProtectKernelTunables=yes"), Shipped.test_no_mount_can_be_written),
    (without("ProtectHostname=yes"), Shipped.test_a_program_has_namespaces_of_its_own),
    (without("PrivateUsers=yes"), Captured.test_sees_no_users_but_itself_and_root),
    (without("ProtectKernelModules=yes"), Captured.test_sees_no_homes_and_no_files_of_others),
    (without("LockPersonality=yes"), Captured.test_is_refused_what_a_plain_program_does_not_need),
    (without("MemoryDenyWriteExecute=yes"),
     Captured.test_is_refused_what_a_plain_program_does_not_need),
    (without("RestrictNamespaces=yes"),
     Captured.test_is_refused_what_a_plain_program_does_not_need),
    (without("RestrictSUIDSGID=yes"), Captured.test_is_refused_what_a_plain_program_does_not_need),
    (without("SystemCallArchitectures=native"), Captured.test_makes_no_calls_of_32_bits),
    (without("SystemCallFilter=@system-service"),
     Captured.test_is_refused_what_a_plain_program_does_not_need),
    (without("SystemCallFilter=~@privileged @resources"),
     Captured.test_is_refused_what_a_plain_program_does_not_need),
    (without("SystemCallErrorNumber=EPERM"),
     Captured.test_is_refused_what_a_plain_program_does_not_need),

    # Other lines have the same effect: systemd's own judgement alone sees that these are gone.
    (without("NoNewPrivileges=yes"), Shipped.test_systemd_finds_nothing_wrong),
    (without("IPAddressDeny=any"), Shipped.test_systemd_finds_nothing_wrong),
    (without("ProtectClock=yes"), Shipped.test_systemd_finds_nothing_wrong),
    (without("ProtectKernelLogs=yes"), Shipped.test_systemd_finds_nothing_wrong),
    (without("RestrictRealtime=yes"), Shipped.test_systemd_finds_nothing_wrong),
)


def finding_of(change, test):
    """What the test says about the change; none where it passes."""
    kind = {kind.__name__: kind for kind in (Captured, Shipped, Teams)}[test.__qualname__.split(".")[0]]
    Units.change = change
    result = unittest.TestResult()
    unittest.TestSuite([kind(test.__name__)]).run(result)
    if result.errors:
        raise AssertionError(f"{change}: {result.errors[0][1]}")
    return re.search("AssertionError: .*", result.failures[0][1])[0] if result.failures else None


def all_are_found(folder):
    """Plants each change into a system of its own below a folder."""
    missed = 0
    for number, (change, test) in enumerate(PLANTED):
        Units.folder = folder / f"planted-{number}"
        Units.folder.mkdir()
        finding = finding_of(change, test)
        missed += finding is None
        print(f"{change}\n    {test.__name__}: {(finding or 'PASSES')[:200]}", flush=True)
    print(f"{len(PLANTED)} planted changes, {missed} not found")
    return missed == 0
