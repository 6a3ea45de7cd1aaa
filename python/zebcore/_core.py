"""The library's state as the package keeps it: who may call, which blocks are open, what was
reported, and what callbacks have left to be raised."""
from __future__ import annotations

import re
import signal
import sys
import threading
import warnings
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from dataclasses import dataclass, field, replace
from pathlib import Path
from types import FrameType, TracebackType
from typing import Any, Optional, TypeVar

from . import raw
from .raw import lib

_HERE = str(Path(__file__).resolve().parent)


class Warning(UserWarning):
    """The picture is made, but not all of it, or not as it was asked for."""


class Info(Warning):
    """Nothing is wrong with the call, but perhaps with the program: a parameter that nothing reads,
    for instance."""


class Error(RuntimeError):
    """A call that the library has refused, or has put an argument of right.

    code      what was wrong, as the reference of the interface lists it
    severity  raw.ZEB_ERROR or raw.ZEB_SEVERE
    function  the C function that has reported it
    block     the innermost block that was open: "picture", "world", "attributes" ...; None outside
    reports   all that the call has reported: (code, severity, message) each
    """

    def __init__(self, message: str, code: int = 0, severity: int = raw.ZEB_ERROR,
                 function: Optional[str] = None, block: Optional[str] = None,
                 reports: tuple[tuple[int, int, str], ...] = ()) -> None:
        super().__init__(message)
        self.code = code
        self.severity = severity
        self.function = function
        self.block = block
        self.reports = reports

    def __reduce__(self) -> tuple[Any, ...]:
        return type(self), (str(self), self.code, self.severity, self.function, self.block,
                            self.reports)


# What the bare name of a function stands for, which is all that the library says of these.
_WRONG_BLOCK = {
    4: "no such block is open, or it is not the innermost one",
    5: "options are set before the world block",
    6: "not in an object block",
    7: "primitives belong in a world block; instances and procedurals in no object or motion block",
    8: "not legal here",
}


@dataclass
class Options:
    """What the package has to remember of options; a frame brings back those from before."""

    color_width: int = 3
    kept: dict[str, Any] = field(default_factory=dict)  # the callbacks in force
    progress: Optional[Callable[[int], Any]] = None
    to_picture: bool = False             # whether a Picture gets the pixels, which come as these say
    samples: int = raw.ZEB_SAMPLES_RGB
    color_one: int = 255
    depth_one: int = 0
    bucket: tuple[int, int] = (12, 12)
    cropped: bool = False


@dataclass
class State:
    """There is one, as the library has one state."""

    owner: int = 0
    blocks: list["Block"] = field(default_factory=list)
    options: list[Options] = field(default_factory=lambda: [Options()])
    reports: list[tuple[int, int, str]] = field(default_factory=list)
    kept: Optional[BaseException] = None  # what a callback has raised
    callbacks: int = 0                    # under way
    users_code: bool = False              # whether one of them may be interrupted
    usual: Any = None                     # who has Ctrl-C outside blocks
    deferring: int = 0
    interrupted: bool = False
    rendering: int = -1  # how many blocks were open when it began
    dead_images: list[int] = field(default_factory=list)
    hear: Optional[Callable[[type[Warning], str], Any]] = None  # what takes warnings, if not Python


state = State()


def claim() -> None:
    """Lets this thread call; refused while another has blocks open."""
    mine = threading.get_ident()
    if state.owner == mine:
        return
    if state.blocks or state.callbacks or state.rendering >= 0:
        raise RuntimeError("zebcore is in use on another thread: all calls from the first block to "
                           "the end of the last must come from one thread")
    state.owner = mine


def call(function: Any, *arguments: Any) -> Any:
    """Calls a function of the library, and raises what it reports."""
    if state.owner != threading.get_ident():
        claim()
    result = function(*arguments)
    if state.reports or state.kept is not None:
        settle(function)
    return result


def where() -> int:
    """How far up the stack the caller of the package is."""
    level, frame = 1, sys._getframe(1)
    while frame.f_back and frame.f_code.co_filename.startswith(_HERE):
        level, frame = level + 1, frame.f_back
    return level


def _spell(code: int, message: str) -> str:
    if code in _WRONG_BLOCK and re.fullmatch(r"zeb\w+|", message):
        return f"{message or 'zebReset'}: {_WRONG_BLOCK[code]}"
    return message


