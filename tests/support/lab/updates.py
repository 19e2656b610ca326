"""New versions of the program: the makers' server, and a program that looks there."""

import base64
import json
import pathlib
import shutil
import subprocess

from .program import binary
from .service import StandInService

PACKAGE = b"!<arch>\n" + bytes(range(256)) * 4000


def openssl(*arguments):
    return subprocess.run(["openssl", *arguments], check=True, capture_output=True).stdout


class UpdateFeed:
    """The makers' server: a feed of one version, its package, and the key to sign with."""

    def __init__(self, folder):
        self.folder = folder
        self.certificate = folder / "certificate"
        self.certificate.mkdir()
        self.version, self.package, self.served = "9.1", PACKAGE, PACKAGE
        self.notes = "<h2>News</h2><ul><li>Faster &amp; smaller</li></ul>"
        self.hold_feed = self.hold = None  # events that the feed and the package wait for, half given
        self.key = folder / "key.pem"
        openssl("genpkey", "-algorithm", "ed25519", "-out", self.key)
        self.public_key = base64.b64encode(openssl("pkey", "-in", self.key, "-pubout", "-outform", "DER")[-32:]).decode()
        self.service = StandInService(self.answer, self.certificate)
        self.url = self.service.url.removesuffix("/v1")

    def sign(self, content):
        file = self.folder / "signed"
        file.write_bytes(content)
        return base64.b64encode(openssl("pkeyutl", "-sign", "-inkey", self.key, "-rawin", "-in", file)).decode()

    def answer(self, exchange):
        if exchange.request.path == "/feed.xml":
            self.respond(exchange, f"""<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle"><channel><item>
<sparkle:version>{self.version}</sparkle:version>
<description><![CDATA[{self.notes}]]></description>
<enclosure url="{self.url}/lumiwren.deb" length="{len(self.package)}" sparkle:os="linux"
 sparkle:edSignature="{self.sign(self.package)}"/></item></channel></rss>""".encode(), self.hold_feed)
        else:
            self.respond(exchange, self.served, self.hold)

    @staticmethod
    def respond(exchange, body, hold):
        exchange.head(chunked=False, headers=[("Content-Length", len(body))])
        half = len(body) // 2
        exchange.send(body[:half])
        if hold:
            exchange.until(hold)
        exchange.send(body[half:])

    def paths(self):
        return [request.path for request in self.service.requests]


class InstalledCopy:
    """A copy of the program with a property list of its own, and an opener of files that writes down what it gets."""

    def __init__(self, folder, desktop, feed):
        self.folder, self.desktop, self.feed = folder / "installed", desktop, feed
        self.folder.mkdir()
        built = pathlib.Path(binary())
        self.program = self.folder / built.name
        shutil.copy(built, self.program)
        for helper in built.parent.glob("lumiwren-*"):
            (self.folder / helper.name).symlink_to(helper)
        self.opened_list = folder / "opened"
        tools = folder / "tools"
        tools.mkdir()
        opener = tools / "xdg-open"
        opener.write_text(f'#!/bin/sh\nprintf "%s\\n" "$1" >> {self.opened_list}\n')
        opener.chmod(0o755)
        self.path = f"{tools}:{desktop.env['PATH']}"
        self.describe()

    def describe(self, **changes):
        values = {"CFBundleShortVersionString": "9.0", "SUFeedURL": f"{self.feed.url}/feed.xml",
                  "SUPublicEDKey": self.feed.public_key} | changes
        (self.folder / "Info.json").write_text(json.dumps(values))

    def opened(self):
        return self.opened_list.read_text().splitlines() if self.opened_list.exists() else []

    def downloads(self):
        folder = pathlib.Path(self.desktop.env["XDG_CACHE_HOME"]) / "lumiwren"
        return [path for path in folder.rglob("*") if path.is_file()]

    def environment(self):
        """What the copy is started with."""
        return {"program": str(self.program), "PATH": self.path, "SSL_CERT_DIR": str(self.feed.certificate)}
