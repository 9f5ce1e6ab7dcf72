"""An HTTPS server on the loopback interface that publishes updates, and the certificate that only the tests trust."""
import http.server
import ssl
import subprocess
import threading


class Certificate:
    def __init__(self, folder):
        self.file, self.key, self.trusted = folder / "certificate.pem", folder / "key.pem", folder / "trusted"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", self.key, "-out", self.file,
                        "-days", "2", "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1"], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        # A folder of trusted certificates as the system keeps them, with this one alone.
        self.trusted.mkdir()
        (self.trusted / "test.pem").write_bytes(self.file.read_bytes())
        subprocess.run(["openssl", "rehash", self.trusted], check=True)


class UpdateServer:
    """Serves the files of `folder` and keeps the paths that were asked for.

    `hold` names a path and a share of it: so much is sent, and the rest only when `let_go` is called.
    """

    def __init__(self, folder, certificate):
        self.folder, self.asked, self.hold, self.held = folder, [], None, threading.Event()
        self.going = threading.Event()
        server = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                server.answer(self)

            def log_message(self, *_):
                pass

        self.http = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.http.daemon_threads = True
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate.file, certificate.key)
        self.http.socket = context.wrap_socket(self.http.socket, server_side=True)
        self.url = f"https://127.0.0.1:{self.http.server_port}"
        threading.Thread(target=self.http.serve_forever, daemon=True).start()

    def answer(self, request):
        content = (self.folder / request.path.lstrip("/")).read_bytes()
        request.send_response(200)
        request.send_header("Content-Length", str(len(content)))
        request.end_headers()
        self.asked.append(request.path)
        try:
            if self.hold and self.hold[0] == request.path:
                first = int(len(content) * self.hold[1])
                request.wfile.write(content[:first])
                content = content[first:]
                self.held.set()
                self.going.wait()
            request.wfile.write(content)
        except OSError:
            pass  # The client has closed the connection, as in some tests.

    def hold_back(self, path, share):
        self.held.clear()
        self.going.clear()
        self.hold = (path, share)

    def let_go(self):
        self.hold = None
        self.going.set()

    def close(self):
        self.let_go()
        self.http.shutdown()
        self.http.server_close()
