#!/usr/bin/env python3
"""A broadband server that fails as real ones do, on 127.0.0.1 only.

  fault_server.py ROOT CERT KEY

Serves ROOT's files, each fault on a path of its own, over HTTP and over TLS with a
self-signed certificate; a third port is bound but never listens, so connecting to it is
refused. Prints {"http": port, "https": port, "refused": port} on one line, then serves
until its standard input closes (or ten minutes pass), so it never outlives the test.

  /status/CODE/...    that status with a short page
  /loop/...           a redirect to itself
  /empty/...          200 with no body
  /silent/...         reads the request, answers nothing
  /stall/FILE         the headers and the first half of FILE, then nothing
  /reset/FILE         the headers and the first half of FILE, then a reset connection
  /garbage/FILE       200 with FILE's type and bytes that are no media at all
  /files/FILE         FILE from ROOT
  /live/FILE          FILE as a live stream: no length, a piece every tenth of a second
                      (FILE's size over ten seconds), over and over, until the client goes
A ?type=TYPE query overrides the content type.
"""
import http.server
import json
import os
import socket
import socketserver
import ssl
import struct
import sys
import threading

ROOT, CERT, KEY = sys.argv[1:4]
LIFETIME = 600
closing = threading.Event()
TYPES = {'.html': 'application/vnd.hbbtv.xhtml+xml; charset=UTF-8', '.htm': 'text/html', '.js': 'application/javascript',
         '.css': 'text/css', '.mp4': 'video/mp4', '.ts': 'video/mpeg', '.mpd': 'application/dash+xml',
         '.txt': 'text/plain', '.mp3': 'audio/mpeg'}


class Faults(http.server.BaseHTTPRequestHandler):
    protocol_version = 'HTTP/1.1'

    def log_message(self, *args):
        pass

    def do_HEAD(self):
        self.answer(head=True)

    def do_GET(self):
        self.answer(head=False)

    def answer(self, head):
        path, _, query = self.path.partition('?')
        kind, _, rest = path.lstrip('/').partition('/')
        content_type = dict(p.split('=', 1) for p in query.split('&') if '=' in p).get('type')
        if kind == 'status':
            code = rest.split('/')[0]
            return self.send(int(code), b'<html><body>status ' + code.encode() + b'</body></html>', 'text/html', head)
        if kind == 'loop':
            self.send_response(302)
            self.send_header('Location', self.path)
            self.send_header('Content-Length', '0')
            return self.end_headers()
        if kind == 'empty':
            return self.send(200, b'', content_type or TYPES['.html'], head)
        if kind == 'silent':
            return closing.wait(LIFETIME)
        file = os.path.join(ROOT, rest)
        if kind not in ('stall', 'reset', 'garbage', 'files', 'live') or '..' in path or not os.path.isfile(file):
            return self.send(404, b'<html><body>not here</body></html>', 'text/html', head)
        body = open(file, 'rb').read()
        content_type = content_type or TYPES.get(os.path.splitext(file)[1], 'application/octet-stream')
        if kind == 'garbage':
            body = bytes((i * 97 + 13) % 251 for i in range(len(body)))
        if kind in ('stall', 'reset') and not head:
            return self.cut(body, content_type, kind == 'reset')
        if kind == 'live' and not head:
            return self.live(body, content_type)
        self.send(200, body, content_type, head)

    def send(self, status, body, content_type, head):
        self.send_response(status)
        self.send_header('Content-Type', content_type)
        self.send_header('Content-Length', str(len(body)))
        self.end_headers()
        if not head:
            self.wfile.write(body)

    # Half the body, then silence or a reset (a zero linger turns the close into RST).
    def cut(self, body, content_type, reset):
        self.send_response(200)
        self.send_header('Content-Type', content_type)
        self.send_header('Content-Length', str(len(body)))
        self.end_headers()
        self.wfile.write(body[:len(body) // 2])
        self.wfile.flush()
        if not reset:
            return closing.wait(LIFETIME)
        self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack('ii', 1, 0))
        self.close_connection = True


    # As a radio's server streams: what the file holds, paced, for as long as anyone listens.
    def live(self, body, content_type):
        self.send_response(200)
        self.send_header('Content-Type', content_type)
        self.send_header('Connection', 'close')
        self.end_headers()
        self.close_connection = True
        piece = max(1, len(body) // 100)
        try:
            while not closing.is_set():
                for at in range(0, len(body), piece):
                    self.wfile.write(body[at:at + piece])
                    self.wfile.flush()
                    if closing.wait(0.1):
                        return
        except OSError:
            pass


class Server(socketserver.ThreadingMixIn, http.server.HTTPServer):
    daemon_threads = True


def serve(server):
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_address[1]


plain = Server(('127.0.0.1', 0), Faults)
secure = Server(('127.0.0.1', 0), Faults)
context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(CERT, KEY)
secure.socket = context.wrap_socket(secure.socket, server_side=True)
refusing = socket.socket()
refusing.bind(('127.0.0.1', 0))  # bound, never listening: a connection is refused
print(json.dumps({'http': serve(plain), 'https': serve(secure), 'refused': refusing.getsockname()[1]}), flush=True)
threading.Thread(target=lambda: (sys.stdin.read(), closing.set()), daemon=True).start()
closing.wait(LIFETIME)
