"""Invented screenshots and backgrounds for previews and the contact sheet. All drawn here, nothing borrowed."""
import math
import os

import numpy as np
from PIL import Image, ImageDraw, ImageFilter, ImageFont

FONTS = ("/usr/share/fonts/opentype/inter/Inter-{}.otf", "/usr/share/fonts/truetype/dejavu/DejaVuSans{}.ttf")


def font(size, weight="Regular"):
    path = FONTS[0].format(weight)
    if not os.path.exists(path):
        path = FONTS[1].format("-Bold" if weight in ("Bold", "SemiBold") else "")
    return ImageFont.truetype(path, max(int(size), 6))


def gradient(size, top, bottom, slant=0.0):
    width, height = size
    ys, xs = np.mgrid[0:height, 0:width]
    t = np.clip(ys / height * (1 - slant) + xs / width * slant, 0, 1)[..., None]
    return Image.fromarray((np.array(top) * (1 - t) + np.array(bottom) * t).astype(np.uint8), "RGB")


class Page:
    """A drawing in units of a hundredth of the shorter side."""

    def __init__(self, image):
        self.image, self.draw = image.convert("RGB"), None
        self.width, self.height = image.size
        self.unit = min(image.size) / 100
        self.w, self.h = self.width / self.unit, self.height / self.unit
        self.draw = ImageDraw.Draw(self.image, "RGBA")

    def box(self, x, y, w, h, colour, radius=0.0):
        u = self.unit
        self.draw.rounded_rectangle((x * u, y * u, (x + w) * u, (y + h) * u), radius * u, fill=colour)

    def dot(self, x, y, r, colour):
        u = self.unit
        self.draw.ellipse(((x - r) * u, (y - r) * u, (x + r) * u, (y + r) * u), fill=colour)

    def text(self, x, y, words, size, colour=(255, 255, 255), weight="Regular", anchor="la"):
        u = self.unit
        self.draw.text((x * u, y * u), words, colour, font(size * u, weight), anchor)

    def line(self, points, colour, width):
        u = self.unit
        self.draw.line([(x * u, y * u) for x, y in points], colour, max(1, int(width * u)), joint="curve")

    def polygon(self, points, colour):
        u = self.unit
        self.draw.polygon([(x * u, y * u) for x, y in points], fill=colour)


def ridge(x, seed, rough=5):
    return sum(math.sin(x * (0.021 * 1.9 ** k) * 6 + seed * (k + 1) * 1.7) / 1.75 ** k for k in range(rough))


def status(page, colour):
    if page.h > page.w:
        page.text(9, 4.2, "9:24", 4.2, colour, "SemiBold", "la")
        page.box(84, 5.2, 7.4, 3.4, colour, 1)


def hills(size):
    """A calm landscape at dusk, layer behind layer."""
    page = Page(gradient(size, (34, 52, 98), (246, 176, 140)))
    page.dot(page.w * 0.68, page.h * 0.40, 9, (255, 236, 206, 235))
    for layer in range(6):
        t = layer / 5
        colour = tuple(int(a * (1 - t) + b * t) for a, b in zip((182, 124, 132), (18, 30, 52)))
        base = page.h * (0.50 + 0.075 * layer)
        points = [(x, base - ridge(x * 0.35, layer + 1.3) * (4 - 0.3 * layer)) for x in np.arange(-2, page.w + 4, 1.0)]
        page.polygon([(-2, page.h + 2), *points, (page.w + 4, page.h + 2)], (*colour, 255))
    if page.h > page.w:
        page.text(page.w / 2, page.h * 0.13, "9:24", 25, (255, 255, 255), "SemiBold", "mm")
        page.text(page.w / 2, page.h * 0.13 + 18, "Thursday, 14 May", 5.4, (255, 255, 255, 220), "Medium", "mm")
    else:
        page.text(7, 8, "Slow mornings", 9, (255, 255, 255), "SemiBold")
        page.text(7, 20, "Nine walks within an hour of town", 4, (255, 255, 255, 220))
    return page.image


