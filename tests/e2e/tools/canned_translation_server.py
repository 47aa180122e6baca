#!/usr/bin/env python3
"""canned_translation_server.py PORT_FILE LOG_FILE: a local stand-in for the translation
endpoint for the end-to-end tests. Listens on 127.0.0.1 on a free port, writes the port to
PORT_FILE, and appends every request path to LOG_FILE, one per line, as it arrives.

Replies in the endpoint's JSON shape from the tables below: a translation request (dt=t only)
gets the text's entry in TRANSLATIONS, else the text itself; an alternates request
(dt=at) gets the word's entry in ALTERNATES as dictionary terms, else the word alone. A text
listed in SLOW is answered after three seconds.
"""
import json
import sys
import time
import urllib.parse
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

TRANSLATIONS = {
    "имя пользователя": "user name",
    "пользователя": "of the user",
    "медленно": "slowly",
}
ALTERNATES = {
    "имя": ["name", "title", "label"],
    "пользователя": ["user", "member"],
}
SLOW = {"медленно"}


class Handler(BaseHTTPRequestHandler):
    def do_GET(self):
        with open(sys.argv[2], "a", encoding="utf-8") as log:
            log.write(urllib.parse.unquote(self.path) + "\n")
        query = urllib.parse.parse_qs(urllib.parse.urlsplit(self.path).query, keep_blank_values=True)
        text = query.get("q", [""])[0].strip()
        if text in SLOW:
            time.sleep(3)
        if "at" in query.get("dt", []):
            terms = ALTERNATES.get(text, [text])
            body = [[[terms[0], text, None, None]], [["noun", terms]]]
        else:
            body = [[[TRANSLATIONS.get(text, text), text, None, None]], None, "ru"]
        data = json.dumps(body, ensure_ascii=False).encode("utf-8")
        self.send_response(200)
        self.send_header("Content-Type", "application/json; charset=utf-8")
        self.send_header("Content-Length", str(len(data)))
        self.end_headers()
        try:
            self.wfile.write(data)
        except (BrokenPipeError, ConnectionResetError):
            pass  # the program gave up on the request (Esc while loading)

    def log_message(self, *args):
        pass


server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
with open(sys.argv[1], "w", encoding="utf-8") as port_file:
    port_file.write(str(server.server_address[1]))
server.serve_forever()
