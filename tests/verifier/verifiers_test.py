"""Asks the installed library and the examples that verify, and compares them with projectctl.

    verifiers_test.py FOLDER     the folder of the build
"""

import json
import os
import random
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
VECTORS = ROOT / "tests" / "vectors"
EXAMPLES = ROOT / "examples" / "verify"
sys.dont_write_bytecode = True
sys.path[:0] = [str(ROOT / "tests" / "reference"), str(EXAMPLES)]
import project_maker  # noqa: E402
import signature_scheme  # noqa: E402
import signature_variants  # noqa: E402
import verify  # noqa: E402
from curve_point import ORDER  # noqa: E402

SIGNATURES = 1000 if "SIGN_LONG_RUN" in os.environ else 120
SECONDS = 280
VERIFY_ALL = """
import { readFileSync } from "node:fs";
import { verify } from "%s";
const cases = JSON.parse(readFileSync(0, "utf8"));
console.log(JSON.stringify(cases.map(([project, text, file]) =>
    verify(readFileSync(project), readFileSync(file), text))));
"""


def run(*command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, timeout=SECONDS,
                          **options).stdout


def vectors():
    """Project, text and message of each published signature."""
    content = json.loads((VECTORS / "signatures.json").read_text(encoding="utf-8"))
    return [(VECTORS / case["project"], case["text"], bytes.fromhex(case["message"]))
            for case in content["signatures"]]


