"""What primitives and attributes take for an array, and what they say of what they do not."""
import numpy as np
import pytest
import zebcore as zeb

SQUARE = [(-1, -1, 0), (-1, 1, 0), (1, 1, 0), (1, -1, 0)]


def render(draw):
    """What a picture of some primitives looks like: bytes."""
    with zeb.Picture(24, 24) as picture:
        zeb.shading_rate(4)
        with picture.world():
            zeb.light("ambient")
            zeb.translate(0, 0, 3)
            zeb.rotate(30, 1, 1, 0)
            draw()
    assert picture.alpha.any()
    return picture.rgba.tobytes()


def refused(kind, message, draw):
    with zeb.Picture(8, 8) as picture:
        with picture.world():
            with pytest.raises(kind, match=message):
                draw()


COLORS = np.linspace(0, 1, 12).reshape(4, 3)


@pytest.mark.parametrize("points", [
    SQUARE, tuple(SQUARE), np.array(SQUARE), np.array(SQUARE, np.float16), np.array(SQUARE, ">f8"),
    np.array(SQUARE, ">f4"), np.array(SQUARE, np.int8), np.asfortranarray(np.array(SQUARE, np.float32)),
    np.array(SQUARE, np.float32)[::-1][::-1], np.array(SQUARE, object)],
    ids="list tuple int64 float16 big64 big32 int8 fortran reversed object".split())
def test_anything_array_like_gives_the_same_picture(points):
    usual = np.array(SQUARE, np.float32)
    colors = COLORS.astype(np.float32)
    assert render(lambda: zeb.polygon(points, color=COLORS.tolist())) == \
        render(lambda: zeb.polygon(usual, color=colors))


def test_fields_of_records_are_read_where_they_lie():
    vertices = np.zeros(4, [("place", "f4", 3), ("heat", "f4"), ("color", "f4", 3), ("odd", "i1")])
    aligned = np.zeros(4, [("place", "f4", 3), ("heat", "f4"), ("color", "f4", 3)])
    for array in (vertices, aligned):
        array["place"], array["color"] = SQUARE, COLORS
    usual = render(lambda: zeb.polygon(SQUARE, color=COLORS))
    assert render(lambda: zeb.polygon(vertices["place"], color=vertices["color"])) == usual
    assert render(lambda: zeb.polygon(aligned["place"], color=aligned["color"])) == usual
    assert render(lambda: zeb.polygon(np.repeat(SQUARE, 2, axis=0).astype("f4")[::2], color=COLORS)) == usual