def settle(function: Any) -> None:
    """Turns what was kept and reported into exceptions and warnings."""
    reports, state.reports = state.reports, []
    kept, state.kept = state.kept, None
    if kept is not None:
        raise kept
    errors = [r for r in reports if r[1] in (raw.ZEB_ERROR, raw.ZEB_SEVERE)]
    for code, severity, message in reports:
        if severity in (raw.ZEB_INFO, raw.ZEB_WARNING) and code != 0:
            kind = Info if severity == raw.ZEB_INFO else Warning
            if state.hear is not None:
                state.hear(kind, _spell(code, message))
            else:
                warnings.warn(_spell(code, message), kind, stacklevel=where())
    if not errors:
        return
    code, severity, message = errors[0]
    named = re.match(r"zeb\w+", message)
    more = f" (and {len(errors) - 1} more)" if len(errors) > 1 else ""
    raise Error(_spell(code, message) + more, code, severity,
                named.group() if named else function.__name__,
                state.blocks[-1].kind if state.blocks else None, tuple(reports))


def forget() -> None:
    """Drops what was reported and kept: something else is being raised already."""
    state.reports, state.kept = [], None


# Callbacks. None may let an exception into the library: it is kept, the picture is given up, and
# the call that renders raises it.

@contextmanager
def callback() -> Iterator[None]:
    """Around code of the user's that the library calls."""
    saved, state.reports = state.reports, []
    outer = state.users_code
    state.callbacks += 1
    try:
        state.users_code = True
        yield
        state.users_code = outer
    except BaseException as error:
        state.users_code = outer
        keep(error)
    finally:
        state.users_code = outer
        state.callbacks -= 1
        state.reports = saved + state.reports


def keep(error: BaseException) -> None:
    """Keeps an exception of a callback, and gives the picture up."""
    if state.kept is None:
        state.kept = error
    lib.zebCancel()


def _hear(code: int, severity: int, message: Optional[bytes]) -> None:
    text = (message or b"").decode(errors="replace")
    if severity == raw.ZEB_SEVERE:  # the process ends when this returns
        print(f"zebcore: {text}", file=sys.stderr, flush=True)
    state.reports.append((code, severity, text))


_report = raw.ErrorFunction(_hear)


def _hear_progress(_: Optional[int], percent: int) -> int:
    function = state.options[-1].progress
    if function is not None:
        with callback():
            if function(percent):
                lib.zebCancel()
    return 0


_progress = raw.ProgressFunction(_hear_progress)


def connect() -> None:
    """Hears what the library has to say; again after a reset, which lets go of options."""
    lib.zebProgressCallback(_progress, None)


lib.zebCustomErrorHandler(raw.ZEB_ALL, _report)
connect()


# Interrupts

def _interrupt(number: int, frame: Optional[FrameType]) -> None:
    if not state.deferring:
        state.usual(number, frame)
        return
    state.interrupted = True
    lib.zebCancel()
    if state.users_code:
        raise KeyboardInterrupt


class _Deferred:
    """Around calls that render, and around the begin and end of blocks, which must not come apart:
    Ctrl-C gives the picture up, and is raised when all is done.

    The signal is looked at when the library next calls Python: after each bucket, at the latest. From
    the first block to the end of the last the handler is the package's.
    """

    def __enter__(self) -> None:
        if state.usual is None and threading.current_thread() is threading.main_thread():
            usual = signal.getsignal(signal.SIGINT)
            if callable(usual):
                state.usual = usual
                signal.signal(signal.SIGINT, _interrupt)
        state.deferring += 1

    def __exit__(self, *_: object) -> None:
        state.deferring -= 1
        if state.deferring:
            return
        usual, interrupted, state.interrupted = state.usual, state.interrupted, False
        if not state.blocks:
            give_back()
        if interrupted:
            forget()
            usual(signal.SIGINT, None)


interruptible = _Deferred()


def give_back() -> None:
    """Gives Ctrl-C back to who had it, unless it has been taken by somebody else."""
    usual, state.usual = state.usual, None
    if usual is not None and signal.getsignal(signal.SIGINT) is _interrupt:
        signal.signal(signal.SIGINT, usual)


