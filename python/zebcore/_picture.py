"""Pictures in memory, and rendering."""
from __future__ import annotations

import ctypes as c
import os
import sys
import time
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from pathlib import Path
from typing import Any, Optional, Union

import numpy as np
from numpy.typing import NDArray

from . import _files, _options, raw
from ._arrays import Floats, whole
from ._core import Error, Frame, World, call, keep, render, state
from .raw import lib

_WORDS = 5  # red, green, blue, alpha, depth

# The pictures that are open, by the number that the library holds of them.
_open: dict[int, "Picture"] = {}
_last = 0

# What shows how far a picture is: True, False, None for terminals alone; or a function.
Progress = Union[bool, None, Callable[[int], Any]]


def _open_picture(key: int, name: Optional[bytes], xres: int, yres: int, x: int, y: int) -> None:
    picture = _open[key]
    if (xres, yres) == (picture.width, picture.height):
        picture._delivered = True
    else:
        keep(ValueError(f"the viewport is {xres} by {yres} pixels, and the picture {picture.width} by "
                        f"{picture.height}: say so to Picture()"))


_opened = raw.OpenFunction(_open_picture)


def _take_span(key: int, x0: int, x1: int, y: int, words: int) -> None:
    picture = _open[key]
    left, right, top, bottom = picture._part
    if left <= x0 and x1 < right and top <= y < bottom:
        at = (y - top) * (right - left) + x0 - left
        c.memmove(picture._address + at * 4 * _WORDS, words, (x1 - x0 + 1) * 4 * _WORDS)


_span = raw.SpanFunction(_take_span)


class _Bar:
    """How far a picture is, on the terminal: tqdm's bar, or a number. None of either for pictures
    that take less than half a second."""

    def __init__(self) -> None:
        self._start = time.monotonic()
        self._at = 0
        try:
            from tqdm.auto import tqdm  # type: ignore[import]
            self._bar: Any = tqdm(total=100, delay=0.5, leave=False, unit="%",
                                  bar_format="{l_bar}{bar}| {elapsed}<{remaining}")
        except ImportError:
            self._bar = None

    def show(self, percent: int) -> None:
        if self._bar is not None:
            self._bar.update(percent - self._at)
        elif time.monotonic() - self._start > 0.5:
            print(f"\r{percent:3} % ", end="", file=sys.stderr, flush=True)
        self._at = percent

    def close(self) -> None:
        if self._bar is not None:
            self._bar.close()
        elif time.monotonic() - self._start > 0.5:
            print("\r      \r", end="", file=sys.stderr, flush=True)


@contextmanager
def shown(wanted: Progress) -> Iterator[Optional[Callable[[int], Any]]]:
    """What is to be called with percentages; None if nothing is."""
    if callable(wanted):
        yield wanted
    elif wanted or (wanted is None and sys.stderr is not None and sys.stderr.isatty()):
        bar = _Bar()
        try:
            yield bar.show
        finally:
            bar.close()
    else:
        yield None


def size(where: str, width: int, height: int) -> tuple[int, int]:
    """A picture's size, if there can be such a picture."""
    width, height = whole(where, "width", width), whole(where, "height", height)
    if width < 1 or height < 1:
        raise ValueError(f"{where}: a picture of {width} by {height} pixels is none")
    return width, height


class _PictureWorld(World):
    def __init__(self, picture: "Picture") -> None:
        self._picture = picture

    def _begin(self) -> None:
        if state.blocks and state.blocks[-1] is not self._picture:
            raise RuntimeError("the world of a picture belongs in its block: with picture.world(): ...")
        super()._begin()

    def _end(self, failed: bool) -> None:
        with shown(self._picture._progress) as show:
            if show is not None:
                state.options[-1].progress = show
            super()._end(failed)


