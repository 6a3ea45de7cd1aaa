"""Pictures and animations that many processes render together, on one machine or many, by Dask.

    import zebcore as zeb, zebcore.distributed
    from distributed import Client

    def scene():
        zeb.perspective(30)
        zeb.translate(0, 0, 5)

        def world():
            zeb.light("distant", to=(1, -1, 1))
            zeb.sphere(1)
        return world

    picture = zebcore.distributed.render(scene, 1920, 1080, Client("scheduler:8786"), samples=4)

A scene is a function of two parts, since a worker calls the first once and the second for each of its
tiles. The first stands where options, the camera and objects stand, in the block of a picture; it
returns the second, which fills a world. In this process the same scene is

    with zeb.Picture(1920, 1080, samples=4) as picture:
        world = scene()
        with picture.world():
            world()

and has the same pixels, to the last bit.
"""
from __future__ import annotations

import io
import math
import pickle
import sys
import threading
import uuid
import warnings
from collections import deque
from collections.abc import Callable, Iterable, Iterator, Sized
from concurrent.futures import Future, ThreadPoolExecutor
from contextlib import ExitStack, suppress
from dataclasses import dataclass, field
from itertools import islice
from typing import Any, Optional, Protocol, TypeVar, Union

import numpy as np

try:
    import cloudpickle  # type: ignore[import]
    from distributed import as_completed, get_worker
except ImportError as error:
    raise ImportError(f"zebcore.distributed needs Dask, which is not all there ({error}): pip install "
                      "distributed, or on Debian apt install python3-distributed") from error

import zebcore

from . import _core
from ._arrays import Floats
from ._attributes import load_identity
from ._core import state
from ._options import orthographic
from ._picture import Picture, Progress, shown, size
from ._shading import Shader
from .raw import lib

__all__ = ["Client", "frames", "render"]

# Columns x0 to x1 - 1 and rows y0 to y1 - 1.
_Part = tuple[int, int, int, int]
_World = Callable[[], Any]
_Reports = list[tuple[type[_core.Warning], str]]
_Number = TypeVar("_Number")


class Client(Protocol):
    """What is asked of a client. `distributed.Client` has it; of its two kinds it is the one that waits,
    not the asynchronous one."""

    @property
    def loop(self) -> Any:
        """Where it lives."""

    def nthreads(self) -> Any:
        """Who works, and with how many threads."""

    def submit(self, function: Any, /, *arguments: Any, key: Any = ..., pure: Any = ...) -> Any:
        """Has a function called."""

    def map(self, function: Any, /, *arguments: Any, key: Any = ..., pure: Any = ...) -> Any:
        """Has a function called for each of a list."""

    def replicate(self, futures: Any, /) -> Any:
        """Copies results to all workers."""

    def cancel(self, futures: Any, /) -> Any:
        """Drops calls that are outstanding."""

    def run(self, function: Any, /, *arguments: Any, on_error: Any = ...) -> Any:
        """Calls a function on all workers, now."""


@dataclass(frozen=True)
class _Order:
    """What workers have to know of a picture, or of all frames of an animation, beside the scene."""

    job: str
    version: str
    width: int
    height: int
    samples: Union[float, tuple[float, float]]
    gamma: float
    threads: Optional[int]


@dataclass(frozen=True)
class _Pickled:
    """What Dask is to hand on and not to look into, nor to print."""

    data: bytes = field(repr=False)

    def __sizeof__(self) -> int:
        return sys.getsizeof(self.data)


# On workers

class _Sheet(Picture):
    """A picture that has memory for one part of it at a time."""

    def __init__(self, order: _Order, threads: int) -> None:
        super().__init__(order.width, order.height, samples=order.samples, gamma=order.gamma,
                         threads=threads, progress=False)

    def _fill(self) -> None:
        super()._fill()
        # Of what this process has rendered without mending it, a projection may be left.
        load_identity()
        orthographic()

    def _keep(self, part: _Part) -> None:
        super()._keep((0, 0, 0, 0))

    def render(self, part: _Part, fill: _World) -> Floats:
        across, down = state.options[-1].bucket
        left, right = _to_borders(part[0], part[1], across, self.width)
        top, bottom = _to_borders(part[2], part[3], down, self.height)
        super()._keep((left, right, top, bottom))
        with self.world((left, right, top, bottom)):
            fill()
        return np.ascontiguousarray(self._ready()[part[2] - top:part[3] - top, part[0] - left:part[1] - left])


