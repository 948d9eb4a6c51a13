"""Replays docs/http-interface.md and docs/openapi.json against the programs.

They are started as a web server does it, with variables and a body on standard input.

    http_interface_test.py FOLDER     the folder of the programs; SIGN_PROGRAM_FOLDER names another
"""

import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
import urllib.parse
from dataclasses import dataclass
from pathlib import Path

import yaml
from jsonschema import Draft4Validator, RefResolver

ROOT = Path(__file__).resolve().parents[2]
REFERENCE = (ROOT / "docs" / "http-interface.md").read_text(encoding="utf-8")
DESCRIPTION = json.loads((ROOT / "docs" / "openapi.json").read_text(encoding="utf-8"))
# Of Debian's package openapi-specification.
OPENAPI_SCHEMA = Path("/usr/share/openapi-specification/schemas/v3.0/schema.yaml")
NAMES = ("sign.cgi", "nph-sign.cgi")
SECONDS_FOR_A_REQUEST = 60

FORM = "application/x-www-form-urlencoded"
JSON = "application/json"
STATUS_LINES = {"200": "200 OK", "400": "400 Bad Request", "500": "500 Server Error"}
SIGNATURE = re.compile(r"[A-Za-z0-9+/]{50,56}={0,2}")
NO_JSON = "Invalid JSON data"
NO_FORM = "Failed to parse input data"
MODE_MISSING = "'mode' parameter missing or invalid"
PROJECT_MISSING = "'project' parameter is required"
SIGNATURE_MISSING = "'signature' parameter is required"
INPUT_MISSING = "Either 'data' or 'file' parameter is required"
NOT_MADE = "Signature generation failed"


@dataclass(frozen=True)
class Request:
    content_type: str
    body: bytes


@dataclass(frozen=True)
class Response:
    status: str
    content_type: str
    body: str

    def written_by(self, program):
        first = "HTTP/1.0" if program.startswith("nph-") else "Status:"
        return (f"{first} {self.status}\r\nContent-Type: {self.content_type}\r\n"
                f"Content-Length: {len(self.body.encode())}\r\n\r\n{self.body}").encode()

    def without_signature(self):
        return Response(self.status, self.content_type, SIGNATURE.sub("S", self.body))


def compact(value):
    return json.dumps(value, separators=(",", ":"), ensure_ascii=False)


def form(**parameters):
    return Request(FORM, urllib.parse.urlencode(parameters).encode())


def refusal(message):
    return Response("400 Bad Request", "text/plain", message)


def text_result(text):
    return Response("200 OK", "text/plain", text)


def verifying(request, signature):
    """The request that verifies what this one signs, to be answered in bare text."""
    if request.content_type == JSON:
        value = json.loads(request.body)
        value.update(mode="verifySignature", encoding="plain", genPairs=False)
        value["signature"]["signature"] = signature
        return Request(JSON, compact(value).encode())
    parameters = dict(urllib.parse.parse_qsl(request.body.decode()))
    for name in ("sig_create", "encoding", "genpairs", "sig"):
        parameters.pop(name, None)
    return form(sig_verify="true", sig=signature, **parameters)


# The reference: its fenced exchanges and its tables.


def fenced_exchanges():
    """The program, the request and the response of each pair of fenced blocks."""
    blocks = re.findall(r"^```http\n(.*?)\n```$", REFERENCE, re.MULTILINE | re.DOTALL)
    for request, response in zip(blocks[0::2], blocks[1::2], strict=True):
        head, _, body = request.partition("\n\n")
        line, *fields = head.split("\n")
        program = re.fullmatch(r"POST /((?:nph-)?sign\.cgi) HTTP/1\.1", line).group(1)
        headers = dict(field.split(": ", 1) for field in fields)
        if headers.pop("Content-Length") != str(len(body.encode())):
            raise AssertionError(f"a wrong Content-Length in {request}")
        yield program, Request(headers.pop("Content-Type"), body.encode()), response
        if headers:
            raise AssertionError(f"unknown headers in {request}")


