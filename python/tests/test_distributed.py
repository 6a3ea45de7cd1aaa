"""Pictures that several processes render: the bits, lost workers, errors, memory."""
import itertools
import os
import pickle
import signal
import subprocess
import sys
import tempfile
import threading
import time
import tracemalloc
import types
import warnings

import numpy as np
import pytest
import zebcore as zeb
from zebcore import _options

dask = pytest.importorskip("dask")
distributed = pytest.importorskip("distributed")
import cloudpickle  # noqa: E402
import zebcore.distributed as zd  # noqa: E402

pytestmark = pytest.mark.filterwarnings("ignore:make_current:DeprecationWarning")  # of the clusters' own


def start(**options):
    if options.get("processes", True):
        options["host"] = "127.0.0.1"
    return distributed.LocalCluster(dashboard_address="127.0.0.1:0", **options)


@pytest.fixture(scope="module")
def client():
    """Of two processes."""
    with start(n_workers=2, threads_per_worker=1) as cluster, distributed.Client(cluster) as client:
        yield client


@pytest.fixture(scope="module")
def threads_client():
    """Of one worker with four threads, which are in this process."""
    with start(n_workers=1, threads_per_worker=4, processes=False) as cluster:
        with distributed.Client(cluster, set_as_default=False) as client:
            yield client


def until(holds):
    """Waits for another process; that it never comes is the only way to fail."""
    for _ in range(3000):
        if holds():
            return
        time.sleep(0.01)
    raise AssertionError("what was waited for has not happened")


def open_blocks():
    from zebcore import _core
    return len(_core.state.blocks)


def nothing_outstanding(client):
    """Neither with the scheduler nor on workers."""
    until(lambda: client.run_on_scheduler(lambda dask_scheduler: len(dask_scheduler.tasks)) == 0)
    until(lambda: not any(client.run(open_blocks).values()))
    return True


@zeb.surface
def stripes(g):
    g.Ci = g.Os * (g.Cs * (0.3 + 0.7 * (np.floor(9 * g.s) % 2)) * g.diffuse() + 0.3 * g.specular(0.1))


def scene():
    """A camera, lights, functions that shade by name and by value, and an object for all tiles."""
    zeb.perspective(40)
    zeb.translate(0, 0, 4)
    zeb.clip(1, 20)

    @zeb.surface
    def glow(g):
        g.Ci = g.Os * (0.2 + 0.5 * g.Cs * g.diffuse())

    with zeb.Object() as petal:
        zeb.sphere(0.3)

    def world():
        zeb.light("ambient", intensity=0.1)
        zeb.light("distant", to=(1, -1, 1))
        with zeb.attributes(surface=stripes, color=(.8, .3, .2), shading_rate=4):
            zeb.sphere(0.8)
        for k in range(8):
            with zeb.attributes(surface=glow, color=(k / 8, .5, 1), opacity=0.4 + 0.6 * (k % 2)):
                zeb.rotate(45 * k, 0, 0, 1)
                zeb.translate(1.1, 0, -0.4)
                petal()
    return world


def simple():
    zeb.translate(0, 0, 3)
    return lambda: zeb.sphere(0.9)


def here(scene, width, height, *arguments, **options):
    """The picture as this process makes it."""
    with zeb.Picture(width, height, **options) as picture:
        world = scene(*arguments)
        with picture.world():
            world()
    return picture


def assert_same(a, b):
    assert b.alpha.any()
    assert a.rgba.tobytes() == b.rgba.tobytes()
    assert a.depth.tobytes() == b.depth.tobytes()