def budget(size):
    """A bright money page with a chart and a list."""
    page = Page(Image.new("RGB", size, (247, 246, 242)))
    ink, quiet, teal = (24, 26, 30), (120, 122, 128), (11, 122, 117)
    status(page, ink)
    wide = page.w > page.h
    x0 = 26 if wide else 8
    if wide:
        page.box(0, 0, 22, page.h, (236, 234, 227))
        page.dot(11, 10, 4, teal)
        for k in range(6):
            page.box(5, 24 + 8.5 * k, 12, 2.2, (200, 198, 190) if k else teal, 1.1)
    top = 7 if wide else 16
    page.text(x0, top, "Hearth", 7.2, ink, "Bold")
    page.text(x0, top + 9.6, "You kept 412.60 this month", 3.7, quiet)
    width = (page.w - x0 - 8) * (0.52 if wide else 1)
    page.box(x0, top + 18, width, 52, (255, 255, 255), 5)
    values = [0.30, 0.42, 0.36, 0.55, 0.47, 0.66, 0.60, 0.83]
    points = [(x0 + 5 + (width - 10) * k / 7, top + 64 - 36 * value) for k, value in enumerate(values)]
    page.polygon([(points[0][0], top + 64), *points, (points[-1][0], top + 64)], (11, 122, 117, 40))
    page.line(points, teal, 0.9)
    for x, y in points:
        page.dot(x, y, 1.1, teal)
    page.text(x0 + 5, top + 22, "8,204.10", 6.4, ink, "SemiBold")
    rows = [("Garden centre", "38.20", (238, 155, 90)), ("Night train", "64.00", (78, 110, 190)), ("Farm shop", "21.75", (90, 160, 110)),
            ("Choir", "45.00", (186, 96, 140)), ("Bicycle repair", "57.30", (120, 120, 190)), ("Bakery", "9.40", (214, 176, 84)),
            ("Library", "0.00", (90, 150, 170)), ("Lemonade stand", "3.50", (230, 120, 110))]
    lx, ly = (x0 + width + 5, top + 18) if wide else (x0, top + 78)
    lw = page.w - lx - 8
    for k, (label, cost, colour) in enumerate(rows):
        y = ly + 14.5 * k
        if y + 13 > page.h - 5:
            break
        page.box(lx, y, lw, 12.6, (255, 255, 255), 4)
        page.dot(lx + 7, y + 6.3, 3.4, colour)
        page.text(lx + 13, y + 6.3, label, 3.6, ink, "Medium", "lm")
        page.text(lx + lw - 4, y + 6.3, cost, 3.6, ink, "Regular", "rm")
    return page.image


def player(size):
    """A dark music page with drawn cover art."""
    page = Page(gradient(size, (46, 22, 58), (12, 12, 22)))
    status(page, (255, 255, 255))
    wide = page.w > page.h
    side = min(page.w * 0.84, page.h * (0.62 if wide else 0.42))
    x0, y0 = (page.w * 0.08, page.h * 0.5 - side / 2) if wide else (page.w / 2 - side / 2, page.h * 0.12)
    page.box(x0, y0, side, side, (232, 94, 74), 4)
    for k in range(7):
        r = side * (0.44 - 0.06 * k)
        tone = (252 - 22 * k, 198 - 24 * k, 120 + 8 * k)
        page.dot(x0 + side * (0.5 + 0.02 * k), y0 + side * (0.56 - 0.012 * k), r, tone)
    tx, ty = (x0 + side + 8, page.h * 0.26) if wide else (x0, y0 + side + 9)
    tw = page.w - tx - 8
    page.text(tx, ty, "Low Tide Lullabies", 6.4, (255, 255, 255), "Bold")
    page.text(tx, ty + 9, "The Harbour Quartet", 4.3, (255, 255, 255, 170))
    page.box(tx, ty + 21, tw, 1.2, (255, 255, 255, 60), 0.6)
    page.box(tx, ty + 21, tw * 0.38, 1.2, (255, 255, 255), 0.6)
    page.dot(tx + tw * 0.38, ty + 21.6, 1.9, (255, 255, 255))
    page.text(tx, ty + 25, "1:34", 3, (255, 255, 255, 150))
    page.text(tx + tw, ty + 25, "4:07", 3, (255, 255, 255, 150), anchor="ra")
    cx, cy = tx + tw / 2, ty + 44
    page.dot(cx, cy, 8.5, (255, 255, 255))
    page.box(cx - 3, cy - 3.8, 2.1, 7.6, (30, 20, 40), 0.6)
    page.box(cx + 0.9, cy - 3.8, 2.1, 7.6, (30, 20, 40), 0.6)
    for side_sign in (-1, 1):
        sx = cx + side_sign * 21
        page.polygon([(sx - side_sign * 3, cy - 4), (sx + side_sign * 3, cy), (sx - side_sign * 3, cy + 4)], (255, 255, 255, 230))
    if not wide:
        for k, name in enumerate(("Buoys at Midnight", "Salt on the Sill", "Rope and Lantern")):
            y = ty + 62 + 12.5 * k
            if y + 10 < page.h:
                page.box(tx, y, 9, 9, (90 + 40 * k, 70, 120 - 20 * k), 2)
                page.text(tx + 13, y + 4.5, name, 3.8, (255, 255, 255, 220), "Medium", "lm")
    return page.image