PARAMETERS = "| Form parameter | JSON member | JSON type | Default | Meaning |"
FORM_TEXTS = "| Form text | Value of `sig_data` |"
DECODED_VALUES = "| Written | Bytes |"
JSON_BODIES = "| Body | |"
LENGTHS = "| `CONTENT_LENGTH` | Form | JSON |"
BASE64_TEXTS = "| Text | Bytes |"
FIRST_LINES = "| The program's file name | First line | Then |"
RESPONSES = "| Status | Content type | Body | Exit status | When |"
DIFFERENCES = "| | Signing | Verifying |"
RULES = "| Message | Rules |"
ZERO_BYTES = "| Zero byte in | Effect |"
ENDS = "| Case | Signal |"
# tests/servers/answers_test.py runs its rows.
SERVERS = "| Request | Apache | lighttpd | nginx |"
# Each has a test that runs its rows, and fails for a row that it cannot run.
TABLES = (PARAMETERS, ZERO_BYTES, FORM_TEXTS, DECODED_VALUES, JSON_BODIES, BASE64_TEXTS, FIRST_LINES,
          RESPONSES, DIFFERENCES, SERVERS, ENDS, RULES, LENGTHS)


def table(header):
    """The rows below this header, as lists of cells."""
    start = REFERENCE.index(f"\n{header}\n") + 1
    lines = REFERENCE[start:REFERENCE.index("\n\n", start)].split("\n")
    return [line.removeprefix("| ").removesuffix(" |").split(" | ") for line in lines[2:]]


def code(cell):
    """What stands between the backticks that make up this cell."""
    return re.fullmatch("`(.+)`", cell).group(1)


def response_rows():
    """Each row of the table of responses: the response, the exit status, whether it occurs."""
    for *cells, exit_status, when in table(RESPONSES):
        yield Response(*map(code, cells)), int(exit_status), not when.startswith("never")


# The description: its examples.


OPERATION = DESCRIPTION["paths"]["/sign.cgi"]["post"]


def content_of(part):
    return ((media, content["schema"], name, example)
            for media, content in part.get("content", {}).items()
            for name, example in content["examples"].items())


def request_examples():
    """Name, schema, value and request of each."""
    for media, schema, name, example in content_of(OPERATION["requestBody"]):
        value = example["value"]
        body = compact(value) if media == JSON else urllib.parse.urlencode(value)
        yield name, schema, value, Request(media, body.encode())


def response_examples():
    """Name, schema, example and response of each."""
    for status, part in OPERATION["responses"].items():
        for media, schema, name, example in content_of(part):
            value = example["value"]
            yield name, schema, example, Response(
                STATUS_LINES[status], media, compact(value) if media == JSON else value)


def described_exchanges():
    """Name, request and response of each pair of examples."""
    requests = {name: request for name, _, _, request in request_examples()}
    for name, _, example, response in response_examples():
        refused = example.get("x-request")
        if refused is not None:
            ((content_type, body),) = refused.items()
            yield name, Request(content_type, body.encode()), response
        elif name in requests:
            yield name, requests[name], response


def fits(schema, value):
    resolver = RefResolver.from_schema(DESCRIPTION)
    return Draft4Validator(schema, resolver=resolver).is_valid(value)


def body_fits(content_type, body):
    """Whether the description has a request of this type and with this text."""
    content = OPERATION["requestBody"]["content"].get(content_type)
    if content is None:
        return False
    try:
        value = json.loads(body) if content_type == JSON else dict(urllib.parse.parse_qsl(body))
    except ValueError:
        return False
    return fits(content["schema"], value)


