"""The exception of libnote, apart from the compiled module that raises it."""

from typing import Optional


class NoteError(Exception):
    """A note that libNote refuses: unreadable, malformed, or missing what was asked for.

    ``code`` is libNote's status code (for example 27: the layer is missing or cannot be
    read), or None where the failure has no code; ``reason`` says what the code means.
    """

    def __init__(self, message: str, code: Optional[int] = None, reason: Optional[str] = None):
        super().__init__(message, code, reason)
        self.message = message
        self.code = code
        self.reason = reason

    def __str__(self) -> str:
        # the page library words most failures with their reason already.
        return f"{self.message}: {self.reason}" if self.reason and self.reason not in self.message else self.message
