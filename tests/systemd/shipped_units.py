"""What the units promise, of the service as it is installed: tried through nginx and on the socket, and
read from what the kernel tells of a program that waits for its body."""

import re
import select
from pathlib import Path
from types import SimpleNamespace

import debian
from service import Service, form, text_answer
from units import AT_ONCE, PROGRAM, SERVICE, SOCKET, UNITS, Units, wait_until

PROJECT = "/var/lib/sign-cgi/my.project"
SITE = "etc/nginx/sites-available/default"
HIDDEN = ("home/someone", "root", "run/user/1000", "tmp", "var/tmp", "dev/shm")
MOST_EXPOSURE = 5  # as systemd-analyze security counts it, from 0 to 100
SECONDS_OF_SILENCE = 0.5


class Shipped(Units):
    def setUp(self):
        super().setUp()
        self.service = Service(SimpleNamespace(port=80), SimpleNamespace(path=PROJECT))

    def program(self):
        """The folder in /proc of one that waits for its body."""
        self.request(1)
        return self.wait_for_programs(1)[0]

    def test_signs_and_verifies_behind_nginx(self):
        answers = self.machine.shell("exec 2>/dev/null\n" + debian.guide("The first request"))
        self.assertRegex(answers, r"\A[A-Za-z0-9+/]{4,56}={0,2}true\Z")
        text = self.service.sign("hello")
        self.machine.shell(f"printf hello | projectctl verify {PROJECT} {text}")
        self.assertEqual(self.machine.run("curl", "-s", "-d", "x=", "http://[::1]/sign.cgi"),
                         "'mode' parameter missing or invalid")
        self.assertIn("sign.cgi OK", self.machine.run(
            "/usr/libexec/sign-cgi/check-service.sh", "http://127.0.0.1/sign.cgi", "-t", "60"))

    def test_systemd_finds_nothing_wrong(self):
        self.assertEqual(self.machine.run("systemd-analyze", "verify", SERVICE, SOCKET), "")
        # It fails above this.
        self.machine.run("systemd-analyze", "security", "--offline=true", "--no-pager",
                         f"--threshold={MOST_EXPOSURE}", f"/{UNITS}/{SERVICE}")

    def test_the_first_request_starts_the_service(self):
        self.machine.run("systemctl", "stop", SERVICE)
        self.assertEqual(self.show("ActiveState"), "inactive")
        self.program()
        self.assertEqual(self.show("ActiveState"), "active")

    def test_the_socket_opens_for_the_user_of_nginx_alone(self):
        script = ("import socket\n"
                  "try:\n socket.socket(socket.AF_UNIX).connect('/run/sign-fcgiwrap/cgi.socket')\n"
                  "except PermissionError: print('refused')")
        for user, group, answer in (("www-data", "www-data", ""), ("nobody", "www-data", "refused\n"),
                                    ("nobody", "root", "refused\n"),
                                    ("sign-cgi", "sign-cgi", "refused\n")):
            with self.subTest(user=user, group=group):
                self.assertEqual(answer, self.machine.run(
                    "setpriv", f"--reuid={user}", f"--regid={group}", "--clear-groups",
                    "python3", "-c", script))

    def test_the_project_is_closed_to_nginx(self):
        self.machine.run("setpriv", "--reuid=www-data", "--regid=www-data", "--init-groups",
                         "cat", PROJECT, status=1)

    def test_the_guide_tells_what_the_service_sees(self):
        commands = debian.guide("When an answer is not the program's")
        self.program()
        self.assertIn("The program answers 200 OK",
                      self.machine.shell(commands[commands.index("nsenter"):]))

    def test_a_program_has_a_user_of_its_own_and_no_rights(self):
        status = dict(line.split(":\t", 1) for line in
                      (self.program() / "status").read_text(encoding="utf-8").splitlines())
        group = int(self.machine.run("id", "-g", "sign-cgi"))
        expected = {"Uid": f"{self.account}\t" * 4, "Gid": f"{group}\t" * 4, "Groups": str(group),
                    "NoNewPrivs": "1", "Seccomp": "2", "Umask": "0077"}
        expected |= {f"Cap{name}": "0" * 16 for name in ("Inh", "Prm", "Eff", "Bnd", "Amb")}
        self.assertEqual({name: status[name].strip() for name in expected},
                         {name: value.strip() for name, value in expected.items()})

    def test_a_program_has_limits(self):
        limits = dict(re.findall(r"^Max ([a-z ]+?) {2,}(\S+ +\S+)",
                                 (self.program() / "limits").read_text(encoding="utf-8"),
                                 re.MULTILINE))
        for name, most in (("cpu time", 60), ("data size", 512 << 20), ("core file size", 0)):
            self.assertEqual(limits[name].split(), [str(most)] * 2, name)

    def test_a_program_has_namespaces_of_its_own(self):
        program = self.program()
        for name in ("mnt", "net", "user", "uts"):
            own, first = ((folder / "ns" / name).readlink()
                          for folder in (program, Path("/proc", str(self.machine.first))))
            self.assertNotEqual(own, first, name)

    def test_no_mount_can_be_written(self):
        # What is mounted last at a path hides what is below.
        mounts = {}
        for line in (self.program() / "mountinfo").read_text(encoding="utf-8").splitlines():
            mounts[line.split()[4]] = line.split()[5].split(",")
        self.assertLessEqual({path for path, options in mounts.items() if "ro" not in options
                              and not path.startswith("/run/host/")},  # the container's
                             {"/proc", "/dev/hugepages", "/dev/pts"})

    def test_the_socket_starts_no_other_program(self):
        for path in ("/usr/bin/env", PROGRAM, "/usr/libexec/sign-cgi/../sign-cgi/limited",
                     "/usr/libexec/sign-cgi/check-service.sh", "/bin/sh"):
            with self.subTest(path):
                self.assertIn(b"Status: 403", self.request(0, path).finish())

    def test_eight_at_once_and_the_ninth_waits(self):
        requests = [self.request(1) for _ in range(AT_ONCE)]
        self.wait_for_programs(AT_ONCE)
        ninth = self.request(1)
        ninth.send(b"x")
        self.assertEqual(select.select([ninth.connection], [], [], SECONDS_OF_SILENCE)[0], [])
        self.assertEqual(len(self.programs()), AT_ONCE)
        requests[0].send(b"x")
        for request in (requests[0], ninth):
            self.assertIn(b"Status: 400", request.finish())

    def test_nothing_in_a_hidden_place_is_signed(self):
        machine = self.machine
        for place in (*HIDDEN, "srv"):
            machine.shell(f"""
                mkdir -p /{place}
                chmod 777 /{place}
                cp {PROJECT} /{place}/a.project
                echo hello >/{place}/letter
                chmod 644 /{place}/a.project /{place}/letter""")
        failed = text_answer("Signature generation failed", 400)
        for place in HIDDEN:
            with self.subTest(place):
                for project, file in ((f"/{place}/a.project", "/srv/letter"),
                                      ("/srv/a.project", f"/{place}/letter")):
                    self.assertEqual(failed, self.service.ask(form(
                        project=project, sig_create="true", sig_file=file)))
        answer = self.service.ask(form(project="/srv/a.project", sig_create="true",
                                       sig_file="/srv/letter"))
        self.assertEqual(answer.status, 200, answer)

    def test_starts_again_when_it_was_killed(self):
        self.program()
        first = self.show("MainPID")
        self.machine.run("systemctl", "kill", "--kill-whom=main", "--signal=KILL", SERVICE)
        wait_until(lambda: self.show("MainPID") not in ("0", first), "fcgiwrap to start again")
        self.wait_for_programs(0)
        self.assertTrue(self.service.sign("again"))

    def test_needs_a_random_generator_of_the_kernel(self):
        drop_in = self.machine.root / UNITS / "sign-fcgiwrap@.service.d/devices.conf"
        self.addCleanup(self.machine.run, "systemctl", "daemon-reload")
        self.addCleanup(drop_in.unlink)
        for line, status in (
                ("InaccessiblePaths=/dev/urandom", 200),  # there is /dev/random
                ("InaccessiblePaths=/dev/urandom /dev/random", 502),
                ("BindReadOnlyPaths=/dev/zero:/dev/urandom", 502),
                ("BindReadOnlyPaths=/etc/hostname:/dev/urandom", 502),
                ("", 200)):
            with self.subTest(line):
                drop_in.write_text(f"[Service]\n{line}\n", encoding="utf-8")
                self.machine.run("systemctl", "daemon-reload")
                self.machine.run("systemctl", "restart", SERVICE)
                answer = self.service.ask_form(sig_create="true", sig_data="hello")
                self.assertEqual(answer.status, status, answer)
                self.machine.run("journalctl", "--sync")
                log = self.machine.run("journalctl", "--output=cat",
                                       "_SYSTEMD_INVOCATION_ID=" + self.show("InvocationID"))
                self.assertEqual(log.count("limited: random device: "), status == 502, log)


