"""Blocks, and how they end: in order, by exceptions, by interrupts."""
import os
import pickle
import signal
import subprocess
import sys
import threading
import time

import numpy as np
import pytest
import zebcore as zeb
from zebcore import _core, raw


def test_a_refused_call_raises_what_was_reported():
    with pytest.raises(zeb.Error) as raised:
        zeb.sphere(1)
    error = raised.value
    assert (error.code, error.severity, error.function, error.block) == (7, raw.ZEB_ERROR, "zebSphereV", None)
    assert "primitives belong in a world block" in str(error)
    again = pickle.loads(pickle.dumps(error))
    assert (str(again), again.code, again.function) == (str(error), 7, "zebSphereV")
    with zeb.Picture(8, 8) as picture:
        with picture.world(), zeb.attributes():
            with pytest.raises(zeb.Error) as raised:
                zeb.clip(1, 2)
    assert raised.value.code == 5 and raised.value.block == "attributes"
    assert "options are set before the world" in str(raised.value)


def test_warnings_and_infos_are_warnings_of_python():
    with zeb.Picture(8, 8) as picture:
        with picture.world():
            with pytest.warns(zeb.Info, match="coneangle") as caught:
                zeb.light("distant", coneangle=3)
    assert caught[0].filename == __file__
    with zeb.Picture(8, 8) as picture:
        with picture.world():
            with pytest.raises(zeb.Info):  # as errors, in the tests
                zeb.light("distant", coneangle=3)


def test_severities_can_be_left_to_the_library():
    lines = []
    zeb.error_printer(lines.append)
    try:
        zeb.error_handler("error", "print")
        zeb.sphere(1)
        assert zeb.last_error() == 7 and len(lines) == 1 and "zebSphereV" in lines[0]
        zeb.error_handler("error", "ignore")
        zeb.rotate(1, 0, 0, 0)
        assert zeb.last_error() == 15 and len(lines) == 1
    finally:
        zeb.error_handler("all", "raise")
        zeb.error_printer(None)
    with pytest.raises(zeb.Error):
        zeb.sphere(1)
    with pytest.raises(ValueError, match="no 'errors'"):
        zeb.error_handler("errors", "print")


def test_attributes_and_transformations_end_with_their_block():
    with zeb.Picture(16, 16) as picture:
        with picture.world():
            zeb.translate(0, 0, 1)
            with zeb.attributes(color=(1, 0, 0), surface="constant", sides=1, shading_model="smooth",
                                name="red", group="paint", flatness=1, orientation="outside", matte=False,
                                opacity=1, atmosphere=None, shading_rate=1,
                                basis="bspline", bound=(-5, 5, -5, 5, -5, 5),
                                texture_coordinates=[(0, 0), (1, 0), (0, 1), (1, 1)]):
                zeb.translate(50, 0, 0)
            with zeb.transform():
                zeb.translate(50, 0, 0)
            zeb.surface_shader("constant")
            zeb.disk(2)
    assert picture.rgba[8, 8].tolist() == [1, 1, 1, 1]


def test_an_attribute_that_is_refused_closes_the_block():
    with zeb.Picture(8, 8) as picture:
        with picture.world():
            with pytest.raises(ValueError):
                with zeb.attributes(color=(1, 0, 0), opacity=(1, 2)):
                    pass
            with pytest.raises(ValueError, match="no 'matte' among constant"):
                with zeb.attributes(surface="matte"):
                    pass
            assert [block.kind for block in _core.state.blocks] == ["picture", "world"]


class Oops(Exception):
    pass


@pytest.mark.parametrize("depth", range(6))
def test_an_exception_at_any_depth_leaves_nothing_open(depth):
    blocks = [lambda p: p, lambda p: p.world(), lambda p: zeb.attributes(color=1),
              lambda p: zeb.transform(), lambda p: zeb.Object()]

    def enter(picture, at):
        if at == depth:
            raise Oops
        with blocks[at](picture):
            enter(picture, at + 1)

    picture = zeb.Picture(8, 8)
    with pytest.raises(Oops):
        enter(picture, 0)
    assert not _core.state.blocks
    assert zeb.Picture(8, 8).__enter__().__exit__(None, None, None) is None


