"""A session with a server on another thread: JSON, redirections, cookies, an error."""

import http.server
import json
import threading

import requests

import ling


class Handler(http.server.BaseHTTPRequestHandler):
    def do_POST(self):
        content = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
        self.answer(200, json.dumps({"sum": sum(content["items"])}).encode(), ("Set-Cookie", "seen=yes"))

    def do_GET(self):
        if self.path == "/old":
            self.answer(302, b"", ("Location", "/new"))
        else:
            self.answer(200 if self.path == "/new" else 404, self.headers.get("Cookie", "").encode())

    def answer(self, status, content, *headers):
        self.send_response(status)
        for header in (("Content-Length", str(len(content))), *headers):
            self.send_header(*header)
        self.end_headers()
        self.wfile.write(content)

    def log_message(self, *_arguments):
        pass


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
threading.Thread(target=server.serve_forever, daemon=True).start()
address = f"http://127.0.0.1:{server.server_port}"
with requests.Session() as session:
    session.trust_env = False
    items = ling.python.to_python(ling.List([1, 2, 3]))
    assert session.post(address, json={"items": items}).json() == {"sum": 6}
    moved = session.get(address + "/old")
    assert moved.text == "seen=yes" and len(moved.history) == 1
    try:
        session.get(address + "/missing").raise_for_status()
    except requests.HTTPError as error:
        print("requests", error.response.status_code)
server.shutdown()
