"""Read the note files of an e-ink writing tablet: pages, layers, strokes, and exports.

    >>> import libnote
    >>> note = libnote.open("sample.note")
    >>> page = note.pages[0]
    >>> page.render().shape          # RGBA, as notetool draws the page
    (1872, 1404, 4)
    >>> note.save("sample.pdf")      # the same bytes as `notetool render sample.note -o sample.pdf`

The work is done by libNote and the page library in C++, without the GIL, so
threads read and write notes in parallel. libNote's own log never reaches standard
output; set_log() keeps it in a file.
"""

import builtins
import os
from typing import Iterator, List, Optional, Sequence, Tuple

import numpy

from . import _libnote
from ._errors import NoteError
from ._libnote import Stroke

__all__ = ["open", "set_log", "Note", "Page", "Stroke", "NoteError", "LAYERS", "PAGE_WIDTH", "PAGE_HEIGHT"]

PAGE_WIDTH: int = _libnote.PAGE_WIDTH
PAGE_HEIGHT: int = _libnote.PAGE_HEIGHT
#: The layer names, bottom to top, in the order the tablet draws them by default.
LAYERS: Tuple[str, ...] = tuple(_libnote.LAYER_ORDER)


def open(path: "os.PathLike[str] | str") -> "Note":
    """Opens the note at ``path`` and reads its index.

    Raises FileNotFoundError (or another OSError) when the file cannot be opened, and
    NoteError when it is not a readable note.
    """
    path = os.fspath(path)
    # The operating system's own error, with its errno, for a path that is no readable file.
    with builtins.open(path, "rb"):
        pass
    return Note(path)


def set_log(path: "Optional[os.PathLike[str] | str]") -> None:
    """Appends libNote's own log to the file at ``path``; None discards it (the default).

    The log is what libNote prints while it reads (progress and failure texts). It never
    appears on the program's standard output.
    """
    _libnote.set_log(None if path is None else os.fspath(path))


class Note:
    """A note file: its header and its pages. Made by libnote.open()."""

    def __init__(self, path: str):
        self.path = path
        self._numbers: List[int] = _libnote.note_pages(path)
        self.pages: Tuple["Page", ...] = tuple(Page(self, number) for number in self._numbers)
        """The pages in the order of their numbers; ``page.number`` is the index's number (from 1)."""
        self._header: Optional[List[Tuple[str, str]]] = None
        self._header_read = False

    @property
    def page_count(self) -> int:
        """The number of pages the note's index lists."""
        return len(self.pages)

    @property
    def header(self) -> Optional[dict]:
        """The fifteen fields of the header module by their file keys ("FILE_TYPE",
        "DEVICE_DPI", ...), as text; None for a note without a header module."""
        if not self._header_read:
            self._header = _libnote.header(self.path)
            self._header_read = True
        return None if self._header is None else dict(self._header)

    def page(self, number: int) -> "Page":
        """The page with the index's number ``number``; KeyError when the note has none."""
        for page in self.pages:
            if page.number == number:
                return page
        raise KeyError(f"{self.path} has no page {number}")

    def __len__(self) -> int:
        return len(self.pages)

    def __iter__(self) -> Iterator["Page"]:
        return iter(self.pages)

    def __repr__(self) -> str:
        return f"<libnote.Note {self.path!r}, {len(self.pages)} pages>"

    def save(self, path: "os.PathLike[str] | str", format: Optional[str] = None, pages: Optional[Sequence[int]] = None,
             *, scale: float = 1.0, background: bool = True, layers: Optional[Sequence[str]] = None,
             transparent: bool = False, raster: bool = False, vector: bool = False, dpi: float = 0, strict: bool = False,
             workers: int = 1) -> None:
        """Writes pages as PNG, PDF or SVG, byte for byte as ``notetool render`` does.

        ``path`` is a file for a PDF or a single page, otherwise a folder (made when
        missing, or named with a trailing "/") of ``<note>-p<N>.<ext>`` files. ``format``
        is "png", "pdf" or "svg"; without it, the extension of ``path`` decides, else PNG.
        ``pages`` are the index's page numbers (default: all). ``scale`` (0.05 to 16),
        ``background``, ``layers``, ``transparent``, ``raster`` (SVG: the picture, not
        outlines), ``vector`` (PDF: outlines, not the picture), ``dpi`` (50 to 2400; 0: the
        note's own) and ``strict`` draw and write the pages as notetool's options of the same
        names do; ``workers`` threads (1 to 256) share the pages.

        Raises ValueError for what notetool refuses as a usage error, in its words: an
        unknown format, an extension of ``path`` that is no format's ("x.jpg") or not the
        one ``format`` names, a number out of its bounds. Files appear only when complete.
        Raises NoteError when a page cannot be read, after writing the rest (a blank page
        stands in for it in a document) or, with ``strict``, nothing at all; OSError when a
        file cannot be written, of the subclass its errno chooses (PermissionError, ...), with
        ``errno`` and ``filename`` set.
        """
        if raster and vector:
            raise ValueError("raster and vector exclude each other")
        unknown = [name for name in (layers or ()) if name not in LAYERS]
        if unknown:
            raise ValueError(f"unknown layers {unknown}: the layers are {', '.join(LAYERS)}")
        _libnote.save(self.path, self._chosen_pages(pages), self._numbers[-1], os.fspath(path), format or "", scale,
                      background, list(layers or ()), transparent, raster, vector, dpi, strict, workers)

    def _chosen_pages(self, pages: Optional[Sequence[int]]) -> List[int]:
        if not self._numbers:
            raise NoteError(f"{self.path}: the note has no pages")
        if pages is None:
            return list(self._numbers)
        missing = sorted(set(pages) - set(self._numbers))
        if missing:
            raise ValueError(f"{self.path} has no pages {missing}")
        return sorted(set(pages))


