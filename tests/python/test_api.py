"""The package end to end on writer-made notes: every answer equal to the C++ API's or to
notetool's, and every failure an exception."""

import json
import subprocess
import sys
import textwrap

import numpy
import pytest
from PIL import Image

import libnote
from conftest import files_in, reference_pixels, reference_strokes, run_notetool


def notetool_info(note):
    run = run_notetool("info", note, "--json")
    assert run.returncode == 0, run.stderr
    return json.loads(run.stdout)["notes"][0]


def test_note_and_pages_as_notetool_lists_them(notes):
    for path in notes:
        info = notetool_info(path)
        note = libnote.open(path)
        assert note.page_count == len(note) == info["pageCount"]
        assert [page.number for page in note] == [page["number"] for page in info["pages"]]
        # notetool lists layers top first; the package in drawing order, bottom first.
        assert [page.layers for page in note.pages] == [page["layers"][::-1] for page in info["pages"]]
        expected = info["header"] and {key: str(value) for key, value in info["header"].items()}
        assert note.header == expected


def test_layers_and_colours_equal_the_cpp_calls(made, notes):
    for path in notes:
        for page in libnote.open(path):
            present = {p.name.split(".")[-2] for p in (made / "reference").glob(f"{path.stem}.p{page.number}.*.pixels")}
            assert set(page.layers) <= present
            for layer in libnote.LAYERS:
                if layer not in present:
                    with pytest.raises(KeyError):
                        page.layer(layer)
                    continue
                pixels = page.layer(layer)
                assert pixels.dtype == numpy.uint8 and pixels.shape == (1872, 1404)
                numpy.testing.assert_array_equal(pixels, reference_pixels(made, path, page.number, layer, "pixels"))
                colours = page.colours(layer)
                assert colours.dtype == numpy.uint32 and colours.shape == (1872, 1404)
                numpy.testing.assert_array_equal(colours, reference_pixels(made, path, page.number, layer, "colours"))


def test_strokes_equal_the_cpp_calls(made, notes):
    compared = 0
    for path in notes:
        for page in libnote.open(path):
            expected = reference_strokes(made, path, page.number)
            strokes = page.strokes
            assert len(strokes) == len(expected)
            for stroke, want in zip(strokes, expected):
                assert stroke.points.dtype == numpy.int32 and stroke.pressures.dtype == numpy.uint16
                assert stroke.points.reshape(-1, 2).tolist() == want["points"]
                assert stroke.pressures.tolist() == want["pressures"]
                assert (stroke.max_x, stroke.max_y, stroke.axis) == (want["max_x"], want["max_y"], want["axis"])
                for size, mapped in want["mapped"].items():
                    width, height = map(int, size.split("x"))
                    assert stroke.to_image(width, height).reshape(-1, 2).tolist() == mapped
                compared += 1
    assert compared >= 5


# notetool's tests hold its PNG to the page; these hold render() to the PNG, with the
# options passed on and without.
@pytest.mark.parametrize("kwargs, options", [
    ({}, []),
    ({"scale": 2, "background": False, "transparent": True}, ["--scale", "2", "--no-background", "--transparent"]),
])
def test_render_gives_the_pixels_of_notetools_png(tmp_path, notes, kwargs, options):
    for path in notes:
        out = tmp_path / path.stem
        run = run_notetool("render", path, "-o", f"{out}/", "--format", "png", *options)
        assert run.returncode == 0, run.stderr
        for page in libnote.open(path):
            png, = out.glob(f"*-p{page.number}.png")
            numpy.testing.assert_array_equal(page.render(**kwargs), numpy.asarray(Image.open(png).convert("RGBA")))