@pytest.mark.parametrize("width, height, options", [
    (123, 85, dict(samples=4, gamma=2.2, tile=(48, 36))),
    (123, 85, dict(samples=1.5, tile=(37, 1000))),  # not on borders of buckets, as such samples show
    (61, 47, dict(samples=(2, 3))),                 # smaller than a tile
    (5, 3, dict(tile=12)),
])
def test_a_picture_has_the_bits_of_one_made_here(client, width, height, options):
    picture = zd.render(scene, width, height, client, **options)
    options.pop("tile", None)
    alone = here(scene, width, height, **options)
    assert_same(picture, alone)
    assert picture.gamma == alone.gamma and (picture.pixels == alone.pixels).all()
    assert picture._repr_png_() == alone._repr_png_() and repr(picture) == repr(alone)


def mean_depths():
    zeb.depth_nearest(False)
    return scene()


def other_buckets():
    zeb.tune(16, 20, 7)
    return scene()


def wide_filter():
    zeb.filter("sinc")
    zeb.filter_width(5, 3)
    zeb.sample_adaptive(0.01)
    return scene()


@pytest.mark.parametrize("scene", [mean_depths, other_buckets, wide_filter])
def test_options_are_the_scenes(client, scene):
    assert_same(zd.render(scene, 85, 61, client, tile=24, samples=1.5), here(scene, 85, 61, samples=1.5))


def test_what_a_worker_has_rendered_before_does_not_matter(client):
    alone = here(simple, 48, 48)
    zd.render(scene, 48, 48, client, tile=12)
    assert_same(zd.render(simple, 48, 48, client, tile=12), alone)


def test_what_is_saved_is_the_same(client, tmp_path):
    zd.render(scene, 50, 40, client, tile=24).save(tmp_path / "a.png")
    here(scene, 50, 40).save(tmp_path / "b.png")
    assert (tmp_path / "a.png").read_bytes() == (tmp_path / "b.png").read_bytes()


def counted(scene, folder):
    """Leaves a file for every call of a scene's first part, and of its second."""
    def first():
        tempfile.mkstemp(prefix=f"first-{os.getpid()}-", dir=folder)
        world = scene()

        def second():
            tempfile.mkstemp(prefix=f"second-{os.getpid()}-", dir=folder)
            world()
        return second
    return first


def calls(folder, part):
    return [int(path.name.split("-")[1]) for path in folder.glob(f"{part}-*")]


def test_a_worker_calls_the_first_part_once_and_the_second_for_each_tile(client, tmp_path):
    picture = zd.render(counted(scene, tmp_path), 96, 72, client, tile=24)
    assert_same(picture, here(scene, 96, 72))
    assert len(calls(tmp_path, "second")) == 12
    first = calls(tmp_path, "first")
    assert len(first) == len(set(first)) and set(first) == set(calls(tmp_path, "second"))
    assert nothing_outstanding(client)


def test_by_default_each_worker_gets_about_ten_tiles(client, tmp_path):
    zd.render(counted(simple, tmp_path), 400, 300, client)
    assert 20 <= len(calls(tmp_path, "second")) <= 30


def test_a_worker_with_several_threads_renders_tile_by_tile(threads_client, monkeypatch):
    heard = []
    told = _options.threads
    monkeypatch.setattr(_options, "threads", lambda n: heard.append(n) or told(n))
    picture = zd.render(scene, 100, 80, threads_client, tile=24)
    assert heard == [4]  # the library's threads are as many as the worker's
    zd.render(simple, 30, 30, threads_client, tile=12, threads=1)
    assert heard == [4, 1]
    assert_same(picture, here(scene, 100, 80))  # at once, on this thread: no picture is open


def held(scene, folder):
    """Its worlds tell that they are begun, and wait until they may go on."""
    scene = counted(scene, folder)

    def first():
        world = scene()

        def second():
            world()
            until((folder / "go").exists)
        return second
    return first


