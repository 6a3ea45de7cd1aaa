#!/usr/bin/env python3
"""Model files by zebview and by F3D: how soon there is a picture, what it costs, and in how much memory.

compare.py ZEBVIEW [ROUNDS]: prints a table, the best of several rounds, of pictures of 1024 x 1024 pixels.
The two are run in turn, each as whoever types the command gets it, file and start included: zebview with
the threads that there are and 4 x 4 samples, F3D with what Mesa makes of OpenGL in software, and FXAA.
"window" is a window of zebview of that size, from the wish for the model to its first picture and to its
final one. It needs a screen; what the screen's server works is not counted.
"""
import os
import re
import signal
import subprocess
import sys
import tempfile
import time

MODELS = [
    "/usr/share/glmark2/models/bunny.obj",
    "/usr/share/glmark2/models/asteroid-high.3ds",
    "/usr/share/glmark2/models/cat.3ds",
    "/usr/share/glmark2/models/horse.3ds",
    "/usr/share/assimp/models/PLY/Wuson.ply",
    "/usr/share/assimp/models/OBJ/WusonOBJ.obj",
    "/usr/share/assimp/models/Collada/duck_triangulate.dae",
    "/usr/share/assimp/models/FBX/spider.fbx",
    "/usr/share/assimp/models/glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb",
    "/usr/share/assimp/models/glTF2/BoxTextured-glTF/BoxTextured.gltf",
]


def command(arguments, picture):
    """Wall and processor milliseconds, and MiB, of one run."""
    begun = time.monotonic()
    process = subprocess.Popen(arguments, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.monotonic() - begun
    process.returncode = status
    if status != 0 or not os.path.exists(picture):
        return None
    os.remove(picture)
    return 1000 * wall, 1000 * (usage.ru_utime + usage.ru_stime), usage.ru_maxrss / 1024


def window(zebview, model):
    """Milliseconds to the first picture in a window and to the final one."""
    process = subprocess.Popen([zebview, model, "--size", "1024x1024", "-v", "--no-config"],
                               stderr=subprocess.PIPE, text=True)
    found = {}
    try:
        for line in process.stderr:
            match = re.search(r"the (first|final) picture came after (\d+) ms", line)
            if match:
                found[match.group(1)] = float(match.group(2))
            if "final" in found:
                break
    finally:
        process.send_signal(signal.SIGTERM)
        process.communicate()
    return (found["first"], found["final"]) if "final" in found else None


def best(results):
    """The least of each column."""
    results = [result for result in results if result]
    return [min(column) for column in zip(*results)] if results else None


def main():
    zebview = os.path.abspath(sys.argv[1])
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    os.environ.update(LIBGL_ALWAYS_SOFTWARE="1", GALLIUM_DRIVER="llvmpipe")
    print("| model | window: first, ms | final | zebview: wall, ms | CPU | MiB"
          " | F3D: wall, ms | CPU | MiB | CPU, F3D to zebview |")
    print("|---|---|---|---|---|---|---|---|---|---|")
    with tempfile.TemporaryDirectory() as folder:
        picture = os.path.join(folder, "picture.png")
        for model in MODELS:
            windows, ours, theirs = [], [], []
            for _ in range(rounds):
                windows.append(window(zebview, model))
                ours.append(command([zebview, model, "-o", picture, "--size", "1024x1024",
                                     "--no-config"], picture))
                theirs.append(command(["f3d", model, "--output", picture, "--resolution",
                                       "1024,1024", "--fxaa", "--dry-run", "--quiet"], picture))
            cells = [os.path.basename(model)]
            for result, count in ((best(windows), 2), (best(ours), 3), (best(theirs), 3)):
                cells += [f"{value:.0f}" for value in result] if result else ["-"] * count
            both = best(ours) and best(theirs)
            cells.append(f"{best(theirs)[1] / best(ours)[1]:.2f}" if both else "-")
            print("| " + " | ".join(cells) + " |", flush=True)


main()
