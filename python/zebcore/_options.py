"""Options: what kind of picture it is. All are legal outside any block and in a picture or frame,
before its world, and are kept to the end of the picture or frame."""
from __future__ import annotations

import ctypes
import os
from collections.abc import Callable
from typing import Any, Optional, Union

import numpy as np
from numpy.typing import ArrayLike

from . import raw
from ._arrays import as_floats, choice, encode, floats_of, whole
from ._core import call, callback, state
from .raw import lib


def raster_viewport(xres: int, yres: int, x: int = 0, y: int = 0) -> None:
    """Sets the picture's size in pixels, and its origin, which devices are told."""
    call(lib.zebRasterViewport, *(whole("raster_viewport()", n, v) for n, v in
                                  (("x", x), ("xres", xres), ("y", y), ("yres", yres))))


def raster_aspect(aspect: float) -> None:
    """Sets the width of a pixel divided by its height."""
    call(lib.zebRasterAspect, *floats_of("raster_aspect()", aspect=aspect))


def image_window(left: float, right: float, bottom: float, top: float) -> None:
    """Sets the rectangle of the screen plane that fills the picture."""
    call(lib.zebImageWindow,
         *floats_of("image_window()", left=left, right=right, bottom=bottom, top=top))


def image_aspect(aspect: float) -> None:
    """Sets the picture's width divided by its height on screen; 0 takes it from its pixels."""
    call(lib.zebImageAspect, *floats_of("image_aspect()", aspect=aspect))


def image_crop(xmin: float, xmax: float, ymin: float, ymax: float) -> None:
    """Sets the part of the picture to render, as fractions, y downwards.

    `Picture.world` takes a part in pixels.
    """
    call(lib.zebImageCrop, *floats_of("image_crop()", xmin=xmin, xmax=xmax, ymin=ymin, ymax=ymax))
    state.options[-1].cropped = (xmin, xmax, ymin, ymax) != (0, 1, 0, 1)


def orthographic() -> None:
    """Makes the current transformation the projection, without perspective, and starts a new one."""
    call(lib.zebViewOrthographic)


def perspective(fov: float) -> None:
    """As `orthographic`, with a perspective: fov degrees across the window's -1 to 1."""
    call(lib.zebViewPerspective, *floats_of("perspective()", fov=fov))


def view_identity() -> None:
    """As `orthographic`, for flat pictures: surfaces show between z = 0 and z = 1."""
    call(lib.zebViewIdentity)


def clip(near: float, far: float) -> None:
    """Sets the clipping distances along z in camera space; depth runs from 0 to 1 between them."""
    call(lib.zebClip, *floats_of("clip()", near=near, far=far))


def sample_uniform(x: float, y: Optional[float] = None) -> None:
    """Takes so many samples a pixel across and down."""
    call(lib.zebSampleUniform, *floats_of("sample_uniform()", x=x, y=x if y is None else y))


def sample_adaptive(threshold: float) -> None:
    """Takes 8 to 96 samples a pixel, more while the colour's variance exceeds the threshold."""
    call(lib.zebSampleAdaptive, *floats_of("sample_adaptive()", threshold=threshold))


def sample_jitter(amount: float) -> None:
    """Sets how far uniform samples stray from their lattice; 0 not at all."""
    call(lib.zebSampleJitter, *floats_of("sample_jitter()", amount=amount))


def filter(kind: Union[str, int, Callable[[float, float, float, float], float]]) -> None:
    """Chooses the pixel filter.

    kind  "gaussian", "catmull_rom", "box", "triangle" or "sinc"; or a function of (dx, dy, xwidth,
          ywidth) that returns the weight of a sample dx, dy pixels from the pixel's centre
    """
    if not callable(kind):
        call(lib.zebFilter, choice("filter()", "kind", kind, "ZEB_FILTER_"))
        state.options[-1].kept.pop("filter", None)
        return
    function = kind

    def weight(dx: float, dy: float, xwidth: float, ywidth: float) -> float:
        result = 0.0
        with callback():
            result = float(function(dx, dy, xwidth, ywidth))
        return result

    kept = raw.FilterFunction(weight)
    call(lib.zebCustomFilter, kept)
    state.options[-1].kept["filter"] = kept


def filter_width(x: float, y: Optional[float] = None) -> None:
    """Sets the filter's box, in pixels."""
    call(lib.zebFilterWidth, *floats_of("filter_width()", x=x, y=x if y is None else y))


def color_gain(gain: float) -> None:
    """Multiplies colours before gamma."""
    call(lib.zebColorGain, *floats_of("color_gain()", gain=gain))


def color_gamma(gamma: float) -> None:
    """Raises colours, multiplied by alpha, to 1 / gamma. `Picture` has an argument for it."""
    call(lib.zebColorGamma, *floats_of("color_gamma()", gamma=gamma))