@pytest.mark.parametrize("workers", [2, 1])
def test_lost_workers_are_done_without(workers, tmp_path):
    """One is killed in the middle of a tile. If it was the only one, the next finds nothing of what
    the first was sent."""
    def kill():
        until(lambda: len(set(calls(tmp_path, "second"))) == workers)
        os.kill(calls(tmp_path, "second")[0], signal.SIGKILL)
        (tmp_path / "go").touch()

    with start(n_workers=workers, threads_per_worker=1) as cluster, distributed.Client(cluster) as client:
        killer = threading.Thread(target=kill)
        killer.start()
        picture = zd.render(held(scene, tmp_path), 96, 72, client, tile=24)
        killer.join()
    assert len(calls(tmp_path, "second")) > 12  # what was lost was done again
    assert_same(picture, here(scene, 96, 72))


def test_an_interrupt_drops_what_is_outstanding(client, tmp_path):
    @zeb.surface
    def telling(g):
        (tmp_path / "shaded").touch()

    def scene():
        zeb.translate(0, 0, 3)
        zeb.surface_shader(telling)
        return lambda: zeb.sphere(0.9)

    def interrupt():
        until(lambda: len(set(calls(tmp_path, "second"))) == 2)
        os.kill(os.getpid(), signal.SIGINT)

    thread = threading.Thread(target=interrupt)
    thread.start()
    with pytest.raises(KeyboardInterrupt):
        zd.render(held(scene, tmp_path), 96, 72, client, tile=24)
    thread.join()
    assert client.run_on_scheduler(lambda dask_scheduler: len(dask_scheduler.tasks)) == 0
    (tmp_path / "go").touch()
    assert nothing_outstanding(client)
    # No other tile was begun, and none rendered.
    assert len(calls(tmp_path, "second")) == 2 and not (tmp_path / "shaded").exists()
    assert_same(zd.render(simple, 48, 48, client, tile=12), here(simple, 48, 48))


def test_an_interrupt_drops_tiles_that_wait_for_another_in_their_process(threads_client, tmp_path):
    hand = zd._hand
    ended = len(hand._ended)

    def interrupt():
        until(lambda: calls(tmp_path, "second") and hand._thread._work_queue.qsize() == 3)
        os.kill(os.getpid(), signal.SIGINT)
        until(lambda: len(hand._ended) > ended)
        (tmp_path / "go").touch()

    thread = threading.Thread(target=interrupt)
    thread.start()
    with pytest.raises(KeyboardInterrupt):
        zd.render(held(simple, tmp_path), 96, 72, threads_client, tile=24)
    thread.join()
    hand._thread.submit(int).result()  # after all that waited
    assert len(calls(tmp_path, "second")) == 1


def wrong_frame():
    raise LookupError("in the first part")


def wrong_world():
    def world():
        raise LookupError("in the second")
    return world


def wrong_shader():
    @zeb.surface
    def broken(g):
        raise LookupError("in a function")

    def world():
        zeb.translate(0, 0, 3)
        with zeb.attributes(surface=broken):
            zeb.sphere(0.9)
    return world


@pytest.mark.parametrize("scene", [wrong_frame, wrong_world, wrong_shader])
def test_exceptions_come_out_as_themselves(client, scene):
    with pytest.raises(LookupError, match="in (the|a)"):
        zd.render(scene, 60, 60, client, tile=12)
    assert nothing_outstanding(client)
    assert_same(zd.render(simple, 24, 24, client), here(simple, 24, 24))


def test_errors_keep_what_they_know(client):
    def wrong():
        def world():
            with zeb.attributes():
                zeb.clip(1, 2)
        return world
    with pytest.raises(zeb.Error) as here_:
        here(wrong, 24, 24)
    with pytest.raises(zeb.Error) as there:
        zd.render(wrong, 24, 24, client, tile=12)
    for name in ("code", "severity", "function", "block", "reports"):
        assert getattr(there.value, name) == getattr(here_.value, name)
    assert there.value.code == 5 and there.value.block == "attributes"
    assert str(there.value) == str(here_.value)


def misspelt():
    def world():
        zeb.light("distant", coneangle=3)
        zeb.sphere(0.9)
    return world


