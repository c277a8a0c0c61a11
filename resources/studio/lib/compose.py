"""Puts screenshots under a frame as the application does, slowly and simply; for previews and checks."""
import json
import os

import cv2
import numpy as np
from PIL import Image

from optics import Screen, bounding_box

MARKER = 10


def read_rgba(path):
    return np.asarray(Image.open(path).convert("RGBA"), float)


def number(record, key):
    return int(float(record.get(key, 0)))


def quad(record, suffix="", prefix="F"):
    corners = ("topLeft", "topRight", "bottomLeft", "bottomRight")
    return np.array([[number(record, f"{prefix}{c}{axis}{suffix}") + MARKER for axis in "XY"] for c in corners], float)


def screens_of(record):
    """Each screen as the application sees it: in the units of its bounding box, with a circular radius."""
    result = []
    for suffix in ("", "2") if record.get("doubleImage") else ("",):
        corners = quad(record, suffix)
        size = bounding_box(corners)[2:]
        radius = 0 if record.get("noCorner") else number(record, "cornerRadius")
        result.append(Screen(corners, size, radius))
    return result


def coverage(screen, canvas):
    """How much of each pixel the rounded screenshot covers, over the whole canvas."""
    result = np.zeros((canvas[1], canvas[0]))
    x0, y0, _, _, u, v = screen.grid(4, canvas)
    cover = np.clip(screen.distance(u, v, screen.radius) + 0.5, 0, 1)
    result[y0:y0 + cover.shape[0], x0:x0 + cover.shape[1]] = cover
    return result


def warp(shot, screen, canvas):
    """The screenshot in perspective, without its edge (coverage gives that)."""
    height, width = shot.shape[:2]
    corners = np.array([(0, 0), (width, 0), (0, height), (width, height)], np.float32)
    matrix = cv2.getPerspectiveTransform(corners, (screen.quad * 2).astype(np.float32))
    shrink = max(1.0, width / (2.4 * screen.box[2]), height / (2.4 * screen.box[3]))
    if shrink > 1:
        size = (int(width / shrink), int(height / shrink))
        shot = cv2.resize(shot, size, interpolation=cv2.INTER_AREA)
        matrix = matrix @ np.diag([width / size[0], height / size[1], 1])
    double = cv2.warpPerspective(shot, matrix, (canvas[0] * 2, canvas[1] * 2), flags=cv2.INTER_LINEAR, borderMode=cv2.BORDER_REPLICATE)
    return cv2.resize(double, canvas, interpolation=cv2.INTER_AREA)


def over(base, layer):
    """Straight-alpha layer (0..255) over a straight-alpha base, both RGBA arrays."""
    a, b = layer[..., 3:] / 255, base[..., 3:] / 255
    total = a + b * (1 - a)
    rgb = (layer[..., :3] * a + base[..., :3] * b * (1 - a)) / np.maximum(total, 1e-9)
    return np.dstack([rgb, total * 255])


def compose(record, frame, shots, background=None, glare=None):
    canvas = (number(record, "finalFrameWidth"), number(record, "finalFrameHeight"))
    result = np.zeros((canvas[1], canvas[0], 4))
    if background is not None:
        result[...] = np.dstack([np.asarray(background, float), np.full((canvas[1], canvas[0]), 255.0)])
    for screen, shot in zip(screens_of(record), shots):
        picture = warp(np.asarray(shot, np.uint8), screen, canvas).astype(float)
        result = over(result, np.dstack([picture, coverage(screen, canvas) * 255]))
    size = (number(record, "frameWidth"), number(record, "frameHeight"))
    if frame.shape[1::-1] != size:
        frame = np.asarray(Image.fromarray(frame.astype(np.uint8), "RGBA").resize(size, Image.LANCZOS), float)
    sheet = np.zeros_like(result)
    sheet[:size[1], :size[0]] = frame
    result = over(result, sheet)
    if glare is not None:
        x, y, w, h = (number(record, k) for k in ("glareX", "glareY", "glareWidth", "glareHeight"))
        if glare.shape[1::-1] != (w, h):
            glare = np.asarray(Image.fromarray(glare.astype(np.uint8), "RGBA").resize((w, h), Image.LANCZOS), float)
        sheet = np.zeros_like(result)
        sheet[y:y + h, x:x + w] = glare
        result = over(result, sheet)
    return np.round(np.clip(result, 0, 255)).astype(np.uint8)


def catalogue(path):
    with open(path, encoding="utf-8") as handle:
        return json.load(handle)


def frame_file(images, name):
    return os.path.join(images, name.replace("-large", ""))
