#!/usr/bin/env python3
"""The HTTPS side of another machine in the demo's tailnet.

Hands requests for /ostrelle/ to that machine's status server, once its gateway has accepted
the token, and all others to the gateway.
Usage: tailnet_front.py ADDRESS PORT CERTIFICATE GATEWAY_URL STATUS_URL
"""

import http.server
import ssl
import sys
import urllib.error
import urllib.request

STATUS_PREFIX = "/ostrelle/"
PATIENCE_SECONDS = 60
MAX_BODY_BYTES = 1024 * 1024


class Request(http.server.BaseHTTPRequestHandler):
    timeout = PATIENCE_SECONDS

    def do_GET(self):
        self._pass_on(None)

    def do_POST(self):
        length = min(int(self.headers.get("Content-Length", 0)), MAX_BODY_BYTES)
        self._pass_on(self.rfile.read(length))

    def _pass_on(self, body):
        gateway, status = self.server.gateway, self.server.status
        if not self.path.startswith(STATUS_PREFIX):
            self._answer(*self._ask(gateway + self.path, body))
            return
        answer = self._ask(gateway + "/v1/models", None)
        if answer[0] == 200:
            answer = self._ask(status + "/" + self.path.removeprefix(STATUS_PREFIX), body)
        self._answer(*answer)

    def _ask(self, url, body):
        headers = {
            name: self.headers[name]
            for name in ("Authorization", "Content-Type")
            if name in self.headers
        }
        request = urllib.request.Request(url, data=body, headers=headers)
        try:
            with urllib.request.urlopen(request, timeout=PATIENCE_SECONDS) as answer:
                return answer.status, answer.read()
        except urllib.error.HTTPError as refusal:
            with refusal:
                return refusal.code, refusal.read()
        except OSError:
            return 502, b""

    def _answer(self, status, body):
        self.send_response(status)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, format, *args):
        pass


class Front(http.server.ThreadingHTTPServer):
    def __init__(self, address, certificate, gateway, status):
        super().__init__(address, Request)
        self.gateway = gateway
        self.status = status
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate)
        # The handshake belongs to the thread of the one client, who may not hurry.
        self.socket = context.wrap_socket(
            self.socket, server_side=True, do_handshake_on_connect=False
        )

    def handle_error(self, request, client_address):
        pass  # a client that went away


def main():
    address, port, certificate, gateway, status = sys.argv[1:]
    # Nothing here is to be asked of a proxy.
    urllib.request.install_opener(urllib.request.build_opener(urllib.request.ProxyHandler({})))
    with Front((address, int(port)), certificate, gateway, status) as front:
        front.serve_forever()


if __name__ == "__main__":
    main()