def test_warnings_come_once(client):
    with pytest.warns(zeb.Info, match="coneangle") as caught:
        zd.render(misspelt, 60, 60, client, tile=12)
    assert len(caught) == 1 and caught[0].filename == __file__
    with pytest.warns(zeb.Info, match="coneangle") as caught:
        for _ in zd.frames(lambda k: misspelt(), range(5), 24, 24, client):
            pass
    assert len(caught) == 1 and caught[0].filename == __file__
    with pytest.raises(zeb.Info):  # as errors, in the tests
        zd.render(misspelt, 24, 24, client)


@pytest.mark.parametrize("add, error, message", [
    (lambda: zeb.image_crop(0, 0.5, 0, 1), ValueError, "image_crop.., which tiles need"),
    (lambda: zeb.output_file("a.png"), ValueError, "sends the picture elsewhere"),
    (lambda: zeb.raster_viewport(7, 7), ValueError, "the viewport is 7 by 7"),
    (lambda: zeb.attributes().__enter__(), RuntimeError, "leaves a block open"),
])
def test_what_a_scene_must_not_do_is_said(client, add, error, message):
    def wrong():
        add()
        return simple()
    with pytest.raises(error, match=message):
        zd.render(wrong, 24, 24, client, tile=12)
    assert_same(zd.render(simple, 24, 24, client), here(simple, 24, 24))


def test_a_scene_without_a_world_is_refused(client):
    with pytest.raises(TypeError, match=r"lights\(\) returns None: .* returns a function that fills"):
        def lights():
            zeb.perspective(30)
        zd.render(lights, 24, 24, client)


def test_arguments_are_checked_before_anything_is_sent(client):
    lock = threading.Lock()
    with pytest.raises(TypeError, match="'scene' is no function, but 3"):
        zd.render(3, 24, 24, client)
    with pytest.raises(TypeError, match="'scene' pickled, and it can't be: .*lock"):
        zd.render(lambda: lock.acquire, 24, 24, client)
    with zeb.Picture(8, 8) as picture:
        with zeb.Object() as ball:
            zeb.sphere(1)
        with picture.world():
            sun = zeb.light("distant")
    with pytest.raises(TypeError, match="an Object is its picture's"):
        zd.render(lambda: ball, 24, 24, client)
    with pytest.raises(TypeError, match="a Light is its picture's"):
        zd.render(lambda: sun.switch, 24, 24, client)
    image = zeb.Image(np.zeros((2, 2)))
    with pytest.raises(TypeError, match="an Image is the library's"):
        zd.render(lambda: image, 24, 24, client)
    for width, height in ((0, 4), (4, -1)):
        with pytest.raises(ValueError, match="is none"):
            zd.render(simple, width, height, client)
    for tile in (0, (12, -1)):
        with pytest.raises(ValueError, match="'tile': .* is none"):
            zd.render(simple, 24, 24, client, tile=tile)
    with pytest.raises(ValueError, match="'ahead' is 0"):
        zd.frames(simple, range(3), 24, 24, client, ahead=0)
    with pytest.raises(TypeError, match="asynchronous"):
        zd.render(simple, 24, 24, types.SimpleNamespace(asynchronous=True))
    assert nothing_outstanding(client)


def test_without_workers_there_is_no_picture():
    with start(n_workers=0) as cluster, distributed.Client(cluster) as client:
        with pytest.raises(RuntimeError, match="no workers; client.wait_for_workers"):
            zd.render(simple, 24, 24, client)


def test_a_worker_with_another_version_is_named(client):
    def become(version):
        zebcore = sys.modules["zebcore"]
        zebcore.__version__ = version
    client.run(become, "0.0.9")
    try:
        with pytest.raises(RuntimeError, match=f"tcp://.* has zebcore 0.0.9, and not {zeb.__version__}"):
            zd.render(simple, 24, 24, client)
    finally:
        client.run(become, zeb.__version__)


