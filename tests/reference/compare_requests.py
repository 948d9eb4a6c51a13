"""Compares answers and explanations of random requests with those of the reference.

    compare_requests.py --program FOLDER [--seed SEED] [--count N] [--first N] [--jobs N]
                        [--without-ends] [--kinds] [--keep FOLDER]

Response bytes, standard error and the exit status of sign.cgi are compared, and the status, the
body and the rule that projectctl explains. A request is a function of the
seed and its number: the seed is printed, and with --first and --count 1 it comes once more.
SIGN_TEST_SEED of the environment gives a seed as well, and SIGN_PROGRAM_FOLDER, which wins over
--program, the folder of the programs. The exit status is 0 when nothing differs and, from 3500
requests on, every answer that there is has come and every rule has been met.
"""

import argparse
import collections
import multiprocessing
import os
import random
import secrets
import sys
import tempfile
from pathlib import Path

import program_run
import request_maker
import request_material
from answer import Ended
from invocation import is_nph
from request_driver import expected_answer
from rules import ENDS, RULES

ENOUGH_FOR_EVERYTHING = 3500
CHUNK = 50
REQUESTS_A_LINE = 10_000
ANSWERS = """\
200 OK, application/json: {"signature":"S"}
200 OK, application/json: {"valid":false}
200 OK, application/json: {"valid":true}
200 OK, text/plain: S
200 OK, text/plain: false
200 OK, text/plain: signature:S
200 OK, text/plain: true
200 OK, text/plain: valid:false
200 OK, text/plain: valid:true
400 Bad Request, text/plain: 'mode' parameter missing or invalid
400 Bad Request, text/plain: 'project' parameter is required
400 Bad Request, text/plain: 'signature' parameter is required
400 Bad Request, text/plain: Either 'data' or 'file' parameter is required
400 Bad Request, text/plain: Failed to parse input data
400 Bad Request, text/plain: Invalid JSON data
400 Bad Request, text/plain: Invalid base64 data
400 Bad Request, text/plain: Signature encoding must be 'plain' or 'base64'
400 Bad Request, text/plain: Signature generation failed
""".splitlines()
ENDED = Ended.kind()


def material_seed(seed):
    return random.Random(f"{seed} material")


class Comparison:
    """What each worker knows; the current folder is that of the material."""

    def __init__(self, arguments, material):
        self.arguments = arguments
        self.material = material

    def one(self, number):
        """The answer that is due, and a report if the programs give or explain another."""
        request = request_maker.request(self.arguments.seed, number, self.material)
        try:
            expected = expected_answer(request.environment, request.body)
        except Exception as error:
            raise RuntimeError(f"the reference fails in request {number} of seed "
                               f"{self.arguments.seed}: {request!r}") from error
        if self.arguments.without_ends and expected.rule in ENDS:
            return expected, None
        output, errors, exit_status = program_run.run(self.arguments.program, request)
        explained = program_run.explain(self.arguments.program, request)
        if (errors == b"" and expected.accepts(is_nph(request.name), output, exit_status)
                and explained == expected.explained()):
            return expected, None
        return expected, report(self.arguments.seed, number, request, expected,
                                (output, errors, exit_status), explained)

    def span(self, first_and_end):
        kinds, rules, reports = collections.Counter(), collections.Counter(), []
        for number in range(*first_and_end):
            expected, text = self.one(number)
            kinds[expected.kind()] += 1
            rules[expected.rule] += 1
            if text is not None:
                reports.append(text)
        return kinds, rules, reports


def report(seed, number, request, expected, answer, explained):
    output, errors, exit_status = answer
    return f"""\
seed {seed}, request {number} differs
  started as    {request.name!r}
  environment   {request.environment!r}
  body          {request.body!r}
  is due        {expected!r}
  output        {output!r}
  errors        {errors!r}
  exit status   {exit_status}
  to explain    {expected.explained()!r}
  explained     {explained!r}
  once more: compare_requests.py --program FOLDER --seed {seed} --first {number} --count 1
"""


def parsed_arguments():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("--program", required="SIGN_PROGRAM_FOLDER" not in os.environ,
                        help="the folder of sign.cgi, nph-sign.cgi and projectctl")
    parser.add_argument("--seed", default=os.environ.get("SIGN_TEST_SEED") or secrets.token_hex(4))
    parser.add_argument("--count", type=int, default=ENOUGH_FOR_EVERYTHING)
    parser.add_argument("--first", type=int, default=0)
    parser.add_argument("--jobs", type=int, default=1)
    parser.add_argument("--without-ends", action="store_true",
                        help="leave out requests that end without a response, as sanitizers end "
                             "them in another way")
    parser.add_argument("--kinds", action="store_true", help="print the number of each answer")
    parser.add_argument("--keep",
                        help="make the projects and files in this new folder and leave them")
    return parser.parse_args()


def compared(comparison, arguments):
    """All kinds and rules with their counts, and all reports; each is printed as it comes."""
    end = arguments.first + arguments.count
    spans = [(first, min(first + CHUNK, end)) for first in range(arguments.first, end, CHUNK)]
    kinds, rules, reports = collections.Counter(), collections.Counter(), []
    with multiprocessing.get_context("fork").Pool(arguments.jobs) as pool:
        for some_kinds, some_rules, some_reports in pool.imap_unordered(comparison.span, spans):
            kinds += some_kinds
            rules += some_rules
            reports += some_reports
            if sum(kinds.values()) % REQUESTS_A_LINE == 0:
                print(f"{sum(kinds.values())} requests done", flush=True)
            for text in some_reports:
                print(text, flush=True)
    return kinds, rules, reports


def missing(kinds, rules, arguments):
    """What requests meet and none has met."""
    if arguments.count < ENOUGH_FOR_EVERYTHING:
        return []
    expected = [*ANSWERS, *sorted(RULES)]
    if not arguments.without_ends:
        expected += [ENDED, *sorted(ENDS)]
    return [name for name in expected if not kinds[name] and not rules[name]]


def print_counts(counter):
    for name, count in sorted(counter.items()):
        print(f"{count:8} {name}")


def main():
    arguments = parsed_arguments()
    arguments.program = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or arguments.program).resolve()
    print(f"{arguments.count} requests from {arguments.first} on, seed {arguments.seed}",
          flush=True)
    program_run.leave_no_core()
    with tempfile.TemporaryDirectory() as temporary:
        folder = Path(arguments.keep or temporary).absolute()
        folder.mkdir(exist_ok=True)
        material = request_material.made_in(folder, material_seed(arguments.seed))
        os.chdir(folder)
        kinds, rules, reports = compared(Comparison(arguments, material), arguments)
        os.chdir("/")
    if arguments.kinds:
        print_counts(kinds)
    print_counts(rules)
    never_met = missing(kinds, rules, arguments)
    for name in never_met:
        print(f"never came: {name}")
    print(f"{sum(kinds.values())} requests, {len(kinds)} kinds of answers, {len(rules)} rules, "
          f"{len(reports)} differ")
    return 1 if reports or never_met else 0


if __name__ == "__main__":
    sys.exit(main())
