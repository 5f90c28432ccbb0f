"""lint_inputs.py FOLDER FILE…: prints "HASH FILE" for each source file that the dev preset compiles,
and writes how it does so into FOLDER/compile_commands.json for clang-tidy. Tests that compile a
product's source once more, in a way of their own, are left out.

The hash covers all that clang-tidy's findings depend on: the checks, the way of compiling, and the
file with the project's headers that it includes, as the last build has seen them.
"""

import hashlib
import json
import os
import re
import subprocess
import sys

BUILD = "build/dev"


def digest(*parts):
    return hashlib.sha256("\0".join(parts).encode()).hexdigest()


def content(path, known={}):
    if path not in known:
        with open(path, errors="replace") as file:
            known[path] = digest(file.read())
    return known[path]


def included_files():
    """The files that each object file depends on, but for those of the platform."""
    files = {}
    listing = subprocess.run(["ninja", "-C", BUILD, "-t", "deps"], check=True, capture_output=True,
                             text=True).stdout
    for line in listing.splitlines():
        if match := re.match(r"(\S.*): #deps ", line):
            current = files.setdefault(match[1], [])
        elif line.startswith("    "):
            path = os.path.relpath(os.path.join(BUILD, line.strip()))
            if not path.startswith("..") and os.path.isfile(path):
                current.append(path)
    return files


def object_file(entry):
    """As ninja names it; CMake gives it with the build folder or without."""
    return os.path.relpath(os.path.join(BUILD, entry["output"]), BUILD)


def main():
    included = included_files()
    platform = content("/.stamp") if os.path.isfile("/.stamp") else ""
    checks = content(".clang-tidy")
    with open(f"{BUILD}/compile_commands.json") as file:
        compiled = {os.path.relpath(entry["file"]): entry for entry in json.load(file)
                    if not object_file(entry).startswith("tests/")}
    with open(f"{sys.argv[1]}/compile_commands.json", "w") as file:
        json.dump(list(compiled.values()), file)
    for path in sys.argv[2:]:
        if path in compiled:
            entry = compiled[path]
            inputs = sorted({path, *included.get(object_file(entry), [])})
            print(digest(platform, checks, entry["command"], *map(content, inputs)), path)


main()
