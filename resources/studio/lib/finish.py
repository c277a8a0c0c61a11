"""Turns the float passes of one scene into the frame picture, the glare picture and the definition."""
import math
import os

os.environ.setdefault("OPENCV_IO_ENABLE_OPENEXR", "1")

import cv2  # noqa: E402
import numpy as np  # noqa: E402

from devices import DEVICES, body_box  # noqa: E402

# Pixels by which the screenshot reaches under the bezel; a picture that is also shown at half size wants more.
HOLE_INSET, HOLE_INSET_LARGE = 0.62, 0.66


def read_pass(path):
    picture = cv2.imread(path, cv2.IMREAD_UNCHANGED)
    if picture is None:
        raise FileNotFoundError(path)
    return picture[:, :, [2, 1, 0, 3]].astype(np.float64)


def encode_srgb(linear):
    linear = np.clip(linear, 0, None)
    return np.where(linear <= 0.0031308, 12.92 * linear, 1.055 * linear ** (1 / 2.4) - 0.055)


def tone(linear, exposure):
    """A soft shoulder so that highlights roll off instead of clipping; the mid tones stay put."""
    value = linear * exposure
    knee = 0.7
    over = np.maximum(value - knee, 0)
    return np.where(value > knee, knee + (1 - knee) * (1 - np.exp(-over / (1 - knee))), value)


def clean_colour(colour, alpha):
    """Takes the last grain out of the device while edges stay: a small edge-keeping filter on the encoded colour."""
    smooth = (colour * 255).astype(np.float32)
    for reach, keep in ((9, 14.0), (5, 7.0)):
        smooth = cv2.bilateralFilter(smooth, reach, keep, reach / 2.6)
    # A pixel on the silhouette has few samples of its own: it takes the colour of the body beside it.
    weight = (np.clip((alpha - 0.9) / 0.1, 0, 1) ** 2).astype(np.float32)
    nearby = cv2.GaussianBlur(smooth * weight[..., None], (0, 0), 1.1)
    total = cv2.GaussianBlur(weight, (0, 0), 1.1)[..., None]
    edge = np.where(total > 0.02, nearby / np.maximum(total, 1e-6), colour * 255)
    solid = np.clip((alpha - 0.95) / 0.05, 0, 1)[..., None]
    return (smooth * solid + edge * (1 - solid)) / 255.0


def shadow_alpha(shadow, size, strength, far):
    """The catcher's alpha at full size, free of grain, as strong in encoded colours as it was in light."""
    alpha = np.clip(shadow[..., 3], 0, 1).astype(np.float32)
    if far:  # a shadow thrown on a wall has no contact edge to keep
        alpha = cv2.GaussianBlur(alpha, (0, 0), 2.0)
    else:
        alpha = cv2.GaussianBlur(cv2.bilateralFilter(alpha, 9, 0.06, 3.0), (0, 0), 0.8)
    enlarged = max(size) / max(alpha.shape)
    alpha = cv2.resize(alpha, size, interpolation=cv2.INTER_CUBIC)
    alpha = cv2.GaussianBlur(alpha, (0, 0), 0.8 * enlarged)
    alpha = 1 - (1 - np.clip(alpha, 0, 1)) ** (strength / 2.2)
    width, height = size
    # The room's own dimness reaches far around the subject; only what reads as its shadow is kept.
    alpha = alpha * smoothstep(0.0, 0.11, alpha - 0.012)
    xs = np.minimum(np.arange(width) + 0.5, width - np.arange(width) - 0.5) / (0.12 * width)
    ys = np.minimum(np.arange(height) + 0.5, height - np.arange(height) - 0.5) / (0.12 * height)
    fade = np.minimum.outer(np.clip(ys, 0, 1), np.ones(width)) * np.clip(xs, 0, 1)[None, :]
    fade = fade * fade * (3 - 2 * fade)
    return alpha * fade


def visible_glass(mask, number):
    return None if mask is None else np.clip(mask[..., number - 1], 0, 1)


def hole_coverage(screen, device, canvas, visible, inset=HOLE_INSET):
    """How much of each pixel of the canvas is open: the rounded screen without what stands before it."""
    result = np.zeros((canvas[1], canvas[0]))
    x0, y0, _, _, u, v = screen.grid(4, canvas)
    inside = screen.distance(u, v, screen.radius)
    cover = np.clip(inside - inset + 0.5, 0, 1)
    if "camera" in device:
        cover = np.minimum(cover, np.clip(0.5 - screen.pill_distance(u, v, device["camera"]), 0, 1))
    height, width = cover.shape
    area = (slice(y0, y0 + height), slice(x0, x0 + width))
    result[area] = cover if visible is None else np.minimum(cover, visible[area])
    return result


