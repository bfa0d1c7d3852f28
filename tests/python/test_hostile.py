"""The notes of tests/hostile through every call of the package: each call answers or raises
NoteError, exactly where the page library refuses the note, and never crashes."""


import libnote


def catalogue(made):
    for line in (made / "hostile" / "catalogue.tsv").read_text().splitlines():
        number, refused, attack = line.split("\t")
        yield made / "hostile" / f"{number}.note", refused == "1", attack


def exercise(path):
    """Every reading call on the note; the count of NoteErrors raised. What save() writes of
    such notes is the page library's, which notetool's tests hold to account."""
    errors = 0

    def call(work):
        nonlocal errors
        try:
            return work()
        except libnote.NoteError as error:
            assert error.code is None or error.reason, error
            errors += 1
            return None

    note = call(lambda: libnote.open(path))
    if note is None:
        return errors
    assert note.header is None or len(note.header) == 15
    for page in note:
        for layer in call(lambda: page.layers) or []:
            pixels = call(lambda: page.layer(layer))
            assert pixels is None or pixels.shape == (1872, 1404)
            colours = call(lambda: page.colours(layer))
            assert colours is None or colours.shape == (1872, 1404)
        rgba = call(lambda: page.render())
        assert rgba is None or rgba.shape == (1872, 1404, 4)
        for stroke in call(lambda: page.strokes) or []:
            assert len(stroke.points) == len(stroke)
            try:
                stroke.to_image(1404, 1872)
            except libnote.NoteError:
                pass  # a stroke without a range or with an unknown axis: not the reader's refusal
    return errors


def test_hostile_notes_raise_note_error_where_refused_and_never_crash(made):
    refusals = 0
    for path, refused, attack in catalogue(made):
        errors = exercise(path)
        assert (errors > 0) == refused, f"{attack}: {errors} NoteErrors"
        refusals += refused
    assert refusals >= 10