def test_wrong_shapes_are_named_with_both_shapes():
    wrong = [
        (lambda: zeb.sphere(1, color=np.zeros((5, 3))),
         r"sphere\(\): 'color' \(varying color\) has the shape \(5, 3\), not \(4, 3\), or \(3,\) for all"),
        (lambda: zeb.sphere(1, kd=[1, 2]), r"'kd' \(uniform float\) has the shape \(2,\), not \(\)"),
        (lambda: zeb.polygon(np.zeros((4, 2))), r"'points' has the shape \(4, 2\), not \(n, 3\)"),
        (lambda: zeb.polygon(SQUARE, color=np.zeros((3, 3))), r"'color'.*\(3, 3\), not \(4, 3\)"),
        (lambda: zeb.polygon(SQUARE, normal=np.zeros((4,))), r"'normal'.*\(4,\), not \(4, 3\)"),
        (lambda: zeb.mesh(SQUARE, [[0, 1, 4]]), "indices from 0 to 4, and there are 4 points"),
        (lambda: zeb.mesh(SQUARE, [[-1, 1, 2]]), "indices from -1"),
        (lambda: zeb.mesh(SQUARE, np.array([0, 1, 2])), r"'faces' has the shape \(3,\)"),
        (lambda: zeb.mesh(SQUARE, [[0, 1, 2], [0, 2, 3]], kd=[1, 1, 1]), r"'kd'.*\(3,\), not \(2,\)"),
        (lambda: zeb.spheres(np.zeros((4, 3)), [1, 2]), r"'radii' has the shape \(2,\), not \(4,\) or \(\)"),
        (lambda: zeb.spheres(np.zeros(3), 1), r"'centers' has the shape \(3,\), not \(n, 3\)"),
        (lambda: zeb.patch(np.zeros((4, 3, 3))), "4 by 3 control points are no patch"),
        (lambda: zeb.patch_mesh(np.zeros((4, 4))), r"'points' has the shape \(4, 4\), not \(nv, nu, 3\)"),
        (lambda: zeb.patch_mesh(height=np.zeros((4, 4, 1))), r"'height'.*not \(nv, nu\)"),
        (lambda: zeb.patch_mesh(height=np.zeros((4, 5)), vertexcolor=np.zeros((5, 4, 3))),
         r"'vertexcolor'.*\(5, 4, 3\), not \(4, 5, 3\)"),
        (lambda: zeb.nurb(np.zeros((2, 2, 3)), uknots=[0, 0, 1], vknots=[0, 0, 1, 1]),
         r"nurb\(\): 'uknots' has the shape \(3,\), not \(4,\)"),
        (lambda: zeb.general_polygon([SQUARE, np.zeros((3, 2))]), r"'loops\[1\]'"),
        (lambda: zeb.general_polygon([]), "'loops' is empty"),
        (lambda: zeb.color((1, 0)), r"color\(\): 'value' has the shape \(2,\), not \(3,\)"),
        (lambda: zeb.bound([0, 1]), r"'box' has the shape \(2,\), not \(6,\)"),
        (lambda: zeb.apply_matrix(np.eye(3)), r"'matrix' has the shape \(3, 3\), not \(4, 4\)"),
        (lambda: zeb.light("omni", from_=(1, 2)), r"'from'.*\(2,\), not \(3,\)"),
        (lambda: zeb.look_at((0, 0), (0, 0, 1)), r"'eye' has the shape \(2,\)"),
        (lambda: zeb.sphere([1, 2]), r"sphere\(\): 'radius' has the shape \(2,\)"),
        (lambda: zeb.project_points(np.zeros(4), "world", "eye"), r"not \(..., 3\)"),
    ]
    for draw, message in wrong:
        refused(ValueError, message, draw)


def test_what_is_no_array_of_numbers_is_named():
    wrong = [
        (lambda: zeb.polygon("square"), "'points' is no array of numbers"),
        (lambda: zeb.polygon(p for p in SQUARE), "'points' is no array of numbers"),
        (lambda: zeb.polygon([(0, 0, 0), (1, 0)]), "'points' is no array of numbers"),
        (lambda: zeb.polygon(np.array(SQUARE) * 1j), "'points' is no array of numbers, but of complex128"),
        (lambda: zeb.polygon(None), "'points' is no array of numbers"),
        (lambda: zeb.mesh(SQUARE, [[0., 1., 2.]]), "whole numbers, but of float64"),
        (lambda: zeb.mesh(SQUARE, "abc"), "whole numbers"),
        (lambda: zeb.sphere("1"), "'radius' is no array of numbers"),
        (lambda: zeb.sphere(1, Color=(1, 0, 0)), r"sphere\(\) knows no variable 'Color'"),
        (lambda: zeb.sphere(1, plastic=1), r"knows no variable 'plastic'"),
        (lambda: zeb.translate(0, None, 0), "'y' is no array of numbers"),
        (lambda: zeb.sides(1.5), "'n' is no whole number"),
        (lambda: zeb.attributes(colour=(1, 0, 0)), r"attributes\(\) knows no 'colour'"),
        (lambda: zeb.object_name(b"x"), "is a str, not bytes"),
        (lambda: zeb.patch_mesh(), "takes one of"),
    ]
    for draw, message in wrong:
        refused(TypeError, message, draw)
    refused(ValueError, "null character", lambda: zeb.object_name("a\0b"))
    refused(ValueError, "no 'sidewards'", lambda: zeb.orientation("sidewards"))