class Description(unittest.TestCase):
    def test_is_an_openapi_description(self):
        schema = yaml.safe_load(OPENAPI_SCHEMA.read_text(encoding="utf-8"))
        errors = [f"{list(error.absolute_path)}: {error.message}"
                  for error in Draft4Validator(schema).iter_errors(DESCRIPTION)]
        self.assertEqual(errors, [])
        self.assertEqual(DESCRIPTION["openapi"], "3.0.3")

    def test_names_the_version_of_the_project(self):
        text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
        version = re.search(r"^project\(\w+\s+VERSION\s+([0-9.]+)", text, re.MULTILINE).group(1)
        self.assertEqual(DESCRIPTION["info"]["version"], version)

    def test_every_schema_is_well_formed_and_used(self):
        schemas = DESCRIPTION["components"]["schemas"]
        text = json.dumps(DESCRIPTION)
        used = set(re.findall(r'"\$ref": "#/components/schemas/(\w+)"', text))
        self.assertEqual(text.count('"$ref"'), len(re.findall(r'"\$ref": "#/components/', text)))
        self.assertEqual(used, set(schemas))
        for name, schema in schemas.items():
            with self.subTest(name):
                Draft4Validator.check_schema(schema)

    def test_every_request_example_fits_its_schema_and_one_response(self):
        answered = [name for name, _, _, _ in response_examples()]
        self.assertEqual(len(answered), len(set(answered)))
        names = [name for name, _, _, _ in request_examples()]
        self.assertEqual(len(names), len(set(names)))
        for name, schema, value, _ in request_examples():
            with self.subTest(name):
                self.assertTrue(fits(schema, value))
                self.assertIn(name, answered)

    def test_every_response_example_fits_its_schema(self):
        for name, schema, example, _ in response_examples():
            with self.subTest(name):
                self.assertTrue(fits(schema, example["value"]))

    def test_a_refused_request_fits_no_schema(self):
        for name, _, example, _ in response_examples():
            for content_type, body in example.get("x-request", {}).items():
                with self.subTest(name):
                    self.assertFalse(body_fits(content_type, body))
        for name, _, _, request in request_examples():
            with self.subTest(name):
                self.assertTrue(body_fits(request.content_type, request.body.decode()))

    def test_data_and_a_file_have_schemas_of_their_own(self):
        # A client that is generated can tell them apart by what they require.
        for name, schema in DESCRIPTION["components"]["schemas"].items():
            with self.subTest(name):
                self.assertNotIn("oneOf", schema if "properties" in schema else {})
                self.assertLess(len({"data", "file", "sig_data", "sig_file"} &
                                    schema.get("properties", {}).keys()), 2)

    def test_no_schema_takes_an_empty_value_for_a_given_one(self):
        requests = {name: (schema, value) for name, schema, value, _ in request_examples()}
        for name in ("json-verify", "json-verify-file", "form-verify", "form-sign-file"):
            schema, value = requests[name]
            nested = value.get("signature", {})
            for part, key in [(value, key) for key in value] + [(nested, key) for key in nested]:
                if key not in ("signature", "genPairs") or part is nested:
                    kept, part[key] = part[key], ""
                    with self.subTest(name, key=key):
                        self.assertFalse(fits(schema, value))
                    part[key] = kept
            self.assertTrue(fits(schema, value))

    def test_words_and_defaults_are_those_of_the_code(self):
        schemas = DESCRIPTION["components"]["schemas"]
        source = (ROOT / "frontend" / "request_record.cpp").read_text(encoding="utf-8")
        words = re.findall(r'word == "(\w+)"', source)
        (row,) = (row for row in table(PARAMETERS) if row[0] == "`encoding`")
        defaults = re.fullmatch(r"form `(\w+)`, JSON `(\w+)`", row[3]).groups()
        for kind, default in zip(("Form", "Json"), defaults, strict=True):
            schema = schemas[f"{kind}ResultEncoding"]
            self.assertEqual((schema["enum"], schema["default"]), (words, default))
        self.assertEqual(schemas["DataEncoding"]["enum"], ["plain", "base64"])
        self.assertEqual(schemas["DataEncoding"]["default"], "plain")

    def test_the_mode_tells_the_schemas_of_json_apart(self):
        schema = DESCRIPTION["components"]["schemas"]["JsonRequest"]
        mapping = schema["discriminator"]["mapping"]
        self.assertEqual([{"$ref": target} for target in mapping.values()], schema["oneOf"])
        for mode, target in mapping.items():
            named = DESCRIPTION["components"]["schemas"][target.rpartition("/")[2]]
            self.assertEqual(named["properties"][schema["discriminator"]["propertyName"]]["enum"],
                             [mode])