class Page:
    """One page of a note: its layers' pictures, the composited page and its strokes."""

    def __init__(self, note: Note, number: int):
        self.note = note
        self.number = number
        self._layers: Optional[Tuple[List[str], List[str]]] = None

    def _page_layers(self) -> Tuple[List[str], List[str]]:
        if self._layers is None:
            self._layers = _libnote.page_layers(self.note.path, self.number)
        return self._layers

    @property
    def layers(self) -> List[str]:
        """The names of the layers drawn, bottom to top: the page's own order (its
        "LAYERSEQ") or the default one, without the layers the page lacks or leaves out."""
        return list(self._page_layers()[0])

    def _check_layer(self, name: str) -> None:
        if name not in LAYERS:
            raise ValueError(f"unknown layer {name!r}: the layers are {', '.join(LAYERS)}")
        present = self._page_layers()[1]
        if name not in present:
            raise KeyError(f"{self.note.path}: page {self.number} has no layer {name} "
                           f"(it has {', '.join(present) or 'none'})")

    def layer(self, name: str) -> numpy.ndarray:
        """The picture of one layer as libNote decodes it: a uint8 array of shape
        (1872, 1404), one pixel value each (0xFF where the layer has no ink).

        Raises ValueError for a name that is no layer, KeyError when the page has no such
        layer, NoteError when it cannot be read.
        """
        self._check_layer(name)
        return _libnote.layer_pixels(self.note.path, self.number, name)

    def colours(self, name: str) -> numpy.ndarray:
        """The picture of one layer as 32-bit colours 0xAARRGGBB (libNote's loadImageData):
        a uint32 array of shape (1872, 1404), 0 where transparent. Raises as layer() does."""
        self._check_layer(name)
        return _libnote.layer_colours(self.note.path, self.number, name)

    def render(self, scale: float = 1.0, background: bool = True, transparent: bool = False) -> numpy.ndarray:
        """The page as the tablet shows it, an RGBA uint8 array of shape
        (1872 * scale, 1404 * scale, 4): the pixels of notetool's PNG of the page.

        ``scale`` is a whole number (each pixel a square); ``background`` False leaves out
        the background layer; ``transparent`` leaves out the white paper, and with it the
        background layer's white, as notetool does.
        """
        whole = int(round(scale))
        if whole < 1 or abs(scale - whole) > 1e-9:
            raise ValueError("render() scales by whole numbers; save() scales PNG files by any factor")
        return _libnote.render_page(self.note.path, self.number, whole, background, transparent)

    @property
    def strokes(self) -> List[Stroke]:
        """The page's pen strokes, in the order the file holds them."""
        return _libnote.page_strokes(self.note.path, self.number)

    def __repr__(self) -> str:
        return f"<libnote.Page {self.number} of {self.note.path!r}>"
