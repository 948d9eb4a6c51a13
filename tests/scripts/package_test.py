"""Makes the Debian package twice, looks into it, and follows its life in a fresh Debian 12.

Needs root and the network, and builds the release programs where they belong, in build/release: CI
runs it by itself. The system that it installs into is a folder of its own, with mounts and processes
that nothing else sees and that end with this test, however it ends.
"""

import contextlib
import hashlib
import json
import os
import re
import shutil
import signal
import socket
import stat
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.error
import urllib.parse
import urllib.request
from pathlib import Path

import debian
import installed_files
from debian import ROOT, SECONDS_FOR_A_COMMAND, end, make_package, output_of

sys.path.insert(0, str(ROOT / "tests" / "servers"))
from guide_blocks import blocks  # noqa: E402

SECONDS_TO_RELOAD = 30
SIGNATURE = "[A-Za-z0-9+/]{4,56}={0,2}"
CONFIGURATION = {"apache2": "etc/apache2/conf-available/sign-cgi.conf",
                 "lighttpd": "etc/lighttpd/conf-available/50-sign-cgi.conf"}
OLDER = "# Older.\n"

# apache2 and lighttpd are what the package configures; curl is in the examples of the manual page.
PACKAGES = ("apache2", "lighttpd", "curl", "bash-completion")

resources = contextlib.ExitStack()


def copy_sources(folder):
    """Copies the sources as they are now, but nothing that was built."""
    listed = output_of("git", "ls-files", "-z", "--cached", "--others", "--exclude-standard",
                       cwd=ROOT)
    for name in filter(None, listed.split("\0")):
        if (ROOT / name).exists():
            target = folder / name
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, target)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def guide(heading, port=80):
    """The commands of a section of docs/deployment.md, for a machine without systemd."""
    commands = re.sub(r"(?m)^systemctl (\w+) (\w+)$", r"service \2 \1", debian.guide(heading))
    return commands.replace("http://127.0.0.1/", f"http://127.0.0.1:{port}/")


class Machine(debian.Machine):
    """One that runs nothing yet."""

    def __init__(self, root):
        # Its first process is a shell that waits for whatever ends, as an init does.
        script = ('mount -t proc proc "$1/proc" && mount -t tmpfs tmpfs "$1/run" && '
                  'mkdir -m 1777 "$1/run/lock" && echo ready && '
                  'exec chroot "$1" sh -c "sleep infinity & wait"')
        self.process = subprocess.Popen([*debian.APART, "sh", "-c", script, "sh", root],
                                        stdout=subprocess.PIPE, text=True)
        if self.process.stdout.readline() != "ready\n":
            raise AssertionError("no room for processes apart: is this root?")
        unshare = self.process.pid
        super().__init__(root, Path(f"/proc/{unshare}/task/{unshare}/children").read_text().strip())

    def files(self):
        """Everything on the disk but what dpkg, apt and logs note for themselves."""
        found = {}
        left_out = {"var/lib/dpkg", "var/lib/apt", "var/cache", "var/log", "proc", "run"}
        for folder, folders, names in os.walk(self.root):
            inside = Path(folder).relative_to(self.root)
            folders[:] = [name for name in folders if str(inside / name) not in left_out]
            for name in folders + names:
                path = Path(folder, name)
                status = path.lstat()
                content = ""
                if path.is_symlink():
                    content = path.readlink()
                elif stat.S_ISREG(status.st_mode):
                    content = hashlib.sha256(path.read_bytes()).hexdigest()
                found[str(inside / name)] = (status.st_mode, status.st_uid, status.st_gid, content)
        return found

    def close(self):
        end(self.process)
        self.process.stdout.close()


def request(port, name, body, content_type, **headers):
    """The status and the body of an answer."""
    asked = urllib.request.Request(f"http://127.0.0.1:{port}/{name}", data=body,
                                   headers={"Content-Type": content_type, **headers})
    opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
    try:
        with opener.open(asked, timeout=SECONDS_FOR_A_COMMAND) as answer:
            return answer.status, answer.read().decode()
    except urllib.error.HTTPError as answer:
        with answer:
            return answer.code, answer.read().decode()


def ask_form(port, name, **parameters):
    return request(port, name, urllib.parse.urlencode(parameters).encode(),
                   "application/x-www-form-urlencoded")


def ask_json(port, name, **members):
    return request(port, name, json.dumps(members).encode(), "application/json")