def _to_borders(first: int, end: int, bucket: int, pixels: int) -> tuple[int, int]:
    return first // bucket * bucket, min(-(-end // bucket) * bucket, pixels)


def _open_scene(sheet: _Sheet, scene: Any, arguments: tuple[Any, ...]) -> _World:
    """Calls the first part of a scene, in the block of the picture."""
    fill: _World = scene(*arguments)
    name = getattr(scene, "__name__", repr(scene))
    if not callable(fill):
        raise TypeError(f"{name}() returns {fill!r}: a scene sets options and camera, and returns a function "
                        "that fills the world")
    if state.blocks[-1:] != [sheet]:
        raise RuntimeError(f"{name}() leaves a block open")
    if state.options[-1].cropped:
        raise ValueError(f"{name}() calls image_crop(), which tiles need for themselves")
    if not state.options[-1].to_picture:
        raise ValueError(f"{name}() sends the picture elsewhere: leave output_file(), output_display() and "
                         "custom_display() out, and save what comes back")
    return fill


class _Hand:
    """The thread of a process that renders its tiles, one by one: the library has one state, whatever
    number of threads a worker has. The picture of a tile stays open for the next one's."""

    def __init__(self) -> None:
        self._thread = ThreadPoolExecutor(1, "zebcore")
        self._lock = threading.Lock()  # around what end() reads, which comes from other threads
        self._job = ""
        self._ended: deque[str] = deque(maxlen=64)
        self._blocks = ExitStack()
        self._scene: Any = None
        self._frame = -1
        self._sheet: Optional[_Sheet] = None
        self._fill: Optional[_World] = None

    def render(self, *arguments: Any) -> tuple[Floats, _Reports]:
        return self._thread.submit(self._render, *arguments).result()

    def end(self, job: str) -> Optional[Future[None]]:
        """Gives up what is rendered of a job, and then closes its picture."""
        with self._lock:
            self._ended.append(job)
            if self._job != job:
                return None
            lib.zebCancel()
        return self._thread.submit(self._close, job)

    def _close(self, job: str) -> None:
        if self._job == job:
            self._blocks.close()
            self._scene = self._sheet = self._fill = None
            with self._lock:
                self._job = ""

    def _render(self, order: _Order, scene: _Pickled, frame: int, arguments: _Pickled, part: _Part,
                threads: int) -> tuple[Floats, _Reports]:
        if self._job != order.job:
            self._close(self._job)
        with self._lock:
            if order.job in self._ended:
                raise RuntimeError("this tile is not wanted any more")
            self._job = order.job
        heard: _Reports = []
        state.hear = lambda kind, text: heard.append((kind, text))
        try:
            if self._scene is None:
                self._scene = pickle.loads(scene.data)
            if self._frame != frame or self._sheet not in state.blocks:
                self._blocks.close()
                with ExitStack() as blocks:
                    self._sheet, self._frame = blocks.enter_context(_Sheet(order, threads)), frame
                    self._fill = _open_scene(self._sheet, self._scene, pickle.loads(arguments.data))
                    self._blocks = blocks.pop_all()
            assert self._sheet is not None and self._fill is not None
            return self._sheet.render(part, self._fill), list(dict.fromkeys(heard))
        finally:
            state.hear = None


_hand = _Hand()


def _tile(order: _Order, scene: _Pickled, frame: int, arguments: _Pickled,
          part: _Part) -> tuple[Floats, _Reports]:
    """A tile, and what the library had to say."""
    worker = get_worker()
    if order.version != zebcore.__version__:
        raise RuntimeError(f"the worker {worker.address} has zebcore {zebcore.__version__}, and not "
                           f"{order.version}, which the client has")
    threads = worker.state.nthreads if order.threads is None else order.threads
    return _hand.render(order, scene, frame, arguments, part, threads)


def _same(pickled: _Pickled) -> _Pickled:
    return pickled


def _end(job: str) -> None:
    _hand.end(job)


# At the client

