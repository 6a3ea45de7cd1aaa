"""Functions of Python that shade."""
import copy
import gc
import pickle
import sys
import weakref

import numpy as np
import pytest
import zebcore as zeb
from zebcore import _core, _shading

SQUARE = [(-1, -1, 0), (-1, 1, 0), (1, 1, 0), (1, -1, 0)]


def shade(function, draw=None, size=24, **surface):
    """A picture of a primitive, a disk that fills it by default, under a function."""
    with zeb.Picture(size, size) as picture:
        zeb.shading_rate(4)
        with picture.world():
            zeb.light("ambient", intensity=0.1)
            zeb.light("distant", to=(1, -1, 1))
            zeb.translate(0, 0, 3)
            with zeb.attributes(surface=zeb.surface(**surface)(function) if surface else zeb.surface(function)):
                (draw or (lambda: zeb.disk(3)))()
    return picture


@pytest.mark.parametrize("name, parameters", [
    ("constant", {}), ("diffuse", dict(ka=0.7, kd=0.6)), ("metal", dict(ka=0.9, ks=0.8, roughness=0.2)),
    ("plastic", dict(ka=1, kd=0.5, ks=0.5, roughness=0.1))])
def test_built_in_surfaces_can_be_written_in_numpy(name, parameters):
    """The same to a few units in the last place of a float."""
    ka, kd, ks, roughness = (parameters.get(p, 0) for p in ("ka", "kd", "ks", "roughness"))

    @zeb.surface
    def mine(g):
        light = 1 if name == "constant" else ka * g.ambient() + kd * g.diffuse()
        shine = ks * g.specular(roughness) if ks else 0
        g.Ci = g.Os * (g.Cs * (light + shine) if name == "metal" else g.Cs * light + shine)

    def render(surface):
        with zeb.Picture(60, 60) as picture:
            with picture.world():
                zeb.light("ambient", intensity=0.2)
                zeb.light("distant", to=(1, -1, 1))
                zeb.light("omni", from_=(2, 2, 0), intensity=4)
                zeb.translate(0, 0, 3)
                with zeb.attributes(surface=surface, color=(0.8, 0.3, 0.2), opacity=0.7):
                    zeb.sphere(0.9)
        return picture.rgba
    assert np.abs(render(mine) - render((name, parameters))).max() < 2e-6


def test_arrays_of_a_row_have_the_shapes_they_should():
    seen = []

    def look(g):
        n = g.count
        assert n > 0
        for name in ("P", "N", "Ng", "I", "dPdu", "dPdv", "Cs", "Os", "Ci", "Oi"):
            array = getattr(g, name)
            assert array.shape == (3, n) and array.dtype == np.float32, name
            assert array is getattr(g, name)
        for name in ("u", "v", "s", "t", "du", "dv"):
            assert getattr(g, name).shape == (n,), name
        assert np.allclose(g.P[2], 3, atol=1e-5)
        assert np.abs(g.N[:2]).max() == 0
        seen.append(n)

    shade(look)
    assert seen


def test_arrays_are_views_of_the_planes():
    """What is written into one is what the library reads; the other half is not touched."""
    def write(g):
        g.Ci[0] = 0.25
        g.Ci[1] = g.u
        g.Ci[2, ::2] = 0.5
        g.Ci[2, 1::2] = 0.5
    picture = shade(write)
    assert picture.rgba[12, 12, [0, 2]] == pytest.approx([0.25, 0.5])
    assert len(np.unique(picture.rgba[..., 1])) > 20


def test_what_is_not_to_be_set_is_read_only():
    tried = []

    def write(g):
        for name in ("P", "N", "Ng", "I", "dPdu", "dPdv", "Cs", "Os", "Oi", "u", "v", "s", "t", "du", "dv"):
            with pytest.raises(ValueError, match="read-only"):
                getattr(g, name)[...] = 0
            with pytest.raises(AttributeError, match="not for a surface to set"):
                setattr(g, name, 0)
            tried.append(name)
        for name in ("L", "Cl", "Ol"):
            with pytest.raises(AttributeError, match=f"the row of a surface has no {name}"):
                getattr(g, name)
        with pytest.raises(AttributeError, match="no 'colour'"):
            g.colour = 1
        with pytest.raises(AttributeError, match="no 'colour'"):
            g.colour
    shade(write)
    assert len(tried) >= 15


def test_a_function_that_sets_opacity_says_so():
    def half(g):
        g.Oi = 0.5
        g.Ci = g.Oi * zeb.rgb(1, 0, 0)
    assert shade(half, opacity=True).rgba[12, 12].tolist() == [0.5, 0, 0, 0.5]


