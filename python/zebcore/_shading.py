"""Surfaces, atmospheres, lights and displacements that are functions of Python, over NumPy arrays."""
from __future__ import annotations

import ctypes as c
import gc
import sys
import traceback
from collections.abc import Callable
from typing import Any, Optional, overload

from . import raw
from ._core import call, claim, keep, state
from ._row import Row
from .raw import lib


class Shader:
    """A function that shades, made by `surface`, `atmosphere`, `light_shader` or `displacement`.
    It can be called as the function it was."""

    _SETS = {"surface": ("Ci",), "atmosphere": ("Ci",), "light": ("L", "Cl", "Ol"),
             "displacement": ("P",)}

    def __init__(self, kind: str, function: Callable[[Row], Any], flags: int = 0) -> None:
        if not callable(function):
            raise TypeError(f"{kind}: no function, but {function!r}")
        self.kind = kind
        self.function = function
        self.flags = flags
        self.sets = self._SETS[kind] + (("Oi",) if flags & raw.ZEB_SHADE_OPACITY else ())
        for name in ("__name__", "__qualname__", "__module__", "__doc__"):
            setattr(self, name, getattr(function, name, None))

    def __call__(self, row: Row) -> Any:
        return self.function(row)

    def __repr__(self) -> str:
        return f"<zebcore {self.kind} {getattr(self, '__name__', None) or self.function!r}>"

    def __reduce__(self) -> Any:
        # Under the name of a function stands the shader: by that name it is found again.
        return str(getattr(self, "__qualname__"))

    def apply(self, kind: str) -> Any:
        """Makes it what it is for what follows."""
        global _last
        if kind != self.kind:
            raise TypeError(f"{self!r} is no {kind}")
        claim()
        _last += 1
        shader = raw.ZebShader(_last, _shade, _free, self.flags)
        _shaders[_last] = self
        name = {"light": "zebCustomLight", "surface": "zebCustomSurface",
                "atmosphere": "zebCustomAtmosphere", "displacement": "zebCustomDisplacement"}[kind]
        return call(getattr(lib, name), c.byref(shader))


def _count(make: Callable[[], Any]) -> int:
    thing = make()
    return sys.getrefcount(thing)


_ALONE = _count(object)  # what one variable makes


def _kept(row: Row) -> bool:
    """Ends a row; whether anybody has kept a view of it, garbage not counted."""
    block = row._leave()
    if sys.getrefcount(block) <= _ALONE:
        return False
    gc.collect(0)
    if sys.getrefcount(block) > _ALONE:
        gc.collect()
    return sys.getrefcount(block) > _ALONE


# What the library holds of a shader is a number, until it calls the free function.
_shaders: dict[int, Shader] = {}
_last = 0


def _drop(key: int) -> None:
    _shaders.pop(key, None)


def _run(key: int, address: int) -> None:
    if state.kept is not None:  # the picture is given up
        return
    shader = _shaders[key]
    saved, state.reports = state.reports, []
    outer = state.users_code
    row: Any = Row(shader, address)
    try:
        state.users_code = True
        result = shader.function(row)
        state.users_code = outer
        if result is not None:
            raise TypeError(f"{shader!r} returns {type(result).__name__}: it has to set what it finds, as in "
                            "g.Ci = ..., and to return nothing")
        if _kept(row):
            keep(RuntimeError(f"{shader!r} keeps an array of its row beyond the call, where the memory is "
                              "the library's again: keep a copy, such as g.P.copy()"))
    except BaseException as error:
        state.users_code = outer
        row._leave()
        _let_go(error)
        keep(error)
    finally:
        state.users_code = outer
        state.reports = saved + state.reports


_free = raw.FreeFunction(_drop)
_shade = raw.ShadeFunction(_run)


def _let_go(error: Optional[BaseException]) -> None:
    """Clears the variables of the frames that an exception has come through: some are views of
    memory that is about to go."""
    while error is not None:
        traceback.clear_frames(error.__traceback__)
        error = error.__context__


_Function = Callable[[Row], Any]


def _maker(kind: str, function: Optional[_Function], flags: int) -> Any:
    if function is None:
        return lambda given: Shader(kind, given, flags)
    return Shader(kind, function, flags)


@overload
def surface(function: _Function, *, opacity: bool = False) -> Shader: ...
@overload
def surface(*, opacity: bool = False) -> Callable[[_Function], Shader]: ...
def surface(function: Optional[_Function] = None, *, opacity: bool = False) -> Any:
    """Makes a function of a `Row` a surface: it sets Ci, the colour weighed by the opacity.

    opacity  the function sets Oi, too; it is then called for what is hidden as well

        @zebcore.surface
        def glow(g):
            g.Ci = g.Os * g.Cs
    """
    return _maker("surface", function, raw.ZEB_SHADE_OPACITY if opacity else 0)


def atmosphere(function: _Function) -> Shader:
    """Makes a function of a `Row` an atmosphere: it changes Ci."""
    return Shader("atmosphere", function)


@overload
def light_shader(function: _Function, *, ambient: bool = False) -> Shader: ...
@overload
def light_shader(*, ambient: bool = False) -> Callable[[_Function], Shader]: ...
def light_shader(function: Optional[_Function] = None, *, ambient: bool = False) -> Any:
    """Makes a function of a `Row` a light, for `light`: it sets L, from the light to the point, and
    Cl, what arrives.

    ambient  the light comes from everywhere, and L is not read
    """
    return _maker("light", function, raw.ZEB_SHADE_AMBIENT if ambient else 0)


def displacement(function: _Function) -> Shader:
    """Makes a function of a `Row` a displacement: it moves P, no farther than
    `displacement_bound` says."""
    return Shader("displacement", function)
