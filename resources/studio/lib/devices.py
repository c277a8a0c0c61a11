"""The measures of the generic devices, in millimetres. No maker's product is copied here.

A device's local frame has its origin in the middle of the screen, on the glass: x right, y up, z out.
"""

FINISHES = {  # linear base colour, metallic, roughness
    "graphite": ((0.13, 0.133, 0.142), 1.0, 0.30),
    "silver": ((0.74, 0.745, 0.75), 0.8, 0.34),
    "white": ((0.78, 0.76, 0.72), 0.55, 0.32),
    "sand": ((0.70, 0.55, 0.41), 0.85, 0.32),
    "blue": ((0.028, 0.070, 0.165), 1.0, 0.30),
    "teal": ((0.03, 0.16, 0.16), 1.0, 0.32),
}

DEVICES = {
    "phone": {
        "screen": (66.0, 143.0), "radius": 8.6, "bezel": (2.8, 2.8, 2.8, 2.8), "depth": 7.8,
        "bevel": 1.7, "rim": 1.25, "camera": (33.0, 5.2, 3.4, 3.4), "buttons": True,
    },
    "phone-pill": {
        "screen": (66.0, 143.0), "radius": 8.6, "bezel": (2.8, 2.8, 2.8, 2.8), "depth": 7.8,
        "bevel": 1.7, "rim": 1.25, "camera": (33.0, 5.0, 11.5, 3.6), "buttons": True,
    },
    "phone-square": {  # its body covers even the square corners of the screen, as a very tall picture needs
        "screen": (66.0, 143.0), "radius": 6.0, "bezel": (2.8, 2.8, 2.8, 2.8), "depth": 7.8,
        "bevel": 1.7, "rim": 1.25, "camera": (33.0, 5.2, 3.4, 3.4), "buttons": True,
    },
    "tablet": {
        "screen": (160.0, 213.333), "radius": 4.6, "bezel": (6.6, 6.6, 6.6, 6.6), "depth": 6.6,
        "bevel": 1.7, "rim": 1.1, "buttons": False,
    },
    "tablet-wide": {
        "screen": (213.333, 160.0), "radius": 4.6, "bezel": (6.6, 6.6, 6.6, 6.6), "depth": 6.6,
        "bevel": 1.7, "rim": 1.1, "buttons": False,
    },
    "laptop": {
        "screen": (300.0, 187.5), "radius": 4.0, "bezel": (6.5, 7.5, 6.5, 11.0), "depth": 4.6,
        "bevel": 1.2, "rim": 0.9, "buttons": False,
    },
    "display": {
        "screen": (600.0, 337.5), "radius": 0.0, "bezel": (7.5, 7.5, 7.5, 9.5), "depth": 11.0,
        "bevel": 2.0, "rim": 1.4, "buttons": False, "outer": 9.0,
    },
    "television": {
        "screen": (1100.0, 618.75), "radius": 0.0, "bezel": (7.0, 7.0, 7.0, 11.0), "depth": 26.0,
        "bevel": 2.4, "rim": 2.0, "buttons": False, "outer": 7.0,
    },
    "watch": {
        "screen": (33.0, 38.5), "radius": 8.2, "bezel": (2.2, 2.2, 2.2, 2.2), "depth": 10.5,
        "bevel": 4.2, "rim": 1.3, "buttons": False,
    },
}


def body_box(device):
    """(left, bottom, width, height) of the body around the screen, and its corner radius."""
    left, top, right, bottom = device["bezel"]
    width, height = device["screen"]
    rim = device["rim"]
    box = (-width / 2 - left - 0 * rim, -height / 2 - bottom, width + left + right, height + top + bottom)
    radius = device.get("outer", device["radius"] + min(device["bezel"]))
    return box, radius


def screen_corners(device):
    """TL, TR, BL, BR of the screen in the device's own frame."""
    w, h = device["screen"][0] / 2, device["screen"][1] / 2
    return [(-w, h, 0), (w, h, 0), (-w, -h, 0), (w, -h, 0)]


def hull(kind, device):
    """Points that the camera keeps inside the canvas, in the device's own frame."""
    (x, y, w, h), _ = body_box(device)
    d = device["depth"]
    points = [(px, py, pz) for px in (x, x + w) for py in (y, y + h) for pz in (0, -d)]
    return points
