#!/usr/bin/env python3
"""How large the tests are beside the code they test.

A line counts when it holds code: not blank, not only a comment (// or /* ... */).
Tested code: the library (src/, include/), notetool (tools/notetool/) and the Python module's
C++ (python/src/), *.cpp and *.h. Tests: every *.cpp and *.h under tests/, except
tests/support/ (the note writer and the helpers the tests share, which are counted apart).
The scripts that drive the package and the desktop pieces (tests/python/*.py,
tests/**/*.sh) are counted apart too, beside the Python package they test. Run from anywhere:

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
    tested = count(["src", "include", "tools/notetool", "python/src"])
    tests = count(["tests"], exclude=["tests/support"])
    support = count(["tests/support"])
    print(f"tested code (src/ include/ tools/notetool/ python/src/): {tested}")
    print(f"tests (tests/ without tests/support/):                   {tests}  {100 * tests / tested:.1f} %")
    print(f"with the writer and helpers (tests/support/):             {tests + support}  {100 * (tests + support) / tested:.1f} %")
    package = count(["python/libnote"], suffixes=(".py",))
    scripts = count(["tests/python"], suffixes=(".py",)) + count(["tests"], suffixes=(".sh",))
    print(f"Python package (python/libnote/): {package}; test scripts (tests/python/*.py, tests/**/*.sh): {scripts}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