def color_quantize(one: int, min: int = 0, max: Optional[int] = None) -> None:
    """Makes colours integers for files and windows: round(one * value), within min and max.

    one = 0 passes floats, which is what a `Picture` needs: in one, this is for `output_file`.
    """
    _quantize("color_quantize()", lib.zebColorQuantize, one, min, max)
    state.options[-1].color_one = one


def depth_quantize(one: int, min: int = 0, max: Optional[int] = None) -> None:
    """As `color_quantize`, for depth; floats by default."""
    _quantize("depth_quantize()", lib.zebDepthQuantize, one, min, max)
    state.options[-1].depth_one = one


def _quantize(where: str, function: Any, one: int, min: int, max: Optional[int]) -> None:
    call(function, whole(where, "one", one), whole(where, "min", min),
         whole(where, "max", one if max is None else max))


def color_jitter(amplitude: float) -> None:
    """Sets the noise that is added before rounding, in steps."""
    call(lib.zebColorJitter, *floats_of("color_jitter()", amplitude=amplitude))


def depth_jitter(amplitude: float) -> None:
    """As `color_jitter`, for depth."""
    call(lib.zebDepthJitter, *floats_of("depth_jitter()", amplitude=amplitude))


def output_display(title: str) -> None:
    """Sends the picture to a window, where the library was built with windows."""
    call(lib.zebOutputDisplay, encode(title, "a title"))
    state.options[-1].to_picture = False


def output_file(path: Union[str, "os.PathLike[str]"], kind: Union[str, int] = "auto") -> None:
    """Has the library write the picture to a file, when the world ends.

    kind  "auto" by the name's ending; "png", "png_indexed", "exr"

    In a `Picture` it goes to the file and nowhere else: the picture's own arrays are not there then.
    """
    call(lib.zebOutputFile, choice("output_file()", "kind", kind, "ZEB_FILE_"),
         encode(os.fspath(path), "a path"))
    state.options[-1].to_picture = False


def output_samples(samples: Union[str, int]) -> None:
    """Chooses what pixels of a file hold: "rgb", "alpha", "depth", "rgba", "rgbz" or "rgbaz"."""
    number = choice("output_samples()", "samples", samples, "ZEB_SAMPLES_")
    call(lib.zebOutputSamples, number)
    state.options[-1].samples = number


def custom_display(device: Optional[raw.ZebDisplay]) -> None:
    """Sends the picture to a device of one's own, a struct of C functions; None to a window.

    The functions, of ctypes, are kept to the end of the picture or frame. `Picture` is such a device.
    """
    call(lib.zebCustomDisplay, None if device is None else ctypes.byref(device))
    state.options[-1].kept["display"] = device
    state.options[-1].to_picture = False


def hider(kind: Union[str, int]) -> None:
    """Chooses what shows: the nearest surface ("hidden"), that given last ("sequence"), nothing
    ("null")."""
    call(lib.zebHider, choice("hider()", "kind", kind, "ZEB_HIDER_"))


def color_space(to_rgb: ArrayLike, from_rgb: ArrayLike) -> None:
    """Says how many numbers a colour has, n, and what they stand for.

    to_rgb    (n, 3): what each adds to red, green and blue
    from_rgb  (3, n): how many of each red, green and blue hold
    """
    to, back = (np.ascontiguousarray(as_floats("color_space()", name, value))
                for name, value in (("to_rgb", to_rgb), ("from_rgb", from_rgb)))
    if to.ndim != 2 or to.shape[1] != 3 or back.shape != (3, to.shape[0]):
        raise ValueError(f"color_space(): 'to_rgb' and 'from_rgb' have the shapes {to.shape} and "
                         f"{back.shape}, not (n, 3) and (3, n)")
    call(lib.zebColorSpace, to.shape[0], to.ctypes, back.ctypes)
    state.options[-1].color_width = to.shape[0]


def tune(gridsize: int = 32, width: int = 12, height: int = 12) -> None:
    """Sets the largest side of a grid in micropolygons, and the size of a bucket in pixels."""
    call(lib.zebTune, *(whole("tune()", n, v) for n, v in
                        (("gridsize", gridsize), ("width", width), ("height", height))))
    state.options[-1].bucket = width, height


def quirks(on: bool) -> None:
    """Keeps or mends some odd ways of the library. A `Picture` mends them."""
    call(lib.zebQuirks, int(bool(on)))


def depth_nearest(on: bool) -> None:
    """Makes depth the least in each pixel instead of the mean; `Picture` does so."""
    call(lib.zebDepthNearest, int(bool(on)))


def threads(n: int) -> None:
    """Sets how many threads render; 0 is one per core, which is what a `Picture` takes."""
    call(lib.zebThreads, whole("threads()", "n", n))


def progress_callback(function: Optional[Callable[[int], Any]]) -> None:
    """Calls a function with the percentage while a picture renders; what it returns, if true, gives
    the picture up. None for none."""
    if function is not None and not callable(function):
        raise TypeError(f"progress_callback(): no function, but {function!r}")
    call(lib.zebProgress)  # reports nothing, but minds the thread
    state.options[-1].progress = function
