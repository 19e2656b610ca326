"""The Debian package: what is in it, and what it does in a fresh root, from installation to purge."""

import os
import pathlib
import re
import stat
import subprocess

import pytest
from lab import API_KEY, Desktop, GtkEditor, Lumiwren, StandInService, wait_until

from root import Root

PACKAGE = pathlib.Path(os.environ["LUMIWREN_PACKAGE"])


def tool(*argv):
    done = subprocess.run(list(map(str, argv)), capture_output=True, text=True, check=False)
    assert done.returncode == 0, f"{argv[0]}: {done.stdout}{done.stderr}"
    return done.stdout


@pytest.fixture(scope="module")
def content(tmp_path_factory):
    folder = tmp_path_factory.mktemp("content")
    tool("dpkg-deb", "-x", PACKAGE, folder)
    return folder


@pytest.fixture(scope="module")
def root():
    with Root() as root:
        yield root


# -- what is in it ---------------------------------------------------------------------------------------------

def test_it_has_what_a_desktop_looks_for(content):
    expected = ["bin/lumiwren", "libexec/lumiwren/lumiwren-pasteboard", "libexec/lumiwren/lumiwren-screencapture",
                "share/applications/com.lumiwren.app.desktop", "share/bash-completion/completions/lumiwren",
                "share/dbus-1/services/com.lumiwren.app.service", "share/doc/lumiwren/changelog.gz",
                "share/doc/lumiwren/copyright", "share/icons/hicolor/scalable/apps/lumiwren.svg",
                "share/lumiwren/Info.json", "share/man/man1/lumiwren.1.gz",
                "share/metainfo/com.lumiwren.app.metainfo.xml"]
    expected += [f"share/icons/hicolor/{size}x{size}/apps/lumiwren.png"
                 for size in (16, 22, 24, 32, 48, 64, 128, 256, 512)]
    found = sorted(str(path.relative_to(content / "usr")) for path in content.rglob("*") if path.is_file())
    assert found == sorted(expected)


def test_nothing_in_it_has_special_rights(content):
    for path in content.rglob("*"):
        assert not path.stat().st_mode & (stat.S_ISUID | stat.S_ISGID | stat.S_IWGRP | stat.S_IWOTH), path


def test_the_executables_are_stripped_and_hardened(content):
    for path in [*content.glob("usr/bin/*"), *content.glob("usr/libexec/lumiwren/*")]:
        headers = tool("readelf", "-W", "-h", "-l", "-d", path)
        assert "DYN" in headers, "position independent"
        assert "GNU_RELRO" in headers and re.search(r"BIND_NOW|Flags:.*NOW", headers), "resolved before it runs"
        assert "RWE" not in headers, "no stack that can be run"
        assert ".symtab" not in tool("readelf", "-W", "-S", path)
        assert "RUNPATH" not in headers and "RPATH" not in headers


def test_lintian_finds_nothing(content):
    found = subprocess.run(["lintian", "--allow-root", "--tag-display-limit", "0", "--fail-on", "error,warning,info", PACKAGE],
                           capture_output=True, text=True, check=False)
    assert found.stdout == ""


def test_the_desktop_entry_is_valid(content):
    tool("desktop-file-validate", content / "usr/share/applications/com.lumiwren.app.desktop")


def test_the_metadata_is_valid(content):
    tool("appstreamcli", "validate", "--no-net", content / "usr/share/metainfo/com.lumiwren.app.metainfo.xml")


def test_the_man_page_is_read_without_a_complaint(content):
    done = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z",
                           content / "usr/share/man/man1/lumiwren.1.gz"], capture_output=True, text=True,
                          env={**os.environ, "MANWIDTH": "80", "LC_ALL": "C.UTF-8"}, check=False)
    assert done.returncode == 0 and done.stderr == ""


def test_it_recommends_the_keyring_and_the_recognition_of_english():
    fields = tool("dpkg-deb", "-f", PACKAGE, "Recommends")
    assert "gnome-keyring" in fields and "tesseract-ocr-eng" in fields


# -- what it does in a fresh root ------------------------------------------------------------------------------

