"""What the Python tests share: the notes make_python_notes writes, what the C++ API read
from them, and notetool, all located through the environment that ctest sets."""

import json
import os
import subprocess
from pathlib import Path

import numpy
import pytest

PAGE_SHAPE = (1872, 1404)


@pytest.fixture(scope="session")
def made(tmp_path_factory) -> Path:
    """The folder of notes/, reference/, hostile/ and tree/ (see make_python_notes.cpp)."""
    folder = tmp_path_factory.mktemp("made")
    subprocess.run([os.environ["LIBNOTE_NOTES_MAKER"], str(folder)], check=True, stdout=subprocess.DEVNULL)
    return folder


@pytest.fixture(scope="session")
def notes(made) -> list:
    return sorted((made / "notes").glob("*.note"))


def run_notetool(*args: str) -> subprocess.CompletedProcess:
    return subprocess.run([os.environ["NOTETOOL"], *map(str, args)], capture_output=True, text=True)


def reference_pixels(made: Path, note: Path, page: int, layer: str, kind: str) -> numpy.ndarray:
    """What the C++ call read: kind "pixels" (fetchNoteDataFromFileByLayer) or "colours"
    (loadImageData)."""
    dtype = numpy.uint8 if kind == "pixels" else numpy.dtype("<u4")
    data = (made / "reference" / f"{note.stem}.p{page}.{layer}.{kind}").read_bytes()
    return numpy.frombuffer(data, dtype=dtype).reshape(PAGE_SHAPE)


def reference_strokes(made: Path, note: Path, page: int) -> list:
    return json.loads((made / "reference" / f"{note.stem}.p{page}.strokes.json").read_text())


def files_in(folder: Path) -> dict:
    """Every file under folder by its relative path, with its bytes."""
    return {str(p.relative_to(folder)): p.read_bytes() for p in sorted(folder.rglob("*")) if p.is_file()}
