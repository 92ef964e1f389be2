#!/usr/bin/env python3
"""Checks who includes whom.

Each folder of the project is a layer and may use only the layers below it; codec libraries stay in the worker,
image libraries in the host; the operating system is told apart in platform/ alone. One line is printed for each
include that breaks this, and the exit code is 1 when there is one.

Usage: check-includes.py [ROOT]
"""

import pathlib
import re
import sys

# Layer: the layers that it may include besides itself. "sdk" is host/sdk, included as "Kex/...".
ALLOWED = {
    "platform": set(),
    "filesystem": set(),
    "property": set(),
    "timecode": set(),
    "desktop": set(),
    "processbridge": {"platform", "filesystem", "property"},
    "quicktime": {"platform", "processbridge", "property", "timecode"},
    "sdk": {"platform", "timecode", "filesystem"},
    "writer": {"quicktime", "timecode", "sdk"},
    "worker": {"quicktime", "processbridge", "property", "timecode", "filesystem", "platform"},
    "host": {"sdk", "platform", "timecode", "filesystem", "quicktime"},
}

# Libraries that belong to one side: the pattern of their headers, and the layers that may include them.
LIBRARIES = [
    ("codec library", r"lib(av\w+|sw\w+|postproc)/", {"worker"}),
    ("video output library", r"SDL", {"worker"}),
    ("image library", r"(OpenImageIO|OpenEXR|Imath)/|openexr|Imf|tiffio|png\.h|jpeglib", {"host"}),
    ("text library", r"pango/|cairo|fontconfig/|hb\.h|ft2build", {"host"}),
    ("colour library", r"OpenColorIO/", {"host"}),
]

# Windows are known in these folders alone, so that nothing else loads their library: here Qt's headers and the folder
# with what windows have in common may be included.
WINDOW_FOLDERS = {"desktop", "worker/dialog", "host/panel"}
WINDOW_HEADERS = re.compile(r"Q[A-Z]|Qt[A-Z]\w*/|desktop/")

SUFFIXES = {".h", ".cpp", ".mm", ".c"}
INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s*(["<])([^">]+)[">]')
CONDITIONAL = re.compile(r"^\s*#\s*(if|ifdef|ifndef|elif|else|endif)\b(.*)")
SYSTEM = re.compile(r"__APPLE__|__MACH__|TARGET_OS_|__linux|__unix__|_WIN32|__FreeBSD__|__GLIBC__")


def layer_of(path):
    """The layer of a path relative to the root, or None for what is no layer (tests, benches, examples)."""
    parts = path.parts
    if parts[0] == "host":
        return "sdk" if len(parts) > 1 and parts[1] == "sdk" else "host"
    return parts[0] if parts[0] in ALLOWED else None


def layer_of_include(name):
    first = name.split("/")[0]
    if first == "Kex" or name.startswith("host/sdk/"):
        return "sdk"
    # <filesystem> is the standard library's, "filesystem/…" is ours.
    return first if first in ALLOWED and "/" in name else None


def include_faults(layer, is_header, has_windows, lines):
    for number, line in enumerate(lines, 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        name = match.group(2)
        target = layer_of_include(name)
        if WINDOW_HEADERS.match(name):
            if not has_windows:
                yield number, f"{name} is for windows, which only {', '.join(sorted(WINDOW_FOLDERS))} know"
        elif target and target != layer and target not in ALLOWED[layer]:
            yield number, f"{layer} must not include {name}: {target} is not below it"
        elif target and layer == "sdk" and target != layer and is_header:
            yield number, f"{name} in a header of the SDK, which plug-ins get without our other folders"
        for kind, pattern, homes in LIBRARIES:
            if re.match(pattern, name) and layer not in homes:
                yield number, f"{name} is of a {kind}, which only {' and '.join(sorted(homes))} may use"


def system_faults(lines):
    """Conditionals on the operating system with more than one line in a branch.

    One line is allowed everywhere, for a call that has another name on another system.
    """
    stack = []  # one [is about the system, line of the directive, lines in the present branch] a level
    for number, line in enumerate(lines, 1):
        match = CONDITIONAL.match(line)
        if not match:
            code = line.split("//")[0].strip()
            for level in stack:
                level[2] += bool(code)
                if level[0] and level[2] == 2:
                    yield level[1], "more than one line that depends on the operating system, outside platform/"
            continue
        word, condition = match.groups()
        if word.startswith("if"):
            stack.append([bool(SYSTEM.search(condition)), number, 0])
        elif stack and word == "endif":
            stack.pop()
        elif stack:
            stack[-1][0] = stack[-1][0] or bool(SYSTEM.search(condition))
            stack[-1][1:] = [number, 0]


def faults(root):
    for top in sorted({"host", *ALLOWED} - {"sdk"}):
        for path in sorted((root / top).rglob("*")):
            if path.suffix not in SUFFIXES:
                continue
            relative = path.relative_to(root)
            layer = layer_of(relative)
            lines = path.read_text(encoding="utf-8").splitlines()
            has_windows = any(str(relative).startswith(folder + "/") for folder in WINDOW_FOLDERS)
            for number, text in include_faults(layer, path.suffix == ".h", has_windows, lines):
                yield f"{relative}:{number}: {text}"
            if layer != "platform":
                for number, text in system_faults(lines):
                    yield f"{relative}:{number}: {text}"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent)
    found = list(faults(root))
    print("\n".join(found) or "every include keeps to its layer")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
