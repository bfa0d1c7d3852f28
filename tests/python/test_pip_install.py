"""`pip install --no-build-isolation ./python` builds and installs the package offline, into a
virtual environment that sees the system's packages, and the package works from there."""

import os
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(os.environ["LIBNOTE_SOURCE_DIR"])
# What the package's build reads. pip builds in the source folder (build/, *.egg-info), so it
# builds from a copy, which also shows that the package needs nothing else of the project.
PACKAGE_SOURCES = ["CMakeLists.txt", "cmake", "include", "src", "pages", "python"]


def test_pip_builds_and_installs_the_package_offline(tmp_path, notes):
    source = tmp_path / "source"
    source.mkdir()
    for name in PACKAGE_SOURCES:
        if (ROOT / name).is_dir():
            # Not what an earlier pip build left in a working copy.
            shutil.copytree(ROOT / name, source / name, ignore=shutil.ignore_patterns("build", "*.egg-info", "__pycache__"))
        else:
            shutil.copyfile(ROOT / name, source / name)
    venv = tmp_path / "venv"
    subprocess.run([sys.executable, "-m", "venv", "--system-site-packages", str(venv)], check=True)
    environment = {key: value for key, value in os.environ.items() if key in ("PATH", "HOME")}
    run = subprocess.run([str(venv / "bin" / "pip"), "install", "--no-index", "--no-build-isolation", str(source / "python")],
                         env=environment, capture_output=True, text=True)
    assert run.returncode == 0, run.stdout + run.stderr
    run = subprocess.run([str(venv / "bin" / "python"), "-c",
                          "import sys, libnote; n = libnote.open(sys.argv[1]); print(libnote.__file__, n.page_count)",
                          str(notes[0])], env=environment, cwd=tmp_path, capture_output=True, text=True)
    assert run.returncode == 0, run.stderr
    module, pages = run.stdout.split()
    assert module.startswith(str(venv)) and int(pages) > 0