# What the files hold is notetool's tests' business: save() has only to pass every option on
# as notetool's command line does, and then writes the same bytes.
@pytest.mark.parametrize("format, options, kwargs", [
    ("pdf", ["--vector", "--dpi", "100", "--pages", "1"], {"vector": True, "dpi": 100, "pages": [1]}),
    ("svg", ["--raster", "--transparent"], {"raster": True, "transparent": True}),
    ("png", ["--scale", "0.5", "--layers", "MAINLAYER,BGLAYER", "--no-background", "-j", "2"],
     {"scale": 0.5, "layers": ["MAINLAYER", "BGLAYER"], "background": False, "workers": 2}),
])
def test_save_writes_the_bytes_of_notetool(tmp_path, notes, format, options, kwargs):
    for path in notes:
        if "pages" in kwargs and kwargs["pages"][0] not in [p.number for p in libnote.open(path)]:
            continue
        by_tool, by_python = tmp_path / "tool" / path.stem, tmp_path / "python" / path.stem
        run = run_notetool("render", path, "-o", f"{by_tool}/", "--format", format, *options)
        assert run.returncode == 0, run.stderr
        libnote.open(path).save(f"{by_python}/", format=format, **kwargs)
        written = files_in(by_python)
        assert written and written == files_in(by_tool)


def test_missing_and_unreadable_files_raise_oserrors(tmp_path):
    with pytest.raises(FileNotFoundError):
        libnote.open(tmp_path / "missing.note")
    with pytest.raises(IsADirectoryError):
        libnote.open(tmp_path)


# Every kind of broken note raises NoteError: test_hostile.
def test_what_is_no_note_raises_note_error_with_code_and_reason(tmp_path):
    path = tmp_path / "bad.note"
    path.write_bytes(b"not a note at all")
    with pytest.raises(libnote.NoteError) as raised:
        libnote.open(path)
    error = raised.value
    assert isinstance(error.code, int) and error.code != 0
    assert error.reason and error.reason in str(error)
    assert str(path) in str(error)


def test_wrong_requests_raise(tmp_path, notes):
    note = libnote.open(notes[0])
    page = note.pages[-1]  # the page without layers or strokes
    assert page.layers == [] and page.strokes == []
    with pytest.raises(ValueError):
        page.layer("mainlayer")
    with pytest.raises(KeyError):
        page.layer("MAINLAYER")
    with pytest.raises(KeyError):
        page.colours("LAYER3")
    with pytest.raises(ValueError):
        page.render(scale=1.5)
    with pytest.raises(ValueError):
        note.save(tmp_path / "x/", pages=[99])
    with pytest.raises(ValueError):
        note.save(tmp_path / "x/", layers=["TOPLAYER"])
    with pytest.raises(ValueError):
        note.pages[0].strokes[0].to_image(0, 10)


def test_a_page_that_fails_while_saving_raises_its_code_and_strict_writes_nothing(tmp_path, made):
    attacks = dict(line.split("\t")[::-2] for line in (made / "hostile" / "catalogue.tsv").read_text().splitlines())
    note = libnote.open(made / "hostile" / (attacks["bitmap length 0xFFFFFFFF"] + ".note"))
    with pytest.raises(libnote.NoteError) as raised:
        note.save(tmp_path / "strict.pdf", strict=True)
    assert raised.value.code == 27 and "MAINLAYER" in str(raised.value)
    assert list(tmp_path.iterdir()) == []


LOG_SCRIPT = textwrap.dedent("""
    import ctypes, os, subprocess, sys
    import libnote
    if len(sys.argv) > 2:
        libnote.set_log(sys.argv[2])
    note = libnote.open(sys.argv[1])
    note.pages[0].layer(note.pages[0].layers[0])
    note.pages[0].strokes
    note.save("pages/", workers=2)  # on threads that Python does not know
    print("python's own output", flush=True)
    libc = ctypes.CDLL(None)
    libc.puts(b"C's own output")
    libc.fflush(None)
    subprocess.run(["echo", "a subprocess's output"], check=True)
""")


def test_the_library_log_stays_off_standard_output_unless_asked_for(tmp_path, notes):
    expected = "python's own output\nC's own output\na subprocess's output\n"
    run = subprocess.run([sys.executable, "-c", LOG_SCRIPT, str(notes[0])], capture_output=True, text=True,
                         cwd=tmp_path)
    assert run.returncode == 0, run.stderr
    assert run.stdout == expected

    log = tmp_path / "libnote.log"
    run = subprocess.run([sys.executable, "-c", LOG_SCRIPT, str(notes[0]), str(log)], capture_output=True, text=True,
                         cwd=tmp_path)
    assert run.returncode == 0, run.stderr
    assert run.stdout == expected
    assert "fetchNoteDataFromFileByLayer" in log.read_text()
    with pytest.raises(OSError):
        libnote.set_log(tmp_path / "missing" / "libnote.log")
