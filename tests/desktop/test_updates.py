"""New versions, from the menu's entry to the package installer, with a real https server and real signatures."""

import base64
import json
import os
import pathlib
import shutil
import stat
import subprocess
import threading
import time

import pytest
from lab import GtkEditor, StandInService, stays_false, wait_until

PACKAGE = b"!<arch>\n" + bytes(range(256)) * 4000
ENTRY = "Check for Updates..."


def openssl(*arguments):
    return subprocess.run(["openssl", *arguments], check=True, capture_output=True).stdout


class Feed:
    """The makers' server: a feed of one version, its package, and the key to sign with."""

    def __init__(self, folder):
        self.folder = folder
        self.certificate = folder / "certificate"
        self.certificate.mkdir()
        self.version, self.package, self.served = "9.1", PACKAGE, PACKAGE
        self.hold = None  # an event that the package waits for, half given
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
<description><![CDATA[<h2>News</h2><ul><li>Faster &amp; smaller</li></ul>]]></description>
<enclosure url="{self.url}/lumiwren.deb" length="{len(self.package)}" sparkle:os="linux"
 sparkle:edSignature="{self.sign(self.package)}"/></item></channel></rss>""".encode())
        else:
            self.respond(exchange, self.served)

    def respond(self, exchange, body):
        exchange.head(chunked=False, headers=[("Content-Length", len(body))])
        half = len(body) // 2
        exchange.send(body[:half])
        if self.hold and exchange.request.path != "/feed.xml":
            exchange.until(self.hold)
        exchange.send(body[half:])

    def paths(self):
        return [request.path for request in self.service.requests]


@pytest.fixture
def feed(tmp_path):
    feed = Feed(tmp_path)
    yield feed
    feed.service.close()
    assert not feed.service.failures


class Installed:
    """A copy of the program with a property list of its own, and an opener of files that writes down what it gets."""

    def __init__(self, folder, desktop, feed):
        self.folder, self.desktop, self.feed = folder / "installed", desktop, feed
        self.folder.mkdir()
        built = pathlib.Path(os.environ["LUMIWREN_BIN"])
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

    def start(self, programs):
        return programs.start(self.desktop, program=str(self.program), PATH=self.path,
                              SSL_CERT_DIR=str(self.feed.certificate))


@pytest.fixture
def installed(tmp_path, desktop, feed):
    yield Installed(tmp_path, desktop, feed)
    shutil.rmtree(pathlib.Path(desktop.env["XDG_CACHE_HOME"]) / "lumiwren", ignore_errors=True)


def checked_lately(desktop):
    """As if the schedule had nothing to do."""
    file = desktop.user_defaults()
    file.write_text(json.dumps({"SULastCheckTime": str(int(time.time())), "hasLaunchedBefore": True}))
    return file


def check(lumiwren):
    lumiwren.choose(ENTRY)
    return lumiwren.update.wait_shown().wait_focused()


def test_without_a_feed_the_entry_is_disabled_and_nobody_is_asked(desktop, installed, feed, programs):
    installed.describe(SUFeedURL="")
    lumiwren = installed.start(programs)
    assert "enabled" not in lumiwren.open_menu().find("push button", ENTRY).states
    assert stays_false(lambda: feed.service.requests or lumiwren.update.shown, 1.0)


def test_the_newest_version_says_so_and_escape_closes(desktop, installed, feed, programs):
    checked_lately(desktop)
    feed.version = "9.0"
    lumiwren = installed.start(programs)
    window = check(lumiwren)
    window.wait_for("Lumiwren 9.0 is the newest version.")
    desktop.display.press("Escape")
    window.wait_gone()
    assert feed.paths() == ["/feed.xml"]


def test_from_the_menu_to_the_package_installer(desktop, installed, feed, programs):
    checked_lately(desktop)
    lumiwren = installed.start(programs)
    feed.hold = threading.Event()
    window = check(lumiwren)
    window.wait_for("Lumiwren 9.1 is available")
    window.wait_for("News")
    assert window.find("text", "Release Notes").text == "News\n\n\u2022 Faster & smaller"
    window.click("Install")
    window.wait_for("Downloading Lumiwren 9.1")
    window.wait_for("512.0 kB of 1.0 MB")
    feed.hold.set()
    window.wait_for("Lumiwren 9.1 is ready to be installed")
    wait_until(installed.opened, "the package installer")
    [package] = installed.downloads()
    assert installed.opened() == [f"file://{package}"]
    assert package.read_bytes() == PACKAGE
    assert package.name == "lumiwren-9.1.deb"
    assert stat.S_IMODE(package.parent.stat().st_mode) == 0o700
    window.click("Close")
    window.wait_gone()
    assert lumiwren.terminate() == 0
    installed.start(programs)
    assert installed.downloads() == []


def test_a_package_that_is_not_the_signed_one_goes_nowhere(desktop, installed, feed, programs):
    checked_lately(desktop)
    feed.served = PACKAGE[:-1] + b"?"
    lumiwren = installed.start(programs)
    window = check(lumiwren)
    window.wait_for("Lumiwren 9.1 is available")
    window.click("Install")
    window.wait_for("The update is not signed by the makers of Lumiwren, so it was not used.")
    assert installed.downloads() == []
    assert installed.opened() == []


def test_closing_the_window_cancels_the_download(desktop, installed, feed, programs):
    checked_lately(desktop)
    feed.hold = threading.Event()
    lumiwren = installed.start(programs)
    window = check(lumiwren)
    window.wait_for("Lumiwren 9.1 is available")
    window.click("Install")
    window.wait_for("512.0 kB of 1.0 MB")
    assert len(installed.downloads()) == 1
    desktop.display.press("Escape")
    window.wait_gone()
    wait_until(lambda: not installed.downloads(), "the half package to be removed")
    assert installed.opened() == []


def test_what_is_found_on_schedule_leaves_the_keyboard_where_it_is(desktop, installed, feed, programs):
    editor = GtkEditor(desktop, "text")
    editor.focus()
    lumiwren = installed.start(programs)
    lumiwren.update.wait_shown().wait_for("Lumiwren 9.1 is available")
    assert stays_false(lambda: lumiwren.update.focused, 0.5)
    assert desktop.display.has_focus(editor.window)
    # Asked for, it comes to the front.
    lumiwren.choose(ENTRY)
    lumiwren.update.wait_focused()
    lumiwren.update.click("Skip This Version")
    lumiwren.update.wait_gone()
    assert json.loads(desktop.user_defaults().read_text())["SUSkippedVersion"] == "9.1"
    assert feed.paths() == ["/feed.xml"]


def test_a_skipped_version_comes_up_only_for_who_asks(desktop, installed, feed, programs):
    file = checked_lately(desktop)
    file.write_text(json.dumps({"SUSkippedVersion": "9.1", "SULastCheckTime": "0", "hasLaunchedBefore": True}))
    lumiwren = installed.start(programs)
    feed.service.wait_for_requests(1)
    wait_until(lambda: json.loads(file.read_text())["SULastCheckTime"] != "0", "the end of the check")
    assert stays_false(lambda: lumiwren.update.shown, 0.5)
    check(lumiwren).wait_for("Lumiwren 9.1 is available")
