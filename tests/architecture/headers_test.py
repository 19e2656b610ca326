"""Compiles every header under src/ on its own but those that a source file includes first: they compile on their own
with it, in every build that does not join source files."""

import concurrent.futures
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys


def flags_of(commands):
    """The compiler, and the include paths and definitions with which the program's main file is compiled."""
    main = next(entry for entry in commands if "/app/CMakeFiles/lumiwren.dir/" in entry["command"])
    words = shlex.split(main["command"])
    compiler = next(word for word in words if os.path.basename(word).split("-")[0] in ("c++", "g++", "clang++"))
    cache = shutil.which("ccache")
    kept = []
    for word, following in zip(words, words[1:] + [""]):
        if word == "-isystem":
            kept += [word, following]
        elif word.startswith(("-I", "-D", "-std=", "-isystem/")):
            kept.append(word)
    return [*([cache] if cache else []), compiler, *kept, "-fPIC", "-c", "-Wall", "-Wextra"]


def first_includes(source):
    """The headers, as they are included, that come first in a source file."""
    includes = (re.search(r'^#include "([^"]+)"', path.read_text(), re.MULTILINE) for path in source.rglob("*.cpp"))
    return {include[1] for include in includes if include}


def extra_flags(header):
    packages = []
    if "platform/linux" in header:
        packages += ["libcurl", "libsecret-1", "xcb", "xkbcommon", "xcb-render"]
    if not packages:
        return []
    return subprocess.run(["pkg-config", "--cflags", *packages], check=True, capture_output=True,
                          text=True).stdout.split()


def compile_alone(arguments):
    flags, source, folder, header = arguments
    file = folder / f"{header.replace('/', '_')}.cpp"
    file.write_text(f'#include "{header}"\n')
    done = subprocess.run([*flags, *extra_flags(header), "-I", str(source), str(file), "-o", str(file.with_suffix(".o"))],
                          text=True, capture_output=True)
    return header, done.returncode, done.stderr


def main():
    source, commands_file = map(pathlib.Path, sys.argv[1:])
    commands = json.loads(commands_file.read_text())
    folder = commands_file.parent / "headers"  # the same for every run, so that a compiler cache knows them again
    folder.mkdir(exist_ok=True)
    flags = flags_of(commands)
    headers = {header.relative_to(source).as_posix() for header in source.rglob("*.h")}
    assert headers, f"no headers under {source}"
    headers = sorted(headers - first_includes(source))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(compile_alone, [(flags, source, folder, header) for header in headers]))
    failed = [result for result in results if result[1] != 0]
    for header, _, errors in failed:
        print(f"{header} does not compile alone:\n{errors}")
    print(f"{len(results) - len(failed)} of {len(results)} headers compile alone")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