class Upgraded(Units):
    def test_the_service_runs_from_its_new_unit_until_the_package_is_removed(self):
        service = Service(SimpleNamespace(port=80), SimpleNamespace(path=PROJECT))
        service.sign("before")
        first = self.show("MainPID")
        self.machine.shell("dpkg -i /root/*.deb")
        self.assertNotIn(self.show("MainPID"), ("0", first))
        service.sign("after")
        self.machine.run("dpkg", "--remove", "sign-cgi")
        for unit in (SERVICE, SOCKET):
            self.machine.run("systemctl", "is-active", unit, status=3)
        self.assertEqual(self.machine.run("find", "/etc/systemd", "-name", "sign-*"), "")
        self.machine.run("nginx", "-t")
        self.assertEqual(service.ask(b"x").status, 502)


class Copied(Units):
    """Of version 1.0, whose units and snippet were copied by hand."""

    @classmethod
    def prepare(cls, root):
        for kind in ("service", "socket"):
            text = (root / UNITS / f"sign-fcgiwrap@.{kind}").read_text(encoding="utf-8")
            for new, old in (("@%i", ""), ("-%i", "-cgi"), ("sign-fcgiwrap/%i", "sign-fcgiwrap")):
                text = text.replace(new, old)
            (root / f"etc/systemd/system/sign-fcgiwrap.{kind}").write_text(text, encoding="utf-8")
        (root / "etc/nginx/snippets/sign-cgi.conf").write_text(
            "location = /sign.cgi { return 404; }\n", encoding="utf-8")

    def test_the_guide_leaves_the_new_service_in_its_place(self):
        site, old, new = SITE, "snippets/sign-cgi.conf", "snippets/sign-cgi-server.conf"
        self.machine.change(site, new, old)
        self.machine.shell("systemctl disable --now sign-fcgiwrap@cgi.socket\n"
                           "systemctl enable --now sign-fcgiwrap.socket\n"
                           "systemctl restart nginx")
        self.machine.change(site, old, new)
        self.machine.shell(debian.guide("Upgrading from version 1.0"))
        self.assertEqual(self.machine.run("find", "/etc/systemd", "/etc/nginx", "-name",
                                          "sign-fcgiwrap.*", "-o", "-name", "sign-cgi.conf"), "")
        service = Service(SimpleNamespace(port=80), SimpleNamespace(path=PROJECT))
        wait_until(lambda: service.ask(b"x").status != 404, "nginx to take the new snippet")
        service.sign("x")


class Removed(Units):
    def test_the_guide_leaves_nothing_behind(self):
        machine = self.machine
        machine.change(SITE, "include snippets/sign-cgi-server.conf;", "")
        # What is left on another file system is found.
        machine.shell("mount -t tmpfs none /mnt; touch /mnt/left; chown sign-cgi /mnt/left")
        said = machine.shell("exec 2>/dev/null\n" + debian.guide("Removing it"))
        self.assertEqual(said, "/mnt/left\nRemoving user `sign-cgi' ...\nDone.\n")
        self.assertEqual(machine.run("find", "/etc/systemd", "-name", "sign-*"), "")
        self.assertEqual(Service(SimpleNamespace(port=80), None).ask(b"x").status, 404)
        machine.run("id", "sign-cgi", status=1)
        self.check_next_user(self.account, Path(PROJECT).parent)
        machine.run("projectctl", "check", PROJECT)