class Verifiers(unittest.TestCase):
    build = None

    @classmethod
    def setUpClass(cls):
        cls.folder = Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.prefix = cls.folder / "a prefix"
        run("cmake", "--install", cls.build, "--prefix", cls.prefix, "--component", "development")
        flags = os.environ | {"PKG_CONFIG_PATH": str(cls.prefix / "lib" / "pkgconfig")}
        flags = shlex.split(
            run("pkg-config", "--cflags", "--libs", "sign-verify", env=flags).decode())
        strict = ("cc", "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-o")
        for name in ("verify_installed", "verify_threads"):
            run(*strict, cls.folder / name, "-std=c99", Path(__file__).with_name(f"{name}.c"),
                *flags, "-pthread")
        run(*strict, cls.folder / "verify", "-std=c99", EXAMPLES / "verify.c", "-lcrypto")

    def write(self, content):
        file = self.folder / f"file-{self.count}"
        self.count += 1
        file.write_bytes(content)
        return file

    def setUp(self):
        self.count = 0
        seed = int(os.environ.get("SIGN_TEST_SEED") or random.SystemRandom().getrandbits(32))
        print(f"{self.id()}: SIGN_TEST_SEED={seed}")
        self.choice = random.Random(seed)

    def ruling(self, project, text, file):
        """The rule that projectctl names, or the code of its error."""
        done = subprocess.run([self.build / "projectctl", "verify", "--json", "--", project, text,
                               file], capture_output=True, timeout=SECONDS, check=False)
        return json.loads(done.stdout)["rule"] if done.stdout else None

    def asked_library(self, project, text, file):
        lines = run(self.folder / "verify_installed", project, text, file).decode().splitlines()
        self.assertEqual(lines[4], lines[1].split()[0])
        return [line.split() for line in lines[:4]]

    def compare(self, cases):
        """Compares the verdicts on all cases; the number of those that are true."""
        scripted = json.loads(run("node", "--input-type=module", "-e", VERIFY_ALL %
                                  (EXAMPLES / "verify.mjs"),
                                  input=json.dumps([[str(project), text, str(file)]
                                                    for project, text, file in cases]).encode()))
        true = 0
        for (project, text, file), by_script in zip(cases, scripted, strict=True):
            rule = self.ruling(project, text, file)
            valid = rule == "signature.valid"
            with self.subTest(project=project, text=text, rule=rule):
                for verdict, code in self.asked_library(project, text, file):
                    self.assertEqual(verdict == "1", valid)
                    # The library does not look whether the key is sound.
                    told = "signature.mismatch" if rule == "key.unsound" else rule
                    self.assertIn(told, (code, None))
                self.assertEqual(by_script, valid)
                self.assertEqual(verify.verify(project.read_bytes(), file.read_bytes(), text),
                                 valid)
                done = subprocess.run([self.folder / "verify", project, text, file], check=False,
                                      capture_output=True, timeout=SECONDS)
                self.assertEqual((done.returncode, done.stdout, done.stderr),
                                 (0, b"true\n", b"") if valid else (1, b"false\n", b""))
            true += valid
        return true

    def test_published_signatures_are_valid_over_their_data_alone(self):
        cases = [(project, text, self.write(data)) for project, text, data in vectors()]
        self.assertEqual(self.compare(cases), len(cases))
        other = self.write(b"other data")
        self.assertEqual(self.compare([(project, text, other) for project, text, _ in cases]), 0)

    def test_random_signatures_get_the_verdict_of_the_program(self):
        keys = project_maker.sound_keys(self.choice)
        projects = [(key, self.write(project_maker.container(project_maker.key_values(key).items())))
                    for name, key in keys.items()
                    # Of these, verify.c refuses the few signatures that the program accepts.
                    if name not in ("x-one-limb-minus-one", "x-two-limbs-minus-one")]
        refused = []
        for kind, list_of_kind in ((project_maker.sound_files, projects),
                                   (project_maker.damaged_files, refused),
                                   (project_maker.incomplete_files, refused)):
            list_of_kind += [(keys["random-0"], self.write(content))
                             for _, content in kind(keys["random-0"], self.choice)]
        files = [self.write(self.choice.randbytes(size)) for size in (1, 55, 56, 64, 300)]
        cases = []
        while len(cases) < SIGNATURES:
            key, project = self.choice.choice(projects if self.choice.random() < 0.85 else refused)
            file = self.choice.choice(files)
            # Nonce 1 gives the x of the base point, which some keys have below 2^128.
            nonce = self.choice.choice((1, self.choice.randrange(2, ORDER)))
            text = signature_scheme.signed(key.base, key.scalar, file.read_bytes(), nonce)
            change = self.choice.choice((
                lambda _, same: same, signature_variants.same_signature,
                signature_variants.other_signature))
            text = change(self.choice, text)
            if self.choice.random() < 0.1:
                file = self.choice.choice(files)
            if b"\0" not in text and text.isascii():
                cases.append((project, text.decode(), file))
        true = self.compare(cases)
        print(f"{true} of {len(cases)} are true")
        self.assertGreater(true, SIGNATURES // 8)
        self.assertLess(true, SIGNATURES * 7 // 8)

    def test_scripts_answer_under_any_name_and_end_with_2_without_a_verdict(self):
        project, text, data = vectors()[0]
        file, missing = self.write(data), self.folder / "missing"
        link, copy = self.folder / "link.mjs", self.folder / "copy.mjs"
        link.symlink_to(EXAMPLES / "verify.mjs")
        shutil.copy(EXAMPLES / "verify.mjs", copy)
        for command in (("node", link), ("node", copy), (sys.executable, EXAMPLES / "verify.py")):
            self.assertEqual(run(*command, project, text, file), b"true\n")
            for words in ((project, text), (missing, text, file), (project, text, missing)):
                with self.subTest(command=command, words=words):
                    done = subprocess.run([*command, *words], check=False, capture_output=True,
                                          timeout=SECONDS)
                    self.assertEqual((done.returncode, done.stdout), (2, b""))
                    self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)

    def test_a_text_with_half_a_character_is_no_signature(self):
        project, _, data = vectors()[0]
        self.assertFalse(verify.verify(project.read_bytes(), data, "\ud800AAA"))

    def test_threads_call_the_library_at_the_same_time(self):
        project, text, data = vectors()[0]
        run(self.folder / "verify_threads", project, text, self.write(data))

    def test_the_library_has_no_global_name_but_its_own(self):
        listed = run("nm", "-g", "--defined-only", self.prefix / "lib" / "libsign_verify.a")
        names = [line.split()[2] for line in listed.decode().splitlines() if len(line.split()) == 3]
        self.assertCountEqual(names, ["sign_verify_data", "sign_verify_data_by_bytes",
                                      "sign_verify_file", "sign_verify_file_by_bytes"])


if __name__ == "__main__":
    Verifiers.build = Path(sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
