"""A web server that gives one answer to every request."""

import http.server
import threading


class StandInServer(http.server.ThreadingHTTPServer):
    """Answers until its block ends, and keeps the content types that it was sent.

    With a `context` of the module ssl, it is an https server.
    """

    def __init__(self, status, content_type, body, headers=None, context=None):
        seen = self.content_types = []

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_POST(self):
                seen.append(self.headers["Content-Type"])
                self.rfile.read(int(self.headers["Content-Length"]))
                self.send_response(status)
                for name, value in {"Content-Type": content_type, "Content-Length": str(len(body)),
                                    **(headers or {})}.items():
                    self.send_header(name, value)
                self.end_headers()
                self.wfile.write(body)

            def log_message(self, *_):
                pass

        super().__init__(("127.0.0.1", 0), Handler)
        if context:
            self.socket = context.wrap_socket(self.socket, server_side=True)
        self.url = f"http{'s' if context else ''}://127.0.0.1:{self.server_port}/sign.cgi"

    def __enter__(self):
        self.thread = threading.Thread(target=self.serve_forever, args=(0.02,))
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.shutdown()
        self.thread.join()
        self.server_close()

    def handle_error(self, *_):
        pass  # a client that leaves is none of the server's