def wall():
    return lambda: zeb.polygon([(-9, -9, 1), (-9, 9, 1), (9, 9, 1), (9, -9, 1)])


def test_progress_is_told_and_can_end_the_picture(client):
    heard = []
    zd.render(scene, 120, 120, client, tile=24, progress=heard.append)
    assert heard == sorted(set(heard)) and heard[-1] == 100 and len(heard) == 25
    heard.clear()
    picture = zd.render(wall, 120, 120, client, tile=24,
                        progress=lambda percent: heard.append(percent) or percent > 50)
    assert heard[-1] == 52 and picture.alpha.sum() == pytest.approx(0.52 * 120 * 120)
    assert nothing_outstanding(client)


def test_a_bar_is_shown(client, monkeypatch):
    heard = []

    class Bar:
        def __init__(self, total, **others):
            pass

        def update(self, more):
            heard.append(more)

        def close(self):
            heard.append("closed")
    monkeypatch.setitem(sys.modules, "tqdm.auto", types.SimpleNamespace(tqdm=Bar))
    zd.render(simple, 60, 60, client, tile=12, progress=True)
    assert sum(heard[:-1]) == 100 and len(heard) > 20 and heard[-1] == "closed"
    heard.clear()
    zd.render(simple, 60, 60, client, tile=12)  # no terminal
    assert not heard


def test_memory_is_that_of_the_picture(client):
    """Workers are far ahead: all tiles are there before the second is taken."""
    side, tile = 960, 120
    size, one = 20 * side**2, 20 * tile**2

    def wait_for_all(percent):
        until(lambda: all(future.status == "finished" for future in list(client.futures.values())))

    tracemalloc.start()
    try:
        before = tracemalloc.get_traced_memory()[0]
        picture = zd.render(lambda: lambda: None, side, side, client, tile=tile, progress=wait_for_all)
        peak = tracemalloc.get_traced_memory()[1] - before
    finally:
        tracemalloc.stop()
    assert picture.depth.min() == 1
    assert size < peak < size + 24 * one  # of 64


def test_a_worker_has_memory_for_a_tile_not_for_the_picture(client):
    def empty():
        from zebcore import _core
        sheet = _core.state.blocks[0]

        def world():
            assert sheet._words.size <= 60 * 108 * 5  # 100 columns, to the borders of buckets
        return world
    assert zd.render(empty, 1200, 120, client, tile=(100, 60)).depth.min() == 1


def test_a_scene_is_sent_once(client):
    ballast = np.random.default_rng(1).bytes(4_000_000)

    def heavy():
        assert len(ballast) == 4_000_000
        return simple()

    sizes = []

    def held(dask_scheduler):
        return sum(len(pickle.dumps(task.run_spec)) for task in dask_scheduler.tasks.values())

    def look(percent):
        sizes.append(client.run_on_scheduler(held))

    with warnings.catch_warnings():
        warnings.simplefilter("error")
        picture = zd.render(heavy, 48, 48, client, tile=12, progress=look)
    assert 4_000_000 < max(sizes) < 5_000_000
    assert_same(picture, here(simple, 48, 48))


def test_shaders_go_by_name_where_workers_can_import_them():
    def again(shader):
        return pickle.loads(zd._pickled("", "", shader).data)

    assert again(stripes) is stripes
    other = again(zeb.surface(turned, opacity=True))  # not what the name of its function stands for
    assert (other.kind, other.function, other.sets) == ("surface", turned, ("Ci", "Oi"))
    here_ = sys.modules[__name__]
    cloudpickle.register_pickle_by_value(here_)
    try:
        assert again(stripes) is not stripes and again(stripes).kind == "surface"
    finally:
        cloudpickle.unregister_pickle_by_value(here_)


def test_dask_learns_how_large_a_scene_is_and_prints_none_of_it():
    pickled = zd._pickled("", "", bytes(100_000))
    assert dask.sizeof.sizeof(pickled) > 100_000 and len(repr(pickled)) < 100


