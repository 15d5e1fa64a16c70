#!/usr/bin/env python3
"""Holds the include lines of include/ and src/ against the layering of the project.

- A subsystem includes its own headers, the platform's door and the subsystems that it builds on.
- No circle between files.
- src/platform/ includes nothing of the library above it.
- Only src/platform/ and the door include POSIX, third-party or wide-character headers of the runtime.
- Only the door, lib_api.h and src/platform/ ask which system they are compiled for (tests: their support).

Run from the top of the tree; prints each fault as file:line and exits with 1 if there is one.
"""

import re
import sys
from pathlib import Path

# Which subsystems a subsystem may include. Foundation and strings stand on each other file by file (a buffer is
# below the strings, the result record above them); the check for circles keeps that honest.
BUILDS_ON = {
    "foundation": {"strings", "kernel"},
    "strings": {"foundation"},
    "protected": {"foundation", "strings"},
    "kernel": {"foundation", "strings", "services"},
    "environment": {"foundation", "strings", "kernel", "services"},
    "thread": {"foundation", "strings", "kernel"},
    "datetime": {"foundation", "strings"},
    "parser": {"foundation", "strings"},
    "services": {"foundation", "strings"},
}
# The platform as the library sees it: for callers and library, and for the library alone.
DOOR = {"include/lib_platform.h", "src/platform/c_locale_text.h", "src/platform/runtime_text.h",
        "src/platform/runtime_time.h", "src/platform/white_space.h"}
FREE = {"include/lib_api.h"}
GENERATED = {"lib_version.h"}

STANDARD = set("""
algorithm any array atomic barrier bit bitset cassert ccomplex cctype cerrno cfenv cfloat charconv chrono
cinttypes climits cmath compare complex concepts condition_variable coroutine csetjmp cstdarg cstddef cstdint
cstdio cstdlib cstring ctime exception execution filesystem forward_list fstream functional future
initializer_list iomanip ios iosfwd iostream istream iterator latch limits list map memory memory_resource mutex
new numbers numeric optional ostream queue random ranges ratio scoped_allocator semaphore set shared_mutex
source_location span sstream stack stdexcept stop_token streambuf string string_view syncstream system_error
thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector version
assert.h errno.h float.h limits.h math.h stdarg.h stddef.h stdint.h stdio.h stdlib.h string.h
""".split())
VECTOR_HEADERS = {"immintrin.h", "emmintrin.h", "arm_neon.h", "smmintrin.h", "tmmintrin.h", "x86intrin.h"}
SYSTEM_MACROS = re.compile(
    r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b.*\b(_WIN32|_WIN64|__linux__|__linux|__unix__|__MINGW\w*|_MSC_VER|"
    r"__APPLE__|__GLIBC__)\b")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
BLOCK_COMMENT = re.compile(r"/\*.*?\*/", re.S)


def layer_of(path):
    """The subsystem of a file, "platform" for the layer and its headers, "door", "free" or "" for others."""
    if path in DOOR:
        return "door"
    if path in FREE:
        return "free"
    parts = path.split("/")
    if parts[0] in ("include", "src") and len(parts) > 2:
        return parts[1]
    chief = re.fullmatch(r"include/lib_(\w+)\.h", path)
    return chief.group(1) if chief else ""


def read_lines(path):
    text = path.read_text(encoding="utf-8")
    return BLOCK_COMMENT.sub(lambda m: "\n" * m.group(0).count("\n"), text).split("\n")


def resolve(name, including, files):
    beside = (Path(including).parent / name).as_posix()
    for candidate in (beside, "include/" + name, "src/" + name):
        candidate = re.sub(r"[^/]+/\.\./", "", candidate)
        if candidate in files:
            return candidate
    return None


def check_own_include(path, target):
    layer, other = layer_of(path), layer_of(target)
    if other in ("free", layer) or layer == "":
        return None
    if layer in ("platform", "door"):
        return None if other in ("platform", "door") else f"the platform layer includes {target}"
    if other == "platform":
        return f"{target} is reached through lib_platform.h only"
    if other == "door" or other in BUILDS_ON.get(layer, set()):
        return None
    return f"{layer} does not build on {other} ({target})"


def check_foreign_include(path, name):
    if path.startswith("src/platform/") or layer_of(path) == "door" or name in STANDARD:
        return None
    if layer_of(path) == "platform" and name == "locale.h":
        return None
    if name in VECTOR_HEADERS and re.search(r"_kernels|_avx2|_vector", path):
        return None
    return f"<{name}> is for src/platform/ only"


def find_circle(graph):
    state, trail = {}, []

    def visit(node):
        state[node] = "open"
        trail.append(node)
        for target in graph[node]:
            if state.get(target) == "open":
                return trail[trail.index(target):] + [target]
            if target not in state:
                circle = visit(target)
                if circle:
                    return circle
        trail.pop()
        state[node] = "done"
        return None

    for node in sorted(graph):
        if node not in state:
            circle = visit(node)
            if circle:
                return circle
    return None


def may_ask_for_the_system(path):
    return layer_of(path) in ("door", "free", "platform") or path.startswith("tests/support/")


def main():
    files = {p.as_posix(): p for top in ("include", "src", "tests") for p in sorted(Path(top).rglob("*"))
             if p.suffix in (".h", ".inl", ".cpp")}
    if not any(path.startswith("src/") for path in files):
        sys.exit("no sources found: run from the top of the tree")
    faults, graph = [], {path: [] for path in files}
    for path, file in files.items():
        for number, line in enumerate(read_lines(file), 1):
            if SYSTEM_MACROS.search(line) and not may_ask_for_the_system(path):
                faults.append(f"{path}:{number}: asks for the system; lib_platform.h should answer that")
            include = INCLUDE.match(line)
            if not include or path.startswith("tests/"):
                continue
            name = include.group(2)
            target = resolve(name, path, files)
            if target:
                graph[path].append(target)
                fault = check_own_include(path, target)
            elif name in GENERATED:
                fault = None
            elif include.group(1) == '"':
                fault = f'"{name}" is not found below include/ or src/'
            else:
                fault = check_foreign_include(path, name)
            if fault:
                faults.append(f"{path}:{number}: {fault}")
    circle = find_circle(graph)
    if circle:
        faults.append("circle of includes: " + " -> ".join(circle))
    for fault in faults:
        print(fault)
    print(f"include layering: {len(files)} files, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