def test_a_world_left_by_an_exception_renders_nothing():
    picture = zeb.Picture(64, 64)
    with pytest.raises(Oops):
        with picture, picture.world():
            zeb.translate(0, 0, 3)
            zeb.sphere(1)
            raise Oops
    assert not picture._words[..., :4].any()


def test_blocks_do_not_nest_where_they_must_not():
    with zeb.Picture(8, 8) as picture:
        with pytest.raises(RuntimeError, match="a picture is open already"):
            with zeb.Picture(8, 8):
                pass
        with pytest.raises(RuntimeError, match="open already"):
            picture.__enter__()
        with picture.world() as world:
            with pytest.raises(RuntimeError, match="belongs in its block"):
                with picture.world():
                    pass
            with pytest.raises(zeb.Error) as error:
                with zeb.world():
                    pass
            assert error.value.code == 8
            with pytest.raises(RuntimeError, match="open already"):
                with world:
                    pass
            zeb.translate(0, 0, 3)
            zeb.sphere(0.9)
    assert picture.alpha.any()  # what was refused has done no harm
    with pytest.raises(RuntimeError, match="belongs in its block"):
        with zeb.frame():
            with picture.world():
                pass


def test_a_block_that_is_left_open_is_closed_with_the_one_around_it():
    with pytest.raises(RuntimeError, match="attributes block was still open at the end of the world"):
        with zeb.Picture(8, 8) as picture:
            with picture.world():
                zeb.attributes().__enter__()
    assert not _core.state.blocks

    def suspended():
        with zeb.attributes(color=(1, 0, 0)):
            yield

    with pytest.raises(RuntimeError, match="still open"):
        with zeb.Picture(8, 8) as picture:
            with picture.world():
                generator = suspended()
                next(generator)
    generator.close()  # its block is closed already
    assert not _core.state.blocks


def test_several_pictures_and_worlds_follow_one_another(ball):
    one = ball(20, 20)
    two = ball(30, 10)
    three = ball(20, 20)
    assert one.rgba.tobytes() == three.rgba.tobytes() != two.rgba.tobytes()
    with one:
        with one.world():
            pass
    assert one.rgba.shape == (20, 20, 4)


def test_options_end_with_their_picture():
    with zeb.Picture(8, 8):
        zeb.sample_uniform(7)
        zeb.filter(lambda dx, dy, x, y: 1)
        assert "filter" in _core.state.options[-1].kept
    assert "filter" not in _core.state.options[-1].kept


def test_every_option_is_taken():
    with zeb.Picture(16, 16) as picture:
        zeb.raster_aspect(1)
        zeb.image_window(-1, 1, -1, 1)
        zeb.image_aspect(0)
        zeb.image_crop(0, 1, 0, 1)
        zeb.sample_adaptive(0.1)
        zeb.sample_uniform(2, 3)
        zeb.sample_jitter(0)
        zeb.filter("box")
        zeb.filter_width(1)
        zeb.color_gain(2)
        zeb.color_jitter(0)
        zeb.depth_jitter(0)
        zeb.depth_quantize(0)
        zeb.hider("hidden")
        zeb.tune(16, 8, 8)
        zeb.output_display("a window")
        zeb.custom_display(None)
        zeb.comment("none of this counts")
        zeb.view_identity()
        zeb.orthographic()
    with zeb.Picture(16, 16) as picture:
        zeb.color_gain(0.25)
        with picture.world():
            zeb.surface_shader("constant")
            zeb.atmosphere_shader(("fog", dict(distance=5, color=(1, 0, 0))))
            zeb.atmosphere_shader(None)
            zeb.displacement_bound(0)
            zeb.load_identity()
            zeb.load_matrix(np.eye(4))
            zeb.skew(10, (0, 1, 0), (1, 0, 0))
            zeb.scale(1, 1, 1)
            zeb.apply_matrix(np.eye(4))
            with zeb.motion([0, 1]):
                zeb.translate(0, 0, 1)
                zeb.translate(9, 9, 9)
            zeb.basis(np.eye(4), step=1, apply="u")
            zeb.disk(3)
    assert picture.rgba[8, 8].tolist() == [0.25, 0.25, 0.25, 1]


