"""Reads every #include under src/ against the table of floors: includes run downwards only."""

import pathlib
import re
import sys

# What a folder may include besides itself. The longest folder that fits a file is the one that counts.
FLOORS = {
    "base": set(),
    "ui": {"base", "qt"},
    "platform": {"base"},
    "platform/testing": {"base", "platform"},
    "platform/linux": {"base", "platform"},
    "platform/linux/x11": {"base", "platform", "platform/linux", "x11"},
    "platform/linux/pasteboardholder": {"base", "platform", "platform/linux", "platform/linux/x11", "x11"},
    "platform/linux/screencapture": {"base", "platform", "platform/linux", "platform/linux/x11"},
    "platform/linux/appearance": {"base", "platform", "qt"},
    "platform/linux/recognition": {"base", "platform", "platform/linux"},
    "platform/linux/updates": {"base", "platform", "platform/linux"},
    "platform/linux/session": {"base", "platform", "platform/linux", "platform/linux/appearance",
                               "platform/linux/recognition", "platform/linux/updates", "platform/linux/x11", "qt"},
    "ai": {"base", "platform"},
    "actions": {"base", "platform"},
    "markdown": {"base"},
    "markdown/views": {"base", "markdown", "ui", "qt"},
    "input": {"base", "platform", "ai", "actions"},
    "popup": {"base", "platform", "ai", "markdown", "markdown/views", "ui", "qt"},
    "app/managers": {"base", "platform"},
    "settings": {"base", "platform", "ai", "actions", "ui", "app/managers", "qt"},
    "app": {"base", "platform", "platform/linux/session", "ai", "actions", "markdown", "markdown/views", "ui",
            "input", "popup", "settings", "app/managers", "qt"},
}
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def folder_of(path):
    """The folder of the table that holds `path` (relative to src/), or None."""
    parts = pathlib.PurePosixPath(path).parts[:-1]
    for length in range(len(parts), 0, -1):
        folder = "/".join(parts[:length])
        if folder in FLOORS:
            return folder
    return None


def kind_of(system_header):
    """What a header in angle brackets belongs to: "qt", "x11", or None for everything that anyone may use."""
    if re.match(r"Q[A-Z]|Qt\w+/|qt?[a-z]*_?[a-z]*\.h$|moc_", system_header):
        return "qt"
    if re.match(r"xcb/|X11/|xkbcommon/", system_header):
        return "x11"
    return None


def violations(path, text):
    """One line for each #include of the file `path` (relative to src/) that the table does not allow."""
    here = folder_of(path)
    if here is None:
        return [f"{path}: stands in no folder of the table"]
    found = []
    for bracket, target in INCLUDE.findall(text):
        if bracket == "<":
            kind = kind_of(target)
            if kind and kind not in FLOORS[here]:
                found.append(f"{path}: {here} may not use {kind}: <{target}>")
            continue
        there = folder_of(target)
        if there is None:
            if "/" in target or not target.endswith(".moc"):
                found.append(f'{path}: "{target}" is not named from src/ on')
        elif there != here and there not in FLOORS[here]:
            found.append(f'{path}: {here} may not include {there}: "{target}"')
    return found


def check_the_check():
    allowed = [
        ("popup/A.cpp", '#include "markdown/views/B.h"\n#include <QWidget>\n#include <vector>\n'),
        ("app/main.cpp", '#include "platform/linux/session/LinuxPlatform.h"\n'),
        ("platform/linux/x11/A.cpp", "#include <xcb/xcb.h>\n"),
    ]
    forbidden = [
        ("base/A.h", '#include "platform/B.h"\n'),
        ("base/A.h", "#include <QString>\n"),
        ("markdown/A.cpp", "#include <QtCore/QString>\n"),
        ("popup/A.cpp", '#include "actions/B.h"\n'),
        ("input/A.cpp", '#include "popup/B.h"\n'),
        ("popup/A.cpp", '#include "platform/linux/B.h"\n'),
        ("app/A.cpp", '#include "platform/linux/x11/B.h"\n'),
        ("app/A.cpp", '#include "platform/linux/appearance/B.h"\n'),
        ("app/A.cpp", '#include "platform/testing/B.h"\n'),
        ("popup/A.cpp", "#include <xcb/xcb.h>\n"),
        ("popup/A.cpp", '#include "B.h"\n'),
        ("elsewhere/A.cpp", ""),
    ]
    for path, text in allowed:
        assert not violations(path, text), (path, text)
    for path, text in forbidden:
        assert violations(path, text), (path, text)


def main():
    check_the_check()
    source = pathlib.Path(sys.argv[1])
    files = sorted(file for suffix in ("*.h", "*.cpp") for file in source.rglob(suffix))
    assert files, f"no sources under {source}"
    found = [line for file in files
             for line in violations(file.relative_to(source).as_posix(), file.read_text(encoding="utf-8"))]
    print("\n".join(found) or f"{len(files)} files, every include runs downwards")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
