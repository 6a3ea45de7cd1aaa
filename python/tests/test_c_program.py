"""A picture of Python's is that of a program in C, bit for bit."""
import shutil
import subprocess
from pathlib import Path

import numpy as np
import pytest
import zebcore as zeb

ROOT = Path(__file__).resolve().parents[2]
WIDTH, HEIGHT = 90, 60

PROGRAM = """
#include <stdio.h>
#include <string.h>
#include <zebcore/zebcore.h>

#define WIDTH 90
#define HEIGHT 60
static unsigned int words[HEIGHT][WIDTH][5];

static void span(void* data, long x0, long x1, long y, const unsigned int* from)
{
    (void)data;
    memcpy(words[y][x0], from, sizeof words[0][0] * (size_t)(x1 - x0 + 1));
}

static void shade(void* data, ZebRow* row)
{
    float *N[3], *noise = zebRowPlane(row);
    long k;
    int c;
    (void)data;
    for (c = 0; c < 3; ++c) N[c] = zebRowPlane(row);
    zebRowFacing(row, row->N, N);
    zebRowDiffuse(row, N, N);
    zebRowNoise(row, 3, row->P, NULL, noise);
    for (c = 0; c < 3; ++c)
        for (k = 0; k < row->count; ++k) row->Ci[c][k] = row->Os[c][k] * (row->Cs[c][k] * N[c][k] + noise[k]);
}

int main(int argc, char** argv)
{
    const ZebDisplay device = {NULL, NULL, span, NULL, NULL};
    const ZebShader shader = {NULL, shade, NULL, 0};
    const float red[3] = {0.75f, 0.25f, 0.125f}, half[3] = {0.5f, 0.25f, 0.75f}, to[3] = {1, -1, 2};
    const float points[4][3] = {{-1, -1, 0}, {-1, 1, 0}, {1, 1, 0}, {1, -1, 0}}, kd = 0.75f;
    const float eye[3] = {1, 2, -4}, at[3] = {0, 0, 0}, up[3] = {0, 1, 0};
    const long sizes[2] = {3, 3}, corners[6] = {0, 1, 2, 0, 2, 3};
    FILE* file;
    (void)argc;
    zebCustomDisplay(&device);
    zebRasterViewport(0, WIDTH, 0, HEIGHT);
    zebQuirks(0);
    zebSampleUniform(3, 3);
    zebColorGamma(2.2f);
    zebOutputSamples(ZEB_SAMPLES_RGBAZ);
    zebColorQuantize(0, 0, 0);
    zebDepthNearest(1);
    zebClip(1, 10);
    zebViewPerspective(40);
    zebLookAt(eye, at, up);
    zebSceneBegin();
    zebLightSource(zebQuark("ambient"), 0);
    zebLightSource(zebQuark("distant"), zebQuark("to"), to, 0);
    zebAttributePush();
    zebColor(red);
    zebCustomSurface(&shader);
    zebSphere(0.75f, -0.75f, 0.75f, 360, 0);
    zebAttributePop();
    zebAttributePush();
    zebOpacity(half);
    zebSurface(zebQuark("diffuse"), zebQuark("kd"), &kd, 0);
    zebRotate(30, 0, 1, 0);
    zebPolygonMesh(2, sizes, corners, zebQuark("point"), points, 0);
    zebTorus(1, 0.25f, 0, 360, 270, 0);
    zebAttributePop();
    zebSceneEnd();
    file = fopen(argv[1], "wb");
    return !file || fwrite(words, sizeof words, 1, file) != 1 || fclose(file) != 0 || zebLastError();
}
"""


@pytest.mark.skipif(not shutil.which("cc"), reason="no C compiler")
def test_a_picture_is_that_of_a_program_in_c(tmp_path):
    library = Path(zeb.raw.lib.path).resolve()
    if not library.exists():
        pytest.skip("the library's file is not known")
    (tmp_path / "program.c").write_text(PROGRAM)
    (tmp_path / "libzebcore.so.0").symlink_to(library)
    subprocess.run(["cc", "-std=c99", "-Wall", "-Werror", f"-I{ROOT / 'include'}", "program.c", "-o", "program",
                    "libzebcore.so.0", f"-Wl,-rpath,{tmp_path}"], cwd=tmp_path, check=True)
    subprocess.run(["./program", "words"], cwd=tmp_path, check=True)
    its = np.fromfile(tmp_path / "words", np.float32).reshape(HEIGHT, WIDTH, 5)

    @zeb.surface
    def shade(g):
        g.Ci = g.Os * (g.Cs * g.diffuse() + g.noise(g.P))

    with zeb.Picture(WIDTH, HEIGHT, samples=3, gamma=2.2) as picture:
        zeb.clip(1, 10)
        zeb.perspective(40)
        zeb.look_at((1, 2, -4), (0, 0, 0))
        with picture.world():
            zeb.light("ambient")
            zeb.light("distant", to=(1, -1, 2))
            with zeb.attributes(color=(0.75, 0.25, 0.125), surface=shade):
                zeb.sphere(0.75)
            with zeb.attributes(opacity=(0.5, 0.25, 0.75), surface=("diffuse", dict(kd=0.75))):
                zeb.rotate(30, 0, 1, 0)
                zeb.mesh([(-1, -1, 0), (-1, 1, 0), (1, 1, 0), (1, -1, 0)], [(0, 1, 2), (0, 2, 3)])
                zeb.torus(1, 0.25, thetamax=270)
    assert (its[..., 3] > 0).mean() > 0.2
    assert its[..., :4].tobytes() == np.ascontiguousarray(picture.rgba).tobytes()
    assert its[..., 4].tobytes() == np.ascontiguousarray(picture.depth).tobytes()
