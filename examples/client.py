#!/usr/bin/env python3
"""Signs and verifies through sign.cgi, as a program or as a module of two functions:

    client.py [--form] sign PROJECT data|base64|file VALUE
    client.py [--form] verify PROJECT data|base64|file VALUE SIGNATURE

VALUE of data and base64 is text, @FILE for the bytes of a local file, or - for standard input. Such
bytes are sent as a form, text in JSON unless --form asks for one. A server takes requests of 8 MiB,
which hold some 3.3 MB of random bytes. PROJECT and a file's path are paths of the server, whose
program is at SIGN_URL, or http://127.0.0.1/sign.cgi. Prints the signature, true or false. Exit status:
0 signed or valid, 1 not valid, 2 wrong usage, 3 refused by the program, 4 no answer from it.
"""

import http.client
import json
import os
import sys
import urllib.error
import urllib.parse
import urllib.request

URL = os.environ.get("SIGN_URL", "http://127.0.0.1/sign.cgi")
TOO_LARGE = ", request too large; put the data into a file on the server and name it as 'file'"
USAGE = "usage: client.py [--form] sign|verify PROJECT data|base64|file VALUE [SIGNATURE]"


class Refused(Exception):
    """The program's own words."""


class NoAnswer(Exception):
    """What came instead of an answer from the program."""


class NoRedirect(urllib.request.HTTPRedirectHandler):
    def redirect_request(self, *_):
        """A request that is sent on comes without its body: the redirection is the answer."""


def sign(project, what, value, form=False):
    """The text of a signature over `value`; `what` says whether it is data, base64 or a file.

    Bytes are sent as a form, because JSON can hold only text.
    """
    return ask("signature", project, what, value, "", form)


def verify(project, what, value, signature, form=False):
    # The name that genPairs puts in front is not part of the signature: with it, nothing verifies.
    signature = signature.removeprefix("signature:")
    return ask("valid", project, what, value, signature, form) == "true"


def ask(result, project, what, value, signature, form):
    # Base64 data of more than three bytes is signed with a zero byte in front of its last group.
    # What was signed as base64 is verified as base64.
    member, writing = ("data", "base64") if what == "base64" else (what, "plain")
    mode, operation = {"signature": ("generateSignature", "sig_create"),
                       "valid": ("verifySignature", "sig_verify")}[result]
    if form or isinstance(value, bytes):
        form = True
        # A "+" in form text is a space: urlencode escapes it, and "=", "&" and "%".
        body = urllib.parse.urlencode({
            operation: "true", "genpairs": "true", "project": project, f"sig_{member}": value,
            "sig_data_encoding": writing, "sig": signature}, errors="surrogateescape")
        content_type = "application/x-www-form-urlencoded"
    else:
        body = json.dumps({"mode": mode, "project": project, "signature": {
            member: value, "encoding": writing, "signature": signature}})
        # These bytes alone. With a charset behind them, the body would be read as a form.
        content_type = "application/json"
    try:
        request = urllib.request.Request(URL, body.encode(), {"Content-Type": content_type})
        with urllib.request.build_opener(NoRedirect).open(request, timeout=60) as response:
            status = f"HTTP status {response.status} {response.headers['Content-Type']}"
            text = whole_text(response)
    except urllib.error.HTTPError as error:
        if error.code == 400 and error.headers.get("Content-Type", "").startswith("text/plain"):
            raise Refused(whole_text(error)) from None
        hint = TOO_LARGE if error.code == 413 else ""
        raise NoAnswer(f"no answer from the program: HTTP status {error.code}{hint}") from None
    except (OSError, ValueError, http.client.HTTPException) as error:
        raise NoAnswer(f"no answer from {URL}: {error}") from None
    try:
        # A form is answered in a pair, name:value.
        answer = dict([text.split(":", 1)]) if form else json.loads(text)
        answer = {True: "true", False: "false"}.get(answer[result], answer[result])
        if answer in ("true", "false") if result == "valid" else answer != "":
            return answer
    except (KeyError, ValueError, TypeError):
        pass
    raise NoAnswer(f"no answer from the program: {status}")


def whole_text(response):
    try:
        return response.read().decode(errors="replace")
    except (OSError, http.client.HTTPException) as error:
        raise NoAnswer(f"no answer from {URL}: {error}") from None


def main(words):
    form = words[:1] == ["--form"]
    operation, *operands = words[form:] or [""]
    function, count = {"sign": (sign, 3), "verify": (verify, 4)}.get(operation, (None, 0))
    if len(operands) != count or operands[1:2] not in (["data"], ["base64"], ["file"]):
        return complain(USAGE, 2)
    try:
        if operands[1] != "file":
            operands[2] = local_bytes(operands[2])
    except OSError as error:
        return complain(f"{error.filename}: {error.strerror}", 2)
    try:
        answer = function(*operands, form=form)
    except Refused as refusal:
        return complain(f"refused: {refusal}", 3)
    except NoAnswer as reason:
        return complain(reason, 4)
    print({True: "true", False: "false"}.get(answer, answer))
    return 0 if answer else 1


def local_bytes(value):
    """The bytes that @FILE or - stands for, or the text itself."""
    if value == "-":
        return sys.stdin.buffer.read()
    if not value.startswith("@"):
        return value
    with open(value[1:], "rb") as file:
        return file.read()


def complain(reason, status):
    print(f"client.py: {reason}", file=sys.stderr)
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
