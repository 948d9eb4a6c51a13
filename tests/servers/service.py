"""A project behind a server of servers.py, and requests to it."""

import http.client
import json
import re
import socket
import subprocess
import urllib.parse
from dataclasses import dataclass
from pathlib import Path

from servers import let_account_read

FORM = "application/x-www-form-urlencoded"
JSON = "application/json"
SECONDS_FOR_AN_ANSWER = 120
SIGNATURE = re.compile(r"[A-Za-z0-9+/]{4,56}={0,2}\Z")


@dataclass(frozen=True)
class Answer:
    status: int
    content_type: str
    body: bytes


def text_answer(body, status=200):
    return Answer(status, "text/plain", body.encode())


def json_answer(value):
    return Answer(200, JSON, json.dumps(value, separators=(",", ":")).encode())


def form(**parameters):
    return urllib.parse.urlencode(parameters).encode()


def ask_on(connection, body, content_type, path="/sign.cgi", headers=None):
    """One request over a connection that may be used again, and its answer."""
    connection.request("POST", path, body, {"Content-Type": content_type, **(headers or {})})
    response = connection.getresponse()
    answer = Answer(response.status, response.headers["Content-Type"], response.read())
    length = response.headers["Content-Length"]
    if response.status in (200, 400) and length != str(len(answer.body)):
        raise AssertionError(f"Content-Length {length} for {answer}")
    return answer


class Project:
    """A project with a file to sign, made by projectctl, which judges signatures as well."""

    def __init__(self, projectctl, folder, name="served"):
        self.projectctl = projectctl
        self.path = Path(folder) / f"{name}.project"
        self.file = Path(folder) / f"{name}.letter"
        self.file.write_bytes(b"Dear reader\0,\n")
        subprocess.run([projectctl, "create", self.path], check=True)
        # The servers' account can read it and not replace it, as an administrator would have it.
        let_account_read(self.path)

    def verifies(self, signature, data):
        result = subprocess.run([self.projectctl, "verify", self.path, signature], input=data,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
        return {b"true\n": True, b"false\n": False}[result.stdout]

    def sign(self, data):
        return subprocess.run([self.projectctl, "sign", self.path], input=data, check=True,
                              stdout=subprocess.PIPE).stdout.decode().strip()


class Service:
    """Requests about one project to one server."""

    def __init__(self, server, project):
        self.server, self.project = server, project

    def connect(self):
        return http.client.HTTPConnection("127.0.0.1", self.server.port,
                                          timeout=SECONDS_FOR_AN_ANSWER)

    def ask(self, body, content_type=FORM, name="sign.cgi", headers=None):
        connection = self.connect()
        try:
            return ask_on(connection, body, content_type, f"/{name}", headers)
        finally:
            connection.close()

    def ask_form(self, name="sign.cgi", **parameters):
        return self.ask(form(project=self.project.path, **parameters), FORM, name)

    def ask_json(self, mode, name="sign.cgi", **signature):
        request = {"mode": mode, "project": str(self.project.path), "signature": signature}
        return self.ask(json.dumps(request).encode(), JSON, name)

    def sign(self, data):
        """A signature over data, which may be any bytes but none, by way of a form."""
        answer = self.ask_form(sig_create="true", sig_data=data)
        text = answer.body.decode()
        if answer != text_answer(text) or not SIGNATURE.match(text):
            raise AssertionError(answer)
        return text

    def raw(self, request, *, source="127.0.0.1"):
        """What a server writes in answer to these bytes until it closes the connection."""
        with socket.create_connection(("127.0.0.1", self.server.port), SECONDS_FOR_AN_ANSWER,
                                      (source, 0)) as connection:
            connection.sendall(request)
            return b"".join(iter(lambda: connection.recv(65536), b""))
