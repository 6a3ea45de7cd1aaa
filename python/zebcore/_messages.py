"""What becomes of reports, other than exceptions and warnings."""
from __future__ import annotations

from collections.abc import Callable
from typing import Any, Optional, Union

from . import raw
from ._arrays import choice, encode
from ._core import _report, call, callback
from .raw import lib

_SEVERITIES = {"info": raw.ZEB_INFO, "warning": raw.ZEB_WARNING, "error": raw.ZEB_ERROR,
               "severe": raw.ZEB_SEVERE, "all": raw.ZEB_ALL}
_printer: Any = None


def error_handler(severity: str, kind: Union[str, int]) -> None:
    """Chooses what becomes of reports: "raise", as at the start, which makes exceptions of errors and
    warnings of the others; or what the library does by itself: "ignore", "print" or "abort".

    severity  "info", "warning", "error", "severe" or "all"
    """
    if severity not in _SEVERITIES:
        raise ValueError(f"error_handler(): no {severity!r} among {', '.join(_SEVERITIES)}")
    if kind == "raise":
        call(lib.zebCustomErrorHandler, _SEVERITIES[severity], _report)
    else:
        call(lib.zebErrorHandler, _SEVERITIES[severity],
             choice("error_handler()", "kind", kind, "ZEB_ERROR_"))


def error_printer(function: Optional[Callable[[str], Any]]) -> None:
    """Hands the lines that the library prints itself (`error_handler`) to a function; None drops
    them."""
    global _printer

    def take(line: Optional[bytes]) -> None:
        with callback():
            assert function is not None
            function((line or b"").decode(errors="replace"))

    kept = None if function is None else raw.PrintFunction(take)
    call(lib.zebErrorPrinter, kept)
    _printer = kept


def last_error() -> int:
    """The code of the last report that the library has handled itself."""
    return int(call(lib.zebLastError))


def comment(text: str) -> None:
    """Does nothing with a comment."""
    call(lib.zebComment, encode(text, "a comment"))


def version() -> str:
    """The library's version: "0.1.0"."""
    number = int(lib.zebVersion())
    return f"{number // 10000}.{number // 100 % 100}.{number % 100}"
