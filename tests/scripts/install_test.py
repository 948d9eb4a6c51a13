"""Installs a build by `cmake --install` and looks at what is there.

    install_test.py FOLDER     the folder of the build
"""

import gzip
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import installed_files
from installed_files import ROOT

DEPLOY = ROOT / "deploy"


def install(build, prefix, destination=""):
    subprocess.run(["cmake", "--install", build, "--prefix", prefix], check=True, umask=0o022,
                   env=os.environ | {"DESTDIR": str(destination)}, stdout=subprocess.PIPE)


class Installation(unittest.TestCase):
    build = None

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.prefix = Path(folder.name).resolve() / "a prefix"
        cls.root = Path(folder.name) / "root"
        install(cls.build, cls.prefix)
        install(cls.build, "/usr", cls.root)

    def test_puts_every_file_in_its_place_and_no_other(self):
        self.assertEqual(installed_files.files_below(self.prefix),
                         installed_files.under_a_prefix())
        self.assertEqual(installed_files.files_below(self.root), installed_files.under_usr())

    def test_lets_everybody_into_the_folders(self):
        for folder in (self.prefix, self.root):
            with self.subTest(folder=folder):
                self.assertEqual(installed_files.folder_modes_below(folder), {"755"})

    def test_configurations_name_the_folder_of_the_programs(self):
        examples = self.prefix / "share/doc/sign-cgi/examples"
        named = 0
        for path in (path for path in DEPLOY.rglob("*") if path.is_file()):
            if path.suffix not in (".conf", ".service", ".socket"):
                continue
            with self.subTest(path=path):
                text = (examples / path.relative_to(DEPLOY)).read_text(encoding="utf-8")
                programs = f"{self.prefix}/libexec/sign-cgi"
                named += programs in text
                self.assertEqual(text.replace(programs, "/usr/libexec/sign-cgi"),
                                 path.read_text(encoding="utf-8"))
                self.assertNotIn("/usr/libexec", text)
        self.assertEqual(named, 4, "Apache, lighttpd, nginx and the unit")

    def test_under_usr_the_configurations_are_as_they_were_written(self):
        for path, name in installed_files.CONFIGURATIONS.items():
            self.assertEqual((self.root / path).read_bytes(), (DEPLOY / name).read_bytes())

    def test_the_health_check_names_its_project(self):
        installed = (self.prefix / "libexec/sign-cgi/check-service.sh").read_text(encoding="utf-8")
        project = str(self.prefix / "share/sign-cgi/check.project")
        self.assertIn(project, installed)
        self.assertEqual(installed.replace(project, "/usr/share/sign-cgi/check.project"),
                         (ROOT / "scripts/check-service.sh").read_text(encoding="utf-8"))
        asked = subprocess.run([self.prefix / "libexec/sign-cgi/check-service.sh"], check=False,
                               capture_output=True, text=True)
        self.assertEqual(asked.stderr, "")
        self.assertTrue(asked.stdout.startswith("sign.cgi UNKNOWN: "), asked.stdout)
        check = subprocess.run([self.prefix / "bin/projectctl", "check", project], check=False,
                               capture_output=True, text=True)
        self.assertTrue(check.stdout.endswith(f"\n{project}: sound, for verifying only\n"), check.stdout)

    def test_the_programs_answer_under_both_names(self):
        for name, first_line in (("sign.cgi", "Status: 400 Bad Request"),
                                 ("nph-sign.cgi", "HTTP/1.0 400 Bad Request")):
            with self.subTest(name):
                run = subprocess.run([self.prefix / "libexec/sign-cgi" / name], env={}, check=False,
                                     stdin=subprocess.DEVNULL, capture_output=True, text=True)
                self.assertEqual(run.stdout.splitlines()[0], first_line)
                self.assertEqual(run.returncode, 255)
        version = subprocess.run([self.prefix / "bin/projectctl", "--version"], check=True,
                                 capture_output=True, text=True)
        self.assertRegex(version.stdout, r"\d+\.\d+\.\d+\n$")

    def test_manual_pages_are_those_of_the_source(self):
        for page in (ROOT / "docs/man").iterdir():
            with self.subTest(page=page.name):
                installed = self.prefix / f"share/man/man{page.suffix[1:]}/{page.name}.gz"
                self.assertEqual(gzip.decompress(installed.read_bytes()), page.read_bytes())
        link = self.prefix / "share/man/man8/nph-sign.cgi.8.gz"
        self.assertIn(b".Nm nph-sign.cgi", gzip.decompress(link.read_bytes()))


if __name__ == "__main__":
    Installation.build = Path(sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
