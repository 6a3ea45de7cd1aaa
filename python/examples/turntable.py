"""A turntable: pictures of a mesh from all around, as GIF or MP4.

turntable.py FILE: by ImageMagick's convert if FILE ends in .gif, by ffmpeg if it ends in .mp4.
"""
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

import zebcore as zeb
from mesh import draw, knot, light

WIDTH, HEIGHT = 200, 150
FRAMES, PER_SECOND = 20, 10


def frame(mesh, angle):
    with zeb.Picture(WIDTH, HEIGHT, samples=3, gamma=2.2, progress=False) as picture:
        zeb.perspective(37)
        zeb.look_at((0, -8, 7.2), (0, 0, -0.1), up=(0, 0, 1))
        with picture.world():
            light()
            zeb.rotate(angle, 0, 0, 1)
            draw(mesh)
    return picture


path = Path(sys.argv[1] if len(sys.argv) > 1 else "turntable.gif")
tool = {".gif": "convert", ".mp4": "ffmpeg"}.get(path.suffix)
if tool is None or shutil.which(tool) is None:
    sys.exit(f"turntable.py: a name that ends in .gif takes convert, one in .mp4 ffmpeg: {path}")
mesh = knot(along=360, around=32)
with tempfile.TemporaryDirectory() as folder:
    for k in range(FRAMES):
        frame(mesh, 360 * k / FRAMES).save(Path(folder) / f"{k:03}.png")
    if tool == "convert":
        command = [tool, "-delay", str(100 // PER_SECOND), "-loop", "0", f"{folder}/*.png", "-background",
                   "white", "-alpha", "remove", "-layers", "optimize", str(path)]
    else:
        command = [tool, "-loglevel", "error", "-y", "-framerate", str(PER_SECOND), "-i",
                   f"{folder}/%03d.png", "-filter_complex",
                   f"color=white:{WIDTH}x{HEIGHT}:{PER_SECOND}[white];[white][0]overlay=shortest=1",
                   "-pix_fmt", "yuv420p", str(path)]
    subprocess.run(command, check=True)
