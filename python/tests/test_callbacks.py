"""Filters, procedurals and devices of Python."""
import gc
import weakref

import numpy as np
import pytest
import zebcore as zeb
from zebcore import _primitives, raw


def box(render_filter):
    with zeb.Picture(24, 24) as picture:
        render_filter()
        zeb.filter_width(1)
        with picture.world():
            zeb.translate(0, 0, 3)
            with zeb.attributes(surface="constant"):
                zeb.sphere(0.7)
    return picture.rgba


def test_a_filter_is_a_function():
    assert np.allclose(box(lambda: zeb.filter(lambda dx, dy, x, y: 1)), box(lambda: zeb.filter("box")),
                       atol=1e-6)
    with pytest.raises(ZeroDivisionError):
        box(lambda: zeb.filter(lambda dx, dy, x, y: 1 / 0))
    with pytest.raises((TypeError, ValueError)):
        box(lambda: zeb.filter(lambda dx, dy, x, y: "wide"))
    with pytest.raises(ValueError, match="no 'cubic'"):
        zeb.filter("cubic")


def test_procedurals_build_when_they_are_seen():
    heard = []

    def cell(x, depth):
        def build(detail):
            heard.append((depth, detail))
            if depth == 0:
                zeb.translate(x, 0, 0)
                zeb.sphere(0.1)
            else:
                for side in (-0.25, 0.25):
                    zeb.procedural((-2, 2, -1, 1, -1, 1), cell(x + side * depth, depth - 1),
                                   lambda: heard.append("freed"))
        return build

    with zeb.Picture(40, 40) as picture:
        with picture.world():
            zeb.translate(0, 0, 3)
            zeb.procedural((-2, 2, -1, 1, -1, 1), cell(0, 2))
            zeb.procedural((90, 91, 0, 1, 0, 1), lambda detail: heard.append("not seen"))
            assert not heard
    assert picture.alpha.any()
    assert [h for h in heard if h == "not seen"] == []
    assert heard.count("freed") == 6
    assert not _primitives._procedurals


def test_a_procedural_may_open_blocks_and_leave_them():
    def build(detail):
        zeb.attributes(color=(1, 0, 0), surface="constant").__enter__()
        zeb.disk(3)
    with zeb.Picture(8, 8) as picture:
        with picture.world():
            zeb.translate(0, 0, 3)
            zeb.procedural((-3, 3, -3, 3, -1, 1), build)
    assert picture.rgba[4, 4].tolist() == [1, 0, 0, 1]


def test_exceptions_of_procedurals_come_out():
    def build(detail):
        with zeb.attributes():
            zeb.polygon([(0, 0)])
    with pytest.raises(ValueError, match="'points'"):
        with zeb.Picture(8, 8) as picture:
            with picture.world():
                zeb.translate(0, 0, 3)
                zeb.procedural((-3, 3, -3, 3, -1, 1), build)

    def free():
        raise LookupError("in free")
    with pytest.raises(LookupError, match="in free"):
        with zeb.Picture(8, 8) as picture:
            with picture.world():
                zeb.translate(0, 0, 3)
                zeb.procedural((-3, 3, -3, 3, -1, 1), lambda detail: None, free)
    with pytest.raises(zeb.Error):
        zeb.procedural((0, 1, 0, 1, 0, 1), build)
    assert not _primitives._procedurals
    with pytest.raises(TypeError, match="functions"):
        zeb.procedural((0, 1, 0, 1, 0, 1), 3)


def test_what_a_procedural_holds_is_let_go():
    class Tree:
        def build(self, detail):
            zeb.sphere(0.5)
    tree = Tree()
    gone = weakref.ref(tree)
    with zeb.Picture(8, 8) as picture:
        with picture.world():
            zeb.translate(0, 0, 3)
            zeb.procedural((-1, 1, -1, 1, -1, 1), tree.build)
            del tree
            gc.collect()
            assert gone() is not None
    gc.collect()
    assert picture.alpha.any() and gone() is None


def test_an_exception_of_progress_comes_out():
    def heard(percent):
        raise OSError("full")
    with pytest.raises(OSError, match="full"):
        with zeb.Picture(48, 48, progress=heard) as picture:
            with picture.world():
                zeb.translate(0, 0, 3)
                zeb.sphere(0.9)


def test_progress_without_a_picture(tmp_path):
    heard = []
    zeb.progress_callback(heard.append)
    try:
        with zeb.frame():
            zeb.raster_viewport(48, 48)
            zeb.hider("null")
            zeb.output_file(tmp_path / "a.png")
            try:
                with zeb.world():
                    zeb.sphere(0.5)
            except zeb.Error as error:
                assert error.code == 2
    finally:
        zeb.progress_callback(None)
    with pytest.raises(TypeError, match="no function"):
        zeb.progress_callback(3)


def test_a_device_of_ones_own_gets_the_pixels():
    rows = {}
    span = raw.SpanFunction(lambda data, x0, x1, y, words: rows.setdefault(y, []).append((x0, x1)))
    device = raw.ZebDisplay(span=span)
    with zeb.frame():
        zeb.raster_viewport(20, 10)
        zeb.custom_display(device)
        with zeb.world():
            zeb.translate(0, 0, 3)
            zeb.sphere(0.9)
    assert sorted(rows) == list(range(10))
    assert all(sum(x1 - x0 + 1 for x0, x1 in spans) == 20 for spans in rows.values())


def test_errors_in_a_callback_belong_to_it():
    """What the picture reports meanwhile is told at its end, not inside the function."""
    def paint(g):
        try:
            g.turbulence(g.P, 1000)
        except zeb.Error as error:
            assert error.function == "zebRowTurbulence" and len(error.reports) == 1
        g.Ci = 1
    with zeb.Picture(16, 16) as picture:
        with picture.world():
            zeb.translate(0, 0, 3)
            with zeb.attributes(surface=zeb.surface(paint)):
                zeb.sphere(0.9)
    assert picture.alpha.any()
