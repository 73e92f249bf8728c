#!/usr/bin/python3
"""Writes structured test textures (tile grid, bricks, planks, ripples) as
colour, normal and displacement PNG files, for judging how well synthesis
keeps long and regular structures.

    make_structured_textures.py OUTDIR [--size 256] [--seed 1] [--green-down]

Files: OUTDIR/<name>_col.png, <name>_norm.png, <name>_disp.png. Normal maps
have green pointing up unless --green-down. The periods do not divide the
size, so the sources do not tile. Needs python3-numpy and python3-pil.
"""
import argparse
import os

import numpy as np
from PIL import Image


def smooth_noise(rng, size, cells):
    """Value noise: a coarse random grid upsampled bilinearly."""
    grid = rng.random((cells + 1, cells + 1))
    t = np.linspace(0, cells, size, endpoint=False)
    i = t.astype(int)
    f = t - i
    rows = grid[i] * (1 - f)[:, None] + grid[i + 1] * f[:, None]
    return rows[:, i] * (1 - f)[None, :] + rows[:, i + 1] * f[None, :]


def bevel(distance, width):
    """0 at an edge, rising to 1 at `width` pixels inside."""
    return np.clip(distance / width, 0, 1)


def tiles(rng, n):
    period, grout = 61, 6
    y, x = np.mgrid[0:n, 0:n]
    cx, cy = x % period, y % period
    edge = np.minimum(np.minimum(cx, period - 1 - cx), np.minimum(cy, period - 1 - cy)) - grout / 2
    inside = edge >= 0
    tone = rng.random((n // period + 2, n // period + 2))[y // period, x // period]
    base = np.array([0.80, 0.78, 0.72])
    colour = np.where(inside[..., None], base * (0.85 + 0.15 * tone[..., None]), np.array([0.35, 0.33, 0.30]))
    colour = colour * (0.93 + 0.07 * smooth_noise(rng, n, 16))[..., None]
    height = np.where(inside, 0.6 + 0.4 * bevel(edge, 4), 0.1)
    return colour, height


def bricks(rng, n):
    bw, bh, mortar = 93, 37, 5
    y, x = np.mgrid[0:n, 0:n]
    course = y // bh
    shifted = x + (course % 2) * (bw // 2)
    cx, cy = shifted % bw, y % bh
    edge = np.minimum(np.minimum(cx, bw - 1 - cx), np.minimum(cy, bh - 1 - cy)) - mortar / 2
    inside = edge >= 0
    ids = course * 1000 + shifted // bw
    tone = (np.sin(ids * 12.9898) * 43758.5453) % 1.0
    brick = np.array([0.62, 0.28, 0.20]) * (0.8 + 0.35 * tone[..., None])
    colour = np.where(inside[..., None], brick, np.array([0.70, 0.68, 0.62]))
    colour = colour * (0.9 + 0.1 * smooth_noise(rng, n, 32))[..., None]
    height = np.where(inside, 0.55 + 0.45 * bevel(edge, 3), 0.15) + 0.05 * smooth_noise(rng, n, 40)
    return colour, height


def planks(rng, n):
    pw = 47
    y, x = np.mgrid[0:n, 0:n]
    column = x // pw
    offsets = rng.integers(0, 200, n // pw + 2)
    lengths = rng.integers(110, 190, n // pw + 2)
    along = y + offsets[column]
    piece = along // lengths[column]
    cx = x % pw
    cy = along % lengths[column]
    edge = np.minimum(np.minimum(cx, pw - 1 - cx), np.minimum(cy, lengths[column] - 1 - cy)) - 1.5
    inside = edge >= 0
    ids = column * 100 + piece
    tone = (np.sin(ids * 78.233) * 12345.678) % 1.0
    grain = 0.5 + 0.5 * np.sin(cx * 0.9 + 3.0 * np.sin(along * 0.05 + tone * 6.0) + tone * 20.0)
    wood = np.array([0.55, 0.38, 0.22]) * (0.75 + 0.25 * tone[..., None]) * (0.85 + 0.15 * grain[..., None])
    colour = np.where(inside[..., None], wood, np.array([0.12, 0.08, 0.05]))
    height = np.where(inside, 0.7 + 0.05 * grain, 0.2) * (0.6 + 0.4 * bevel(edge, 2))
    return colour, height


def ripples(rng, n):
    y, x = np.mgrid[0:n, 0:n].astype(float)
    warp = 9.0 * smooth_noise(rng, n, 4) + 0.15 * y
    phase = (x + warp) / 23.0
    # Asymmetric ripple: a gentle slope and a steep lee side.
    saw = phase % 1.0
    profile = np.where(saw < 0.75, saw / 0.75, (1.0 - saw) / 0.25)
    height = 0.2 + 0.6 * profile + 0.1 * smooth_noise(rng, n, 48)
    sand = np.array([0.82, 0.70, 0.50])
    colour = sand * (0.8 + 0.2 * profile[..., None]) * (0.95 + 0.05 * rng.random((n, n)))[..., None]
    return colour, height


def normals(height, strength, green_down):
    """Per-pixel normals of the height field; rows run top to bottom in the
    file, so 'up' is the previous row."""
    dx = (np.roll(height, -1, axis=1) - np.roll(height, 1, axis=1)) * 0.5
    d_up = (np.roll(height, 1, axis=0) - np.roll(height, -1, axis=0)) * 0.5
    nx, ny = -strength * dx, -strength * d_up
    if green_down:
        ny = -ny
    length = np.sqrt(nx * nx + ny * ny + 1.0)
    return np.stack([nx / length, ny / length, 1.0 / length], axis=-1) * 0.5 + 0.5


def save(array, path):
    data = np.clip(array * 255.0 + 0.5, 0, 255).astype(np.uint8)
    Image.fromarray(data).save(path)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("outdir")
    parser.add_argument("--size", type=int, default=256)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--green-down", action="store_true")
    args = parser.parse_args()
    os.makedirs(args.outdir, exist_ok=True)
    for name, make in (("tiles", tiles), ("bricks", bricks), ("planks", planks), ("ripples", ripples)):
        rng = np.random.default_rng(args.seed)
        colour, height = make(rng, args.size)
        height = np.clip(height, 0, 1)
        save(colour, os.path.join(args.outdir, name + "_col.png"))
        save(height, os.path.join(args.outdir, name + "_disp.png"))
        save(normals(height, 4.0, args.green_down), os.path.join(args.outdir, name + "_norm.png"))


if __name__ == "__main__":
    main()