@pytest.fixture(scope="module")
def before(root):
    """The files of the root with all that the package depends on, before the package itself."""
    depends = tool("dpkg-deb", "-f", PACKAGE, "Depends")
    names = [alternatives.split("|")[0].split("(")[0].strip() for alternatives in depends.split(",")]
    root.run("apt-get", "update", "-q")
    root.run("apt-get", "install", "-q", "-y", "--no-install-recommends", *names)
    return root.files()


@pytest.fixture(scope="module")
def installed(root, before):
    root.install(PACKAGE)
    return root


@pytest.fixture
def desktop(installed):
    """A desktop of this machine, on which the program of the root is started."""
    with Desktop() as desktop:
        installed.mount(desktop.directory)
        wrapper = desktop.directory / "lumiwren-in-root"
        wrapper.write_text(f'#!/bin/sh\nexec /usr/sbin/chroot "{installed.path}" /usr/bin/lumiwren "$@"\n')
        wrapper.chmod(0o755)
        os.environ["LUMIWREN_BIN"] = str(wrapper)
        try:
            yield desktop
        finally:
            installed.unmount(desktop.directory)


def run_action(desktop):
    """Has the installed program run an action by its command; the prompt that the service got."""
    with StandInService() as service:
        lumiwren = Lumiwren(desktop, service)
        editor = GtkEditor(desktop, "The selected text")
        editor.select_all("The selected text")
        command = desktop.launch([os.environ["LUMIWREN_BIN"], "--run-action", "Explain Selected Text"])
        assert command.wait() == 0, command.output
        request = service.wait_for_requests(1)
        lumiwren.panel.wait_for("Answer.")
        assert request.headers["authorization"] == f"Bearer {API_KEY}"
        quitting = desktop.launch([os.environ["LUMIWREN_BIN"], "--quit"])
        assert quitting.wait() == 0, quitting.output
        assert lumiwren.process.wait() == 0, lumiwren.process.output
        return request.prompt


def test_it_is_installed_and_used(desktop, installed):
    assert installed.run("lumiwren", "--version").startswith("lumiwren ")
    assert "The selected text" in run_action(desktop)


def test_the_bus_starts_it_for_a_command(desktop, installed):
    (desktop.directory / "services/com.lumiwren.app.service").write_text(
        (installed.path / "usr/share/dbus-1/services/com.lumiwren.app.service").read_text()
        .replace("/usr/bin/lumiwren", os.environ["LUMIWREN_BIN"]))
    desktop.bus.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReloadConfig")
    desktop.bus.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                     "UpdateActivationEnvironment", _environment(desktop))
    listing = desktop.launch([os.environ["LUMIWREN_BIN"], "--actions"])
    assert listing.wait() == 0, listing.output
    assert "Explain Selected Text" in listing.output
    assert desktop.launch([os.environ["LUMIWREN_BIN"], "--quit"]).wait() == 0
    wait_until(lambda: desktop.bus.owner("com.lumiwren.app") is None, "its end")


def _environment(desktop):
    from gi.repository import GLib
    return GLib.Variant("(a{ss})", ({name: str(value) for name, value in desktop.env.items()},))


def test_it_is_upgraded(desktop, installed, tmp_path):
    folder = tmp_path / "newer"
    tool("dpkg-deb", "-R", PACKAGE, folder)
    control = folder / "DEBIAN/control"
    control.write_text(re.sub(r"^Version: .*$", "Version: 99.0", control.read_text(), flags=re.M))
    newer = tmp_path / "newer.deb"
    tool("dpkg-deb", "-b", folder, newer)
    installed.install(newer)
    assert "99.0" in installed.run("dpkg-query", "-W", "lumiwren")
    assert "The selected text" in run_action(desktop)


def test_it_is_purged_and_leaves_nothing(root, installed, before):
    installed.run("apt-get", "purge", "-q", "-y", "lumiwren")
    assert root.files() - before == set()
    # What the user's session starts at login looks for the program first.
    assert not (root.path / "usr/bin/lumiwren").exists()
