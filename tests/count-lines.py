#!/usr/bin/env python3
"""How large the tests are beside the code they test.

A line counts when it holds code: not blank, not only a comment (// or /* ... */, #).
Tested code: the library (src/, include/), notetool (tools/notetool/), the page library
(pages/) and the Python module's C++ (python/src/), *.cpp and *.h, with the Python package
(python/libnote/*.py). Tests: every *.cpp and *.h under tests/ and the Python tests
(tests/python/*.py). The note writer (notewriter/) and the helpers the tests share
(tests/support/) are counted apart, and so are the shell scripts that check the desktop
files and the installed package (tests/**/*.sh), which test no counted code. Run from anywhere:

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


def count(folders, exclude=(), suffixes=(".cpp", ".h")):
    total = 0
    for folder in folders:
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix not in suffixes or any(ROOT / e in path.parents for e in exclude):
                continue
            total += code_lines(path)
    return total


def main():
    cpp = count(["src", "include", "tools/notetool", "pages", "python/src"])
    package = count(["python/libnote"], suffixes=(".py",))
    tested = cpp + package
    cpp_tests = count(["tests"], exclude=["tests/support"])
    python_tests = count(["tests/python"], suffixes=(".py",))
    tests = cpp_tests + python_tests
    support = count(["notewriter", "tests/support"])
    scripts = count(["tests"], suffixes=(".sh",))
    print(f"tested code: C++ (src/ include/ tools/notetool/ pages/ python/src/) {cpp}, Python (python/libnote/) {package}:"
          f" {tested}")
    print(f"tests: C++ (tests/ without tests/support/) {cpp_tests}, Python (tests/python/) {python_tests}:"
          f" {tests}  {100 * tests / tested:.1f} %")
    print(f"with the note writer and helpers (notewriter/ tests/support/):"
          f" {tests + support}  {100 * (tests + support) / tested:.1f} %")
    print(f"apart: shell scripts (tests/**/*.sh): {scripts}")
    return 0

if __name__ == "__main__":
    sys.exit(main())
