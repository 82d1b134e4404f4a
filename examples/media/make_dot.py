#!/usr/bin/env python3
"""Writes dot.png: a 32x32 white dot with a soft edge, the texture of the sprite example.

Colour is white; alpha falls off smoothly from the centre. The PNG is assembled by hand with
zlib and struct, so only the standard library is needed.
"""

import math
import struct
import zlib
from pathlib import Path

SIZE = 32


def chunk(kind: bytes, data: bytes) -> bytes:
    body = kind + data
    return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)


def alpha(x: int, y: int) -> int:
    centre = (SIZE - 1) / 2.0
    r = math.hypot(x - centre, y - centre) / (SIZE / 2.0)
    if r >= 1.0:
        return 0
    return int(round(255 * (1.0 - r * r) ** 2))


def main() -> None:
    rows = bytearray()
    for y in range(SIZE):
        rows.append(0)  # filter type: none
        for x in range(SIZE):
            rows += bytes((255, 255, 255, alpha(x, y)))
    header = struct.pack(">IIBBBBB", SIZE, SIZE, 8, 6, 0, 0, 0)  # 8-bit RGBA
    png = (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
           chunk(b"IDAT", zlib.compress(bytes(rows), 9)) + chunk(b"IEND", b""))
    Path(__file__).with_name("dot.png").write_bytes(png)


if __name__ == "__main__":
    main()