class Reference(unittest.TestCase):
    def test_every_table_is_one_whose_rows_are_run(self):
        headers = re.findall(r"^(\|.*)\n\|[-:| ]+\|$", REFERENCE, re.MULTILINE)
        self.assertEqual(headers, list(TABLES))

    def test_the_description_has_every_status_of_the_servers(self):
        told = {cell for _, *cells in table(SERVERS) for cell in cells} - {"program"}
        told |= {"401", "429"}  # with the lines of docs/access.md
        self.assertEqual(told - OPERATION["responses"].keys(), set())

    def test_the_table_of_responses_and_the_examples_are_the_same(self):
        rows = {response: occurs for response, _, occurs in response_rows()}
        described = {response.without_signature() for _, _, _, response in response_examples()}
        self.assertEqual(described, set(rows))
        replayed = {response.without_signature() for _, _, response in described_exchanges()}
        self.assertEqual(replayed, {response for response, occurs in rows.items() if occurs})

    def test_the_rules_behind_each_message_are_those_of_projectctl(self):
        listed = subprocess.run([Exchanges.programs / "projectctl", "explain", "--rules", "--json"],
                                check=True, capture_output=True, text=True).stdout
        codes = {rule["code"] for rule in json.loads(listed)}
        messages = {}
        for message, rules in table(RULES):
            for rule in re.findall("`(.+?)`", rules):
                family = rule.removesuffix("*")
                covered = {each for each in codes if each == rule or
                           (family != rule and each.startswith(family))}
                self.assertTrue(covered, rule)
                messages.setdefault(code(message), set()).update(covered)
        self.assertEqual(set(messages), {response.body for response, _, _ in response_rows()
                                         if response.status != "200 OK"})
        # The others are those of verdicts, or end the process without a response.
        left = codes.difference(*messages.values())
        self.assertEqual({rule for rule in left if not rule.startswith("signature.")},
                         {f"{kind}.length-{end}" for kind in ("form", "json")
                          for end in ("impossible", "memory")})

    def test_the_table_of_responses_has_every_message_of_the_code(self):
        source = (ROOT / "frontend" / "request_rules.cpp").read_text(encoding="utf-8")
        in_code = set(re.findall(r'return "([^"\n]+)"', source))
        self.assertEqual(in_code, {response.body for response, _, _ in response_rows()
                                   if response.status != "200 OK"})

    def test_the_exit_status_tells_a_result_from_a_refusal(self):
        for response, exit_status, _ in response_rows():
            self.assertEqual(exit_status, 0 if response.status == "200 OK" else 255)


