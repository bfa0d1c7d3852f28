"""`pip install --no-build-isolation ./python` builds and installs the package offline, into a
virtual environment that sees the system's packages, and the package works from there."""

import os
import subprocess
import sys
from pathlib import Path

SOURCE = Path(os.environ["LIBNOTE_SOURCE_DIR"]) / "python"


def test_pip_builds_and_installs_the_package_offline(tmp_path, notes):
    venv = tmp_path / "venv"
    subprocess.run([sys.executable, "-m", "venv", "--system-site-packages", str(venv)], check=True)
    environment = {key: value for key, value in os.environ.items() if key in ("PATH", "HOME")}
    run = subprocess.run([str(venv / "bin" / "pip"), "install", "--no-index", "--no-build-isolation", str(SOURCE)],
                         env=environment, capture_output=True, text=True)
    assert run.returncode == 0, run.stdout + run.stderr
    run = subprocess.run([str(venv / "bin" / "python"), "-c",
                          "import sys, libnote; n = libnote.open(sys.argv[1]); print(libnote.__file__, n.page_count)",
                          str(notes[0])], env=environment, cwd=tmp_path, capture_output=True, text=True)
    assert run.returncode == 0, run.stderr
    module, pages = run.stdout.split()
    assert module.startswith(str(venv)) and int(pages) > 0