def test_an_exception_ends_the_picture_and_comes_out_of_the_world():
    calls = []

    def fail(g):
        calls.append(g.count)
        raise KeyError("no such thing")
    with pytest.raises(KeyError, match="no such thing") as raised:
        shade(fail, size=200)
    assert len(calls) == 1
    assert any(entry.name == "fail" for entry in raised.traceback)
    assert not _core.state.blocks


@pytest.mark.parametrize("error", [SystemExit, KeyboardInterrupt, MemoryError, StopIteration, GeneratorExit])
def test_any_exception_comes_out(error):
    def fail(g):
        raise error
    with pytest.raises(error):
        shade(fail)


def test_recursion_without_end_comes_out():
    def deep(g):
        deep(g)
    with pytest.raises(RecursionError):
        shade(deep)


def test_an_array_kept_beyond_the_call_is_told():
    kept = []

    def keep(g):
        kept.append(g.P)
        g.Ci = 1
    with pytest.raises(RuntimeError, match="keeps an array of its row"):
        shade(keep)
    kept.clear()

    def keep_part(g):
        kept.append(g.Ci[0, ::2].T)
        g.Ci = 1
    with pytest.raises(RuntimeError, match="keeps an array of its row"):
        shade(keep_part)
    kept.clear()

    def keep_copies(g):
        kept.extend([g.P.copy(), 2 * g.u, g.diffuse(), g.facing()])
        g.Ci = 1
    assert shade(keep_copies).alpha.any() and len(kept) > 3


def test_a_row_kept_beyond_the_call_is_over():
    kept = []

    def keep(g):
        kept.append(g)
        g.Ci = 1
    shade(keep)
    for use in (lambda g: g.P, lambda g: g.diffuse(), lambda g: g.noise(np.zeros(3)),
                lambda g: g.variable("heat"), lambda g: list(g.lights())):
        with pytest.raises(ReferenceError, match="is over"):
            use(kept[0])


def test_an_array_in_garbage_is_not_kept():
    def closure(g):
        P = g.P

        def inner():
            return inner, P
        g.Ci = 1
    assert shade(closure).alpha.any()


def test_a_row_is_not_copied():
    for copier in (copy.copy, copy.deepcopy, pickle.dumps):
        with pytest.raises(TypeError, match="can't be copied"):
            shade(lambda g: copier(g))
    texts = []
    shade(lambda g: texts.append(repr(g) + repr(vars(g))))
    assert texts


def test_a_function_that_returns_its_colour_is_told():
    for wrong in (lambda g: g.Cs, lambda g: (yield g)):
        with pytest.raises(TypeError, match="returns .*: it has to set what it finds"):
            shade(wrong)


def test_blocks_do_not_end_while_their_picture_renders():
    def leave(g):
        _core.state.blocks[-1].__exit__(None, None, None)
    with pytest.raises(RuntimeError, match="can't end while its picture renders"):
        shade(leave)


def test_a_picture_in_a_function_is_refused():
    def render(g):
        with zeb.Picture(4, 4):
            pass
    with pytest.raises(RuntimeError, match="open already"):
        shade(render)


def test_frames_of_a_failed_function_hold_no_views():
    def fail(g):
        positions = g.P
        raise ValueError(positions.shape)
    with pytest.raises(ValueError) as raised:
        shade(fail)
    trace = raised.value.__traceback__
    while trace.tb_next:
        trace = trace.tb_next
    assert trace.tb_frame.f_code.co_name == "fail" and "positions" not in trace.tb_frame.f_locals


def test_calls_are_refused_while_a_function_shades():
    errors = []

    def call(g):
        for wrong in (zeb.reset, lambda: zeb.color(1), lambda: zeb.sphere(1), lambda: zeb.quark("new"),
                      lambda: zeb.declare("newer"), lambda: zeb.Image(np.zeros((2, 2)))):
            with pytest.raises(zeb.Error) as raised:
                wrong()
            errors.append(raised.value.code)
        g.Ci = 1
    assert shade(call).alpha.any()
    assert set(errors) == {8} and len(errors) >= 6