class Picture(Frame):
    """A picture in memory, and the block in which its options, camera and world are given.

        with zebcore.Picture(640, 480, samples=4, gamma=2.2) as picture:
            zebcore.perspective(30)
            zebcore.translate(0, 0, 5)
            with picture.world():
                zebcore.light("distant")
                zebcore.sphere(1)
        picture.save("sphere.png")

    samples   a pixel, across and down: a number, or a pair
    gamma     what colours are raised to 1 over; 2.2 for screens, 1 keeps light linear
    threads   how many render, with the same result; 0 is one per core
    progress  shown on terminals by default: True always, False never; or a function of the
              percentage, which gives the picture up if it returns something true

    After the world has ended:

    rgba   (height, width, 4), float32: colours multiplied by alpha, with gamma, as they were
           computed, above 1 too
    alpha  (height, width): how much of a pixel is covered
    depth  (height, width): the nearest surface of each pixel, from 0 to 1 between the distances of
           `clip`, without gamma; 1 where nothing is
    pixels (height, width, 4), uint8: colours that are not multiplied by alpha, as `save` writes them

    The first three are views of one array. Legal outside any block.
    """

    kind = "picture"

    def __init__(self, width: int = 640, height: int = 480, *,
                 samples: Union[float, tuple[float, float]] = 2, gamma: float = 1, threads: int = 0,
                 progress: Progress = None) -> None:
        self.width, self.height = size("Picture()", width, height)
        self._samples = samples if isinstance(samples, tuple) else (samples, samples)
        self._gamma = gamma
        self._threads = threads
        self._progress = progress
        self._delivered = False
        self._key = 0
        self._keep((0, self.width, 0, self.height))

    def _keep(self, part: tuple[int, int, int, int]) -> None:
        """Takes the pixels of a part from now on, as `world` has them, and has none yet."""
        self._part = left, right, top, bottom = part
        self._words: Floats = np.zeros((bottom - top, right - left, _WORDS), np.float32)
        self._words[..., 4] = 1
        self._address = self._words.ctypes.data

    def _begin(self) -> None:
        if any(isinstance(block, Picture) for block in state.blocks):
            raise RuntimeError("a picture is open already: its block has to end first")
        super()._begin()

    def _fill(self) -> None:
        global _last
        _last += 1
        self._key = _last
        _open[self._key] = self
        device = raw.ZebDisplay(self._key, _opened, _span)
        call(lib.zebCustomDisplay, c.byref(device))
        state.options[-1].to_picture = True
        _options.raster_viewport(self.width, self.height)
        _options.quirks(False)
        _options.sample_uniform(*self._samples)
        _options.color_gamma(self._gamma)
        _options.output_samples("rgbaz")
        _options.color_quantize(0)
        _options.depth_nearest(True)
        _options.threads(self._threads)

    def _end(self, failed: bool) -> None:
        try:
            super()._end(failed)
        finally:
            self._dropped()

    def _dropped(self) -> None:
        _open.pop(self._key, None)

    def world(self, crop: Optional[tuple[int, int, int, int]] = None) -> World:
        """The world block, whose end renders.

        crop  (x0, x1, y0, y1): renders columns x0 to x1 - 1 and rows y0 to y1 - 1 alone. On borders of
              buckets, multiples of 12, the pixels are those of the whole picture. A picture may have
              several worlds one after the other, such as tiles.
        """
        if crop is not None:
            x0, x1, y0, y1 = (whole("Picture.world()", "crop", n) for n in crop)
            if not (0 <= x0 < x1 <= self.width and 0 <= y0 < y1 <= self.height):
                raise ValueError(f"Picture.world(): 'crop' {tuple(crop)} is no part of "
                                 f"{self.width} by {self.height} pixels")
            _options.image_crop(_border(x0, self.width), _border(x1, self.width),
                                _border(y0, self.height), _border(y1, self.height))
        return _PictureWorld(self)

    def _ready(self) -> Floats:
        if not self._delivered:
            raise Error("this picture has no pixels: no world of it was rendered, or it went to a file")
        return self._words

    @property
    def gamma(self) -> float:
        """What colours were raised to 1 over."""
        return self._gamma

    @property
    def rgba(self) -> Floats:
        """Colours multiplied by alpha, and alpha: (height, width, 4)."""
        return self._ready()[..., :4]

    @property
    def alpha(self) -> Floats:
        """(height, width)"""
        return self._ready()[..., 3]

    @property
    def depth(self) -> Floats:
        """(height, width)"""
        return self._ready()[..., 4]

    @property
    def pixels(self) -> NDArray[np.uint8]:
        """Colours without alpha in them, and alpha, as 8 bits each: (height, width, 4)."""
        return _files.straight(self.rgba, self._gamma, 255)

    def save(self, path: Union[str, "os.PathLike[str]"], bits: int = 8) -> None:
        """Writes the picture to a file: PNG, of 8 or 16 bits, or OpenEXR, by the name's ending.

        An OpenEXR file has linear light, gamma taken out, and depth.
        """
        ending = Path(path).suffix.lower()
        if ending == ".png":
            if bits not in (8, 16):
                raise ValueError(f"Picture.save(): 8 or 16 bits, not {bits}")
            data = _files.png(_files.straight(self.rgba, self._gamma, 2**bits - 1))
        elif ending == ".exr":
            rgba = self.rgba
            if self._gamma != 1:
                rgba = rgba.copy()
                rgba[..., :3] = np.sign(rgba[..., :3]) * np.abs(rgba[..., :3])**np.float32(self._gamma)
            data = _files.exr(rgba, self.depth)
        else:
            raise ValueError(f"Picture.save(): neither .png nor .exr: {os.fspath(path)!r}")
        Path(path).write_bytes(data)

    def _repr_png_(self) -> Optional[bytes]:
        return _files.png(self.pixels) if self._delivered else None

    def __repr__(self) -> str:
        return f"<zebcore Picture {self.width} x {self.height}{'' if self._delivered else ', empty'}>"

    def __getstate__(self) -> dict[str, Any]:
        return dict(self.__dict__, _progress=None, _key=0)

    def __setstate__(self, kept: dict[str, Any]) -> None:
        self.__dict__.update(kept)
        self._address = self._words.ctypes.data


def _border(pixel: int, size: int) -> float:
    return 0.0 if pixel == 0 else 1.0 if pixel == size else (pixel - 0.5) / size


def frame() -> Frame:
    """A frame block: options, attributes and transformation set in it end with it. `Picture` is one
    that keeps its pixels; in this one pictures go where `output_file` or `output_display` says."""
    return Frame()


def world() -> World:
    """A world block outside a `Picture`, whose end renders to where the options say."""
    return World()


def render_init() -> None:
    """Begins to render the world in stages: then `render_bucket` until it returns False, then the
    end of the world."""
    render(lib.zebRenderInit)


def render_bucket() -> bool:
    """Renders the next bucket; whether buckets remain."""
    return bool(render(lib.zebRenderBucket))


def progress() -> int:
    """How much is rendered, in percent; 0 when nothing is."""
    return int(call(lib.zebProgress))


def cancel() -> None:
    """Gives up the picture of the world that is open, whose block then ends in order. Legal anywhere,
    on any thread."""
    lib.zebCancel()


def window_events(wait: bool = False) -> int:
    """Handles the events of the library's windows; how many are open."""
    return int(render(lambda: lib.zebWindowEvents(int(bool(wait))), settling=False))
