"""examples/cluster_convert.py on a local Dask cluster of two worker processes writes what
`notetool convert` writes, byte for byte, and reports the broken note as notetool does."""

import os
import subprocess
import sys
from pathlib import Path

import pytest

from conftest import files_in, run_notetool

EXAMPLE = Path(os.environ["LIBNOTE_SOURCE_DIR"]) / "examples" / "cluster_convert.py"


@pytest.mark.parametrize("format", ["png", "pdf"])
def test_a_local_cluster_writes_what_notetool_convert_writes(made, tmp_path, format):
    tree = made / "tree"
    by_tool, by_cluster = tmp_path / "tool", tmp_path / "cluster"
    tool = run_notetool("convert", tree, "-o", by_tool, "--format", format)
    cluster = subprocess.run([sys.executable, str(EXAMPLE), str(tree), "-o", str(by_cluster), "--format", format,
                              "--workers", "2"], capture_output=True, text=True, timeout=300)
    assert tool.returncode == cluster.returncode == 1, cluster.stderr
    written = files_in(by_cluster)
    assert len(written) >= 3 and written == files_in(by_tool)
    broken = str(tree / "sub" / "broken.note")
    assert [line for line in tool.stderr.splitlines() if broken in line]
    report = [line for line in cluster.stderr.splitlines() if broken in line]
    assert len(report) == 1 and "code" in report[0]
