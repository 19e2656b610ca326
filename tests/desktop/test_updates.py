"""New versions, from the menu's entry to the package installer, with a real https server and real signatures."""

import json
import pathlib
import shutil
import stat
import threading
import time

import pytest
from lab import GtkEditor, stays_false, wait_until
from lab.updates import PACKAGE, InstalledCopy, UpdateFeed

ENTRY = "Check for Updates..."


@pytest.fixture
def feed(tmp_path):
    feed = UpdateFeed(tmp_path)
    yield feed
    feed.service.close()
    assert not feed.service.failures


@pytest.fixture
def installed(tmp_path, desktop, feed):
    yield InstalledCopy(tmp_path, desktop, feed)
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
    lumiwren = programs.start(desktop, **installed.environment())
    assert "enabled" not in lumiwren.open_menu().find("push button", ENTRY).states
    assert stays_false(lambda: feed.service.requests or lumiwren.update.shown, 1.0)


def test_the_newest_version_says_so_and_escape_closes(desktop, installed, feed, programs):
    checked_lately(desktop)
    feed.version = "9.0"
    lumiwren = programs.start(desktop, **installed.environment())
    window = check(lumiwren)
    window.wait_for("Lumiwren 9.0 is the newest version.")
    desktop.display.press("Escape")
    window.wait_gone()
    assert feed.paths() == ["/feed.xml"]


def test_from_the_menu_to_the_package_installer(desktop, installed, feed, programs):
    checked_lately(desktop)
    lumiwren = programs.start(desktop, **installed.environment())
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
    programs.start(desktop, **installed.environment())
    assert installed.downloads() == []


def test_a_package_that_is_not_the_signed_one_goes_nowhere(desktop, installed, feed, programs):
    checked_lately(desktop)
    feed.served = PACKAGE[:-1] + b"?"
    lumiwren = programs.start(desktop, **installed.environment())
    window = check(lumiwren)
    window.wait_for("Lumiwren 9.1 is available")
    window.click("Install")
    window.wait_for("The update is not signed by the makers of Lumiwren, so it was not used.")
    assert installed.downloads() == []
    assert installed.opened() == []


def test_closing_the_window_cancels_the_download(desktop, installed, feed, programs):
    checked_lately(desktop)
    feed.hold = threading.Event()
    lumiwren = programs.start(desktop, **installed.environment())
    window = check(lumiwren)
    window.wait_for("Lumiwren 9.1 is available")
    window.click("Install")
    window.wait_for("512.0 kB of 1.0 MB")
    assert len(installed.downloads()) == 1
    desktop.display.press("Escape")
    window.wait_gone()
    wait_until(lambda: not installed.downloads(), "the half package to be removed")
    assert installed.opened() == []


def test_the_menu_that_a_tray_shows_itself_knows_that_a_check_is_under_way(desktop, installed, feed, programs):
    checked_lately(desktop)
    feed.version = "9.0"
    feed.hold_feed = threading.Event()
    lumiwren = programs.start(desktop, **installed.environment())

    def enabled():
        return lumiwren.status_item.entries()[ENTRY][1].get("enabled", True)

    assert enabled()
    lumiwren.status_item.choose(ENTRY)
    lumiwren.update.wait_for("Checking for updates...")
    assert not enabled()
    feed.hold_feed.set()
    lumiwren.update.wait_for("Lumiwren 9.0 is the newest version.")
    assert enabled()


def test_what_is_found_on_schedule_leaves_the_keyboard_where_it_is(desktop, installed, feed, programs):
    editor = GtkEditor(desktop, "text")
    editor.focus()
    lumiwren = programs.start(desktop, **installed.environment())
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
    lumiwren = programs.start(desktop, **installed.environment())
    feed.service.wait_for_requests(1)
    wait_until(lambda: json.loads(file.read_text())["SULastCheckTime"] != "0", "the end of the check")
    assert stays_false(lambda: lumiwren.update.shown, 0.5)
    check(lumiwren).wait_for("Lumiwren 9.1 is available")
