"""Pictures, their arrays and their files."""
import pickle
import struct
import sys
import types
import zlib

import numpy as np
import pytest
import zebcore as zeb
from zebcore import _picture


def test_arrays_are_float32_views_of_one_memory(ball):
    picture = ball(48, 36)
    assert picture.rgba.shape == (36, 48, 4) and picture.rgba.dtype == np.float32
    assert picture.alpha.shape == picture.depth.shape == (36, 48)
    assert picture.rgba.base is picture.depth.base is picture.alpha.base
    assert picture.alpha.max() == 1 and picture.alpha[0, 0] == 0
    assert picture.rgba[18, 24, 3] == 1 and picture.rgba[18, 24, 0] > 0


def test_depth_lies_between_the_clipping_distances():
    with zeb.Picture(20, 20) as picture:
        zeb.clip(2, 10)
        zeb.translate(0, 0, 4)
        with picture.world():
            zeb.polygon([(-.5, -.5, 0), (-.5, .5, 0), (.5, .5, 0), (.5, -.5, 0)])
    assert picture.depth[10, 10] == pytest.approx((4 - 2) / (10 - 2), abs=1e-6)
    assert picture.depth[0, 0] == 1
    assert set(np.round(np.unique(picture.depth), 5)) == {0.25, 1}  # at edges, too


def test_colours_pass_above_one_and_carry_gamma():
    def centre(gamma):
        with zeb.Picture(9, 9, gamma=gamma) as picture:
            with picture.world():
                with zeb.attributes(surface="constant", color=(2, 1, 0.25)):
                    zeb.translate(0, 0, 5)
                    zeb.disk(3)
        return picture.rgba[4, 4]
    assert centre(1) == pytest.approx([2, 1, 0.25, 1], rel=1e-6)
    assert centre(2) == pytest.approx([2**.5, 1, 0.5, 1], rel=1e-5)


def test_the_same_calls_give_the_same_bits_on_any_number_of_threads():
    def render(threads):
        with zeb.Picture(60, 60, threads=threads) as picture:
            zeb.translate(0, 0, 3)
            with picture.world():
                zeb.light("distant", to=(1, -1, 1))
                zeb.sphere(0.9)
        return picture.rgba.tobytes()
    assert render(1) == render(3) == render(0)


def test_tiles_make_up_the_whole_picture():
    def scene():
        zeb.light("distant", to=(1, -1, 1))
        zeb.translate(0.1, 0, 3)
        zeb.sphere(0.8)

    with zeb.Picture(60, 48) as whole:
        with whole.world():
            scene()
    with zeb.Picture(60, 48) as tiled:
        for y in range(0, 48, 24):
            for x in range(0, 60, 24):
                with tiled.world(crop=(x, min(x + 24, 60), y, y + 24)):
                    scene()
    assert whole.rgba.max() > 0
    assert whole.rgba.tobytes() == tiled.rgba.tobytes()
    assert whole.depth.tobytes() == tiled.depth.tobytes()


def test_a_crop_leaves_the_rest_empty():
    with zeb.Picture(48, 24) as picture:
        with picture.world(crop=(24, 48, 0, 24)):
            zeb.translate(0, 0, 3)
            zeb.sphere(0.9)
    assert not picture.alpha[:, :24].any() and picture.alpha[:, 24:].any()
    assert (picture.depth[:, :24] == 1).all()
    with zeb.Picture(48, 24) as picture:
        for crop in ((0, 49, 0, 24), (10, 10, 0, 24), (-1, 4, 0, 24)):
            with pytest.raises(ValueError, match="no part of 48 by 24"):
                picture.world(crop=crop)


