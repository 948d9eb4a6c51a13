"""The checks before a release, in the order in which they run.

In a short run they are the same with smaller samples: it shows that they work, not that the program
does.
"""

from mutation.judged_folders import DEFAULT_FOLDERS, FOLDERS
from release.check import Check, Found

FUZZ_TARGETS = (
    *("core_text", "field_division", "form_body", "integer_division", "integer_inverse"),
    *("integer_modulo", "json_body", "key_attributes", "percent_decoding", "project_file"),
    *("request_base64", "second_route", "signature_text", "unsound_key", "whole_request"),
)
SEED = "SIGN_TEST_SEED={seed} "
FULL = {"full": ("SIGN_LONG_RUN=1 ", "")}
ALL_PASS = Found(r"^test: all (\d+) tests passed in .*$")
PASSED = r"^\[  PASSED  \] ([1-9]\d*) tests?\.$"


def build(preset, *targets):
    return (f"cmake --preset {preset} >/dev/null && "
            f"cmake --build --preset {preset} --target {' '.join(targets)} >/dev/null && ")


def mutation(name, folders, counts, least):
    return Check(
        f"mutation:{name}",
        "scripts/mutate.py --seed {seed} --resume --jobs $(nproc) "
        f"--folders {' '.join(folders)} "
        "--count {count} --least {least} --threshold {threshold}",
        (Found(r"^(\d+ killed, .*)$"), Found(r"^(\d+\.\d+ % killed), wanted .*$")),
        "{}; {}",
        {"count": counts, "least": least, "threshold": (97, 80)},
    )


def fuzz(target):
    # As many runs, or as long as is worth it where they are slow.
    return Check(
        f"fuzz:{target}",
        "FUZZ_SEED={seed} {runs}scripts/fuzz.sh {seconds} " + target,
        (Found(rf"^{target}: (\d+ runs in \d+ s, slowest \d+ s), seed \d+$"),),
        sizes={"runs": ("FUZZ_RUNS=1000000 ", ""), "seconds": (600, 60)},
    )


CHECKS = (
    Check("suite", SEED + "scripts/test.sh all", (ALL_PASS,), "{} tests, all pass"),
    Check("sanitizers", SEED + "scripts/test.sh asan{quick}", (ALL_PASS,),
          "{} tests under AddressSanitizer, LeakSanitizer, UndefinedBehaviorSanitizer and "
          "assertions, all pass", {"quick": ("", " quick")}),
    Check("checkers", "scripts/lint.sh{folders}",
          (Found(r"^(clang-format|shellcheck|cppcheck|clang-tidy)$", lines=4),),
          "{}: no finding",
          {"folders": ("", " core curve random project engine frontend")}),
    Check("coverage", SEED + "scripts/coverage.sh",
          (Found(r"^(\w+: \d+ of \d+ lines, \d+ of \d+ branches)$", lines=len(FOLDERS),
                 joined="; "),)),
    Check("faults",
          build("dev", "fault_tests") + build("release", "sign_cgi", "projectctl") + SEED +
          "{full}SIGN_PROGRAM_FOLDER=$PWD/build/release build/dev/tests/fault_tests",
          (Found(r"^(.*: \d+) (?:runs|files);.*$", lines=None, joined="; "),
           Found(r"^(\d+ unsound projects):.*; (slowest .* ms) of .*$", r"\1: \2", lines=None,
                 joined="; ")),
          "{}; {}", FULL),
    Check("valgrind",
          build("dev", "program_tests") +
          "build/dev/tests/program_tests --gtest_filter='ProgramUnderValgrind.*'",
          (Found(PASSED),), "the requests of {} tests under valgrind: no error, no leak"),
    Check("reference",
          build("release", "sign_cgi", "projectctl") +
          "/usr/bin/python3 -B tests/reference/compare_requests.py --program build/release "
          "--seed {seed} --count {count} --jobs $(nproc) --kinds",
          (Found(r"^(\d+ requests, \d+ kinds of answers, \d+ rules, 0 differ)$"),),
          sizes={"count": (100000, 3500)}),
    Check("randomness",
          build("dev", "unit_random") + build("release", "sign_cgi") + "export " + SEED + "{full}&& "
          "build/dev/tests/unit_random "
          "--gtest_filter='NonceDistribution.*:RandomGenerator.StreamOfAThousandSeeds*' && "
          "/usr/bin/python3 -B tests/reference/nonces_test.py build/release",
          (Found(r"^(\d+) nonces of one process$"), Found(PASSED),
           Found(r"^(\d+ processes, as many nonces)$")),
          "{} nonces of one process: {} tests of uniformity and of the streams of 1000 seeds pass; "
          "{}", FULL),
    Check("routes",
          build("dev", "unit_curve") + SEED + "{full}build/dev/tests/unit_curve --gtest_filter="
          "'By/Fast*:SecretSigning.*:SigningTime.*'",
          (Found(PASSED),),
          "{} tests of the second route to multiples of points, against the defining one and "
          "libcrypto, and of what signing shows of a nonce pass", FULL),
    Check("verifiers",
          "cmake --preset dev >/dev/null && cmake --build --preset dev >/dev/null && " + SEED +
          "{full}/usr/bin/python3 -B tests/verifier/verifiers_test.py build/dev",
          (Found(r"^(\d+ of \d+) are true$"),),
          "the library, C, Python and JavaScript agree with projectctl on all published and random "
          "signatures, of which {} are true", FULL),
    Check("portability", "scripts/check-portability.sh{cases}",
          (Found(r"^portability: (.*)$", lines=None, joined="; "),), "{}",
          {"cases": ("", " debian13-gcc")}),
    mutation("program", DEFAULT_FOLDERS, (300, 16), (250, 8)),
    mutation("tools", ("tools",), (300, 8), (200, 4)),
    *(fuzz(target) for target in FUZZ_TARGETS),
)