def reader(size):
    """An illustrated article on warm paper."""
    page = Page(Image.new("RGB", size, (251, 248, 240)))
    ink = (38, 34, 30)
    picture_h = page.h * 0.38
    art = gradient((int(page.width), int(picture_h * page.unit)), (128, 190, 200), (240, 220, 180))
    page.image.paste(art, (0, 0))
    for layer, colour in enumerate(((96, 160, 150), (60, 128, 118), (28, 92, 88))):
        points = [(x, min(picture_h, picture_h * (0.62 + 0.14 * layer) - ridge(x * 0.3, layer + 4.2) * 4)) for x in np.arange(-2, page.w + 3, 1.0)]
        page.polygon([(-2, picture_h), *points, (page.w + 3, picture_h)], colour)
    page.dot(page.w * 0.24, picture_h * 0.34, 6, (255, 244, 214))
    status(page, (255, 255, 255))
    y = picture_h + 8
    page.text(8, y, "A field guide to", 8.4, ink, "Bold")
    page.text(8, y + 10.4, "unhurried rivers", 8.4, ink, "Bold")
    page.text(8, y + 23.5, "By Ida Holm  ·  6 minutes", 3.4, (150, 130, 104), "Medium")
    words = ("Nobody has measured how slowly the Lune turns south of the mill, and those who live there would rather "
             "that nobody did. In June it carries blossom, in October it carries leaves, and all year round it carries "
             "the sound of the same three ducks. We walked its banks for a week with a thermos, a pencil and no plan. "
             "What follows is what we found, in the order in which it found us.").split()
    face = font(4.0 * page.unit)
    line, y = "", y + 32
    for word in words + [None]:
        test = (line + " " + (word or "")).strip()
        if word is None or face.getlength(test) > (min(page.w, 140) - 16) * page.unit:
            if y > page.h - 5:
                break
            page.text(8, y, line, 4.0, ink)
            y, line = y + 6.6, word or ""
        else:
            line = test
    return page.image


def dial(size):
    """A quiet clock face with the tide below, for the watch."""
    page = Page(gradient(size, (10, 26, 34), (4, 8, 12)))
    cx, cy, r = page.w / 2, page.h * 0.47, 39
    for k in range(60):
        angle = math.radians(6 * k)
        inner = r - (5.5 if k % 5 == 0 else 2.2)
        colour = (238, 232, 220) if k % 5 == 0 else (110, 124, 130)
        page.line([(cx + inner * math.sin(angle), cy - inner * math.cos(angle)), (cx + r * math.sin(angle), cy - r * math.cos(angle))], colour, 1.3 if k % 5 == 0 else 0.7)
    page.text(cx + 17, cy + 12, "14", 6, (238, 176, 106), "SemiBold", "mm")
    for angle, length, width, colour in ((292, 21, 3.4, (250, 246, 238)), (54, 32, 2.4, (250, 246, 238)), (200, 35, 0.9, (62, 198, 190))):
        turn = math.radians(angle)
        page.line([(cx - 5 * math.sin(turn), cy + 5 * math.cos(turn)), (cx + length * math.sin(turn), cy - length * math.cos(turn))], colour, width)
    page.dot(cx, cy, 2.6, (62, 198, 190))
    for layer, colour in enumerate(((20, 92, 98), (14, 62, 72))):
        points = [(x, page.h * 0.90 + 3.5 * layer - 3.2 * math.sin(x * 0.11 + 1.4 * layer)) for x in np.arange(-2, page.w + 3, 0.8)]
        page.polygon([(-2, page.h + 2), *points, (page.w + 3, page.h + 2)], colour)
    return page.image


