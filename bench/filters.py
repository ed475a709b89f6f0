#!/usr/bin/env python3
"""Compares filters that shrink pictures: bench/filters.py PICTURE...

Prints a table: what is left of square stripes of 1.6 and of 3 output pixels (half their range, shrunk
4:1, the worst phase), how far a full edge rings (levels, in one dimension), and for each picture the
detail that is left at 720 x 540 and at 320 x 240: the deviation of the Laplacian of the luma, relative
to Lanczos 3. Needs python3-numpy and python3-pil.
"""

import sys
from pathlib import Path

import numpy as np
from PIL import Image

SIZES = ((720, 540), (320, 240))


def cubic(b, c):
    def at(x):
        near = (12 - 9 * b - 6 * c) * x**3 + (-18 + 12 * b + 6 * c) * x**2 + 6 - 2 * b
        far = (-b - 6 * c) * x**3 + (6 * b + 30 * c) * x**2 + (-12 * b - 48 * c) * x + 8 * b + 24 * c
        return np.where(x < 1, near, np.where(x < 2, far, 0)) / 6

    return at, 2


def lanczos(lobes, stretch=1):
    return lambda x: np.where(
        x < lobes * stretch, np.sinc(x / stretch) * np.sinc(x / stretch / lobes), 0
    ), lobes * stretch


def boxes(*widths):
    x = np.linspace(-2, 2, 4001)
    kernel = 1.0 * (np.abs(x) <= widths[0] / 2)
    for width in widths[1:]:
        kernel = np.convolve(kernel, np.abs(x) <= width / 2, "same")
    return lambda at: np.interp(at, x[2000:], kernel[2000:], right=0), sum(widths) / 2


SIGMA = 0.5**0.5
FILTERS = {
    "Lanczos 3": lanczos(3),
    "Lanczos 2": lanczos(2),
    "cubic, a = -0.75": cubic(0, 0.75),
    "cubic, a = -0.6": cubic(0, 0.6),
    "cubic, a = -0.5 (Catmull-Rom)": cubic(0, 0.5),
    "cubic, a = -0.4": cubic(0, 0.4),
    "cubic, B = 0.1, C = 0.45": cubic(0.1, 0.45),
    "cubic, B = C = 1/3 (Mitchell; pixman's)": cubic(1 / 3, 1 / 3),
    "triangle": boxes(1, 1),
    "box of 1": boxes(1),
    "box of 1/2": boxes(0.5),
    "boxes of 1 and 1/2": boxes(1, 0.5),
    "boxes of 1 and 3/2 (before)": boxes(1, 1.5),
    "pixman's stretched Lanczos 3": lanczos(3, 4 / 3),
    "pixman's Gaussian": (lambda x: np.exp(-x * x / 2 / SIGMA**2), 3 * SIGMA),
}


def scaled(pixels, size, kernel):
    """The rows scaled to `size`, beyond their ends repeated."""
    at, reach = kernel
    step = len(pixels) / size
    center = (np.arange(size) + 0.5) * step - 0.5
    first = np.ceil(center - reach * step - 1e-9).astype(int)
    answer = np.zeros((size,) + pixels.shape[1:])
    weights = 0
    for tap in range(int(2 * reach * step) + 2):
        weight = at(np.abs(first + tap - center) / step)[:, None]
        answer += weight * pixels[np.clip(first + tap, 0, len(pixels) - 1)]
        weights = weights + weight
    return answer / weights


def stripes_left(kernel, period):
    x = (np.arange(1600) + 0.5) / 4 / period
    phases = np.stack([(x + phase / 8) % 1 < 0.5 for phase in range(8)], axis=1)
    shown = scaled(phases * 255.0, 400, kernel)[8:-8]
    return np.max(np.ptp(shown, axis=0)) / 2


def ringing(kernel):
    edges = np.arange(640)[:, None] >= 320 + np.arange(16)
    shown = scaled(edges * 255.0, 40, kernel)
    return abs(max(shown.max() - 255, -shown.min()))


def detail(luma, width, height, kernel):
    y = scaled(scaled(luma, height, kernel).T, width, kernel).T
    y = np.clip(np.rint(y), 0, 255)
    edges = 4 * y[1:-1, 1:-1] - y[:-2, 1:-1] - y[2:, 1:-1] - y[1:-1, :-2] - y[1:-1, 2:]
    return edges.std()


def main(paths):
    columns = [f"{Path(path).stem} {w}" for path in paths for w, _ in SIZES]
    print("| filter | 1.6 | 3 | ringing |", " | ".join(columns), "|")
    print("|-|-|-|-|" + "-|" * len(columns))
    pictures = [np.asarray(Image.open(path).convert("L"), dtype=float) for path in paths]
    most = [detail(luma, *size, FILTERS["Lanczos 3"]) for luma in pictures for size in SIZES]
    for name, kernel in FILTERS.items():
        kept = [detail(luma, *size, kernel) for luma in pictures for size in SIZES]
        cells = [f"{stripes_left(kernel, 1.6):.0f}", f"{stripes_left(kernel, 3):.0f}"]
        cells += [f"{ringing(kernel):.0f}"] + [f"{a / b:.2f}" for a, b in zip(kept, most)]
        print(f"| {name} |", " | ".join(cells), "|", flush=True)


main(sys.argv[1:])