def render(function: Any, settling: bool = True) -> Any:
    """Calls a function that renders."""
    claim()
    outer, state.rendering = state.rendering, len(state.blocks)
    try:
        with interruptible:
            result = function()
    finally:
        state.rendering = outer
    if settling:
        settle(function)
    return result


# Blocks

_Self = TypeVar("_Self", bound="Block")


class Block:
    """A block of the library's, from "with" to its end. It ends however it is left."""

    kind = "block"

    def _begin(self) -> None:
        raise NotImplementedError

    def _end(self, failed: bool) -> None:
        raise NotImplementedError

    def _fill(self) -> None:
        """What is to be called when it is open, before its user's calls."""

    def _dropped(self) -> None:
        """A reset has closed it."""

    def __enter__(self: _Self) -> _Self:
        if self in state.blocks:
            raise RuntimeError(f"this {self.kind} block is open already")
        try:
            with interruptible:
                self._begin()
                state.blocks.append(self)
            self._fill()
        except BaseException as error:
            self.__exit__(type(error), error, error.__traceback__)
            raise
        return self

    def __exit__(self, kind: Optional[type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        if self not in state.blocks:  # a reset, or the end of an outer block, has closed it
            return
        claim()
        if state.blocks.index(self) < state.rendering:
            raise RuntimeError(f"the {self.kind} block can't end while its picture renders")
        with interruptible:
            left = unwind(self)
            state.blocks.remove(self)
            failed = error is not None or left is not None
            self._end(failed)
            if failed:
                forget()
        if left and error is None:
            raise RuntimeError(f"the {left} block was still open at the end of the {self.kind} block "
                               "around it; the picture is dropped")


def unwind(outer: Optional[Block]) -> Optional[str]:
    """Closes the blocks inside one that were left open; which kind the innermost was."""
    left = None
    while state.blocks and state.blocks[-1] is not outer:
        inner = state.blocks.pop()
        left = left or inner.kind
        inner._end(True)
        forget()
    return left


class Simple(Block):
    """A block of which the library needs to know no more than begin and end."""

    def __init__(self, kind: str, begin: Any, end: Any, *arguments: Any) -> None:
        self.kind = kind
        self._functions = begin, end
        self._arguments = arguments

    def _begin(self) -> None:
        call(self._functions[0], *self._arguments)

    def _end(self, failed: bool) -> None:
        if failed:
            self._functions[1]()
        else:
            call(self._functions[1])


class Frame(Block):
    """A frame: options, attributes and the transformation set in it end with it."""

    kind = "frame"

    def _begin(self) -> None:
        call(lib.zebFrameBegin)
        outer = state.options[-1]
        state.options.append(replace(outer, kept=dict(outer.kept)))
        free_images()

    def _end(self, failed: bool) -> None:
        try:
            if failed:
                lib.zebFrameEnd()
            else:
                call(lib.zebFrameEnd)
        finally:
            if len(state.options) > 1:
                state.options.pop()


class World(Block):
    """A world: its end renders. Left by an exception, it ends without a picture."""

    kind = "world"

    def _begin(self) -> None:
        free_images()
        options = state.options[-1]
        if options.to_picture and (options.samples != raw.ZEB_SAMPLES_RGBAZ or options.color_one
                                   or options.depth_one):
            raise ValueError("a Picture takes all samples, as floats: output_samples(), color_quantize() and "
                             "depth_quantize() are for output_file()")
        try:
            render(lib.zebSceneBegin, settling=False)
            # Code 8 refuses; after other errors the world is open all the same.
            refused = any(code == 8 for code, _, _ in state.reports)
            settle(lib.zebSceneBegin)
        except BaseException as error:
            if not (isinstance(error, Error) and refused):
                lib.zebCancel()
                lib.zebSceneEnd()
                forget()
            raise

    def _end(self, failed: bool) -> None:
        if failed:
            lib.zebCancel()
        render(lib.zebSceneEnd, settling=not failed)
        if failed:
            forget()


def free_images() -> None:
    """Lets go of images whose objects are gone, now that it is legal."""
    while state.dead_images:
        lib.zebImageFree(state.dead_images.pop())


def reset() -> None:
    """Returns everything to the state at the start; a picture that is open is given up.

    Names, spaces and error handlers stay. Refused in a callback.
    """
    call(lib.zebReset)
    while state.blocks:
        state.blocks.pop()._dropped()
    give_back()
    state.options[:] = [Options()]
    forget()
    connect()
