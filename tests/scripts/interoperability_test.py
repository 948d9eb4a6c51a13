"""Runs the commands of docs/interoperability.md with the programs and the openssl program.

    interoperability_test.py FOLDER     the folder of the programs; SIGN_PROGRAM_FOLDER names another
"""

import json
import os
import random
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
DOCUMENT = ROOT / "docs" / "interoperability.md"
PROJECTS = 4 if os.environ.get("SIGN_SANITIZED") == "1" else 20
SIGNATURES_OF_A_PROJECT = 10
SIGNATURES = PROJECTS * SIGNATURES_OF_A_PROJECT
SECONDS_FOR_A_COMMAND = 60


def commands_of_the_document():
    """The blocks of shell commands under each heading."""
    sections = re.split(r"^## (.*)$", DOCUMENT.read_text(encoding="utf-8"), flags=re.MULTILINE)
    return {heading: re.findall(r"^```sh\n(.*?)^```$", text, flags=re.MULTILINE | re.DOTALL)
            for heading, text in zip(sections[1::2], sections[2::2])}


class CommandsOfTheDocument(unittest.TestCase):
    programs = None

    @classmethod
    def setUpClass(cls):
        commands = commands_of_the_document()
        cls.sign, cls.verify_there = commands["Verifying with OpenSSL"]
        cls.sign_there, cls.verify = commands["Signing with OpenSSL"]
        (cls.digest_there,) = commands["The digest"]
        (cls.all_forms,) = commands["The signature"]

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.letter = self.folder / "letter.txt"
        seed = int(os.environ.get("SIGN_TEST_SEED") or random.SystemRandom().getrandbits(32))
        print(f"{self.id()}: SIGN_TEST_SEED={seed}")
        self.random = random.Random(seed)

    def run_commands(self, commands, signature=None):
        """Runs them in the folder; gives the exit status, the output and the signature then."""
        script = commands + 'status=$?\nprintf "\\n%s" "${signature-}"\nexit "$status"\n'
        environment = {"PATH": f"{self.programs}:{os.environ['PATH']}"}
        if signature is not None:
            environment["signature"] = signature
        result = subprocess.run(["sh", "-c", script], cwd=self.folder, env=environment,
                                stdin=subprocess.DEVNULL, capture_output=True, check=False,
                                timeout=SECONDS_FOR_A_COMMAND)
        output, _, signature = result.stdout.decode().rpartition("\n")
        return result.returncode, output, result.stderr.decode(), signature

    def new_project(self):
        project = self.folder / "my.project"
        project.unlink(missing_ok=True)
        (self.folder / "private.pem").unlink(missing_ok=True)
        subprocess.run([self.programs / "projectctl", "create", project], check=True,
                       timeout=SECONDS_FOR_A_COMMAND)

    def write_letter(self):
        self.letter.write_bytes(self.random.randbytes(self.random.randint(1, 5000)))

    def alter_letter(self):
        """Changes one bit of it."""
        letter = bytearray(self.letter.read_bytes())
        letter[self.random.randrange(len(letter))] ^= 1 << self.random.randrange(8)
        self.letter.write_bytes(letter)

    def for_each_letter(self):
        for _ in range(PROJECTS):
            self.new_project()
            for _ in range(SIGNATURES_OF_A_PROJECT):
                self.write_letter()
                yield

    def test_openssl_verifies_what_we_sign(self):
        verified = refused = 0
        for _ in self.for_each_letter():
            status, output, errors, signature = self.run_commands(self.sign)
            self.assertEqual((status, output, errors), (0, "", ""))
            self.assertRegex(signature, r"\A[A-Za-z0-9+/]{4,56}={0,2}\Z")

            status, output, errors, _ = self.run_commands(self.verify_there, signature)
            self.assertEqual((status, output, errors), (0, "Signature Verified Successfully\n", ""))
            verified += 1

            self.alter_letter()
            status, output, errors, _ = self.run_commands(self.verify_there, signature)
            self.assertEqual((status, output), (1, "Signature Verification Failure\n"), errors)
            refused += 1
        self.assertEqual((verified, refused), (SIGNATURES, SIGNATURES))

    def test_we_verify_what_openssl_signs(self):
        verified = refused = 0
        for _ in self.for_each_letter():
            status, output, errors, signature = self.run_commands(self.sign_there)
            self.assertEqual((status, output, errors), (0, "", ""))

            status, output, errors, _ = self.run_commands(self.verify, signature)
            self.assertEqual((status, output, errors), (0, "true\n", ""))
            verified += 1

            self.alter_letter()
            status, output, errors, _ = self.run_commands(self.verify, signature)
            self.assertEqual((status, output), (1, "false\n"))
            self.assertIn("other data", errors)
            refused += 1
        self.assertEqual((verified, refused), (SIGNATURES, SIGNATURES))

    def test_a_private_key_is_for_its_owner_alone(self):
        self.new_project()
        self.write_letter()
        self.assertEqual(self.run_commands(self.sign_there)[0], 0)
        self.assertEqual((self.folder / "private.pem").stat().st_mode & 0o777, 0o600)

    def test_openssl_finds_the_keys_sound(self):
        self.new_project()
        self.write_letter()
        self.assertEqual(self.run_commands(self.sign_there)[0], 0)
        status, output, errors, _ = self.run_commands(
            "projectctl export my.project > public.pem &&"
            " openssl pkey -in private.pem -check -noout &&"
            " openssl pkey -pubin -in public.pem -pubcheck -noout &&"
            " openssl pkey -in private.pem -pubout | cmp - public.pem\n")
        self.assertEqual((status, errors), (0, ""))
        self.assertEqual(output, "Key is valid\nKey is valid\n")

    def test_the_digest_is_what_openssl_and_perl_make(self):
        for _ in range(20):
            self.write_letter()
            status, _, errors, _ = self.run_commands(
                self.digest_there + "projectctl digest letter.txt | cmp - digest.bin\n")
            self.assertEqual((status, errors), (0, ""))

    def test_all_forms_say_the_same(self):
        self.new_project()
        self.write_letter()
        _, _, _, signature = self.run_commands(self.sign)
        status, output, errors, _ = self.run_commands(self.all_forms, signature)
        self.assertEqual((status, errors), (0, ""))
        forms = json.loads(output)
        self.assertEqual(list(forms), ["r", "s", "text", "der"])
        self.assertEqual(forms["text"], signature)
        _, output, _, _ = self.run_commands(
            'projectctl convert "$signature" --to der > signature.der\n'
            "openssl asn1parse -inform DER -in signature.der\n", signature)
        numbers = re.findall(r"prim: INTEGER +:([0-9A-F]+)$", output, flags=re.MULTILINE)
        self.assertEqual([int(number, 16) for number in numbers],
                         [int(forms["r"], 16), int(forms["s"], 16)])
        self.assertEqual((self.folder / "signature.der").read_bytes().hex(), forms["der"])


if __name__ == "__main__":
    programs = os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]
    CommandsOfTheDocument.programs = Path(programs).resolve()
    unittest.main(argv=sys.argv[:1])