def test_objects_are_drawn_as_often_as_called():
    with zeb.Picture(60, 20) as picture:
        with zeb.Object() as ball:
            zeb.sphere(0.5)
        with picture.world():
            zeb.translate(-2, 0, 2)
            for _ in range(3):
                ball()
                zeb.translate(2, 0, 0)
    assert [picture.alpha[10, x] > 0 for x in (10, 20, 30, 40, 50)] == [True, False, True, False, True]
    with pytest.raises(zeb.Error):
        ball()
    with pytest.raises(ValueError, match="not defined"):
        zeb.Object()()


def test_lights_are_switched():
    def brightness(on):
        with zeb.Picture(8, 8) as picture:
            with picture.world():
                lamp = zeb.light("ambient")
                lamp.switch(on)
                zeb.translate(0, 0, 1)
                zeb.disk(2)
        return picture.rgba[4, 4, 0]
    assert brightness(True) == 1 and brightness(False) == 0
    with pytest.raises(ValueError, match="no 'sun' among ambient"):
        zeb.light("sun")
    with pytest.raises(zeb.Error, match="zebLightSwitch"):
        with zeb.Picture(8, 8) as picture:
            with picture.world():
                lamp = zeb.light("ambient")
        lamp.switch(True)


def test_a_reset_closes_everything():
    picture = zeb.Picture(8, 8)
    with picture:
        with picture.world():
            zeb.reset()
            zeb.color((1, 1, 1))
    assert not _core.state.blocks
    zeb.clip(1, 2)  # outside any block


def test_other_threads_are_told_to_wait():
    caught = []

    def elsewhere():
        try:
            zeb.color((1, 0, 0))
        except RuntimeError as error:
            caught.append(str(error))

    def run():
        thread = threading.Thread(target=elsewhere)
        thread.start()
        thread.join()

    with zeb.Picture(8, 8) as picture:
        run()
        with picture.world():
            run()
    assert len(caught) == 2 and "another thread" in caught[0]
    run()
    assert len(caught) == 2  # nothing is open


def test_a_whole_picture_may_be_made_on_another_thread(ball):
    found = []
    thread = threading.Thread(target=lambda: found.append(ball(20, 20)))
    thread.start()
    thread.join()
    assert found[0].rgba.tobytes() == ball(20, 20).rgba.tobytes()


def test_other_threads_run_while_it_renders():
    counted = []
    done = threading.Event()

    def count():
        while not done.is_set():
            counted.append(time.perf_counter())
            time.sleep(0.001)

    with zeb.Picture(200, 200, samples=4, threads=1) as picture:
        zeb.tune(width=200, height=200)  # one bucket: nothing of Python's is called on the way
        world = picture.world()
        world.__enter__()
        zeb.light("distant")
        zeb.translate(0, 0, 3)
        zeb.shading_rate(0.05)
        zeb.sphere(0.9)
        thread = threading.Thread(target=count)
        thread.start()
        start = time.perf_counter()
        world.__exit__(None, None, None)
        end = time.perf_counter()
        done.set()
        thread.join()
    during = [t for t in counted if start < t < end]
    assert end - start > 0.05 and len(during) > 10


INTERRUPTED = """
import os, signal, threading, time
import numpy as np, zebcore as zeb

{shader}

def press():
    time.sleep(0.4)
    os.kill(os.getpid(), signal.SIGINT)

threading.Thread(target=press).start()
start = time.monotonic()
try:
    with zeb.Picture(2000, 2000, samples=8, threads=1) as picture:
        with picture.world():
            zeb.translate(0, 0, 3)
            zeb.shading_rate(0.05)
            {surface}
            zeb.light("distant")
            zeb.sphere(0.9)
except KeyboardInterrupt:
    took = time.monotonic() - start
else:
    raise SystemExit("not interrupted")
assert took < 3, took
assert not zeb._core.state.blocks
with zeb.Picture(10, 10) as picture:
    with picture.world():
        zeb.translate(0, 0, 3)
        zeb.sphere(0.9)
assert picture.alpha.any()
assert signal.getsignal(signal.SIGINT) is signal.default_int_handler
print("well", round(took, 2))
"""


@pytest.mark.parametrize("shader", ["", "@zeb.surface\ndef loop(g):\n    while True: pass",
                                    "@zeb.surface\ndef loop(g):\n    g.Ci = g.diffuse()"],
                         ids=["none", "endless", "busy"])
