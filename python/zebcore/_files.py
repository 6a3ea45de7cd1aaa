"""Picture files, written by Python alone."""
from __future__ import annotations

import struct
import zlib
from typing import Any, Optional

import numpy as np
from numpy.typing import NDArray

_Words = NDArray[np.float32]


def straight(rgba: _Words, gamma: float, full: int) -> NDArray[Any]:
    """Colours that alpha is taken out of again, as whole numbers from 0 to full, as PNG has them.

    As the library's own files: they are rounded while they are multiplied by alpha, and again after.
    """
    steps = np.floor(np.clip(rgba, 0, 1) * np.float32(full) + np.float32(0.5)).astype(np.float64) / full
    alpha = steps[..., 3:]
    weight = alpha if gamma == 1 else np.power(
        alpha.astype(np.float32), np.float32(1) / np.float32(gamma)).astype(np.float64)
    with np.errstate(divide="ignore", invalid="ignore"):
        color = np.where(weight > 0, steps[..., :3] / weight, 0)
    result = np.concatenate([color, alpha], axis=-1)
    kind = np.uint8 if full == 255 else np.uint16
    rounded: NDArray[Any] = np.clip(np.floor(result * full + 0.5), 0, full).astype(kind)
    return rounded


def png(pixels: NDArray[Any]) -> bytes:
    """A PNG file of (h, w, 4) whole numbers, 8 or 16 bits."""
    height, width, _ = pixels.shape
    bits = 8 * pixels.dtype.itemsize
    rows = pixels.astype(pixels.dtype.newbyteorder(">")).view(np.uint8).reshape(height, -1)
    # The filter that stores differences between rows: 2.
    filtered = np.empty((height, rows.shape[1] + 1), np.uint8)
    filtered[:, 0] = 2
    filtered[0, 1:] = rows[0]
    np.subtract(rows[1:], rows[:-1], out=filtered[1:, 1:])

    def chunk(kind: bytes, data: bytes) -> bytes:
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    return (b"\x89PNG\r\n\x1a\n"
            + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, bits, 6, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(filtered.tobytes(), 6)) + chunk(b"IEND", b""))


def exr(rgba: _Words, depth: Optional[_Words]) -> bytes:
    """An OpenEXR file of floats, uncompressed: channels A, B, G, R, and Z."""
    height, width, _ = rgba.shape
    planes = [("A", rgba[..., 3]), ("B", rgba[..., 2]), ("G", rgba[..., 1]), ("R", rgba[..., 0])]
    if depth is not None:
        planes.append(("Z", depth))

    def attribute(name: str, kind: str, data: bytes) -> bytes:
        return name.encode() + b"\0" + kind.encode() + b"\0" + struct.pack("<i", len(data)) + data

    channels = b"".join(name.encode() + b"\0" + struct.pack("<iB3xii", 2, 0, 1, 1)
                        for name, _ in planes) + b"\0"
    window = struct.pack("<4i", 0, 0, width - 1, height - 1)
    header = (struct.pack("<ii", 20000630, 2) + attribute("channels", "chlist", channels)
              + attribute("compression", "compression", b"\0")
              + attribute("dataWindow", "box2i", window) + attribute("displayWindow", "box2i", window)
              + attribute("lineOrder", "lineOrder", b"\0")
              + attribute("pixelAspectRatio", "float", struct.pack("<f", 1))
              + attribute("screenWindowCenter", "v2f", struct.pack("<ff", 0, 0))
              + attribute("screenWindowWidth", "float", struct.pack("<f", 1)) + b"\0")
    line = 4 * width * len(planes)
    first = len(header) + 8 * height
    offsets = first + (8 + line) * np.arange(height, dtype="<u8")
    lines = np.empty((height, 2 + width * len(planes)), "<u4")
    lines[:, 0] = np.arange(height)
    lines[:, 1] = line
    values = np.stack([plane for _, plane in planes], axis=1).astype("<f4")
    lines[:, 2:] = values.reshape(height, -1).view("<u4")
    return header + offsets.tobytes() + lines.tobytes()
