"""What a web page can have a browser do at each server: sign, if it came from there, and nothing else.

    foreign_page_test.py FOLDER SERVER...    FOLDER holds the built programs; SERVER as in servers.py
"""

import http.server
import os
import sys
import threading
import unittest
from pathlib import Path

import servers
from browser import start_browser
from counted_programs import counting_server, starts
from guide_blocks import blocks
from service import Project, form

PAGE = b"<!DOCTYPE html>\n<title>A page</title>\n"
NAMED = "sign.example.org"  # what the administrator has added
FOREIGN = "evil.example"  # leads to this machine as well, once a stranger has rebound it

# Each sends the form `body` to `url`, and then hands `done` what it was shown of the answer.
WAYS = {
    "a form": """
        const frame = document.createElement("iframe");
        frame.name = "answer";
        document.body.appendChild(frame);
        const form = document.body.appendChild(document.createElement("form"));
        Object.assign(form, {action: url, method: "post", target: "answer"});
        for (const [name, value] of new URLSearchParams(body)) {
            const field = form.appendChild(document.createElement("input"));
            Object.assign(field, {name, value});
        }
        frame.onload = () => done(frame.contentDocument?.body.innerText ?? "");
        form.submit();""",
    "a fetch": """
        fetch(url, {method: "POST", body: new URLSearchParams(body)})
            .then((answer) => answer.text()).then(done, () => done(""));""",
    "a fetch without CORS": """
        fetch(url, {method: "POST", mode: "no-cors", body: new URLSearchParams(body)})
            .then((answer) => answer.text()).then(done, () => done(""));""",
    "a frame of no origin": """
        onmessage = () => done("");
        const frame = document.createElement("iframe");
        frame.sandbox = "allow-scripts";
        frame.srcdoc = `<script>
            fetch("${url}", {method: "POST", mode: "no-cors", body: new URLSearchParams("${body}")})
                .finally(() => parent.postMessage("", "*"));
        </` + "script>";
        document.body.appendChild(frame);""",
}
OF_ITS_OWN = ("a form", "a fetch", "a fetch without CORS")


class Handler(http.server.BaseHTTPRequestHandler):
    """Hands out the page, and takes whatever is sent to it."""

    def do_GET(self):
        self.send_response(200)
        self.send_header("Content-Type", "text/html")
        self.send_header("Content-Length", str(len(PAGE)))
        self.end_headers()
        self.wfile.write(PAGE)

    def do_POST(self):
        self.server.taken.append(self.rfile.read(int(self.headers["Content-Length"])).decode())
        self.do_GET()

    def log_message(self, *_):
        pass


class TestForeignPage(unittest.TestCase):
    programs = None
    kinds = ()

    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(servers.temporary_folder())
        static = cls.folder / "static"
        static.mkdir()
        (static / "index.html").write_bytes(PAGE)
        cls.project = Project(cls.programs / "projectctl", cls.folder)
        cls.body = form(project=cls.project.path, sig_create="true", sig_data="x").decode()
        cls.servers = [
            cls.enterClassContext(counting_server(kind, cls.programs, cls.folder, static=static,
                                                  own=blocks("Letting others in", kind.language)[0]))
            for kind in cls.kinds]
        cls.stranger = cls.start_stranger()
        cls.browser = start_browser(
            cls, f"--host-resolver-rules=MAP {FOREIGN} 127.0.0.1, MAP {NAMED} 127.0.0.1")

    @classmethod
    def start_stranger(cls):
        """The server of a stranger, on another port of this machine."""
        stranger = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        stranger.taken = []
        thread = threading.Thread(target=stranger.serve_forever, args=(0.02,))
        thread.start()
        cls.addClassCleanup(stranger.server_close)
        cls.addClassCleanup(thread.join)
        cls.addClassCleanup(stranger.shutdown)
        return stranger

    def send(self, page, way, url):
        """What the page at this address is shown of the answer that it gets from there."""
        self.browser.get(page)
        return self.browser.execute_async_script(
            f"const [url, body, done] = arguments; {WAYS[way]}", url, self.body)

    def pages_and_addresses(self, port, of_the_stranger):
        """Pages, and addresses of the program at this port that they have no right to."""
        for page_host, host in ((FOREIGN, "127.0.0.1"), (FOREIGN, "localhost"), (FOREIGN, NAMED),
                                ("localhost", "localhost"), ("127.0.0.1", "127.0.0.1"),
                                (NAMED, NAMED), ("localhost", NAMED)):
            yield f"http://{page_host}:{of_the_stranger}/", f"http://{host}:{port}/sign.cgi"
        # The same origin to the browser: the name led elsewhere when it asked for the page.
        yield f"http://{FOREIGN}:{port}/", f"http://{FOREIGN}:{port}/sign.cgi"

    def test_of_a_stranger_gets_nothing_signed(self):
        for server in self.servers:
            kind = type(server).__name__
            for page, url in self.pages_and_addresses(server.port, self.stranger.server_port):
                for way in WAYS:
                    with self.subTest(kind, page=page, url=url, way=way):
                        before = starts(server)
                        shown = self.send(page, way, url)
                        self.assertEqual(starts(server), before, shown)

    def test_of_a_stranger_reaches_a_server_that_lets_everybody_in(self):
        url = f"http://localhost:{self.stranger.server_port}/sign.cgi"
        for page in (f"http://{FOREIGN}:{self.stranger.server_port}/", self.servers[0].url("")):
            for way in WAYS:
                with self.subTest(page, way=way):
                    self.stranger.taken.clear()
                    self.send(page, way, url)
                    self.assertEqual(self.stranger.taken, [self.body])

    def test_of_the_server_itself_signs(self):
        for server in self.servers:
            for host in ("localhost", "127.0.0.1", NAMED):
                for way in OF_ITS_OWN:
                    with self.subTest(type(server).__name__, host=host, way=way):
                        before = starts(server)
                        page = f"http://{host}:{server.port}/"
                        shown = self.send(page, way, page + "sign.cgi")
                        self.assertTrue(self.project.verifies(shown, b"x"), shown)
                        self.assertEqual(starts(server), before + 1)


if __name__ == "__main__":
    TestForeignPage.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    TestForeignPage.kinds = [servers.SERVERS[name] for name in sys.argv[2:]]
    # The servers are on this machine: nothing goes through a proxy.
    for variable in [name for name in os.environ if name.lower().endswith("_proxy")]:
        del os.environ[variable]
    unittest.main(argv=sys.argv[:1])