class Exchanges(unittest.TestCase):
    programs = None

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.projects = Path(folder.name) / "projects"
        cls.upload = Path(folder.name) / "upload"
        cls.projects.mkdir()
        cls.upload.mkdir()
        cls.project = cls.projects / "my.project"
        shutil.copy(ROOT / "tests" / "vectors" / "projects" / "project-00.bin", cls.project)
        (cls.upload / "letter.txt").write_bytes(b"Dear reader")

    def run_program(self, program, body, content_type, length):
        environment = {"ASAN_OPTIONS": "allocator_may_return_null=1"}
        if content_type is not None:
            environment["CONTENT_TYPE"] = content_type
        if length is not None:
            environment["CONTENT_LENGTH"] = length
        return subprocess.run([self.programs / program], input=body, env=environment, check=False,
                              capture_output=True, timeout=SECONDS_FOR_A_REQUEST)

    def ask(self, program, request):
        """What the program writes and how it ends, with files of the test behind the paths."""
        body = request.body.replace(b"/var/lib/sign-cgi/", f"{self.projects}/".encode())
        body = body.replace(b"%2Fvar%2Flib%2Fsign-cgi%2F",
                            urllib.parse.quote(f"{self.projects}/", safe="").encode())
        body = body.replace(b"/srv/upload/", f"{self.upload}/".encode())
        body = body.replace(b"%2Fsrv%2Fupload%2F",
                            urllib.parse.quote(f"{self.upload}/", safe="").encode())
        end = self.run_program(program, body, request.content_type, str(len(body)))
        self.assertEqual(end.stderr, b"")
        return end.stdout, end.returncode

    def expect(self, request, response, program="sign.cgi"):
        """The program answers so; of a signature, this one and that of the answer are valid."""
        output, exit_status = self.ask(program, request)
        expected = SIGNATURE.search(response.body)
        if response.status == "200 OK" and expected:
            made = SIGNATURE.search(output.decode())
            self.assertIsNotNone(made, output)
            self.assertNotEqual(made.group(), expected.group())
            for text in (expected.group(), made.group()):
                self.expect(verifying(request, text), text_result("true"))
            response = Response(response.status, response.content_type,
                                response.body.replace(expected.group(), made.group()))
        self.assertEqual(output, response.written_by(program))
        self.assertEqual(exit_status, 0 if response.status == "200 OK" else 255)

    def test_every_example_of_the_description(self):
        exchanges = list(described_exchanges())
        self.assertGreater(len(exchanges), 30)
        for program in NAMES:
            for name, request, response in exchanges:
                with self.subTest(name, program=program):
                    self.expect(request, response, program)

    def test_an_example_that_fails_does_so_for_its_reason_alone(self):
        mended = 0
        for name, request, response in described_exchanges():
            body = request.body
            for wrong, right in ((b"Reader", b"reader"), (b"no.project", b"my.project"),
                                 (b"no.txt", b"letter.txt"), (b'"QUJDRA="', b'"QUJDRA=="')):
                body = body.replace(wrong, right)
            if body != request.body:
                with self.subTest(name):
                    self.assertRegex(response.body, "false|failed|Invalid")
                    output, exit_status = self.ask("sign.cgi", Request(request.content_type, body))
                    self.assertNotIn(b"false", output)
                    self.assertEqual(exit_status, 0)
                mended += 1
        self.assertEqual(mended, 7)

    def test_the_program_takes_the_writings_of_data_that_the_schema_has(self):
        allowed = DESCRIPTION["components"]["schemas"]["DataEncoding"]["enum"]
        for word in DESCRIPTION["components"]["schemas"]["FormResultEncoding"]["enum"]:
            request = form(project=self.project, sig_verify="true", sig="x", sig_data="QUJD",
                           sig_data_encoding=word)
            self.expect(request, text_result("false") if word in allowed else
                        refusal("Signature encoding must be 'plain' or 'base64'"))

    def test_every_fenced_example_of_the_reference(self):
        exchanges = list(fenced_exchanges())
        self.assertGreater(len(exchanges), 5)
        for program, request, text in exchanges:
            with self.subTest(request=request):
                head, _, body = text.partition("\n\n")
                line, content_type, _ = head.split("\n")
                response = Response(re.sub(r"^(Status:|HTTP/1\.0) ", "", line),
                                    content_type.removeprefix("Content-Type: "), body)
                self.assertEqual(text.replace("\n", "\r\n").encode(), response.written_by(program))
                self.expect(request, response, program)

    def expect_data(self, request, data):
        """This request, which is one to sign, signs these bytes."""
        path = self.upload / "data"
        path.write_bytes(data)
        output, exit_status = self.ask("sign.cgi", request)
        self.assertEqual(exit_status, 0, output)
        text = SIGNATURE.search(output.decode()).group()
        for name, verdict in (("data", "true"), ("letter.txt", "false")):
            self.expect(form(project=self.project, sig_verify="true", sig=text,
                             sig_file=self.upload / name), text_result(verdict))

    def parameter_requests(self, values):
        """A form and JSON with these values, under the names that the table of parameters has."""
        parameters, members = {}, {}
        for names, member, *_ in table(PARAMETERS):
            if names in values:
                value = values[names]
                name = code(names.rpartition(", ")[2])
                parameters[name] = json.dumps(value) if isinstance(value, bool) else value
                place, _, key = code(member).rpartition(".")
                part = members.setdefault(place, {}) if place else members
                part[key] = "verifySignature" if (key, value) == ("mode", "true") else value
        return form(**parameters), Request(JSON, compact(members).encode())

    def test_the_table_of_parameters(self):
        abc = self.projects / "abc"
        abc.write_bytes(b"ABC")
        signing = form(project=self.project, sig_create="true", sig_file=abc)
        text = SIGNATURE.search(self.ask("sign.cgi", signing)[0].decode()).group()
        values = {"`project`": str(self.project), "`sig_create`, `sig_verify`": "true",
                  "`encoding`": "plain", "`genpairs`": True, "`sig_data`": "QUJD",
                  "`sig_data_encoding`": "base64", "`sig`": text}
        with_file = {**values, "`sig_file`": str(abc)}
        del with_file["`sig_data`"]
        # What is answered without the row's parameter, to a form and to JSON.
        without = {
            "`project`": [refusal(PROJECT_MISSING)] * 2,
            "`sig_create`, `sig_verify`": [refusal(MODE_MISSING)] * 2,
            "`encoding`": [text_result("valid:true"), Response("200 OK", JSON, '{"valid":true}')],
            "`genpairs`": [text_result("true")] * 2,
            "`sig_data`": [refusal(INPUT_MISSING)] * 2,
            "`sig_data_encoding`": [text_result("valid:false")] * 2,
            "`sig_file`": [refusal(INPUT_MISSING)] * 2,
            "`sig`": [refusal(SIGNATURE_MISSING)] * 2,
        }
        others = {"string": (5, True, None, [], {}), "boolean": (1, "true", None, [], {})}
        rows = table(PARAMETERS)
        self.assertEqual([row[0] for row in rows], list(without))
        for name, _, json_type, default, _ in rows:
            whole = with_file if name == "`sig_file`" else values
            rest = {key: value for key, value in whole.items() if key != name}
            defaults = re.findall("`(.+?)`", default)
            self.assertEqual(not defaults, default.startswith("none"), default)
            for kind, expected in enumerate(without[name]):
                with self.subTest(name, kind=kind):
                    self.expect(self.parameter_requests(whole)[kind], text_result("valid:true"))
                    self.expect(self.parameter_requests(rest)[kind], expected)
                    if defaults:
                        word = defaults[min(kind, len(defaults) - 1)]
                        value = json.loads(word) if json_type == "boolean" else word
                        self.expect(self.parameter_requests({**rest, name: value})[kind], expected)
            for value in others[json_type]:
                with self.subTest(name, value=value):
                    _, request = self.parameter_requests({**whole, name: value})
                    self.expect(request, refusal(NO_JSON))

    def test_the_table_of_first_lines(self):
        rows = {name: cells for name, *cells in table(FIRST_LINES)}
        programs = {"begins with `nph-`": "nph-sign.cgi", "any other": "sign.cgi"}
        self.assertEqual(list(rows), list(programs))
        self.assertEqual([then for _, then in rows.values()],
                         ["`Content-Type: `, `Content-Length: N`, an empty line, the body",
                          "the same"])
        for name, program in programs.items():
            output, _ = self.ask(program, form(project="p"))
            body = MODE_MISSING.encode()
            begin = re.fullmatch("`(.+)` and the status", rows[name][0]).group(1)
            with self.subTest(program):
                self.assertEqual(output, begin.encode() + b"400 Bad Request\r\n"
                                 b"Content-Type: text/plain\r\n"
                                 b"Content-Length: %d\r\n\r\n%s" % (len(body), body))

    def signing_form(self, text):
        return Request(FORM, f"project={self.project}&sig_create=true&{text}".encode())

    def test_the_table_of_form_texts(self):
        for text, value in table(FORM_TEXTS):
            with self.subTest(text):
                request = self.signing_form(code(text))
                if value == "absent":
                    self.expect(request, refusal(INPUT_MISSING))
                else:
                    self.expect_data(request, code(value).encode())

    def test_the_table_of_decoded_values(self):
        rows = table(DECODED_VALUES)
        self.assertGreater(len(rows), 9)
        for text, written in rows:
            with self.subTest(text):
                self.expect_data(self.signing_form("sig_data=" + code(text)),
                                 bytes.fromhex(written))

    def test_the_table_of_json_bodies(self):
        rows = table(JSON_BODIES)
        self.assertEqual({verdict for _, verdict in rows}, {"taken", "refused"})
        for text, verdict in rows:
            with self.subTest(text):
                self.expect(Request(JSON, code(text).encode()),
                            refusal(MODE_MISSING if verdict == "taken" else NO_JSON))

    def test_json_may_begin_with_a_byte_order_mark_and_hold_no_zero_byte(self):
        self.expect(Request(JSON, b"\xef\xbb\xbf{} \t\r\n"), refusal(MODE_MISSING))
        for body in (b"{}\0", b"\0{}", b'{"a":"\xff"}'):
            self.expect(Request(JSON, body), refusal(NO_JSON))

    def test_the_table_of_base64_texts(self):
        for text, written in table(BASE64_TEXTS):
            with self.subTest(text):
                request = Request(JSON, compact({
                    "mode": "generateSignature", "project": str(self.project),
                    "signature": {"data": code(text), "encoding": "base64"}}).encode())
                if written == "refused":
                    self.expect(request, refusal("Invalid base64 data"))
                elif written == "none":
                    self.expect(request, refusal(NOT_MADE))
                    self.expect(verifying(request, "S"), text_result("false"))
                else:
                    self.expect_data(request, bytes.fromhex(written))

    def test_the_table_of_lengths(self):
        # Each body is complete after 15 bytes, and the next one spoils it.
        kinds = ((FORM, b"sig_create=truex", NO_FORM, PROJECT_MISSING),
                 (JSON, b"{             }x", NO_JSON, MODE_MISSING))
        rows = table(LENGTHS)
        self.assertEqual({cell for _, *cells in rows for cell in cells}, {"15", "no body", "ends"})
        for text, *cells in rows:
            length = {"(not set)": None, "(empty)": ""}.get(text, text[1:-1])
            for (content_type, body, no_body, complete), cell in zip(kinds, cells, strict=True):
                with self.subTest(length=length, content_type=content_type):
                    end = self.run_program("sign.cgi", body, content_type, length)
                    if cell == "ends":
                        self.assertEqual((end.returncode, end.stdout), (-signal.SIGABRT, b""))
                        continue
                    response = refusal(no_body if cell == "no body" else complete)
                    self.assertEqual(end.stdout, response.written_by("sign.cgi"))

    def test_a_body_may_fall_short_in_a_form_alone(self):
        for body, content_type, message in ((b"sig_create=true", FORM, PROJECT_MISSING),
                                            (b"sig_create=true", None, PROJECT_MISSING),
                                            (b"", FORM, NO_FORM), (b"{}", JSON, NO_JSON)):
            end = self.run_program("sign.cgi", body, content_type, "100")
            self.assertEqual(end.stdout, refusal(message).written_by("sign.cgi"))

    def test_refusals_come_in_the_order_of_the_table(self):
        faults = {"sig_verify": "true", "project": self.projects / "no.project", "sig": "x",
                  "sig_data": "Q", "sig_data_encoding": "base64"}
        told = []
        sent = {}
        for name, value in [(None, None), ("sig_data_encoding", "json"), *faults.items()]:
            sent.update({name: value} if name else {})
            told.append(self.ask("sign.cgi", form(**sent))[0].decode().rpartition("\r\n")[2])
        sent.update(sig_verify="", sig_create="true", sig_data="QQ==")
        told.append(self.ask("sign.cgi", form(**sent))[0].decode().rpartition("\r\n")[2])
        self.assertEqual(told, [response.body for response, _, occurs in response_rows()
                                if occurs and response.status == "400 Bad Request"
                                and response.body != NO_JSON])

    def test_what_wins_over_what(self):
        name, data = {"project": self.project}, {"sig_data": "Dear reader"}
        self.expect(form(**name, sig_create="true", sig_verify="true", **data),
                    refusal(SIGNATURE_MISSING))
        verify = {**name, **data, "sig_verify": "true", "sig": "x"}
        self.expect(form(**verify, encoding="xml"), text_result("false"))
        self.expect(form(**verify, encoding="json", genpairs="true"),
                    Response("200 OK", JSON, '{"valid":false}'))
        self.expect(form(**verify, sig_data_encoding="BASE64"), text_result("false"))
        for value, on in (("", True), ("0", True), ("False", True), ("false", False)):
            self.expect(form(**verify, genpairs=value),
                        text_result("valid:false" if on else "false"))

    def test_the_table_of_zero_bytes(self):
        output, _ = self.ask("sign.cgi", form(project=f"{self.project}\0x", sig_create="true",
                                              sig_file=f"{self.upload}/letter.txt\0x"))
        text = SIGNATURE.search(output.decode()).group()
        verify = {"project": str(self.project), "sig_verify": "true", "sig_data": "Dear reader"}

        def in_json(**members):
            return Request(JSON, json.dumps({"mode": "verifySignature", "encoding": "plain",
                                             "project": verify["project"], **members}).encode())

        cases = {
            "the body of a form": [
                (Request(FORM, form(**verify, sig=text).body + b"\0&sig_verify=no"),
                 text_result("true"))],
            "the body of a JSON request": [
                (Request(JSON, in_json().body + b"\0"), refusal(NO_JSON))],
            "a path or signature, as `%00` or `\\u0000`": [
                (form(**verify, sig=text + "\0x"), text_result("true")),
                (in_json(signature={"data": "Dear reader", "signature": text + "\0x"}),
                 text_result("true")),
                (form(project="\0x", sig_create="true", sig_data="x"), refusal(NOT_MADE)),
                (form(**verify, sig="\0"), text_result("false"))],
            "a name or word": [
                (form(**verify | {"sig_verify": "true\0"}, sig=text), refusal(MODE_MISSING)),
                (form(**verify, sig=text, **{"sig\0": "x"}), text_result("true")),
                (form(**verify, sig=text, encoding="json\0"), text_result("true"))],
        }
        sign = {"project": self.project, "sig_create": "true"}
        signed = {
            "plain data": (form(**sign, sig_data="a\0b"), b"a\0b"),
            "base64 data": (form(**sign, sig_data="Q\0==", sig_data_encoding="base64"), b"@"),
        }
        self.assertEqual({place for place, _ in table(ZERO_BYTES)}, cases.keys() | signed.keys())
        for place, exchanges in cases.items():
            for request, response in exchanges:
                with self.subTest(place, request=request):
                    self.expect(request, response)
        for place, (request, data) in signed.items():
            with self.subTest(place):
                self.expect_data(request, data)

    def test_the_table_of_ends(self):
        (_, length), *others = table(ENDS)
        self.assertEqual(len(others), 3)  # faults by number bring these about
        for content_type in (FORM, JSON):
            for text in (str(2**63 - 1), str(2**64 - 2)):
                end = self.run_program("sign.cgi", b"", content_type, text)
                self.assertEqual((end.returncode, end.stdout), (-signal.Signals[length], b""))

    def test_the_table_of_differences(self):
        (text,) = {SIGNATURE.search(response.body).group()
                   for name, _, _, response in response_examples() if name == "form-sign"}
        damaged = bytearray(self.project.read_bytes())
        damaged[-1] ^= 1
        (self.projects / "damaged.project").write_bytes(damaged)
        (self.projects / "empty.project").write_bytes(b"VLT2" + bytes(20))
        (self.projects / "folder.project").mkdir()
        subprocess.run([self.programs / "projectctl", "strip", self.project,
                        self.projects / "public.project"], check=True)
        data = {"sig_create": "true", "sig_data": "Dear reader"}
        files = [form(project=self.project, sig_create="true", sig_file=self.upload / name)
                 for name in ("no.txt", ".")]
        no, damaged, folder, empty, public = (
            form(project=self.projects / f"{name}.project", **data)
            for name in ("no", "damaged", "folder", "empty", "public"))
        # Requests that sign, and the signature with which they verify.
        cases = {
            "project or file missing, unreadable or damaged": ([no, damaged, folder, *files], text),
            "key not complete": ([empty], text),
            "project without a private scalar": ([public], text),
            "malformed signature": ([form(project=self.project, sig="S", sig_create="true",
                                          sig_data="Reader")], "S"),
        }
        verdicts = {"200, not valid": "false", "as with it": "true"}
        rows = {name: cells for name, *cells in table(DIFFERENCES)}
        self.assertEqual(list(rows), list(cases))
        for name, (requests, signature) in cases.items():
            signing, verdict = rows[name]
            for request in requests:
                with self.subTest(name, request=request):
                    if signing == "not looked at":
                        self.expect_data(request, b"Reader")
                    else:
                        self.assertEqual(signing, f"400 `{NOT_MADE}`")
                        self.expect(request, refusal(NOT_MADE))
                    self.expect(verifying(request, signature), text_result(verdicts[verdict]))


if __name__ == "__main__":
    Exchanges.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
