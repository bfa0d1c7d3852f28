"""The package as `cmake --install` puts it into a prefix: importable from the prefix's
site-packages alone, and using the prefix's own libNote."""

import os
import subprocess
import sys
import textwrap

SCRIPT = textwrap.dedent("""
    import sys
    import libnote
    note = libnote.open(sys.argv[1])
    pixels = note.pages[0].layer("MAINLAYER")
    maps = open("/proc/self/maps").read().split()
    library = sorted({word for word in maps if "libNote.so" in word})
    print(libnote.__file__, note.page_count, int((pixels != 255).sum() > 0), *library)
""")


def test_the_installed_package_imports_from_the_prefix(tmp_path, notes):
    prefix = tmp_path / "prefix"
    subprocess.run(["cmake", "--install", os.environ["LIBNOTE_BUILD_DIR"], "--prefix", str(prefix)],
                   check=True, capture_output=True)
    environment = {key: value for key, value in os.environ.items()
                   if key in ("PATH", "LD_PRELOAD", "ASAN_OPTIONS", "HOME")}
    environment["PYTHONPATH"] = str(prefix / os.environ["LIBNOTE_PYTHON_INSTALL_DIR"])
    run = subprocess.run([sys.executable, "-c", SCRIPT, str(notes[0])], env=environment, cwd=tmp_path,
                         capture_output=True, text=True)
    assert run.returncode == 0, run.stderr
    module, pages, inked, *libraries = run.stdout.split()
    assert module.startswith(str(prefix))
    assert int(pages) == libnote_pages(notes[0]) and inked == "1"
    assert libraries and all(path.startswith(str(prefix)) for path in libraries)


def libnote_pages(path):
    import libnote
    return libnote.open(path).page_count
