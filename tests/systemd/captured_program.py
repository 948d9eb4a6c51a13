"""What the units promise, tried by a program that does whatever a request tells it, in the place of
sign.cgi."""

import contextlib
import inspect
import json
import pwd
import shutil
import signal
import struct
from pathlib import Path

import probes
from held_request import BUFFER
from units import AT_ONCE, PROGRAM, SERVICE, Units, wait_until

MEMORY = 2 << 30
TASKS = 64


class Captured(Units):
    """A program that does whatever a request tells it."""

    @classmethod
    def prepare(cls, root):
        program = root / PROGRAM[1:]
        program.unlink()
        shutil.copy(Path(__file__).with_name("stand_in.py"), program)
        program.chmod(0o755)
        (root / "usr/lib/modules").mkdir(exist_ok=True)
        (root / "srv").chmod(0o777)
        # The shortest program of 32 bits: exit(42).
        code = bytes.fromhex("b801000000 bb2a000000 cd80")
        start, size = 0x08048000, 84 + len(code)
        (root / "srv/narrow").write_bytes(
            b"\x7fELF\x01\x01\x01" + bytes(9)
            + struct.pack("<HHIIIIIHHHHHH", 2, 3, 1, start + 84, 52, 0, 0, 52, 32, 1, 0, 0, 0)
            + struct.pack("<IIIIIIII", 1, 0, start, start, size, size, 5, 4096) + code)
        (root / "srv/narrow").chmod(0o755)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        # A filesystem beside that of the system, and what somebody keeps where homes and others are.
        cls.machine.shell("""
            mount -t tmpfs -o mode=1777 none /mnt
            mknod -m 666 /dev/planted c 1 5
            install -d -o www-data /srv/theirs""")

    def attempt(self, probe, *arguments):
        """A request to try something, and the body that is to be sent for it."""
        code = f"{inspect.getsource(probes)}\nanswer = {probe.__name__}(*{arguments!r})".encode()
        return self.request(len(code)), code

    def ask(self, probe, *arguments):
        request, code = self.attempt(probe, *arguments)
        request.send(code)
        said = request.finish()
        if not said.startswith(b"Status: 200"):
            raise AssertionError(f"no answer: {said}")
        return json.loads(said.partition(b"\r\n\r\n")[2])

    def lent(self, name):
        """Whether this machine has a controller for the container's systemd, by what that counts."""
        self.machine.run("systemctl", "start", SERVICE)
        if self.show(name).isdigit():
            return True
        print(f"systemd counts no {name} on this machine: the limit was looked up and not tried")
        return False

    def test_can_write_nothing(self):
        self.assertEqual(self.ask(probes.writable_folders), [])

    def test_sees_no_homes_and_no_files_of_others(self):
        paths = ["/home", "/root", "/run/user", "/tmp", "/var/tmp", "/dev/shm", "/dev/mqueue",
                 "/usr/lib/modules"]
        self.assertEqual(self.ask(probes.reads, *paths), {path: "EACCES" for path in paths})
        self.assertNotEqual(self.ask(probes.reads, "/srv"), {"/srv": []})

    def test_sees_no_users_but_itself_and_root(self):
        self.assertEqual(self.ask(probes.owners, "/", "/srv/theirs"),
                         {"/": 0, "/srv/theirs": pwd.getpwnam("nobody").pw_uid})

    def test_sees_no_processes_but_its_own(self):
        self.assertEqual(set(self.ask(probes.processes).values()), {self.account})
        facts = ["/proc/cpuinfo", "/proc/sys", "/proc/keys", "/proc/kmsg"]
        self.assertEqual(self.ask(probes.reads, *facts), {path: "ENOENT" for path in facts})

    def test_opens_no_devices_but_harmless_ones(self):
        self.assertEqual(self.ask(probes.devices), {
            "null": [1, 3], "zero": [1, 5], "full": [1, 7], "random": [1, 8], "urandom": [1, 9]})

    def test_opens_no_sockets(self):
        errors = self.ask(probes.errors_of_sockets)
        self.assertEqual(errors, {name: "EAFNOSUPPORT" for name in errors})

    def test_is_refused_what_a_plain_program_does_not_need(self):
        errors = self.ask(probes.errors_of_calls)
        self.assertEqual(errors, {name: "EPERM" for name in errors})

    def test_makes_no_calls_of_32_bits(self):
        outside = self.machine.run("sh", "-c", "/srv/narrow || echo $?")
        if outside != "42\n":
            print(f"this machine runs no program of 32 bits, so that none was tried: {outside}")
            return
        self.assertIn(self.ask(probes.ending_of, "/srv/narrow"), (-signal.SIGSYS, -signal.SIGSEGV))

    def test_leaves_no_shared_memory_behind(self):
        self.ask(probes.shared_memory)
        self.assertEqual(self.owners_of_shared_memory(), [str(self.account)])
        self.machine.run("systemctl", "stop", SERVICE)
        self.assertEqual(self.owners_of_shared_memory(), [])

    def owners_of_shared_memory(self):
        segments = self.machine.run("cat", "/proc/sysvipc/shm").splitlines()
        owner = segments[0].split().index("uid")
        return [segment.split()[owner] for segment in segments[1:]]

    def test_is_ended_within_a_minute(self):
        left = self.ask(probes.seconds_left)
        self.assertGreater(left, 30)
        self.assertLessEqual(left, 60)

    def test_has_memory_to_a_limit_of_its_own(self):
        self.assertIsNone(self.ask(probes.error_of_memory, 400 << 20))
        self.assertEqual(self.ask(probes.error_of_memory, 600 << 20), "ENOMEM")

    def test_all_together_have_memory_to_a_limit(self):
        if self.lent("MemoryCurrent"):
            self.take_more_memory_than_there_is()
        self.assertEqual(self.show("MemoryMax"), str(MEMORY))
        self.assertEqual(self.show("OOMPolicy"), "continue")

    def take_more_memory_than_there_is(self):
        service = self.show("MainPID")
        each = 450 << 20
        count = MEMORY // each + 2
        attempts = [self.attempt(probes.error_of_memory, each) for _ in range(count)]
        self.wait_for_programs(count)
        for request, code in attempts:
            request.send(code + b"\n" * BUFFER)

        def all_have_it_or_some_are_gone():
            sizes = self.memory_of_programs()
            return len(sizes) < count or min(sizes) > each

        wait_until(all_have_it_or_some_are_gone, "memory to be taken")
        answers = [request.finish() for request, _ in attempts]
        survivors = [answer for answer in answers if answer.startswith(b"Status: 200")]
        self.assertIn(len(survivors), range(1, count), answers)
        self.assertEqual(self.show("MainPID"), service)

    def memory_of_programs(self):
        sizes = []
        for program in self.programs():
            with contextlib.suppress(OSError):
                resident = (program / "statm").read_text(encoding="ascii").split()[1]
                sizes.append(int(resident) * probes.mmap.PAGESIZE)
        return sizes

    def test_all_together_start_processes_to_a_limit(self):
        if self.lent("TasksCurrent"):
            count = self.ask(probes.processes_started, 2 * TASKS)
            self.assertGreater(count, 2 * AT_ONCE)
            self.assertLess(count, TASKS)
        self.assertEqual(self.show("TasksMax"), str(TASKS))