def test_the_library_refuses_what_is_not_finite():
    for value in (np.nan, np.inf, 1e39):
        for draw in (lambda: zeb.polygon(np.full((4, 3), value)),
                     lambda: zeb.sphere(value),
                     lambda: zeb.color((1, value, 0)),
                     lambda: zeb.spheres(np.zeros((2, 3)), [1, value]),
                     lambda: zeb.translate(value, 0, 0)):
            with zeb.Picture(8, 8) as picture:
                with picture.world():
                    with pytest.raises(zeb.Error) as raised:
                        draw()
                    assert raised.value.code == 10 and raised.value.block == "world"


def test_empty_arrays_are_refused_or_nothing():
    with zeb.Picture(8, 8) as picture:
        with picture.world():
            zeb.spheres(np.zeros((0, 3)), [])
            for draw in (lambda: zeb.polygon(np.zeros((0, 3))),
                         lambda: zeb.mesh(np.zeros((0, 3)), np.zeros((0, 3), int)),
                         lambda: zeb.mesh(SQUARE, []),
                         lambda: zeb.patch_mesh(np.zeros((0, 0, 3)))):
                with pytest.raises(zeb.Error):
                    draw()
    assert not picture.alpha.any()


def test_one_value_stands_for_all():
    def colored(**variables):
        return render(lambda: zeb.polygon(SQUARE, **variables))
    red = (1, 0, 0)
    assert colored(color=red) == colored(color=[red] * 4)
    assert colored(color=0.5) == colored(color=[(.5, .5, .5)] * 4)
    assert render(lambda: zeb.spheres([(0, 0, 0), (.5, 0, 0)], .3, color=red)) == \
        render(lambda: zeb.spheres([(0, 0, 0), (.5, 0, 0)], [.3, .3], color=[red, red]))


def test_meshes_take_arrays_lists_and_mixed_faces():
    points = np.array(SQUARE + [(0, 2, 0)], np.float32)
    triangles = np.array([(0, 1, 2), (0, 2, 3)])
    whole = render(lambda: zeb.mesh(points, triangles))
    for faces in (triangles.tolist(), triangles.astype(np.uint8), triangles.astype(np.int32),
                  triangles.astype(">i4"), [np.array(f) for f in triangles], tuple(map(tuple, triangles))):
        assert render(lambda: zeb.mesh(points, faces)) == whole
    assert render(lambda: zeb.mesh(points, [(0, 1, 2, 3), (1, 4, 2)])) == \
        render(lambda: zeb.general_mesh(points, [[(0, 1, 2, 3)], [(1, 4, 2)]]))
    assert render(lambda: zeb.general_polygon([SQUARE, np.array(SQUARE) * 0.5])) == \
        render(lambda: zeb.general_mesh(np.concatenate([SQUARE, np.array(SQUARE) * 0.5]),
                                        [[(0, 1, 2, 3), (4, 5, 6, 7)]]))


def test_every_curved_primitive_shows():
    net = np.dstack(np.meshgrid(np.linspace(-1, 1, 4), np.linspace(-1, 1, 4)) + [np.zeros((4, 4))])
    weights = np.concatenate([net, np.ones((4, 4, 1))], axis=2)
    cubic = [0, 0, 0, 0, 1, 1, 1, 1]
    pictures = [render(draw) for draw in (
        zeb.sphere, zeb.cone, zeb.cylinder, zeb.paraboloid, zeb.disk, zeb.torus,
        lambda: zeb.sphere(1, zmin=-0.2, zmax=0.3),
        lambda: zeb.hyperboloid((1, 0, -1), (1, 1, 1)),
        lambda: zeb.patch_mesh(height=net[..., 0]))]
    assert len(set(pictures)) == len(pictures)
    flat = [render(draw) for draw in (
        lambda: zeb.patch(net), lambda: zeb.patch_mesh(net),
        lambda: zeb.nurb(net, uknots=cubic, vknots=cubic),
        lambda: zeb.nurb_mesh(net, uorder=4, uknots=cubic, vorder=4, vknots=cubic),
        lambda: zeb.nurb_mesh(pointw=weights, uorder=4, uknots=cubic, vorder=4, vknots=cubic))]
    square = np.frombuffer(render(lambda: zeb.polygon(SQUARE)), np.float32)
    for picture in flat:
        assert np.abs(np.frombuffer(picture, np.float32) - square).max() < 0.05