class _Pickler(cloudpickle.CloudPickler):  # type: ignore[misc]
    """Shaders go by name where workers can import them, and with their functions otherwise."""

    def reducer_override(self, thing: Any) -> Any:
        if isinstance(thing, Shader):
            module = sys.modules.get(getattr(thing, "__module__") or "")
            if (module is None or module.__name__ == "__main__"
                    or module.__name__ in cloudpickle.cloudpickle.list_registry_pickle_by_value()
                    or getattr(module, getattr(thing, "__qualname__") or "", None) is not thing):
                return Shader, (thing.kind, thing.function, thing.flags)
        return super().reducer_override(thing)


def _pickled(where: str, name: str, thing: Any) -> _Pickled:
    file = io.BytesIO()
    try:
        _Pickler(file).dump(thing)
    except Exception as error:
        raise TypeError(f"{where}: workers get {name!r} pickled, and it can't be: {error}") from error
    return _Pickled(file.getvalue())


def _tiles(width: int, height: int, across: int, down: int) -> list[_Part]:
    return [(x, min(x + across, width), y, min(y + down, height))
            for y in range(0, height, down) for x in range(0, width, across)]


class _Meter:
    """Counts pixels, and tells who wants to know, in percent."""

    def __init__(self, show: Optional[Callable[[int], Any]], pixels: int) -> None:
        self._show = show
        self._pixels = pixels
        self._done = self._percent = 0
        self.given_up = False

    def add(self, pixels: int) -> None:
        if self._show is None:
            return
        self._done += pixels
        percent = 100 * self._done // self._pixels
        if percent != self._percent:
            self._percent = percent
            self.given_up = bool(self._show(percent))


class _Job:
    """The tiles that are outstanding of a picture or of several; a block, after which none are."""

    def __init__(self, where: str, scene: Any, width: int, height: int, client: Client,
                 samples: Union[float, tuple[float, float]], gamma: float, threads: Optional[int]) -> None:
        if getattr(client, "asynchronous", False):
            raise TypeError(f"{where}: the client is for asynchronous programs, and this one waits")
        if not callable(scene):
            raise TypeError(f"{where}: 'scene' is no function, but {scene!r}")
        width, height = size(where, width, height)
        self.client = client
        self.workers = len(client.nthreads())
        if not self.workers:
            raise RuntimeError(f"{where}: the client has no workers; client.wait_for_workers(1) waits for one")
        self.order = _Order(uuid.uuid4().hex, zebcore.__version__, width, height, samples, gamma, threads)
        pickled = _pickled(where, "scene", scene)
        with warnings.catch_warnings():
            # Data that are sent, not computed, are lost with the worker that has them.
            warnings.filterwarnings("ignore", "Large object|Sending large graph")
            self._scene = client.submit(_same, pickled, key=f"zebcore-scene-{self.order.job}", pure=False)
        client.replicate([self._scene])
        self._parts: dict[Any, _Part] = {}
        self._told: set[tuple[type[_core.Warning], str]] = set()

    def __enter__(self) -> "_Job":
        return self

    def __exit__(self, *_: object) -> None:
        with suppress(Exception):  # the scheduler may be gone, which was said or does not matter
            if self._parts:
                self.client.cancel(list(self._parts))
            self._scene.release()
            self.client.run(_end, self.order.job, on_error="ignore")
        closing = _hand.end(self.order.job)  # workers may be threads of this process
        if closing is not None:
            closing.result()

    def start(self, frame: int, arguments: tuple[Any, ...], across: int, down: int) -> list[Any]:
        """Has workers begin with a picture."""
        tiles = _tiles(self.order.width, self.order.height, across, down)
        pickled = _pickled("frames()", "numbers", arguments)
        # Keys of this form are of one kind to the scheduler, which spreads them evenly.
        keys = [f"('zebcore-tile-{self.order.job}', {frame}, {n})" for n in range(len(tiles))]
        futures: list[Any] = self.client.map(
            _tile, *zip(*((self.order, self._scene, frame, pickled, tile) for tile in tiles)), key=keys,
            pure=False)
        self._parts.update(zip(futures, tiles))
        return futures

    def collect(self, futures: list[Any], meter: _Meter) -> Picture:
        """A picture of all its tiles, which are let go one by one."""
        order = self.order
        picture = Picture(order.width, order.height, samples=order.samples, gamma=order.gamma)
        picture._delivered = True
        for future in as_completed(futures, loop=self.client.loop):  # type: ignore[no-untyped-call]
            words, reports = future.result()
            left, right, top, bottom = self._parts.pop(future)
            future.release()
            picture._words[top:bottom, left:right] = words
            for kind, text in reports:
                if (kind, text) not in self._told:
                    self._told.add((kind, text))
                    warnings.warn(text, kind, stacklevel=_core.where())
            meter.add((right - left) * (bottom - top))
            if meter.given_up:
                break
        return picture


