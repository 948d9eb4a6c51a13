"""What somebody gets from sign.cgi's FastCGI socket who may open it and sends it what no server would:
nothing but signatures.

    fastcgi_attack_test.py FOLDER     FOLDER holds the built programs

fcgiwrap makes environment variables of FastCGI parameters, and starts the program that they name. Its
account reads a key that the attacker cannot. Whatever of the attacker's own runs under that account,
a shared object or a program, copies the key to `loot`.
"""

import os
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

import fastcgi
from servers import Nginx, temporary_folder
from service import FORM, SIGNATURE, Project, form

PLANTED_PROGRAM = """#!/bin/sh
PATH=/usr/bin:/bin
cp "${0%/*}/key" "${0%/*}/loot"
"""
PLANTED_NAMES = ("timeout", "sh", "env", "cat", "limited", "sign.cgi", "nph-sign.cgi")


class Fcgiwrap(Nginx):
    """fcgiwrap as its unit starts it, with no server before its socket."""

    def start_all(self):
        self.start_fcgiwrap()

    def wait_until_it_listens(self):
        pass  # its socket did before it was started


class TestAttack(unittest.TestCase):
    programs = None
    module = None

    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(temporary_folder())
        cls.project = Project(cls.programs / "projectctl", cls.folder)
        cls.server = cls.enterClassContext(Fcgiwrap(cls.programs, cls.folder))
        cls.plant()

    @classmethod
    def plant(cls):
        cls.planted = cls.folder / "planted"
        cls.planted.mkdir()
        cls.planted.chmod(0o777)
        cls.loot = cls.planted / "loot"
        (cls.planted / "key").symlink_to(cls.project.path)
        for name in PLANTED_NAMES:
            (cls.planted / name).write_text(PLANTED_PROGRAM, encoding="ascii")
            (cls.planted / name).chmod(0o755)
        for name in ("module.so", "libc.so.6", "UTF-16.so"):
            shutil.copy(cls.module, cls.planted / name)
        (cls.planted / "rc").write_text(f"cp {cls.planted}/key {cls.loot}\n")
        (cls.planted / "gconv-modules").write_text("module UTF-16// INTERNAL UTF-16 1\n")
        (cls.planted / "linked").symlink_to(cls.server.programs / "limited")

    def ask(self, *parameters, script=None):
        """An ordinary request to sign, with these parameters before its own."""
        body = form(project=self.project.path, sig_create="true", sig_data="data")
        script = script or [("SCRIPT_FILENAME", self.server.programs / "limited")]
        self.loot.unlink(missing_ok=True)
        answer = fastcgi.ask(self.server.folder / "fcgiwrap.socket", [
            *parameters, *script, ("REQUEST_METHOD", "POST"), ("CONTENT_TYPE", FORM),
            ("CONTENT_LENGTH", len(body))], body)
        self.assertFalse(self.loot.exists(), "code of the attacker's had the key")
        return answer

    def assert_signs(self, answer):
        head, _, text = answer.decode().partition("\r\n\r\n")
        self.assertRegex(head, r"\AStatus: 200 OK\r\n")
        self.assertRegex(text, SIGNATURE)
        self.assertTrue(self.project.verifies(text, b"data"))

    def test_an_ordinary_request_is_signed(self):
        self.assert_signs(self.ask())

    def test_what_is_planted_takes_the_key_wherever_it_runs(self):
        for command, variables in (([self.planted / "timeout"], {}),
                                   (["/bin/true"], {"LD_PRELOAD": self.planted / "module.so"}),
                                   (["/bin/true"], {"LD_AUDIT": self.planted / "module.so"}),
                                   (["bash", "-c", ":"], {"BASH_ENV": self.planted / "rc"})):
            with self.subTest(command=command, variables=variables):
                self.loot.unlink(missing_ok=True)
                subprocess.run(command, env=os.environ | variables, check=True)
                self.assertEqual(self.loot.read_bytes(), self.project.path.read_bytes())

    def test_variables_of_the_loader_the_library_and_the_shell_change_nothing(self):
        module, planted = self.planted / "module.so", self.planted
        for name, value in (
                ("PATH", planted), ("LD_PRELOAD", module), ("LD_AUDIT", module),
                ("LD_LIBRARY_PATH", planted), ("LD_ORIGIN_PATH", planted), ("LD_DEBUG", "all"),
                ("LD_PROFILE", "libc.so.6"), ("LD_PROFILE_OUTPUT", planted),
                ("LD_TRACE_LOADED_OBJECTS", "1"), ("LD_BIND_NOW", "1"), ("LD_USE_LOAD_BIAS", "1"),
                ("GLIBC_TUNABLES", "glibc.malloc.check=3:glibc.malloc.perturb=165:"
                                   "glibc.malloc.tcache_count=0:glibc.malloc.mmap_threshold=1"),
                ("GLIBC_TUNABLES", "glibc.malloc.mxfast=glibc.malloc.mxfast=" + "A" * 5000),
                ("MALLOC_CHECK_", "3"), ("MALLOC_PERTURB_", "165"), ("MALLOC_ARENA_MAX", "1"),
                ("MALLOC_TOP_PAD_", "1"), ("MALLOC_MMAP_THRESHOLD_", "1"), ("MALLOC_TRACE", "loot"),
                ("GCONV_PATH", planted), ("LOCPATH", planted), ("NLSPATH", planted / "%N"),
                ("LC_ALL", "x.UTF-16"), ("LANGUAGE", "../../planted"), ("CHARSET", "UTF-16"),
                ("BASH_ENV", planted / "rc"), ("ENV", planted / "rc"), ("SHELLOPTS", "xtrace"),
                ("PS4", f"$(. {planted}/rc)"), ("IFS", "/"), ("CDPATH", planted),
                ("BASH_FUNC_exec%%", f"() {{ . {planted}/rc; }}"), ("TMPDIR", planted),
                ("HOSTALIASES", planted / "rc"), ("RESOLV_HOST_CONF", self.project.path),
                ("PYTHONPATH", planted), ("PERL5OPT", f"-I{planted}"), ("PWD", planted),
                ("HOME", planted), ("_", planted / "sign.cgi"), ("", "x"), ("=", "x")):
            with self.subTest(name):
                self.assert_signs(self.ask((name, value)))

    def test_parameters_of_the_request_choose_no_program(self):
        planted = self.planted
        for name, value in (
                ("PATH_INFO", "/../sign.cgi"), ("PATH_TRANSLATED", planted / "sign.cgi"),
                ("QUERY_STRING", f"{planted}/sign.cgi"), ("REQUEST_URI", "/nph-sign.cgi"),
                ("SCRIPT_NAME", "/timeout"), ("DOCUMENT_ROOT", planted), ("FCGI_CHDIR", planted),
                ("FCGI_ROLE", "FILTER"), ("NO_BUFFERING", "1"), ("LISTEN_FDS", "9"),
                ("GATEWAY_INTERFACE", "x"), ("HTTP_PATH", planted), ("CONTENT_LANGUAGE", "x")):
            with self.subTest(name):
                self.assert_signs(self.ask((name, value)))

    def test_no_other_program_is_started(self):
        programs, planted = self.server.programs, self.planted
        limited = programs / "limited"
        for script in (
                *[[("SCRIPT_FILENAME", path)] for path in (
                    planted / "timeout", planted / "limited", planted / "linked", "/bin/sh",
                    programs / "sign.cgi", programs / "nph-sign.cgi", "limited", "", "/",
                    f"{programs}/../programs/limited", f"{programs}//limited", f"{programs}/./limited",
                    f"{limited}/", f"{limited} x", f"{limited}/sign.cgi", f"/{limited}",
                    f"/proc/self/root{limited}")],
                [("DOCUMENT_ROOT", planted), ("SCRIPT_NAME", "/timeout")],
                [("DOCUMENT_ROOT", planted), ("SCRIPT_NAME", "/linked")],
                [("DOCUMENT_ROOT", programs), ("SCRIPT_NAME", "/sign.cgi")],
                [("DOCUMENT_ROOT", programs), ("SCRIPT_NAME", "/../programs/limited")],
                [("DOCUMENT_ROOT", ""), ("SCRIPT_NAME", planted / "timeout")]):
            with self.subTest(script=script):
                # 502 where fcgiwrap notices first that the body has no reader.
                self.assertRegex(self.ask(script=script), rb"\AStatus: (403|502) ")

    def test_under_its_path_in_two_parameters_it_is_the_same(self):
        for name in ("/limited", "/limited/more"):
            with self.subTest(name):
                self.assert_signs(self.ask(script=[("DOCUMENT_ROOT", self.server.programs),
                                                   ("SCRIPT_NAME", name)]))


if __name__ == "__main__":
    TestAttack.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    TestAttack.module = Path(sys.argv[1]).resolve() / "tests" / "planted_module.so"
    unittest.main(argv=sys.argv[:1])
