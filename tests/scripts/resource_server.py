"""Serves resources over HTTP, HTTPS and FTP on this machine, some of them badly, for the tests of the URI providers.

Prints the three ports in one line and serves until its standard input ends, so that it never outlives the test.
"""

import http.server
import pathlib
import socketserver
import ssl
import sys
import threading

CERTIFICATE = pathlib.Path(__file__).parent.parent / "data" / "untrusted_server.pem"
ALL_BYTES = bytes(range(256))
LARGE = ALL_BYTES * (20 * 4096)  # 20 MB.
PATIENCE = 20  # Seconds that a request waits for another one.

slow_has_begun = threading.Event()
slow_may_end = threading.Event()


class Page(http.server.BaseHTTPRequestHandler):
    """One method for each path: "/cut-chunks" is answered by `get_cut_chunks`."""

    protocol_version = "HTTP/1.1"  # Which has chunks.

    def do_GET(self):
        if self.path.startswith("http://"):  # Asked for as a proxy is asked.
            self.answer(b"through the proxy: " + self.path.encode())
            return
        name = self.path.lstrip("/").partition("?")[0].replace("-", "_")
        getattr(self, "get_" + name, self.get_missing)()

    def log_message(self, *arguments):
        pass

    def begin(self, status=200, **headers):
        self.send_response(status)
        for name, value in headers.items():
            self.send_header(name.replace("_", "-"), value)
        self.send_header("Connection", "close")
        self.end_headers()

    def answer(self, body, status=200, **headers):
        self.begin(status, Content_Length=len(body), **headers)
        self.wfile.write(body)

    def get_found(self):
        self.answer(b"a page")

    def get_bytes(self):
        self.answer(ALL_BYTES, Content_Type="text/plain; charset=utf-16")

    def get_packed(self):
        self.answer(b"packed", Content_Encoding="gzip")

    def get_empty(self):
        self.begin(204)

    def get_echo(self):
        self.answer(self.path.encode())

    def get_missing(self):
        self.answer(b"an error page", 404)

    def get_failing(self):
        self.answer(b"an error page", 500)

    def get_redirect(self):
        self.begin(302, Location="/found", Content_Length=0)

    def get_moved(self):
        self.begin(301, Location=f"http://127.0.0.1:{self.server.server_port}/redirect", Content_Length=0)

    def get_circle(self):
        self.begin(302, Location="/circle", Content_Length=0)

    def get_to_file(self):
        self.begin(302, Location="file:///etc/hostname", Content_Length=0)

    def get_cut(self):
        self.begin(Content_Length=1000)
        self.wfile.write(b"x" * 100)

    def get_cut_chunks(self):
        self.begin(Transfer_Encoding="chunked")
        self.wfile.write(b"64\r\n" + b"x" * 100 + b"\r\n")

    def get_unmeasured(self):
        self.begin()
        self.wfile.write(b"as long as it is")

    def get_chunks(self):
        self.begin(Transfer_Encoding="chunked")
        self.wfile.write(b"2\r\na \r\n4\r\npage\r\n0\r\n\r\n")

    def get_nothing(self):
        self.close_connection = True

    def get_nonsense(self):
        self.wfile.write(b"nonsense\r\n\r\n")
        self.close_connection = True

    def get_large(self):
        self.answer(LARGE)

    def get_slow(self):
        """Answers once "/release" was asked for."""
        slow_has_begun.set()
        released = slow_may_end.wait(PATIENCE)
        slow_has_begun.clear()
        slow_may_end.clear()
        self.answer(b"released" if released else b"given up")

    def get_begun(self):
        """Answers once "/slow" was asked for."""
        self.answer(b"begun" if slow_has_begun.wait(PATIENCE) else b"given up")

    def get_release(self):
        slow_may_end.set()
        self.answer(b"done")


class Session(socketserver.StreamRequestHandler):
    """As much of FTP as reading takes. Anonymous users, and one with the name "reader" and the password "secret"."""

    FILES = {
        "/file.bin": ALL_BYTES,
        "/empty": b"",
        "/folder/two words é.txt": b"deep\r\n",
        "/cut": b"x" * 100,
    }
    FOLDERS = {"/": "file.bin\r\n", "/folder": "two words\r\n"}
    folder = "/"
    user = ""
    passive = None

    def handle(self):
        self.reply("220 Ready.")
        while line := self.rfile.readline().decode().rstrip("\r\n"):
            verb, _, argument = line.partition(" ")
            if verb == "QUIT":
                break
            getattr(self, "do_" + verb, self.unknown)(argument)

    def reply(self, text):
        self.wfile.write(text.encode() + b"\r\n")

    def unknown(self, argument):
        self.reply("502 Not implemented.")

    def path_of(self, name):
        return name if name.startswith("/") else self.folder.rstrip("/") + "/" + name

    def do_USER(self, name):
        self.user = name
        self.reply("331 The password?")

    def do_PASS(self, password):
        known = self.user == "anonymous" or (self.user, password) == ("reader", "secret")
        self.reply("230 Welcome." if known else "530 Login incorrect.")

    def do_TYPE(self, kind):
        self.reply("200 So be it.")

    def do_PWD(self, argument):
        self.reply(f'257 "{self.folder}"')

    def do_CWD(self, name):
        path = self.folder if name in ("", ".") else self.path_of(name)
        if path in self.FOLDERS:
            self.folder = path
            self.reply("250 There.")
        else:
            self.reply("550 No such folder.")

    def do_PASV(self, argument):
        self.passive = socketserver.TCPServer(("127.0.0.1", 0), None)
        port = self.passive.server_address[1]
        self.reply(f"227 Entering passive mode (127,0,0,1,{port >> 8},{port & 255}).")

    def send(self, content, announced):
        self.reply(f"150 Here it comes ({announced} bytes).")
        connection, _ = self.passive.socket.accept()
        connection.sendall(content)
        connection.close()
        self.passive.server_close()
        self.reply("226 Done." if len(content) == announced else "426 Broken off.")

    def do_RETR(self, name):
        content = self.FILES.get(self.path_of(name))
        if content is None:
            self.passive.server_close()
            self.reply("550 No such file.")
        else:
            self.send(content, 1000 if name == "cut" else len(content))

    def do_LIST(self, name):
        content = self.FOLDERS[self.path_of(name) if name else self.folder].encode()
        self.send(content, len(content))


class FtpServer(socketserver.ThreadingTCPServer):
    daemon_threads = True


def main():
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(CERTIFICATE)
    servers = [http.server.ThreadingHTTPServer(("127.0.0.1", 0), Page) for _ in range(2)]
    servers[1].socket = context.wrap_socket(servers[1].socket, server_side=True)
    servers.append(FtpServer(("127.0.0.1", 0), Session))
    for server in servers:
        threading.Thread(target=server.serve_forever, daemon=True).start()
    print(*(server.server_address[1] for server in servers), flush=True)
    sys.stdin.read()


if __name__ == "__main__":
    main()