def turned(angle):
    zeb.perspective(40)
    zeb.translate(0, 0, 4)

    def world():
        zeb.light("distant", to=(1, -1, 1))
        zeb.rotate(angle, 1, 1, 0)
        with zeb.attributes(surface=stripes, shading_rate=4):
            zeb.torus(0.8, 0.3)
    return world


@pytest.mark.parametrize("options", [dict(), dict(tile=24, ahead=2), dict(ahead=1)])
def test_frames_are_those_made_alone_in_order(client, options):
    angles = np.linspace(0, 180, 5, endpoint=False)
    heard = []
    frames = list(zd.frames(turned, angles, 61, 37, client, samples=3, progress=heard.append, **options))
    assert len(frames) == 5 and heard == sorted(set(heard)) and heard[-1] == 100
    assert len({frame.rgba.tobytes() for frame in frames}) == 5
    for frame, angle in zip(frames, angles):
        assert_same(frame, here(turned, 61, 37, angle, samples=3))
    assert nothing_outstanding(client)


def test_frames_are_begun_as_they_are_wanted_and_dropped_at_the_end(client):
    numbers = itertools.count()
    frames = zd.frames(turned, numbers, 36, 24, client, ahead=3)
    assert next(numbers) == 0
    for taken in range(4):
        assert_same(next(frames), here(turned, 36, 24, taken + 1))
    assert next(numbers) == 1 + 4 + 3
    frames.close()
    assert nothing_outstanding(client)
    with pytest.raises(StopIteration):
        next(frames)
    assert list(zd.frames(turned, [], 36, 24, client)) == []


def test_frames_can_be_given_up_and_fail(client):
    heard = []
    frames = zd.frames(turned, range(10), 36, 24, client,
                       progress=lambda percent: heard.append(percent) or percent > 30)
    assert len(list(frames)) == 3 and heard == [10, 20, 30, 40]

    def broken(k):
        if k == 2:
            raise LookupError(k)
        return turned(k)
    taken = []
    with pytest.raises(LookupError):
        for frame in zd.frames(broken, range(9), 36, 24, client):
            taken.append(frame)
    assert len(taken) == 2 and nothing_outstanding(client)


def test_memory_of_frames_is_that_of_a_few(client):
    side, size = 480, 20 * 480**2
    tracemalloc.start()
    try:
        before = tracemalloc.get_traced_memory()[0]
        for frame in zd.frames(lambda k: lambda: None, range(12), side, side, client, ahead=12):
            until(lambda: all(future.status == "finished" for future in list(client.futures.values())))
        peak = tracemalloc.get_traced_memory()[1] - before
    finally:
        tracemalloc.stop()
    assert 2 * size < peak < 7 * size


def test_numbers_may_be_anything_that_can_be_pickled(client):
    @zeb.surface
    def black(g):
        g.Ci = 0 * g.Cs

    def painted(look):
        def world():
            zeb.translate(0, 0, 3)
            with zeb.attributes(surface=look):
                zeb.sphere(0.9)
        return world
    dark, light = zd.frames(painted, [black, "constant"], 24, 24, client)
    assert dark.alpha.max() == light.alpha.max() == 1
    assert dark.rgba[..., :3].max() == 0 < light.rgba[..., :3].max()
    with pytest.raises(TypeError, match="'numbers' pickled"):
        list(zd.frames(painted, [threading.Lock()], 24, 24, client))


def test_the_package_alone_needs_no_dask():
    code = "import sys, zebcore; print(sys.modules.keys() & {'dask', 'distributed', 'cloudpickle'})"
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert done.stdout == "set()\n"
    code = "import sys; sys.modules['distributed'] = None; import zebcore.distributed"
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True)
    assert "ImportError: zebcore.distributed needs Dask" in done.stderr and "pip install distributed" in done.stderr
