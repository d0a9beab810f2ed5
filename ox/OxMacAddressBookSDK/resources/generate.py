#!/usr/bin/env python3
"""Draws the fifty pictures of this folder: a white sign on a coloured rounded square.

usage: generate.py [FOLDER]     writes into this folder unless another is named

Standard library only, no chance, no clock: the same bytes on every run of the same Python and zlib.
"""
import math
import os
import struct
import sys
import zlib

SIZES = {"thumbnail": 32, "logo1": 64, "logo2": 128, "logo3": 256, "logo4": 512}

# stem: (sign, colour). The local book is the computer itself, a service of no name a person, every
# other one its letter. Colours lie far apart in hue and in lightness, and are nobody's trade dress.
PICTURES = {
    "mac": ("computer", (60, 70, 84)),
    "google": ("G", (122, 63, 168)),
    "qq": ("Q", (139, 90, 43)),
    "facebook": ("F", (232, 119, 34)),
    "yahoo": ("Y", (46, 139, 70)),
    "linkedin": ("L", (196, 42, 66)),
    "aol": ("A", (172, 128, 0)),
    "exchange": ("E", (20, 140, 148)),
    "icloud": ("I", (58, 78, 190)),
    "other": ("person", (112, 118, 124)),
}

# Strokes in a box of 0..1 by 0..1, y down: lines (x1, y1, x2, y2) and arcs
# (centre x, centre y, radius x, radius y, from, to) in degrees, clockwise from the right.
SIGNS = {
    "A": [("line", 0.1, 1, 0.5, 0), ("line", 0.5, 0, 0.9, 1), ("line", 0.25, 0.65, 0.75, 0.65)],
    "E": [("line", 0.2, 0, 0.2, 1), ("line", 0.2, 0, 0.8, 0), ("line", 0.2, 0.5, 0.7, 0.5),
          ("line", 0.2, 1, 0.8, 1)],
    "F": [("line", 0.22, 0, 0.22, 1), ("line", 0.22, 0, 0.82, 0), ("line", 0.22, 0.5, 0.7, 0.5)],
    "G": [("arc", 0.5, 0.5, 0.42, 0.5, 40, 315), ("line", 0.82, 0.82, 0.82, 0.56),
          ("line", 0.55, 0.56, 0.82, 0.56)],
    "I": [("line", 0.5, 0, 0.5, 1), ("line", 0.3, 0, 0.7, 0), ("line", 0.3, 1, 0.7, 1)],
    "L": [("line", 0.25, 0, 0.25, 1), ("line", 0.25, 1, 0.8, 1)],
    "M": [("line", 0.1, 1, 0.1, 0), ("line", 0.1, 0, 0.5, 0.6), ("line", 0.5, 0.6, 0.9, 0),
          ("line", 0.9, 0, 0.9, 1)],
    "Q": [("arc", 0.5, 0.5, 0.44, 0.5, 0, 360), ("line", 0.62, 0.7, 0.92, 1.04)],
    "Y": [("line", 0.1, 0, 0.5, 0.5), ("line", 0.9, 0, 0.5, 0.5), ("line", 0.5, 0.5, 0.5, 1)],
    "computer": [("line", 0, 0.08, 1, 0.08), ("line", 1, 0.08, 1, 0.68), ("line", 1, 0.68, 0, 0.68),
                 ("line", 0, 0.68, 0, 0.08), ("line", 0.5, 0.68, 0.5, 0.94),
                 ("line", 0.25, 0.98, 0.75, 0.98)],
    "person": [("arc", 0.5, 0.24, 0.24, 0.24, 0, 360), ("arc", 0.5, 1.02, 0.46, 0.44, 180, 360)],
}

CORNER = 0.22        # radius of the square's corners, as a part of its side
SIGN_BOX = (0.26, 0.23, 0.48, 0.54)  # left, top, width, height
STROKE = 0.058       # half the width of a stroke


def segments(sign):
    """The sign's strokes as straight pieces in picture coordinates (0..1)."""
    left, top, width, height = SIGN_BOX
    pieces = []
    for kind, *numbers in SIGNS[sign]:
        if kind == "line":
            points = [(numbers[0], numbers[1]), (numbers[2], numbers[3])]
        else:
            cx, cy, rx, ry, start, end = numbers
            steps = max(2, int((end - start) / 6))
            angles = [math.radians(start + (end - start) * i / steps) for i in range(steps + 1)]
            points = [(cx + rx * math.cos(a), cy + ry * math.sin(a)) for a in angles]
        placed = [(left + x * width, top + y * height) for x, y in points]
        pieces += list(zip(placed, placed[1:]))
    return pieces


def distance_to_piece(x, y, piece):
    (x1, y1), (x2, y2) = piece
    dx, dy = x2 - x1, y2 - y1
    along = max(0.0, min(1.0, ((x - x1) * dx + (y - y1) * dy) / (dx * dx + dy * dy)))
    return math.hypot(x - x1 - along * dx, y - y1 - along * dy)


def distance_to_square(x, y):
    """How far outside the rounded square the point lies; negative inside."""
    inner = 0.5 - CORNER
    dx, dy = abs(x - 0.5) - inner, abs(y - 0.5) - inner
    outside = math.hypot(max(dx, 0.0), max(dy, 0.0))
    return outside + min(max(dx, dy), 0.0) - CORNER


def coverage(distance, pixel):
    """How much of a pixel lies inside an edge at that distance, in eighths to keep files small."""
    return round(8 * max(0.0, min(1.0, 0.5 - distance / pixel))) / 8


def draw(sign, colour, size):
    """Rows of RGBA bytes."""
    pieces = segments(sign)
    pixel = 1.0 / size
    rows = []
    for row in range(size):
        y = (row + 0.5) * pixel
        # One shade a row: a little lighter at the top.
        shade = [round(c + (255 - c) * 0.18 * (1 - row / size)) for c in colour]
        near = [p for p in pieces
                if min(p[0][1], p[1][1]) - 2 * STROKE <= y <= max(p[0][1], p[1][1]) + 2 * STROKE]
        line = bytearray()
        for column in range(size):
            x = (column + 0.5) * pixel
            alpha = coverage(distance_to_square(x, y), pixel)
            if alpha == 0:
                line += b"\0\0\0\0"
                continue
            ink = 0.0
            if near and SIGN_BOX[0] - 0.1 < x < SIGN_BOX[0] + SIGN_BOX[2] + 0.1:
                nearest = min(distance_to_piece(x, y, piece) for piece in near)
                ink = coverage(nearest - STROKE, pixel)
            line += bytes([round(c + (255 - c) * ink) for c in shade] + [round(alpha * 255)])
        rows.append(bytes(line))
    return rows


def chunk(kind, body):
    return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))


def png(rows, size):
    """Every row filtered as the difference from the row above: the pictures are mostly flat."""
    filtered = bytearray()
    above = bytes(size * 4)
    for row in rows:
        filtered += b"\x02" + bytes((a - b) & 0xFF for a, b in zip(row, above))
        above = row
    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(bytes(filtered), 9)) + chunk(b"IEND", b""))


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__))
    for stem, (sign, colour) in PICTURES.items():
        for ending, size in SIZES.items():
            path = os.path.join(folder, f"pic_{stem}_{ending}.png")
            with open(path, "wb") as file:
                file.write(png(draw(sign, colour, size), size))


if __name__ == "__main__":
    main()