def setUpModule():
    # The order of what is given back: first the processes, then the folder with all their files.
    folder = Path(resources.enter_context(tempfile.TemporaryDirectory(prefix="sign-package.")))
    folder.chmod(0o755)
    DebianPackage.folder = folder
    environment = os.environ | {"TMPDIR": str(folder)}
    subprocess.run([ROOT / "scripts/install-packages.sh", "build", "package"], check=True)
    root = folder / "debian"
    bootstrap = debian.make_system(root, PACKAGES, folder)
    resources.callback(end, bootstrap)
    DebianPackage.package = make_package(ROOT, env=environment)

    # In another folder, by somebody whose settings are others.
    sources = folder / "a folder of another name" / "sign"
    copy_sources(sources)
    date = output_of("git", "log", "-1", "--format=%ct", cwd=ROOT).strip()
    DebianPackage.second_package = make_package(
        sources, umask=0o077,
        env=environment | {"SOURCE_DATE_EPOCH": date, "TZ": "Pacific/Chatham"})
    if bootstrap.wait() != 0:
        raise AssertionError("mmdebstrap could not make a Debian")
    DebianPackage.machine = Machine(root)
    resources.callback(DebianPackage.machine.close)


class DebianPackage(unittest.TestCase):
    folder = None
    package = None
    second_package = None
    machine = None

    def field(self, name):
        return output_of("dpkg-deb", "--field", self.package, name).strip()

    def test_two_builds_in_different_folders_give_the_same_bytes(self):
        self.assertNotEqual(self.package, self.second_package)
        self.assertEqual(self.package.name, self.second_package.name)
        self.assertEqual(hashlib.sha256(self.package.read_bytes()).hexdigest(),
                         hashlib.sha256(self.second_package.read_bytes()).hexdigest())

    def test_lintian_finds_no_error_and_nothing_to_warn_of(self):
        lintian = subprocess.run(
            ["lintian", "--allow-root", "--display-info", "--fail-on", "error,warning",
             self.package], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
            check=False)
        print(lintian.stdout)
        self.assertEqual(lintian.returncode, 0)
        self.assertNotRegex(lintian.stdout, "(?m)^[EW]:")

    def test_holds_the_files_that_it_must_and_no_other(self):
        unpacked = self.folder / "unpacked"
        subprocess.run(["dpkg-deb", "--extract", self.package, unpacked], check=True)
        self.assertEqual(installed_files.files_below(unpacked), installed_files.of_the_package())
        self.assertEqual(installed_files.folder_modes_below(unpacked), {"755"})

        # The same as by hand; stripped, as the package is.
        by_hand = self.folder / "by hand"
        subprocess.run(["cmake", "--install", ROOT / "build/release", "--prefix", "/usr",
                        "--strip"], check=True, umask=0o022, stdout=subprocess.PIPE,
                       env=os.environ | {"DESTDIR": str(by_hand)})
        self.assertEqual(installed_files.files_below(by_hand), installed_files.under_usr())
        for path in installed_files.of_the_service():
            self.assertEqual((by_hand / path).read_bytes(), (unpacked / path).read_bytes(), path)

    def test_everything_belongs_to_root_and_has_the_time_of_the_commit(self):
        date = output_of("git", "log", "-1", "--format=%cd", "--date=format-local:%F %R", cwd=ROOT,
                         env=os.environ | {"TZ": "UTC"}).strip()
        listed = output_of("dpkg-deb", "--contents", self.package,
                           env=os.environ | {"TZ": "UTC"}).splitlines()
        self.assertGreaterEqual(len(listed), len(installed_files.of_the_package()))
        self.assertEqual({(line.split()[1], " ".join(line.split()[3:5])) for line in listed},
                         {("root/root", date)})

    def test_depends_on_nothing_and_has_the_version_of_the_programs(self):
        self.assertEqual(self.field("Depends"), "")
        self.assertEqual(self.field("Package"), "sign-cgi")
        version = output_of(ROOT / "build/release/projectctl", "--version").split()[-1]
        self.assertEqual(self.field("Version"), f"{version}-1+deb12")
        first_line = (ROOT / "packaging/changelog").read_text(encoding="utf-8").partition("\n")[0]
        self.assertEqual(re.match(r"sign-cgi \((.*)\)", first_line).group(1),
                         self.field("Version"))

    def test_serves_on_a_fresh_debian_and_leaves_nothing_behind(self):
        machine, apache, lighttpd = self.machine, free_port(), free_port()
        machine.change("etc/apache2/ports.conf", "Listen 80\n", f"Listen 127.0.0.1:{apache}\n")
        machine.change("etc/apache2/sites-available/000-default.conf", "*:80>", f"*:{apache}>")
        machine.change("etc/lighttpd/lighttpd.conf", "server.port                 = 80\n",
                       f'server.port = {lighttpd}\nserver.bind = "127.0.0.1"\n')
        machine.change("etc/lighttpd/lighttpd.conf",
                       'include_shell "/usr/share/lighttpd/use-ipv6.pl', "#")
        # Where no init system runs, this says that servers may be reloaded.
        policy = machine.root / "usr/sbin/policy-rc.d"
        policy.write_text("#!/bin/sh\nexit 0\n", encoding="utf-8")
        policy.chmod(0o755)
        shutil.copy(self.package, machine.root / "root")
        self.make_older_package(machine.root / "root/older")
        before = machine.files()

        self.install()
        machine.shell(guide("A project"))
        self.finds_the_project_sound()
        machine.shell(guide("Apache"))
        self.serves(apache)
        self.follow_the_examples_of_the_manual(apache)
        self.upgrade("apache2", "apache", apache)
        self.remove_below_a_running_server("/etc/apache2/conf-enabled/sign-cgi.conf", apache)
        machine.run("service", "apache2", "stop")

        self.install()
        machine.shell(guide("lighttpd"))
        self.serves(lighttpd)
        self.upgrade("lighttpd", "lighttpd", lighttpd)
        self.remove_below_a_running_server("/etc/lighttpd/conf-enabled/50-sign-cgi.conf", lighttpd)
        machine.run("service", "lighttpd", "stop")

        # Links that no tool minds any more, as when their server was removed first.
        machine.shell("ln -s ../conf-available/sign-cgi.conf /etc/apache2/conf-enabled/\n"
                      "ln -s ../conf-available/50-sign-cgi.conf /etc/lighttpd/conf-enabled/")
        machine.run("dpkg", "--purge", "sign-cgi")
        self.leaves_what_the_administrator_made(before)

    def install(self):
        output = self.machine.shell(guide("The package"))
        self.assertNotIn("warning", output)
        completion = ". /usr/share/bash-completion/bash_completion\n" \
                     "_completion_loader projectctl\ncomplete -p projectctl"
        self.assertIn("projectctl", self.machine.run("bash", "-c", completion))

    def finds_the_project_sound(self):
        check = ["projectctl", "check", "/var/lib/sign-cgi/my.project"]
        server = ["setpriv", "--reuid=www-data", "--regid=www-data", "--init-groups"]
        for command in (check, server + check):
            self.assertTrue(self.machine.run(*command).endswith(f"\n{check[-1]}: sound\n"))

    def serves(self, port):
        project = "/var/lib/sign-cgi/my.project"
        for name in ("sign.cgi", "nph-sign.cgi"):
            with self.subTest(name=name, port=port):
                status, text = ask_form(port, name, project=project, sig_create="true",
                                        sig_data="hello")
                self.assertEqual(status, 200, text)
                self.assertRegex(text, rf"\A{SIGNATURE}\Z")
                for data, valid in (("hello", True), ("Hello", False)):
                    self.assertEqual(
                        ask_json(port, name, mode="verifySignature", project=project,
                                 signature={"data": data, "signature": text}),
                        (200, json.dumps({"valid": valid}, separators=(",", ":"))))
        answers = self.machine.shell("exec 2>/dev/null\n" + guide("The first request", port))
        self.assertRegex(answers, rf"\A{SIGNATURE}true\Z")
        check = self.machine.run("/usr/libexec/sign-cgi/check-service.sh",
                                 f"http://127.0.0.1:{port}/sign.cgi")
        self.assertIn("sign.cgi OK", check)

    def follow_the_examples_of_the_manual(self, port):
        """Those of the page as it is installed, from the making of a project on."""
        machine = self.machine
        text = output_of("mandoc", "-T", "utf8",
                         machine.root / "usr/share/man/man8/sign.cgi.8.gz")
        text = re.sub(".\b", "", text)
        text = text[text.index("\nEXAMPLES\n"):text.index("\nSEE ALSO\n")]
        commands = "\n".join(line.strip() for line in text.splitlines()
                             if line.startswith("           "))
        self.assertIn("projectctl create", commands)
        machine.run("rm", "/var/lib/sign-cgi/my.project")
        answers = machine.shell(commands.replace("http://127.0.0.1/", f"http://127.0.0.1:{port}/"))
        self.assertRegex(answers, r'\AtrueStatus: 200 OK\n(?s:.*)\{"signature":"[^"]*"\}\Z')

    def make_older_package(self, path):
        """One with an earlier version and other configurations."""
        folder = self.folder / "older"
        subprocess.run(["dpkg-deb", "--raw-extract", self.package, folder], check=True)
        control = folder / "DEBIAN/control"
        control.write_text(re.sub("(?m)^Version: .*$", "Version: 0.9", control.read_text()))
        for name in (folder / "DEBIAN/conffiles").read_text().split():
            with (folder / name[1:]).open("a", encoding="utf-8") as configuration:
                configuration.write(OLDER)
        subprocess.run(["dpkg-deb", "--build", "--root-owner-group", folder, path], check=True,
                       stdout=subprocess.PIPE)

    def upgrade(self, service, language, port):
        """What an administrator has written into a file of their own stays and counts."""
        machine, path = self.machine, self.machine.root / CONFIGURATION[service]
        machine.shell("dpkg -i /root/older")

        def status_by_name():
            machine.shell(f"service {service} restart")
            self.serves(port)
            return request(port, "sign.cgi", b"a=b", "text/plain", Host="sign.example.org")[0]

        self.assertEqual(status_by_name(), 421)
        own = machine.root / f"etc/sign-cgi/{language}/own.conf"
        own.write_text(blocks("Letting others in", language)[0], encoding="utf-8")
        self.assertEqual(status_by_name(), 400)
        self.assertTrue(path.read_text(encoding="utf-8").endswith(OLDER))
        self.assertNotIn("Configuration file", machine.shell(guide("Upgrading")))
        self.assertFalse(path.read_text(encoding="utf-8").endswith(OLDER))
        self.assertEqual(status_by_name(), 400)

        # Had it been written into the configuration, the upgrade would stop and ask.
        machine.shell("dpkg -i /root/older")
        machine.change(CONFIGURATION[service], OLDER, "# Mine.\n")
        self.assertIn(f"Configuration file '/{CONFIGURATION[service]}'",
                      machine.run("sh", "-c", "dpkg -i /root/*.deb", status=1))
        machine.shell("dpkg -i --force-confnew /root/*.deb")
        self.assertEqual(status_by_name(), 400)

    def remove_below_a_running_server(self, link, port):
        machine = self.machine
        self.assertEqual(machine.run("readlink", link), f"../conf-available/{Path(link).name}\n")
        machine.run("dpkg", "--remove", "sign-cgi")
        machine.run("test", "-L", link, status=1)
        deadline = time.monotonic() + SECONDS_TO_RELOAD
        while time.monotonic() < deadline and ask_form(port, "sign.cgi", a="b")[0] != 404:
            time.sleep(0.2)
        self.assertEqual(ask_form(port, "sign.cgi", a="b")[0], 404)
        self.assertIn("deinstall ok config-files",
                      machine.run("dpkg-query", "-W", "-f=${Status}", "sign-cgi"))

    def leaves_what_the_administrator_made(self, before):
        after = self.machine.files()
        # The folders in which Apache's tools keep their notes, which they never remove, may be new.
        made = {name for name, (mode, *_) in after.items() if name not in before
                and not (stat.S_ISDIR(mode) and name.startswith("var/lib/apache2/"))}
        self.assertEqual(made, {
            "var/lib/sign-cgi", "var/lib/sign-cgi/my.project",
            "etc/sign-cgi", "etc/sign-cgi/apache", "etc/sign-cgi/apache/own.conf",
            "etc/sign-cgi/lighttpd", "etc/sign-cgi/lighttpd/own.conf",
            "etc/apache2/mods-enabled/cgid.load", "etc/apache2/mods-enabled/cgid.conf",
            "var/lib/apache2/module/enabled_by_admin/cgid"})
        self.assertEqual({name: after.get(name) for name in before}, before)


if __name__ == "__main__":
    # Whoever ends this test lets it clean up.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    with resources:
        unittest.main()