def test_nets_run_along_u_in_their_last_axis():
    """Nine columns of control points, of which the rightmost is red."""
    x, y = np.meshgrid(np.linspace(-1, 1, 9), np.linspace(-1, 1, 3))
    colors = np.zeros((3, 9, 3))
    colors[:, -1, 0] = 1
    with zeb.Picture(24, 24) as picture:
        with picture.world():
            zeb.translate(0, 0, 3)
            with zeb.attributes(surface="constant"):
                zeb.patch_mesh(np.dstack([x, y, 0 * x]), "bilinear", vertexcolor=colors)
    red = picture.rgba[12, :, 0]
    assert red[22] > 0.4 and not red[:18].any()


def test_declared_variables_are_taken_by_name():
    zeb.declare("heat", "varying", "float")
    zeb.declare("heat", "varying", "float")
    with pytest.raises(ValueError, match="varying float already"):
        zeb.declare("heat", "uniform", "float")
    with pytest.raises(ValueError, match="no such class or type"):
        zeb.declare("cold", "sometimes")
    zeb.declare("material", "uniform", "string")
    zeb.declare("number", "uniform", "integer")
    shaded = zeb.surface(lambda g: None)
    with zeb.Picture(8, 8) as picture:
        with picture.world(), zeb.attributes(surface=shaded):
            zeb.polygon(SQUARE, heat=[1, 2, 3, 4], material="brass", number=7)
            with pytest.warns(zeb.Info, match="does not read"):
                zeb.surface_shader("plastic")
                zeb.polygon(SQUARE, heat=1)
    refused(TypeError, "is a str", lambda: zeb.polygon(SQUARE, material=b"brass"))
    refused(ValueError, "beyond 32 bits", lambda: zeb.polygon(SQUARE, number=2**31))
    refused(ValueError, r"'heat' \(varying float\) has the shape \(5,\), not \(4,\)",
            lambda: zeb.polygon(SQUARE, heat=range(5)))


def test_colours_have_as_many_samples_as_the_space():
    with zeb.Picture(8, 8) as picture:
        zeb.color_space([(1, 0, 0), (0, 0, 1)], [(1, 0), (0, 0), (0, 1)])
        zeb.color((0.5, 1))
        with picture.world():
            zeb.translate(0, 0, 1)
            with pytest.raises(ValueError, match=r"\(3,\), not \(2,\)"):
                zeb.color((1, 0, 0))
            with zeb.attributes(surface="constant"):
                zeb.disk(2, color=(0.25, 0.75))
    assert picture.rgba[4, 4] == pytest.approx([0.25, 0, 0.75, 1])
    zeb.color((1, 1, 1))  # three again
    with pytest.raises(ValueError, match=r"not \(n, 3\) and \(3, n\)"):
        zeb.color_space([(1, 0, 0)], [(1, 0)] * 3)


def test_points_are_projected():
    with zeb.Picture(64, 64) as picture:
        zeb.perspective(90)
        zeb.look_at((0, 0, -2), (0, 0, 0))
        with picture.world():
            given = np.zeros((2, 5, 3))
            raster = zeb.project_points(given, "world", "raster")
            assert raster.shape == given.shape and not given.any()
            assert np.allclose(raster[..., :2], 32)
            assert np.allclose(zeb.project_points((0, 0, 0), "model", "eye"), (0, 0, 2))
            zeb.translate(1, 2, 3)
            zeb.mark_space("hook")
            assert np.allclose(zeb.project_points((0, 0, 0), "hook", "world"), (1, 2, 3))
            with pytest.raises(zeb.Error) as error:
                zeb.project_points((0, 0, 0), "nowhere", "world")
            assert error.value.code == 10
