#!/usr/bin/env python3
"""How large the tests are beside the code they test.

A line counts when it holds code: not blank, not only a comment (// or /* ... */, #).
Tested code: the library (src/, include/), notetool (tools/notetool/), the page library
(pages/), the Python module's C++ (python/src/) and the viewer plugins (evince/, kde/) and
the WebAssembly module (web/src/), *.cpp and *.h, with the Python package
(python/libnote/*.py) and the web package's JavaScript (web/lib/, web/viewer/). Tests: every
*.cpp and *.h under tests/, the Python tests (tests/python/*.py) and the web package's
(web/test/). Counted apart, as support: the note writer (notewriter/), the helpers
the tests share (tests/support/), the program that writes the Python tests' notes
(tests/python/make_python_notes.cpp, which checks nothing) and the handwriting generator's
test (tests/handwriting_test.cpp: it tests the note writer, not counted code). The shell
scripts that check the desktop files and the installed package (tests/**/*.sh) test no
counted code and are counted apart too. Run from anywhere:

    tests/count-lines.py
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def code_lines(path):
    text = path.read_text(encoding="utf-8", errors="replace")
    # Comments out, strings kept whole so that "//" inside a literal is not taken for one.
    if path.suffix in (".py", ".sh"):
        return sum(1 for line in text.splitlines() if line.strip() and not line.strip().startswith("#"))
    pattern = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'', re.S)
    def keep(m):
        s = m.group(0)
        if s.startswith("/*"):
            return "\n" * s.count("\n")
        return "" if s.startswith("//") else s
    return sum(1 for line in pattern.sub(keep, text).splitlines() if line.strip())


# Sources under tests/ that support the tests rather than test counted code.
SUPPORT = ["tests/support", "tests/python/make_python_notes.cpp"]
NOTEWRITER_TEST = "tests/handwriting_test.cpp"
JAVASCRIPT = (".js", ".mjs", ".ts")


def count(places, exclude=(), suffixes=(".cpp", ".h")):
    """Code lines of the files (or the files under the folders) named, less those excluded."""
    total = 0
    for place in places:
        root = ROOT / place
        for path in sorted(root.rglob("*")) if root.is_dir() else [root]:
            if path.suffix not in suffixes or any(ROOT / e in (path, *path.parents) for e in exclude):
                continue
            total += code_lines(path)
    return total


def main():
    cpp = count(["src", "include", "tools/notetool", "pages", "python/src", "evince", "kde", "web/src"])
    package = count(["python/libnote"], suffixes=(".py",))
    web = count(["web/lib", "web/viewer"], suffixes=JAVASCRIPT)
    tested = cpp + package + web
    cpp_tests = count(["tests"], exclude=SUPPORT + [NOTEWRITER_TEST])
    python_tests = count(["tests/python"], suffixes=(".py",))
    web_tests = count(["web/test"], suffixes=JAVASCRIPT)
    tests = cpp_tests + python_tests + web_tests
    support = count(["notewriter", *SUPPORT])
    notewriter_test = count([NOTEWRITER_TEST])
    scripts = count(["tests"], suffixes=(".sh",))
    print(f"tested code: C++ (src/ include/ tools/notetool/ pages/ python/src/ evince/ kde/ web/src/) {cpp},"
          f" Python (python/libnote/) {package}, JavaScript (web/lib/ web/viewer/) {web}: {tested}")
    print(f"tests: C++ (tests/ without the support below) {cpp_tests}, Python (tests/python/*.py) {python_tests},"
          f" JavaScript (web/test/) {web_tests}: {tests}  {100 * tests / tested:.1f} %")
    print(f"support: the note writer and helpers (notewriter/ tests/support/"
          f" tests/python/make_python_notes.cpp) {support}, the note writer's handwriting test"
          f" ({NOTEWRITER_TEST}) {notewriter_test}")
    with_support = tests + support + notewriter_test
    print(f"tests with the support: {with_support}  {100 * with_support / tested:.1f} %")
    print(f"apart: shell scripts (tests/**/*.sh): {scripts}")
    return 0

if __name__ == "__main__":
    sys.exit(main())