def atlas(size):
    """A wide working page: map-like shapes, a side panel, soft colours."""
    page = Page(Image.new("RGB", size, (214, 228, 222)))
    for k in range(9):
        points = [(x, page.h * (0.1 + 0.11 * k) + ridge(x * 0.22, k * 2.1) * 6) for x in np.arange(-4, page.w + 6, 1.5)]
        page.line(points, (238, 244, 241), 2.2 if k % 3 else 4.5)
    for k in range(7):
        x, y = page.w * (0.34 + 0.09 * k), page.h * (0.3 + 0.4 * abs(math.sin(k * 1.9)))
        page.dot(x, y, 3.2, (11, 122, 117))
        page.dot(x, y, 1.4, (255, 255, 255))
    panel = min(44, page.w * 0.5)
    page.box(5, 7 if page.w > page.h else page.h * 0.62, panel if page.w > page.h else page.w - 10, page.h - 14 if page.w > page.h else page.h * 0.34, (255, 255, 255, 245), 4)
    y0 = 13 if page.w > page.h else page.h * 0.66
    page.text(10, y0, "Seven stops", 6, (24, 26, 30), "Bold")
    for k, stop in enumerate(("Old observatory", "Lemon market", "The long bridge", "Reading garden", "Boat sheds")):
        y = y0 + 13 + 11.5 * k
        if y > (page.h - 14 if page.w > page.h else page.h * 0.96 - 8):
            break
        page.dot(13, y + 2, 2.4, (11, 122, 117))
        page.text(19, y + 2, stop, 3.6, (40, 44, 48), "Medium", "lm")
    return page.image


def plain(colour):
    return lambda size: Image.new("RGB", size, colour)


# Backgrounds

def paper(size):
    return gradient(size, (246, 244, 240), (226, 222, 214), 0.3)


def night(size):
    return gradient(size, (28, 32, 40), (12, 13, 16), 0.2)


def teal(size):
    return gradient(size, (26, 132, 126), (8, 66, 72), 0.4)


def peach(size):
    return gradient(size, (252, 214, 190), (232, 150, 140), 0.5)


def lights(size):
    """City lights out of focus."""
    rng = np.random.default_rng(11)
    page = Page(gradient(size, (20, 24, 44), (58, 36, 52)))
    for _ in range(70):
        x, y = rng.uniform(0, page.w), page.h * rng.beta(2.2, 2.0)
        tone = [(255, 190, 110), (255, 130, 100), (120, 190, 255), (250, 230, 190)][rng.integers(4)]
        page.dot(x, y, rng.uniform(1.5, 6.5), (*tone, int(rng.uniform(30, 110))))
    return page.image.filter(ImageFilter.GaussianBlur(page.unit * 0.9))


def window(size):
    """Late light through a window on a plastered wall."""
    width, height = size
    ys, xs = np.mgrid[0:height, 0:width] / max(size)
    rng = np.random.default_rng(5)
    grain = Image.fromarray(rng.integers(0, 255, (height // 6 + 1, width // 6 + 1), dtype=np.uint8)).resize(size, Image.BICUBIC)
    grain = np.asarray(grain.filter(ImageFilter.GaussianBlur(max(size) / 300)), float) / 255 - 0.5
    base = np.array((204, 186, 164)) * (0.86 + 0.14 * (1 - ys[..., None])) + 9 * grain[..., None]
    u, v = xs + 0.45 * ys, ys - 0.18 * xs
    panes = ((u % 0.30) > 0.028) & ((v % 0.34) > 0.026) & (u > 0.22) & (u < 1.12) & (v > -0.02) & (v < 0.66)
    light = Image.fromarray((panes * 255).astype(np.uint8)).filter(ImageFilter.GaussianBlur(max(size) / 90))
    lit = base * (1 + 0.30 * np.asarray(light, float)[..., None] / 255 * np.array((1.0, 0.92, 0.78)))
    return Image.fromarray(np.clip(lit, 0, 255).astype(np.uint8), "RGB")


SCREENS = {"hills": hills, "budget": budget, "player": player, "reader": reader, "dial": dial, "atlas": atlas}
BACKGROUNDS = {"paper": paper, "night": night, "teal": teal, "peach": peach, "lights": lights, "window": window}