def test_control_c_ends_rendering(shader):
    code = INTERRUPTED.format(shader=shader, surface="zeb.surface_shader(loop)" if shader else "")
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=60)
    assert done.returncode == 0, done.stderr
    assert done.stdout.startswith("well") and not done.stderr


PRESSED = """
import os, random, signal, threading, time
import zebcore as zeb

@zeb.surface
def busy(g):
    g.Ci = g.diffuse()

def press():
    for _ in range(100):
        time.sleep(random.random() * 0.008)
        os.kill(os.getpid(), signal.SIGINT)

thread = threading.Thread(target=press)
interrupted = 0

def pictures():
    global interrupted
    while thread.is_alive():
        try:
            with zeb.Picture(30, 30) as picture:
                zeb.perspective(40)
                with picture.world():
                    zeb.light("distant")
                    zeb.translate(0, 0, 3)
                    with zeb.attributes(surface=busy, color=(1, 0, 0)):
                        zeb.sphere(0.9)
        except KeyboardInterrupt:
            interrupted += 1
    time.sleep(0.1)
    return True

thread.start()
over = False
while not over:
    try:
        over = pictures()
    except KeyboardInterrupt:  # between two pictures
        pass
signal.signal(signal.SIGINT, signal.SIG_IGN)
thread.join()
assert interrupted > 20, interrupted
assert not zeb._core.state.blocks
with zeb.Picture(10, 10) as picture, picture.world():
    zeb.translate(0, 0, 3)
    zeb.sphere(0.9)
assert picture.alpha.any()
print("well")
"""


def test_interrupts_at_any_moment_leave_everything_in_order():
    done = subprocess.run([sys.executable, "-c", PRESSED], capture_output=True, text=True, timeout=60)
    assert done.returncode == 0 and done.stdout == "well\n", done.stderr


def test_the_handler_of_interrupts_is_given_back():
    usual = signal.getsignal(signal.SIGINT)
    with zeb.Picture(8, 8) as picture:
        with picture.world():
            assert signal.getsignal(signal.SIGINT) is not usual
            with pytest.raises(KeyboardInterrupt):
                os.kill(os.getpid(), signal.SIGINT)
                time.sleep(1)
    assert signal.getsignal(signal.SIGINT) is usual
    mine = lambda number, frame: None  # noqa: E731
    try:
        with zeb.Picture(8, 8):
            signal.signal(signal.SIGINT, mine)
        assert signal.getsignal(signal.SIGINT) is mine
    finally:
        signal.signal(signal.SIGINT, usual)
    with zeb.Picture(8, 8):
        zeb.reset()
    assert signal.getsignal(signal.SIGINT) is usual


FORKED = """
import os, zebcore as zeb

def picture():
    with zeb.Picture(60, 60, threads=2) as picture:
        with picture.world():
            zeb.translate(0, 0, 3)
            zeb.light("distant")
            zeb.sphere(0.9)
    return picture.rgba.tobytes()

mine = picture()
child = os.fork()
if child == 0:
    os._exit(0 if picture() == mine else 1)
assert os.waitpid(child, 0)[1] == 0
with zeb.Picture(60, 60) as open_one:
    with open_one.world():
        zeb.translate(0, 0, 3)
        zeb.light("distant")
        zeb.sphere(0.9)
        child = os.fork()
        if child == 0:
            os._exit(0)
        assert os.waitpid(child, 0)[1] == 0
assert open_one.rgba.tobytes() == mine
print("well")
"""


@pytest.mark.skipif(not hasattr(os, "fork"), reason="no fork here")
def test_a_forked_process_renders_too():
    done = subprocess.run([sys.executable, "-c", FORKED], capture_output=True, text=True, timeout=60)
    assert done.returncode == 0 and done.stdout == "well\n", done.stderr


def test_the_library_is_looked_for_where_the_environment_says():
    code = "import zebcore"
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True,
                          env=dict(os.environ, ZEBCORE_LIBRARY="/nowhere/zebcore.so"))
    assert done.returncode == 1
    assert "ImportError: the library of zebcore is not there" in done.stderr
    assert "/nowhere/zebcore.so" in done.stderr