def _pair(tile: Union[int, tuple[int, int]]) -> tuple[int, int]:
    across, down = tile if isinstance(tile, tuple) else (tile, tile)
    return size("'tile'", across, down)


def render(scene: Callable[[], _World], width: int, height: int, client: Client, *,
           tile: Union[int, tuple[int, int], None] = None, samples: Union[float, tuple[float, float]] = 2,
           gamma: float = 1, threads: Optional[int] = None, progress: Progress = None) -> Picture:
    """Renders a picture in tiles, on the workers of a client of Dask.

    scene     a function that is called in the block of a picture, once on each worker: it sets options
              and the camera, defines objects, and returns a function that fills the world, which is
              called for each tile. Workers get it pickled, by cloudpickle
    client    a `distributed.Client`
    tile      the size of tiles in pixels, a number or (across, down); by default each worker gets
              about ten. Tiles that don't end on borders of buckets, multiples of 12, cost what they cut
    samples, gamma, progress
              as of `Picture`
    threads   how many each worker renders with; as many as the worker has by default

    Workers that are lost are done without. What the scene raises on a worker is raised here, and what
    it warns of is warned of once. Options that are set outside the scene don't reach it.
    """
    job = _Job("render()", scene, width, height, client, samples, gamma, threads)
    with job, shown(progress) as show:
        if tile is None:
            # Of fewer than five buckets a side, tiles have much to do for their neighbours as well.
            tile = 12 * max(5, int(math.sqrt(width * height / (10 * job.workers)) / 12))
        return job.collect(job.start(0, (), *_pair(tile)), _Meter(show, width * height))


def frames(scene: Callable[[_Number], _World], numbers: Iterable[_Number], width: int, height: int,
           client: Client, *, ahead: Optional[int] = None, tile: Union[int, tuple[int, int], None] = None,
           samples: Union[float, tuple[float, float]] = 2, gamma: float = 1,
           threads: Optional[int] = None, progress: Progress = None) -> Iterator[Picture]:
    """Renders an animation on the workers of a client of Dask, and yields its pictures in order.

    scene     as that of `render`, but it gets a number of the frame, or whatever `numbers` has
    numbers   of the frames, or times; it may go on for ever
    ahead     how many frames are begun before they are wanted, which are kept by the workers; two for
              each worker by default
    tile      as of `render`, but by default a frame is one tile: a worker renders all of it
    progress  as of `Picture`, but of all frames, if `numbers` has a length

    The other arguments are those of `render`. Frames that are begun and not wanted any more are dropped
    when the iterator is closed.
    """
    job = _Job("frames()", scene, width, height, client, samples, gamma, threads)
    if ahead is None:
        ahead = 2 * job.workers
    if ahead < 1:
        raise ValueError(f"frames(): 'ahead' is {ahead}, and at least 1 is begun")
    return _frames(job, numbers, ahead, _pair((width, height) if tile is None else tile), progress)


def _frames(job: _Job, numbers: Iterable[Any], ahead: int, tile: tuple[int, int],
            progress: Progress) -> Iterator[Picture]:
    count = len(numbers) if isinstance(numbers, Sized) else 0
    with job, shown(progress if count else False) as show:
        meter = _Meter(show, count * job.order.width * job.order.height)
        begun = (job.start(frame, (number,), *tile) for frame, number in enumerate(numbers))
        waiting = deque(islice(begun, ahead))
        while waiting:
            picture = job.collect(waiting.popleft(), meter)
            if meter.given_up:
                return
            waiting.extend(islice(begun, 1))
            yield picture
            del picture  # it is the caller's