def decode(data):
    """A PNG file's pixels, read by rules of their own: 8 or 16 bits, any filter."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    at, idat = 8, b""
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + size]
        assert zlib.crc32(kind + body) == struct.unpack(">I", data[at + 8 + size:at + 12 + size])[0]
        if kind == b"IHDR":
            width, height, bits, color = struct.unpack(">IIBB3x", body)
        idat += body if kind == b"IDAT" else b""
        at += 12 + size
    channels = {2: 3, 6: 4}[color]
    step, raw = channels * bits // 8, zlib.decompress(idat)
    line = width * step
    above = np.zeros(line, int)
    rows = []
    for y in range(height):
        kind = raw[y * (line + 1)]
        row = np.frombuffer(raw, np.uint8, line, y * (line + 1) + 1).astype(int)
        for x in range(line):
            left = row[x - step] if x >= step else 0
            corner = above[x - step] if x >= step else 0
            if kind == 1:
                row[x] += left
            elif kind == 2:
                row[x] += above[x]
            elif kind == 3:
                row[x] += (left + above[x]) // 2
            elif kind == 4:
                p = left + above[x] - corner
                row[x] += min((left, above[x], corner), key=lambda v: abs(p - v))
            row[x] &= 255
        rows.append(row.astype(np.uint8))
        above = row
    pixels = np.array(rows).view(np.uint8 if bits == 8 else ">u2")
    return pixels.reshape(height, width, channels)


def scene_of_edges():
    """Transparent and opaque things with edges, dark and bright."""
    zeb.light("distant", to=(1, -1, 1), intensity=1.1)
    zeb.light("ambient", intensity=0.05)
    zeb.translate(0, 0, 4)
    with zeb.attributes(color=(0.9, 0.4, 0.1)):
        zeb.sphere(0.7)
    with zeb.attributes(color=(0.1, 0.3, 0.9), opacity=(0.3, 0.5, 0.4)):
        zeb.translate(0.4, 0.2, -1)
        zeb.torus(0.5, 0.2)


@pytest.mark.parametrize("bits", [8, 16])
@pytest.mark.parametrize("gamma", [1, 2.2])
def test_a_png_file_has_the_pixels_of_the_librarys_own(tmp_path, bits, gamma):
    mine, its = tmp_path / "mine.png", tmp_path / "its.png"
    with zeb.Picture(96, 72, gamma=gamma, samples=3) as picture:
        with picture.world():
            scene_of_edges()
    picture.save(mine, bits=bits)
    with zeb.Picture(96, 72, gamma=gamma, samples=3):
        zeb.output_samples("rgba")
        zeb.color_quantize(2**bits - 1)
        zeb.color_jitter(0)
        zeb.output_file(its)
        try:
            with zeb.world():
                scene_of_edges()
        except zeb.Error as error:
            assert error.code == 2
            pytest.skip("the library writes no PNG files")
    a, b = decode(mine.read_bytes()), decode(its.read_bytes())
    assert np.array_equal(a[..., 3], b[..., 3])
    assert len(np.unique(a[..., 3])) > 20
    assert np.array_equal(a, b)


def exr_lines(data):
    """The lines of an uncompressed file: (height, channels, width)."""
    assert data[:8] == struct.pack("<ii", 20000630, 2)
    at, found = 8, {}
    while data[at]:
        name, kind, rest = data[at:].split(b"\0", 2)
        start = at + len(name) + len(kind) + 2
        size = struct.unpack("<i", data[start:start + 4])[0]
        found[name.decode()] = data[start + 4:start + 4 + size]
        at = start + 4 + size
    width, height = np.frombuffer(found["dataWindow"], "<i4")[2:] + 1
    channels = [c for c in found["channels"][:-1].split(b"\0") if c.isalpha() and len(c) == 1]
    offsets = np.frombuffer(data, "<u8", height, at + 1)
    return channels, np.array([np.frombuffer(data, "<f4", width * len(channels), int(o) + 8)
                               .reshape(len(channels), width) for o in offsets])


def test_an_exr_file_has_the_light_and_the_depth(tmp_path, ball):
    picture = ball(40, 30)
    picture.save(tmp_path / "a.exr")
    channels, lines = exr_lines((tmp_path / "a.exr").read_bytes())
    assert channels == [b"A", b"B", b"G", b"R", b"Z"]
    assert np.array_equal(lines[:, 3], picture.rgba[..., 0])
    assert np.array_equal(lines[:, 1], picture.rgba[..., 2])
    assert np.array_equal(lines[:, 0], picture.alpha)
    assert np.array_equal(lines[:, 4], picture.depth)


def test_an_exr_file_is_without_gamma(tmp_path):
    with zeb.Picture(8, 8, gamma=2.2) as picture:
        with picture.world():
            with zeb.attributes(surface="constant", color=(3, 0.5, 0.2)):
                zeb.translate(0, 0, 1)
                zeb.disk(3)
    picture.save(tmp_path / "a.exr")
    _, lines = exr_lines((tmp_path / "a.exr").read_bytes())
    assert lines[4, 1:4, 4] == pytest.approx([0.2, 0.5, 3], rel=1e-5)


def test_other_files_are_refused(tmp_path, ball):
    picture = ball(12, 12)
    for name in ("a.jpg", "a", "a.PNGG"):
        with pytest.raises(ValueError, match="neither .png nor .exr"):
            picture.save(tmp_path / name)
    with pytest.raises(ValueError, match="8 or 16 bits"):
        picture.save(tmp_path / "a.png", bits=4)
    assert not list(tmp_path.iterdir())
    picture.save(str(tmp_path / "A.PNG"))
    assert decode((tmp_path / "A.PNG").read_bytes()).shape == (12, 12, 4)


def test_it_shows_itself_in_notebooks(ball):
    picture = ball(30, 20)
    assert np.array_equal(decode(picture._repr_png_()), picture.pixels)
    assert zeb.Picture(4, 4)._repr_png_() is None


def test_a_picture_that_was_not_rendered_has_no_pixels():
    picture = zeb.Picture(4, 4)
    for name in ("rgba", "alpha", "depth", "pixels"):
        with pytest.raises(zeb.Error, match="no pixels"):
            getattr(picture, name)
    for width, height in ((0, 4), (4, -1)):
        with pytest.raises(ValueError, match="is none"):
            zeb.Picture(width, height)
    with pytest.raises(TypeError, match="whole number"):
        zeb.Picture(4.5, 4)


def test_a_picture_survives_pickling(ball):
    picture = ball(12, 12, before=None)
    again = pickle.loads(pickle.dumps(picture))
    assert np.array_equal(again.rgba, picture.rgba) and again.gamma == picture.gamma


def test_progress_is_told_and_can_end_the_picture():
    heard = []
    with zeb.Picture(120, 120, progress=heard.append) as picture:
        with picture.world():
            zeb.translate(0, 0, 3)
            zeb.sphere(0.9)
    assert heard == sorted(set(heard)) and heard[-1] == 100
    full = picture.alpha.sum()
    heard.clear()
    with zeb.Picture(120, 120, progress=lambda percent: heard.append(percent) or percent > 50) as picture:
        with picture.world():
            zeb.translate(0, 0, 3)
            zeb.sphere(0.9)
    assert 50 < heard[-1] < 100
    assert 0 < picture.alpha.sum() < full


def under_a_bar():
    with zeb.Picture(60, 60, progress=True) as picture:
        with picture.world():
            zeb.translate(0, 0, 3)
            zeb.sphere(0.9)
    return picture.alpha.any()


def test_a_bar_of_tqdm_goes_from_0_to_100(monkeypatch):
    heard = []

    class Bar:
        def __init__(self, total, **others):
            heard.append(total)

        def update(self, more):
            heard.append(more)

        def close(self):
            heard.append("closed")
    monkeypatch.setitem(sys.modules, "tqdm.auto", types.SimpleNamespace(tqdm=Bar))
    assert under_a_bar()
    assert heard[0] == 100 and heard[-1] == "closed" and len(heard) > 5
    assert sum(heard[1:-1]) == 100 and min(heard[1:-1]) > 0


def test_a_plain_bar_shows_what_takes_long(monkeypatch, capfd):
    monkeypatch.setitem(sys.modules, "tqdm.auto", None)
    assert under_a_bar()
    assert capfd.readouterr().err == ""  # it took no time
    now = iter(range(10000))
    monkeypatch.setattr(_picture, "time", types.SimpleNamespace(monotonic=lambda: next(now)))
    assert under_a_bar()
    shown = capfd.readouterr().err.split("\r")
    assert "100 % " in shown and shown[-2:] == ["      ", ""]


def test_stages_render_the_same():
    def scene():
        zeb.translate(0, 0, 3)
        zeb.sphere(0.9)
    with zeb.Picture(40, 40) as whole:
        with whole.world():
            scene()
    with zeb.Picture(40, 40) as staged:
        with staged.world():
            scene()
            zeb.render_init()
            seen = [zeb.progress()]
            while zeb.render_bucket():
                seen.append(zeb.progress())
    assert seen == sorted(seen) and seen[-1] > seen[0]
    assert whole.rgba.tobytes() == staged.rgba.tobytes()


def test_a_file_of_the_library_takes_the_place_of_the_arrays(tmp_path):
    with zeb.Picture(24, 24) as picture:
        zeb.output_file(tmp_path / "a.exr")
        try:
            with picture.world():
                zeb.translate(0, 0, 3)
                zeb.sphere(0.9)
        except zeb.Error as error:
            assert error.code == 2
            pytest.skip("the library writes no OpenEXR files")
    assert (tmp_path / "a.exr").stat().st_size > 100
    with pytest.raises(zeb.Error, match="went to a file"):
        picture.rgba


def test_a_picture_minds_that_pixels_fit_its_arrays():
    for spoil in (lambda: zeb.output_samples("rgb"), lambda: zeb.color_quantize(255),
                  lambda: zeb.depth_quantize(255)):
        with pytest.raises(ValueError, match="takes all samples, as floats"):
            with zeb.Picture(12, 12) as picture:
                spoil()
                with picture.world():
                    pass
    for size in ((100, 100), (5, 12), (0, 0)):
        with pytest.raises(ValueError, match="and the picture 12 by 12"):
            with zeb.Picture(12, 12) as picture:
                zeb.raster_viewport(*size)
                with picture.world():
                    zeb.sphere(1)