def test_services_find_what_they_should():
    checked = []

    def ask(g):
        n = g.count
        assert np.allclose(g.ambient(), 0.1)
        N = g.facing()
        assert np.allclose((N * N).sum(0), 1, atol=1e-5)
        assert ((N * g.I).sum(0) <= 1e-5).all()
        way = np.array([-1, 1, -1]) / np.sqrt(3)
        lit = np.clip((N * way[:, None]).sum(0), 0, None)
        assert np.allclose(g.diffuse(), lit, atol=1e-5)
        assert np.array_equal(g.diffuse(N), g.diffuse())
        assert np.array_equal(g.diffuse(N.astype(float)), g.diffuse())
        assert np.array_equal(g.specular(0.2), g.specular(0.2, N, -g.I))
        assert np.allclose(g.phong(5, V=-g.I), g.phong(5))
        (L, Cl, Ol), = g.lights()
        assert np.allclose(L, way[:, None], atol=1e-5) and (Cl == 1).all() and (Ol == 1).all()
        assert np.array_equal(g.transform(g.P, "eye", "eye"), g.P)
        model = g.transform(g.P, "eye", "model")
        assert np.allclose((model**2).sum(0), 1, atol=0.1)  # coarse
        assert np.allclose(g.transform(g.P), model, atol=1e-5)
        assert np.allclose(g.transform(zeb.rgb(0, 0, 0), "model", "eye"), zeb.rgb(0, 0, 3))
        assert np.allclose(g.transform(zeb.rgb(1, 0, 0), "model", "eye", kind="vector"), zeb.rgb(1, 0, 0))
        for places in (g.u, np.stack([g.u, g.v]), g.P, np.concatenate([g.P, g.u[None]])):
            noise = g.noise(7 * places)
            assert noise.shape == (n,) and np.abs(noise).max() <= 1
            assert g.turbulence(7 * places, 4, absolute=True).min() >= 0
        assert np.array_equal(g.noise(np.floor(9 * g.P)), np.zeros(n))
        assert np.array_equal(g.noise(g.P % 2, [2, 2, 2]) != 0, g.noise(g.P) != 0)
        assert set(np.unique(g.checks(np.full(n, 0.5), np.full(n, 0.5)))) == {1}
        assert (g.step(0.5, np.full(n, 0.2)) == 0).all() and (g.step(0.5, 0.7 + 0 * g.u) == 1).all()
        first, second = g.differences(g.u)
        assert first.shape == second.shape == (n,)
        assert g.normals(1 * g.P).shape == (3, n)
        checked.append(n)
    shade(ask, zeb.sphere, size=96)
    assert checked and max(checked) > 16


def test_services_name_what_is_wrong():
    checked = []

    def ask(g):
        n = g.count
        for wrong, kind, message in (
                (lambda: g.diffuse(np.zeros((n, 3))) if n != 3 else g.diffuse(1),
                 ValueError, r"Row.diffuse\(\): 'N' has the shape"),
                (lambda: g.specular(0.1, V=g.u), ValueError, "'V'"),
                (lambda: g.step(0.5, g.P), ValueError, r"'values' has the shape \(3, "),
                (lambda: g.transform(g.P, "eye", "elsewhere"), ValueError, "no space 'elsewhere'"),
                (lambda: g.transform(g.P, kind="sideways"), ValueError, "no 'sideways'"),
                (lambda: g.transform(g.P, "eye", "raster"), zeb.Error, "zebRowTransform"),
                (lambda: g.noise(np.zeros((5, n))), zeb.Error, "dimensions|5"),
                (lambda: g.noise(g.P, [1, 2]), ValueError, "2 periods for 3"),
                (lambda: g.turbulence(g.P, 99), zeb.Error, "octaves"),
                (lambda: g.image("face", g.s, g.t), TypeError, "no zebcore.Image"),
                (lambda: g.variable("never heard"), ValueError, "no variable"),
                (lambda: g.diffuse("up"), TypeError, "no array of numbers")):
            with pytest.raises(kind, match=message):
                wrong()
        g.Ci[:] = g.diffuse()
        checked.append(n)
    assert shade(ask).alpha.any() and checked


def test_variables_of_the_primitive_reach_the_function():
    for name, storage, kind in (("warmth", "varying", "float"), ("flow", "varying", "pair"),
                                ("tint", "varying", "color"), ("place", "uniform", "point"),
                                ("heavy", "uniform", "pointw"), ("count", "uniform", "integer"),
                                ("stuff", "uniform", "string"), ("unused", "varying", "float")):
        zeb.declare(name, storage, kind)
    found = []

    def ask(g):
        n = g.count
        assert np.allclose(g.variable("warmth"), 1 + g.u, atol=1e-5)
        assert g.variable("flow").shape == (2, n) and np.allclose(g.variable("flow")[1], 5)
        assert np.allclose(g.variable("tint"), zeb.rgb(.1, .2, .3))
        assert np.allclose(g.variable("place"), zeb.rgb(0, 0, 3), atol=1e-6)  # in camera space
        assert np.allclose(g.variable("heavy")[:, 0], [1, 2, 3, 4])
        assert g.variable("count") == 42 and g.variable("stuff") == "brass"
        assert g.variable("unused") is None
        g.Ci = g.variable("tint")
        found.append(n)
    picture = shade(ask, lambda: zeb.disk(3, warmth=[1, 2, 1, 2], flow=[(4, 5)] * 4, tint=(.1, .2, .3),
                                          place=(0, 0, 0), heavy=(1, 2, 3, 4), count=42, stuff="brass"))
    assert found and picture.rgba[12, 12, :3] == pytest.approx([.1, .2, .3])


