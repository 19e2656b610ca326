"""Compiles every header under src/ on its own. What a source file that is built includes first has compiled on its
own there."""

import concurrent.futures
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys


def flags_of(commands, source):
    """The compiler, and the include paths and definitions with which the program's main file is compiled."""
    main = next(entry for entry in commands if entry["file"] == str(source / "app/main.cpp"))
    words = shlex.split(main["command"])
    compiler = next(word for word in words if os.path.basename(word).split("-")[0] in ("c++", "g++", "clang++"))
    kept = []
    for word, following in zip(words, words[1:] + [""]):
        if word == "-isystem":
            kept += [word, following]
        elif word.startswith(("-I", "-D", "-std=", "-isystem/")):
            kept.append(word)
    return [compiler, *kept, "-fPIC", "-fsyntax-only", "-Wall", "-Wextra", "-x", "c++"]


def first_includes(commands):
    """The headers, as they are included, that come first in a file that is built."""
    found = set()
    for entry in commands:
        path = pathlib.Path(entry["file"])
        include = re.search(r'^#include ["<]([^">]+)[">]', path.read_text(), re.MULTILINE) if path.exists() else None
        if include:
            found.add(include[1])
    return found


def extra_flags(header):
    packages = []
    if "platform/linux" in header:
        packages += ["libcurl", "libsecret-1", "xcb", "xkbcommon", "xcb-render"]
    if not packages:
        return []
    return subprocess.run(["pkg-config", "--cflags", *packages], check=True, capture_output=True,
                          text=True).stdout.split()


def compile_alone(arguments):
    flags, source, header = arguments
    done = subprocess.run([*flags, *extra_flags(header), "-I", str(source), "-"], input=f'#include "{header}"\n',
                          text=True, capture_output=True)
    return header, done.returncode, done.stderr


def main():
    source = pathlib.Path(sys.argv[1])
    commands = json.loads(pathlib.Path(sys.argv[2]).read_text())
    flags = flags_of(commands, source)
    headers = {header.relative_to(source).as_posix() for header in source.rglob("*.h")}
    assert headers, f"no headers under {source}"
    headers = sorted(headers - first_includes(commands))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(compile_alone, [(flags, source, header) for header in headers]))
    failed = [result for result in results if result[1] != 0]
    for header, _, errors in failed:
        print(f"{header} does not compile alone:\n{errors}")
    print(f"{len(results) - len(failed)} of {len(results)} headers compile alone")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
