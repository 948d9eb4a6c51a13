"""Lints the manual pages, runs the examples of projectctl(1) and compares it with the help.

    manual_test.py FOLDER     the folder of the programs; SIGN_PROGRAM_FOLDER names another
"""

import json
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

MANUAL = Path(__file__).resolve().parents[2] / "docs" / "man"
PAGE = MANUAL / "projectctl.1"
SIGNATURE = r"[A-Za-z0-9+/]{40,56}={0,2}"
MARK = "@@ status "


class ManualPages(unittest.TestCase):
    programs = None

    def test_mandoc_finds_nothing_to_warn_of(self):
        for page in sorted(MANUAL.iterdir()):
            with self.subTest(page=page.name):
                lint = subprocess.run(["mandoc", "-Tlint", "-W", "warning", page],
                                      capture_output=True, text=True, check=False)
                self.assertEqual((lint.returncode, lint.stdout, lint.stderr), (0, "", ""))
        self.assertEqual({page.name for page in MANUAL.iterdir()},
                         {"projectctl.1", "project-file.5", "sign.cgi.8"})

    def test_their_heading_names_no_operating_system(self):
        for page in MANUAL.iterdir():
            shown = subprocess.run(["groff", "-mdoc", "-Tascii", "-P-cbou", page], check=True,
                                   capture_output=True, text=True).stdout
            name = page.stem.upper() + f"({page.suffix[1]})"
            with self.subTest(page=page.name):
                self.assertRegex(shown.splitlines()[0],
                                 rf"^{re.escape(name)} +[A-Z][A-Za-z' ]+ Manual +{re.escape(name)}$")
                self.assertNotIn("BSD", shown)

    def test_they_refer_to_each_other(self):
        pages = {page.stem: page.suffix[1] for page in MANUAL.iterdir()}
        for page in MANUAL.iterdir():
            references = page.read_text(encoding="utf-8").partition(".Sh SEE ALSO\n")[2]
            named = dict(re.findall(r"^\.Xr (\S+) (\d)", references, re.MULTILINE))
            with self.subTest(page=page.name):
                self.assertLessEqual({name: section for name, section in pages.items()
                                      if name != page.stem}.items(), named.items())

    def help_of(self, *arguments):
        return subprocess.run([self.programs / "projectctl", *arguments, "--help"], check=True,
                              capture_output=True, text=True).stdout

    def commands(self):
        return re.findall(r"^  ([a-z]+) ", self.help_of().partition("Commands:")[2], re.MULTILINE)

    def test_tells_of_every_command_and_option_and_of_no_other(self):
        text = PAGE.read_text(encoding="utf-8")
        description = text[text.index(".Sh DESCRIPTION"):text.index(".Sh ENVIRONMENT")]
        sections = re.split(r"^\.Ss (.*)$", description, flags=re.MULTILINE)
        documented = {name: set(re.findall(r"^\.It (?:Fl [a-z] , )?Fl -([a-z-]+)", body, re.MULTILINE))
                      for name, body in zip(sections[1::2], sections[2::2])}
        self.assertEqual(documented.pop("Options without a command"), {"help", "version"})
        in_help = {
            command: set(re.findall(r"^  (?:-[a-z], )?--([a-z-]+)", self.help_of(command), re.MULTILINE))
            - {"help"}
            for command in self.commands()}
        self.assertEqual(documented, in_help)

    def test_tells_of_every_family_of_rules(self):
        text = PAGE.read_text(encoding="utf-8")
        section = text[text.index(".Sh RULES"):text.index(".Sh EXIT STATUS")]
        listed = json.loads(subprocess.run(
            [self.programs / "projectctl", "explain", "--rules", "--json"], check=True,
            capture_output=True, text=True).stdout)
        families = list(dict.fromkeys(rule["code"].partition(".")[0] for rule in listed))
        self.assertEqual(re.findall(r"^\.It (\S+)$", section, re.MULTILINE), families)
        self.assertEqual(len({rule["code"] for rule in listed}), len(listed))
        for rule in listed:
            page = MANUAL.parents[1] / rule["page"]
            self.assertTrue(page.exists() or (MANUAL / f"{rule['page'][:-3]}.5").exists(), page)
            self.assertTrue(rule["sentence"].endswith("."), rule)

    def test_the_synopsis_has_every_option(self):
        text = PAGE.read_text(encoding="utf-8")
        synopsis = text[text.index(".Sh SYNOPSIS"):text.index(".Sh DESCRIPTION")]
        parts = re.split(r"^\.Nm\n\.Cm ([a-z]+)$", synopsis, flags=re.MULTILINE)
        shown = {}
        for name, body in zip(parts[1::2], parts[2::2]):
            body = body.partition("\n.Nm\n")[0]
            shown.setdefault(name, set()).update(re.findall(r"Fl -([a-z-]+)", body))
        for command in self.commands():
            in_help = set(re.findall(r"^  (?:-[a-z], )?--([a-z-]+)", self.help_of(command),
                                     re.MULTILINE)) - {"help"}
            self.assertEqual(shown[command], in_help, command)

    def run_examples(self, commands):
        """Runs the commands in one shell; gives the output and the status of each."""
        script = "".join(f'{command}\necho "{MARK}$?"\n' for command in commands)
        environment = {"PATH": f"{self.programs}:{os.environ['PATH']}"}
        with tempfile.TemporaryDirectory() as folder:
            shell = subprocess.run(["sh", "-c", script], cwd=folder, env=environment, check=True,
                                   capture_output=True, text=True, timeout=120)
        # One example verifies other data.
        self.assertRegex(shell.stderr,
                         r"\Aprojectctl: the signature was made over other data or under another "
                         r"key, or was altered\n"
                         r"projectctl: standard input: RIPEMD-160 digest [0-9a-f]{40}\n"
                         r"projectctl: public.project: fingerprint of the public key [0-9a-f]{64}\n\Z")
        pieces = re.split(re.escape(MARK) + r"(\d+)\n", shell.stdout)
        self.assertEqual(len(pieces), 2 * len(commands) + 1)
        return list(zip(commands, pieces[0::2], map(int, pieces[1::2])))

    def test_the_examples_do_what_they_are_for(self):
        text = PAGE.read_text(encoding="utf-8")
        blocks = re.findall(r"^\.Bd -literal.*?\n(.*?)^\.Ed", text[text.index(".Sh EXAMPLES"):],
                            re.MULTILINE | re.DOTALL)
        commands = "".join(blocks).splitlines()
        used = set(re.findall(r"projectctl ([a-z]+)", "\n".join(commands)))
        self.assertEqual(used, set(self.commands()), "an example for each command")
        outputs = {}
        for command, output, status in self.run_examples(commands):
            with self.subTest(command=command):
                self.assertEqual(status, 0)
            outputs[command] = output

        def output_of(start):
            (found,) = (output for command, output in outputs.items() if start in command)
            return found

        self.assertRegex(output_of("projectctl check"),
                         r"\Amy.project: fingerprint of the public key: [0-9a-f]{64}\n"
                         r"my.project: sound\n\Z")
        self.assertIn("private scalar\n", output_of("projectctl show my.project"))
        self.assertRegex(output_of("tar -c"), f"^{SIGNATURE}\n$")
        self.assertEqual(output_of("projectctl verify public.project \"$signature\" letter"),
                         "true\n")
        self.assertEqual(output_of("echo 'Dear all'"), "false\nstatus 1\n")
        self.assertIn("The program answers 200 OK: true\n", output_of("explain --project"))
        self.assertIn("The program answers 400 Bad Request: 'mode' parameter missing or invalid\n",
                      output_of("explain --body"))
        self.assertEqual(output_of("projectctl verify public.project --check"),
                         "letter.txt: OK\npublic.project: OK\n")
        self.assertEqual(output_of("--signature-file"), "true\n")
        self.assertEqual(output_of("openssl"), "Signature Verified Successfully\n")
        values = {entry["id"]: entry["value"]
                  for entry in json.loads(output_of("show moved.project"))["entries"]}
        self.assertEqual(int(values[74], 16), 0x123456789ABCDEF)

    def test_the_example_of_each_help_can_be_parsed(self):
        for command in self.commands():
            example = self.help_of(command).partition("Example:\n")[2].strip()
            with self.subTest(command=command), tempfile.TemporaryDirectory() as folder:
                self.assertTrue(example.startswith(f"projectctl {command} "))
                shell = subprocess.run(
                    ["sh", "-c", "signature=AAAA\n" + example], cwd=folder, check=False,
                    env={"PATH": f"{self.programs}:{os.environ['PATH']}"},
                    capture_output=True, text=True)
                self.assertNotIn("--help'", shell.stderr)


if __name__ == "__main__":
    ManualPages.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
