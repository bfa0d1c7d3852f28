import os
from typing import Iterator, List, Optional, Sequence, Tuple, Union

import numpy
import numpy.typing

_Path = Union[str, "os.PathLike[str]"]

PAGE_WIDTH: int
PAGE_HEIGHT: int
LAYERS: Tuple[str, ...]

class NoteError(Exception):
    message: str
    code: Optional[int]
    reason: Optional[str]
    def __init__(self, message: str, code: Optional[int] = ..., reason: Optional[str] = ...) -> None: ...

class Stroke:
    @property
    def points(self) -> numpy.typing.NDArray[numpy.int32]: ...
    @property
    def pressures(self) -> numpy.typing.NDArray[numpy.uint16]: ...
    @property
    def max_x(self) -> int: ...
    @property
    def max_y(self) -> int: ...
    @property
    def axis(self) -> int: ...
    def to_image(self, width: int, height: int) -> numpy.typing.NDArray[numpy.int32]: ...
    def __len__(self) -> int: ...

class Page:
    note: Note
    number: int
    @property
    def layers(self) -> List[str]: ...
    def layer(self, name: str) -> numpy.typing.NDArray[numpy.uint8]: ...
    def colours(self, name: str) -> numpy.typing.NDArray[numpy.uint32]: ...
    def render(self, scale: float = ..., background: bool = ..., transparent: bool = ...) -> numpy.typing.NDArray[numpy.uint8]: ...
    @property
    def strokes(self) -> List[Stroke]: ...

class Note:
    path: str
    pages: Tuple[Page, ...]
    @property
    def page_count(self) -> int: ...
    @property
    def header(self) -> Optional[dict[str, str]]: ...
    def page(self, number: int) -> Page: ...
    def __len__(self) -> int: ...
    def __iter__(self) -> Iterator[Page]: ...
    def save(
        self,
        path: _Path,
        format: Optional[str] = ...,
        pages: Optional[Sequence[int]] = ...,
        *,
        scale: float = ...,
        background: bool = ...,
        layers: Optional[Sequence[str]] = ...,
        transparent: bool = ...,
        raster: bool = ...,
        dpi: float = ...,
        strict: bool = ...,
        workers: int = ...,
    ) -> None: ...

def open(path: _Path) -> Note: ...
def set_log(path: Optional[_Path]) -> None: ...