def test_images_are_looked_up():
    pixels = np.zeros((2, 2, 3), np.uint8)
    pixels[0, 0] = 255, 0, 0
    pixels[1, 1] = 0, 0, 255
    image = zeb.Image(pixels, "clamp")

    def ask(g):
        assert g.image(image, g.u, g.v).shape == (3, g.count)
        g.Ci = g.image(image, 0.01 + 0 * g.u, 0.01 + 0 * g.v)
    assert shade(ask).rgba[12, 12, :3].tolist() == [1, 0, 0]
    grey = zeb.Image(np.linspace(0, 1, 12).reshape(3, 4))
    assert grey.channels == 1
    image.close()
    image.close()
    with pytest.raises(ValueError, match="was closed"):
        shade(lambda g: g.image(image, g.u, g.v))
    with pytest.raises(ValueError, match=r"'pixels' has the shape \(4,\)"):
        zeb.Image(np.zeros(4))
    with pytest.raises(zeb.Error, match="zebImage"):
        zeb.Image(np.full((2, 2), np.nan))
    del grey
    gc.collect()
    assert _core.state.dead_images
    with zeb.Picture(4, 4):
        assert not _core.state.dead_images
    with pytest.raises(TypeError, match="pickle its pixels"):
        pickle.dumps(zeb.Image(np.zeros((2, 2))))


def test_lights_are_functions_too():
    @zeb.light_shader
    def above(g):
        g.L = zeb.rgb(0, -1, 0)
        g.Cl[:] = 0.5 + 0 * g.P
        with pytest.raises(AttributeError, match="the row of a light has no Ci"):
            g.Ci

    @zeb.light_shader(ambient=True)
    def glow(g):
        g.Cl = zeb.rgb(0.25, 0, 0)

    def render(surface, *lights):
        with zeb.Picture(24, 24) as picture:
            with picture.world():
                for light in lights:
                    zeb.light(light)
                zeb.translate(0, 0, 3)
                zeb.rotate(45, 1, 0, 0)
                with zeb.attributes(surface=surface):
                    zeb.disk(3)
        return picture.rgba[12, 12, :3]
    assert render("diffuse", above) == pytest.approx(np.full(3, 0.5 / np.sqrt(2)), abs=1e-5)
    assert render("diffuse", glow) == pytest.approx([0.25, 0, 0])
    assert render(zeb.surface(lambda g: setattr(g, "Ci", g.diffuse() + g.ambient())), above, glow, glow) == \
        pytest.approx([0.5 + 0.5 / np.sqrt(2), 0.5 / np.sqrt(2), 0.5 / np.sqrt(2)], abs=1e-5)
    with pytest.raises(ValueError, match="made lights by zebcore.light_shader"):
        zeb.light(lambda g: None)
    with pytest.raises(TypeError, match="is no light"):
        zeb.light(zeb.surface(lambda g: None))
    with pytest.raises(TypeError, match="take no parameters"):
        zeb.light(above, intensity=1)


def test_many_lights_make_planes_that_lie_apart():
    """Forty-eight planes lie together at most: those of some lights do not."""
    count = 12
    lights = []
    for k in range(count):
        def shine(g, k=k):
            g.L = zeb.rgb(0, 0, 1)
            g.Cl = np.stack([np.full(g.count, 2.0**-k)] * 3)
            g.Ol = 0.5
        lights.append(zeb.light_shader(shine))
    seen = []

    def ask(g):
        found = list(g.lights())
        found.sort(key=lambda light: -light[1][0, 0])
        for k, (L, Cl, Ol) in enumerate(found):
            assert np.allclose(L, zeb.rgb(0, 0, -1)) and (Cl == 2.0**-k).all() and (Ol == 0.5).all()
        seen.append(len(found))
        g.Ci = g.diffuse()
    with zeb.Picture(12, 12) as picture:
        zeb.shading_rate(4)
        with picture.world():
            for light in lights:
                zeb.light(light)
            zeb.translate(0, 0, 3)
            with zeb.attributes(surface=zeb.surface(ask)):
                zeb.disk(3)
    assert set(seen) == {count}
    assert picture.rgba[6, 6, 0] == pytest.approx(2 - 2.0**-(count - 1), abs=1e-5)


