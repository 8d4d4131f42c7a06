"""Stands in for the node_exporters of many servers: serves /NAME/metrics from FOLDER/NAME.prom.

serve_texts.py FOLDER PORT

The texts stand still. Only what each collection changes is made anew in each answer: the time, a
little before the question, and the duration.
"""

import http.server
import os
import random
import re
import sys
import time

CHANGES = re.compile(
    rb"^(qor_collection_(?:duration|timestamp)_seconds) \S+$", re.MULTILINE)


def read_texts(folder):
    texts = {}
    for name in os.listdir(folder):
        with open(os.path.join(folder, name), "rb") as file:
            texts[f"/{name.removesuffix('.prom')}/metrics"] = file.read()
    return texts


def now(match):
    value = (random.uniform(0.08, 0.12) if b"duration" in match[1]
             else time.time() - random.uniform(0, 1))
    return b"%s %.9f" % (match[1], value)


class Handler(http.server.BaseHTTPRequestHandler):
    texts = {}

    def do_GET(self):
        text = self.texts.get(self.path)
        if text is None:
            self.send_error(404)
            return
        self.send_response(200)
        self.send_header("Content-Type", "text/plain; version=0.0.4")
        self.end_headers()
        self.wfile.write(CHANGES.sub(now, text, 2))

    def log_message(self, format, *args):
        pass


class TextServer(http.server.ThreadingHTTPServer):
    request_queue_size = 1024


if __name__ == "__main__":
    Handler.texts = read_texts(sys.argv[1])
    TextServer(("127.0.0.1", int(sys.argv[2])), Handler).serve_forever()