def assemble(stage, beauty, shadow, mask, look):
    """The frame picture as straight 8-bit RGBA, and each screen's hole."""
    canvas = stage.canvas
    holes = []
    for number, screen in enumerate(stage.screens(), 1):
        item, _, _ = stage.screen_device(number)
        holes.append(hole_coverage(screen, DEVICES[item["kind"]], canvas, visible_glass(mask, number),
                                   HOLE_INSET_LARGE if stage.scale > 1 else HOLE_INSET))
    hole = np.clip(sum(holes), 0, 1)
    alpha = np.clip(beauty[..., 3], 0, 1)
    colour = beauty[..., :3] / np.maximum(alpha, 1e-4)[..., None]
    colour = np.clip(encode_srgb(tone(colour, look.get("exposure", 1.0))), 0, 1)
    colour = clean_colour(colour, alpha)
    solid = np.minimum(alpha, 1 - hole)
    solid = np.where(solid < 0.004, 0, solid)
    far = stage.scene.get("ground") == "wall"
    dark = shadow_alpha(shadow, canvas, look.get("shadow", 1.05 if far else 1.4), far) * np.clip(1 - solid - hole, 0, 1)
    total = solid + dark
    rgb = colour * (solid / np.maximum(total, 1e-6))[..., None]
    rgb[total <= 0.002] = 0
    out = np.dstack([rgb, total])
    return np.round(out * 255).astype(np.uint8), holes


def smoothstep(low, high, value):
    t = np.clip((value - low) / (high - low), 0, 1)
    return t * t * (3 - 2 * t)


def glare_picture(stage, mask, look):
    """The mirror image of a soft box in the glass: a slanted band, strongest at its upper end.

    In a flat mirror the image of a rectangular light is a parallelogram on the glass, so it is evaluated
    there, exactly and without grain. It covers the rectangle that glare_box names.
    """
    canvas = stage.canvas
    alpha = np.zeros((canvas[1], canvas[0]))
    for number, screen in enumerate(stage.screens(), 1):
        item, _, _ = stage.screen_device(number)
        device = DEVICES[item["kind"]]
        (left, bottom, width, height), radius = body_box(device)
        x0, y0, _, _, u, v = screen.grid(int(0.12 * max(screen.box[2:])), canvas)
        rim = device["rim"] + 0.4
        w, h = screen.size
        glass_w, glass_h = width - 2 * rim, height - 2 * rim
        centre_u, centre_v = w / 2 + left + width / 2, h / 2 - (bottom + height / 2)
        r = max(radius - rim, 0.2)
        du = np.abs(u - centre_u) - (glass_w / 2 - r)
        dv = np.abs(v - centre_v) - (glass_h / 2 - r)
        outside = np.hypot(np.maximum(du, 0), np.maximum(dv, 0)) + np.minimum(np.maximum(du, dv), 0) - r
        slope_y, slope_x = np.gradient(outside)
        cover = np.clip(0.5 - outside / np.maximum(np.hypot(slope_x, slope_y), 1e-9), 0, 1)
        angle = math.radians(look.get("angle", -62))
        size = math.hypot(w, h)
        across = ((u - w * look.get("at", 0.6)) * -math.sin(angle) + (v - h / 2) * math.cos(angle)) / size
        band = look.get("width", 0.5)
        soft = look.get("soft", 0.012)
        light = smoothstep(-soft, soft, across) * (1 - smoothstep(band * 0.45, band, across))
        fall = 1 - 0.65 * np.clip(v / h, 0, 1)
        value = cover * light * fall * look.get("strength", 0.11)
        visible = visible_glass(mask, number)
        rows, columns = value.shape
        area = (slice(y0, y0 + rows), slice(x0, x0 + columns))
        alpha[area] = np.maximum(alpha[area], value if visible is None else value * visible[area])
    x, y, width, height = (int(side * stage.scale) for side in glare_box(stage))
    levels = np.round(alpha * 255).astype(np.uint8)[y:y + height, x:x + width]
    white = np.full_like(levels, 255)
    return np.dstack([white, white, white, levels])


def glare_box(stage):
    """The rectangle of the unscaled canvas that the glare picture covers: the screens with their bezels."""
    from scenes import Stage
    base = stage if stage.scale == 1 else Stage(stage.scene)
    quads = np.concatenate([screen.quad for screen in base.screens()])
    margin = 0.06 * max(base.canvas)
    low = np.clip(np.floor(quads.min(axis=0) - margin), 0, base.canvas).astype(int)
    high = np.clip(np.ceil(quads.max(axis=0) + margin), 0, base.canvas).astype(int)
    return int(low[0]), int(low[1]), int(high[0] - low[0]), int(high[1] - low[1])