def test_planes_apart_are_copied_in_and_out(monkeypatch):
    monkeypatch.setattr(_shading.Row, "_view", lambda self, addresses, n: None)
    test_services_find_what_they_should()
    test_what_is_not_to_be_set_is_read_only()
    test_arrays_are_views_of_the_planes()
    test_lights_are_functions_too()


def test_atmospheres_change_what_surfaces_made():
    @zeb.atmosphere
    def haze(g):
        g.Ci = 0.5 * g.Ci + 0.5 * g.Oi * zeb.rgb(0, 0, 1)
        with pytest.raises(ValueError, match="read-only"):
            g.Oi[:] = 1
    with zeb.Picture(12, 12) as picture:
        with picture.world():
            zeb.translate(0, 0, 3)
            with zeb.attributes(surface="constant", color=(1, 1, 0), atmosphere=haze):
                zeb.disk(3)
    assert picture.rgba[6, 6].tolist() == [0.5, 0.5, 0.5, 1]


def test_displacements_move_points():
    @zeb.displacement
    def lift(g):
        g.P[2] -= 1
        with pytest.raises(ValueError, match="read-only"):
            g.N[2] = 0
        with pytest.raises(AttributeError):
            g.Ci
    with zeb.Picture(12, 12) as picture:
        zeb.clip(1, 5)
        with picture.world():
            zeb.translate(0, 0, 3)
            with zeb.attributes(displacement=lift, displacement_bound=1):
                zeb.disk(3)
    assert picture.depth[6, 6] == pytest.approx((2 - 1) / 4)


def test_no_numbers_are_told():
    def wrong(g):
        with np.errstate(invalid="ignore"):
            g.Ci = np.float32(0) / np.zeros(g.count, np.float32)
    with pytest.raises((zeb.Error, zeb.Warning)) as raised:
        shade(wrong)
    assert raised.value.code == 15 if isinstance(raised.value, zeb.Error) else True


def test_functions_are_let_go_when_nothing_uses_them():
    class Painter:
        def __call__(self, g):
            g.Ci = 1
    painter = Painter()
    gone = weakref.ref(painter)
    with zeb.Picture(12, 12) as picture:
        with picture.world():
            zeb.translate(0, 0, 3)
            with zeb.attributes(surface=zeb.surface(painter)):
                zeb.disk(3)
            del painter
            gc.collect()
            assert gone() is not None
    assert picture.alpha.any()
    gc.collect()
    assert gone() is None


def test_a_function_that_is_refused_is_let_go():
    with zeb.Picture(12, 12):
        with zeb.Object():
            with pytest.raises(zeb.Error):
                zeb.surface_shader(zeb.surface(lambda g: None))
        assert not _shading._shaders


def test_shaders_are_functions_still():
    @zeb.surface
    def white(g):
        "Is white."
        g.Ci = 1

    @zeb.surface
    def half(g):
        white(g)
        g.Ci *= 0.5
    assert white.__name__ == "white" and white.__doc__ == "Is white." and "white" in repr(white)
    assert shade(half).rgba[12, 12, 0] == 0.5
    for wrong in (lambda: zeb.surface(3), lambda: zeb.surface_shader(lambda g: 1), lambda: zeb.surface_shader(None),
                  lambda: zeb.surface_shader(zeb.atmosphere(white.function)),
                  lambda: zeb.displacement_shader("lift")):
        with pytest.raises(TypeError):
            wrong()


@zeb.surface
def importable(g):
    g.Ci = 1


def test_shaders_pickle_by_name():
    assert pickle.loads(pickle.dumps(importable)) is importable


def test_collection_in_odd_moments_does_no_harm():
    before = gc.get_threshold()
    gc.set_threshold(1)
    try:
        def busy(g):
            ring = [g.count]
            ring.append(ring)
            g.Ci = g.diffuse() + g.specular()
        picture = shade(busy)
    finally:
        gc.set_threshold(*before)
    assert picture.rgba.max() > 0


def test_nothing_leaks_over_many_rows():
    """Rows in plenty: as many objects after as before."""
    def paint(g):
        g.Ci = g.diffuse() + g.noise(g.P) + g.image(image, g.s, g.t)
    image = zeb.Image(np.ones((4, 4, 3)))
    shade(paint)
    gc.collect()
    before = len(gc.get_objects()), sys.getrefcount(None)
    for _ in range(5):
        shade(paint, zeb.sphere, size=100)
    gc.collect()
    assert len(gc.get_objects()) - before[0] < 50
    assert sys.getrefcount(None) - before[1] < 50
