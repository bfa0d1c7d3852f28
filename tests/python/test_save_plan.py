"""Note.save() plans its output with notetool's planner: it refuses what notetool refuses,
in notetool's words, and its failures carry data (status codes, errnos), not parsed text."""

import errno
import shutil

import pytest

import libnote
from conftest import run_notetool


@pytest.mark.parametrize("kwargs, options", [
    ({"path": "x.jpg"}, ["-o", "x.jpg"]),  # not a folder of PNG pages named x.jpg
    ({"path": "x.pdf", "format": "png"}, ["-o", "x.pdf", "--format", "png"]),
    ({"format": "gif"}, ["--format", "gif"]),
    ({"scale": 100}, ["--scale", "100"]),  # not a page of 140400 x 187200 pixels
    ({"workers": 0}, ["-j", "0"]),
    ({"dpi": 10}, ["--dpi", "10"]),
])
def test_save_refuses_what_notetool_refuses_in_its_words(tmp_path, notes, kwargs, options, monkeypatch):
    monkeypatch.chdir(tmp_path)
    kwargs = {"path": "out/", **kwargs}
    with pytest.raises(ValueError) as raised:
        libnote.open(notes[0]).save(**kwargs)
    run = run_notetool("render", notes[0], *(options if "-o" in options else ["-o", "out/", *options]))
    assert run.returncode == 2
    # "notetool: --scale: 100 is not ..." beside "scale: 100 is not ...": the same words after
    # the argument's name, save()'s parameters named as notetool's options are.
    assert str(raised.value).split(": ", 1)[1] == run.stderr.strip().split(": ", 2)[2].replace("--", "")
    assert list(tmp_path.iterdir()) == []


def test_an_output_that_cannot_be_written_is_the_oserror_of_its_errno(tmp_path, notes):
    note = libnote.open(notes[0])
    # A link into a missing folder; the name would read as a status code in the message.
    link = tmp_path / "(code 5).pdf"
    link.symlink_to(tmp_path / "missing" / "x.pdf")
    with pytest.raises(FileNotFoundError) as raised:
        note.save(link)
    assert raised.value.errno == errno.ENOENT and raised.value.filename == str(link)
    blocker = tmp_path / "file"
    blocker.write_text("")
    with pytest.raises(NotADirectoryError) as raised:
        note.save(blocker / "x.pdf")
    assert raised.value.errno == errno.ENOTDIR and raised.value.filename.startswith(str(blocker))


def test_note_error_code_is_the_status_code_not_a_number_in_the_message(tmp_path, made):
    attacks = dict(line.split("\t")[::-2] for line in (made / "hostile" / "catalogue.tsv").read_text().splitlines())
    folder = tmp_path / "(code 5)"
    folder.mkdir()
    shutil.copy(made / "hostile" / (attacks["page number that is no number"] + ".note"), folder / "n.note")
    with pytest.raises(libnote.NoteError) as raised:
        libnote.open(folder / "n.note")
    assert raised.value.code is None and "(code 5)" in str(raised.value)
