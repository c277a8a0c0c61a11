"""Sample inputs of our own: screens of invented applications, and a background."""

import math

import cairo
import cv2
import numpy as np

from scene import linear, mix, rgb, rounded_rect

FONT = 'Inter'


class Page:
    """A screen being drawn, in points; `scale` pixels to the point."""

    def __init__(self, width, height, scale):
        self.scale = scale
        self.surface = cairo.ImageSurface(cairo.FORMAT_RGB24, width, height)
        self.c = cairo.Context(self.surface)
        self.c.scale(scale, scale)
        self.width, self.height = width / scale, height / scale

    def shape(self, points, source):
        self.c.new_path()
        for p in points:
            self.c.line_to(*p)
        self.c.close_path()
        self._set(source)
        self.c.fill()

    def box(self, x, y, w, h, radius, source):
        self.shape(rounded_rect(w, h, radius, centre=(x + w / 2, y + h / 2)), source)

    def disc(self, x, y, r, source):
        self.c.new_path()
        self.c.arc(x, y, r, 0, 2 * math.pi)
        self._set(source)
        self.c.fill()

    def line(self, points, source, width, cap=cairo.LINE_CAP_ROUND):
        self.c.new_path()
        for p in points:
            self.c.line_to(*p)
        self._set(source)
        self.c.set_line_width(width)
        self.c.set_line_cap(cap)
        self.c.set_line_join(cairo.LINE_JOIN_ROUND)
        self.c.stroke()

    def text(self, x, y, string, size, source, weight='Regular', align=0.0, spacing=0.0):
        family = FONT if weight in ('Regular', 'Bold') else f'{FONT} {weight}'
        self.c.select_font_face(family, cairo.FONT_SLANT_NORMAL,
                                cairo.FONT_WEIGHT_BOLD if weight == 'Bold' else cairo.FONT_WEIGHT_NORMAL)
        self.c.set_font_size(size)
        self._set(source)
        advance = self.c.text_extents(string).x_advance + spacing * len(string)
        x -= align * advance
        if not spacing:
            self.c.move_to(x, y)
            self.c.show_text(string)
            return
        for letter in string:
            self.c.move_to(x, y)
            self.c.show_text(letter)
            x += self.c.text_extents(letter).x_advance + spacing

    def _set(self, source):
        if isinstance(source, cairo.Pattern):
            self.c.set_source(source)
        elif len(source) == 4:
            self.c.set_source_rgba(*source)
        else:
            self.c.set_source_rgb(*source)

    def pixels(self):
        self.surface.flush()
        h, w = self.surface.get_height(), self.surface.get_width()
        data = np.ndarray((h, w, 4), np.uint8, self.surface.get_data(), strides=(self.surface.get_stride(), 4, 1))
        return np.ascontiguousarray(data[..., 2::-1])


def ridge(width, base, height, seed, steps=240, detail=5):
    """A mountain line: a sum of sines with random phases, as points from left to right."""
    random = np.random.default_rng(seed)
    x = np.linspace(0, 1, steps)
    y = np.zeros(steps)
    for octave in range(detail):
        frequency = (1.3 + random.random()) * 1.9 ** octave
        wave = np.sin(2 * math.pi * (frequency * x + random.random()))
        y += (1 - np.abs(wave)) / 2.05 ** octave
    y = (y - y.min()) / (y.max() - y.min())
    return [(width * a, base - height * b) for a, b in zip(x, y)]


def hills(page, top, bottom, colours, seed):
    """Layered ridges from far (first colour) to near."""
    n = len(colours)
    for k, colour in enumerate(colours):
        base = top + (bottom - top) * (0.36 + 0.62 * k / n)
        line = ridge(page.width, base, (bottom - top) * (0.30 - 0.10 * k / n), seed + k, detail=4 if k else 5)
        low = top + (bottom - top) * 1.02
        mist = mix(colour, rgb('#ffd9b8'), 0.28 * (1 - k / n))
        page.shape(line + [(page.width, low), (0, low)],
                   linear(0, base - (bottom - top) * 0.3, 0, base + (bottom - top) * 0.22, [(0, colour), (1, mist)]))


def status_bar(page, ink, time='9:30'):
    page.text(36, 40, time, 16.5, ink, 'SemiBold')
    x = page.width - 34
    page.box(x - 25, 28.5, 22, 11.5, 3.6, tuple(ink) + (0.35,))
    page.box(x - 23.6, 29.9, 16, 8.7, 2.4, ink)
    page.box(x - 1.8, 32.3, 1.6, 4, 0.8, tuple(ink) + (0.5,))
    for k in range(4):
        page.box(x - 52 + 4.6 * k, 40 - (4 + 2.4 * k), 3.1, 4 + 2.4 * k, 1, ink)


def trail_screen():
    """A walking companion: tonight's walk over the ridge."""
    page = Page(1290, 2796, 3)
    w, h = page.width, page.height
    ink, paper, accent = rgb('#1b2430'), rgb('#fbf8f4'), rgb('#e2633c')
    page.box(0, 0, w, h, 0.01, paper)
    page.c.save()
    page.c.rectangle(0, 0, w, 470)
    page.c.clip()
    page.box(0, 0, w, 480, 0.01, linear(0, 0, 0, 430, [(0, rgb('#33406b')), (0.36, rgb('#8a6a98')),
                                                     (0.66, rgb('#ee9a83')), (1, rgb('#ffd3a0'))]))
    glow = cairo.RadialGradient(298, 236, 8, 298, 236, 210)
    glow.add_color_stop_rgba(0, 1, 0.95, 0.82, 0.95)
    glow.add_color_stop_rgba(0.15, 1, 0.85, 0.66, 0.55)
    glow.add_color_stop_rgba(1, 1, 0.8, 0.6, 0)
    page.box(0, 0, w, 480, 0.01, glow)
    page.disc(298, 236, 27, rgb('#fff4dc'))
    for x, y, s in ((96, 132, 1.0), (126, 148, 0.7), (72, 156, 0.6)):
        page.line([(x - 8 * s, y - 3 * s), (x, y), (x + 8 * s, y - 4 * s)], (1, 1, 1, 0.65), 1.4 * s)
    hills(page, 150, 480, [rgb('#b8839a'), rgb('#8a6488'), rgb('#5c4b76'), rgb('#383a5f'), rgb('#222a45')], 21)
    page.c.restore()
    status_bar(page, (1, 1, 1))
    page.disc(38, 86, 18, (1, 1, 1, 0.22))
    page.line([(41, 79), (34, 86), (41, 93)], (1, 1, 1), 2.2)
    page.disc(w - 38, 86, 18, (1, 1, 1, 0.22))
    heart = [(w - 38 + 8.0 * 0.0625 * 16 * math.sin(t) ** 3,
              86.5 - 0.5 * (13 * math.cos(t) - 5 * math.cos(2 * t) - 2 * math.cos(3 * t) - math.cos(4 * t)))
             for t in np.linspace(0, 2 * math.pi, 60)]
    page.shape(heart, (1, 1, 1))
    page.text(28, 372, 'TONIGHT', 12, (1, 1, 1, 0.85), 'SemiBold', spacing=1.8)
    page.text(27, 408, 'Over the saddle', 33, (1, 1, 1), 'Bold')

    page.box(0, 432, w, h, 30, paper)
    for k, (value, unit, label) in enumerate((('8.4', 'km', 'Distance'), ('412', 'm', 'Ascent'), ('2:35', 'h', 'Time'))):
        x = 28 + 132 * k
        page.text(x, 486, value, 29, ink, 'SemiBold')
        page.c.select_font_face(f'{FONT} SemiBold')
        page.c.set_font_size(29)
        page.text(x + page.c.text_extents(value).x_advance + 4, 486, unit, 14, tuple(ink) + (0.5,))
        page.text(x, 507, label, 13, tuple(ink) + (0.5,))
    elevation_card(page, 20, 530, w - 40, 168, ink, accent)
    page.text(28, 738, 'Along the way', 19, ink, 'SemiBold')
    stops(page, ink, accent)
    page.box(20, h - 98, w - 40, 58, 29, linear(0, h - 98, 0, h - 40, [(0, rgb('#ee7348')), (1, rgb('#dd5a34'))]))
    page.text(w / 2, h - 62.5, 'Start walking', 18, (1, 1, 1), 'SemiBold', align=0.5)
    page.box(w / 2 - 67, h - 15, 134, 5, 2.5, ink)
    return page.pixels()


def elevation_card(page, x, y, w, h, ink, accent):
    page.box(x, y + 2, w, h, 20, (0.1, 0.1, 0.2, 0.05))
    page.box(x, y, w, h, 20, (1, 1, 1))
    page.text(x + 18, y + 30, 'Elevation', 14, tuple(ink) + (0.55,))
    page.text(x + w - 18, y + 30, '1 284 m', 14, accent, 'SemiBold', align=1.0)
    t = np.linspace(0, 1, 120)
    curve = 0.18 + 0.62 * np.exp(-((t - 0.56) / 0.17) ** 2) + 0.22 * np.exp(-((t - 0.2) / 0.1) ** 2) + 0.05 * np.sin(17 * t)
    points = [(x + 18 + (w - 36) * a, y + h - 22 - (h - 76) * b) for a, b in zip(t, curve)]
    for k in range(3):
        gy = y + 58 + 36 * k
        page.line([(x + 18, gy), (x + w - 18, gy)], tuple(ink) + (0.06,), 1)
    page.shape(points + [(x + w - 18, y + h - 22), (x + 18, y + h - 22)],
               linear(0, y + 46, 0, y + h - 22, [(0, tuple(accent) + (0.30,)), (1, tuple(accent) + (0.02,))]))
    page.line(points, accent, 2.6)
    px, py = points[67]
    page.line([(px, py), (px, y + h - 22)], tuple(accent) + (0.35,), 1.2)
    page.disc(px, py, 6.5, (1, 1, 1))
    page.disc(px, py, 4.4, accent)


def stops(page, ink, accent):
    rows = (('Old larch', 'Spring water, 25 min', '#6f9b7d'), ('The saddle', 'Widest view, 1 h 20', '#8a6aa8'))
    for k, (title, text, colour) in enumerate(rows):
        y = 758 + 0 + 40 * k
        if y + 40 > page.height - 100:
            break
        page.disc(42, y + 18, 14, tuple(rgb(colour)) + (0.18,))
        page.disc(42, y + 18, 5.5, rgb(colour))
        page.text(68, y + 15, title, 15, ink, 'SemiBold')
        page.text(68, y + 31, text, 12.5, tuple(ink) + (0.55,))
        page.text(page.width - 28, y + 23, ('1.9 km', '4.6 km')[k], 13.5, tuple(ink) + (0.55,), align=1.0)


def background(width=3000, height=2000):
    """A photograph that never was: dusk over misty hills, lights out of focus in front."""
    random = np.random.default_rng(7)
    page = Page(width, height, 1)
    page.box(0, 0, width, height, 0.01, linear(0, 0, 0, height, [
        (0, rgb('#26365a')), (0.28, rgb('#6a6791')), (0.46, rgb('#d08f8f')), (0.58, rgb('#f6c097')), (1, rgb('#f3d3b0'))]))
    glow = cairo.RadialGradient(2050, 1080, 30, 2050, 1080, 1100)
    for k in range(13):
        fade = (math.exp(-4.5 * k / 12) - math.exp(-4.5)) / (1 - math.exp(-4.5))
        glow.add_color_stop_rgba(k / 12, 1, 0.80 + 0.13 * fade, 0.58 + 0.2 * fade, 0.92 * fade)
    page.box(0, 0, width, height, 0.01, glow)
    image = page.pixels().astype(np.float32)
    colours = [rgb(c) for c in ('#c79098', '#9f7790', '#745f84', '#4f4c72', '#343c5c', '#1d2740')]
    for k, colour in enumerate(colours):
        base = height * (0.66 + 0.065 * k)
        line = ridge(width, base, height * (0.16 - 0.012 * k), 40 + k, steps=900, detail=6)
        mask = np.zeros((height, width), np.uint8)
        cv2.fillPoly(mask, [np.array(line + [(width, height), (0, height)], np.int32)], 255, cv2.LINE_AA)
        soft = cv2.GaussianBlur(mask, (0, 0), 2.5 + 1.6 * abs(k - 2)).astype(np.float32)[..., None] / 255
        y = np.linspace(0, 1, height, dtype=np.float32)[:, None, None]
        mist = np.clip((y - base / height + 0.10) / 0.24, 0, 1) * (0.50 - 0.07 * k)
        layer = np.array(colour, np.float32) * 255 * (1 - mist) + np.array((255, 214, 178), np.float32) * mist
        image = image * (1 - soft) + layer * soft
    image = bokeh(image, random)
    yy, xx = np.mgrid[0:height, 0:width].astype(np.float32)
    corner = ((xx / width - 0.5) ** 2 + (yy / height - 0.5) ** 2)[..., None]
    image *= 1 - 0.55 * corner
    grain = cv2.GaussianBlur(random.normal(0, 1, (height, width)).astype(np.float32), (0, 0), 1.1)[..., None]
    return np.clip(image + 3.2 * grain, 0, 255).astype(np.uint8)


def bokeh(image, random):
    """Discs of light in the foreground, brighter at their edges like a lens makes them."""
    height, width = image.shape[:2]
    light = np.zeros_like(image)
    tints = [(255, 196, 120), (255, 224, 170), (255, 150, 110), (190, 210, 255), (255, 240, 214)]
    for _ in range(46):
        x, y = random.random() * width, height * (0.80 + 0.22 * random.random() ** 0.8)
        r = int((26 + 92 * random.random() ** 2.2) * width / 3000)
        disc = np.zeros((2 * r + 41, 2 * r + 41), np.float32)
        cv2.circle(disc, (r + 20, r + 20), r, 0.72, -1, cv2.LINE_AA)
        cv2.circle(disc, (r + 20, r + 20), r - 2, 1.0, max(2, r // 14), cv2.LINE_AA)
        disc = cv2.GaussianBlur(disc, (0, 0), 1.6 + r * 0.03)
        strength = (0.10 + 0.30 * random.random()) * (70 / (r + 40))
        x0, y0 = int(x) - r - 20, int(y) - r - 20
        xs, ys = max(0, -x0), max(0, -y0)
        xe, ye = min(disc.shape[1], width - x0), min(disc.shape[0], height - y0)
        if xe <= xs or ye <= ys:
            continue
        tint = np.array(tints[random.integers(len(tints))], np.float32)
        light[y0 + ys:y0 + ye, x0 + xs:x0 + xe] += disc[ys:ye, xs:xe, None] * tint * strength
    return 255 - (255 - image) * np.clip(1 - light / 255, 0, 1)


def rest_screen():
    """A breathing companion at night."""
    page = Page(1290, 2796, 3)
    w, h = page.width, page.height
    ink, soft, accent = (1, 1, 1), (0.86, 0.90, 1.0, 0.62), rgb('#7fe3d2')
    page.box(0, 0, w, h, 0.01, linear(0, 0, 0, h, [(0, rgb('#0d1530')), (0.5, rgb('#17264a')), (1, rgb('#0c2f3d'))]))
    glow = cairo.RadialGradient(w / 2, 372, 40, w / 2, 372, 330)
    glow.add_color_stop_rgba(0, 0.42, 0.86, 0.83, 0.34)
    glow.add_color_stop_rgba(1, 0.3, 0.6, 0.8, 0)
    page.box(0, 0, w, h, 0.01, glow)
    random = np.random.default_rng(5)
    for _ in range(70):
        x, y = random.random() * w, random.random() ** 1.6 * 420 + 50
        page.disc(x, y, 0.5 + 0.8 * random.random(), (1, 1, 1, 0.15 + 0.5 * random.random()))
    status_bar(page, ink, '22:10')
    page.text(w / 2, 108, 'Slow tide', 20, ink, 'SemiBold', align=0.5)
    page.text(w / 2, 131, 'Session 4 of 7', 14, soft, align=0.5)
    for k in range(6):
        points = [(w / 2 + (104 + 15 * k) * math.cos(t) * (1 + 0.035 * math.sin(3 * t + k)),
                   372 + (104 + 15 * k) * math.sin(t) * (1 + 0.035 * math.cos(2 * t - k)))
                  for t in np.linspace(0, 2 * math.pi, 200)]
        page.shape(points, (0.50, 0.89, 0.84, 0.085))
    page.disc(w / 2, 372, 104, linear(0, 268, 0, 476, [(0, rgb('#a6f3e2')), (1, rgb('#3fa7b5'))]))
    page.disc(w / 2, 372, 104, linear(w / 2 - 104, 268, w / 2 + 60, 476, [(0, (1, 1, 1, 0.35)), (0.6, (1, 1, 1, 0))]))
    page.text(w / 2, 368, 'Breathe in', 23, rgb('#0b2a3b'), 'SemiBold', align=0.5)
    page.text(w / 2, 394, '4 seconds', 15, tuple(rgb('#0b2a3b')) + (0.7,), align=0.5)
    page.text(w / 2, 624, '03:42', 54, ink, 'Light', align=0.5)
    page.text(w / 2, 651, 'remaining', 14, soft, align=0.5)
    page.line([(40, 690), (w - 40, 690)], (1, 1, 1, 0.14), 4)
    page.line([(40, 690), (40 + (w - 80) * 0.47, 690)], accent, 4)
    page.disc(40 + (w - 80) * 0.47, 690, 7.5, ink)
    for k, (label, value) in enumerate((('Waves', 0.7), ('Rain', 0.35), ('Wind', 0.5))):
        x = 28 + k * 126
        page.box(x, 724, 118, 74, 20, (1, 1, 1, 0.08))
        page.text(x + 16, 752, label, 14, ink, 'Medium')
        page.line([(x + 16, 776), (x + 102, 776)], (1, 1, 1, 0.16), 3.4)
        page.line([(x + 16, 776), (x + 16 + 86 * value, 776)], accent, 3.4)
    page.disc(w / 2, 854, 30, ink)
    for dx in (-6, 6):
        page.box(w / 2 + dx - 2.6, 842, 5.2, 24, 2, rgb('#12294a'))
    for side in (-1, 1):
        x = w / 2 + side * 84
        page.line([(x - side * 6, 845), (x + side * 3, 854), (x - side * 6, 863)], (1, 1, 1, 0.8), 2.4)
        page.line([(x + side * 7, 845), (x + side * 7, 863)], (1, 1, 1, 0.8), 2.4)
    page.box(w / 2 - 67, h - 15, 134, 5, 2.5, ink)
    return page.pixels()


def studio_screen():
    """A desktop planner for a small garden: landscape, 16 : 9."""
    page = Page(2560, 1440, 2)
    w, h = page.width, page.height
    ink, paper, leaf = rgb('#1d2a26'), rgb('#f7f6f1'), rgb('#2f7d5b')
    page.box(0, 0, w, h, 0.01, paper)
    page.box(0, 0, 220, h, 0.01, rgb('#eceae2'))
    page.text(24, 84, 'Hedgerow', 21, ink, 'Bold')
    for k, item in enumerate(('This week', 'Beds', 'Seeds', 'Watering', 'Harvest', 'Notes')):
        y = 126 + 42 * k
        if not k:
            page.box(12, y - 22, 196, 36, 10, (1, 1, 1))
        page.box(26, y - 11, 14, 14, 4, leaf if not k else tuple(ink) + (0.25,))
        page.text(52, y + 1, item, 14.5, ink if not k else tuple(ink) + (0.7,), 'SemiBold' if not k else 'Regular')
    page.text(256, 62, 'This week', 30, ink, 'Bold')
    page.text(256, 88, 'Late spring, mild and dry', 15, tuple(ink) + (0.55,))
    page.box(w - 176, 38, 140, 42, 21, leaf)
    page.text(w - 106, 64, 'Add a task', 15, (1, 1, 1), 'SemiBold', align=0.5)
    hero = (256, 116, 612, 300)
    page.c.save()
    page.c.new_path()
    for p in rounded_rect(hero[2], hero[3], 22, centre=(hero[0] + hero[2] / 2, hero[1] + hero[3] / 2)):
        page.c.line_to(*p)
    page.c.clip()
    page.box(256, 116, 612, 300, 0.01, linear(0, 116, 0, 416, [(0, rgb('#9cc7cf')), (0.6, rgb('#e9e2bd')), (1, rgb('#f3d8a0'))]))
    page.disc(706, 226, 36, rgb('#fff6da'))
    for k, colour in enumerate(('#9dbf9b', '#6ea27c', '#437f61', '#265a47')):
        base = 330 + 34 * k
        t = np.linspace(0, 1, 160)
        line = [(256 + 612 * a, base - (46 - 6 * k) * math.sin(2.4 * a * (1 + 0.35 * k) + 1.3 * k) - 12 * math.sin(7 * a + k)) for a in t]
        page.shape(line + [(868, 430), (256, 430)], rgb(colour))
    page.c.restore()
    page.text(282, 372, 'Bed 3 is ready for beans', 24, (1, 1, 1), 'SemiBold')
    page.text(282, 396, 'Soil at 14 °C since Tuesday', 14.5, (1, 1, 1, 0.85))
    side = (892, 116, w - 892 - 36, 300)
    page.box(*side, 22, (1, 1, 1))
    page.text(916, 152, 'Rain and watering', 15, ink, 'SemiBold')
    values = [0.25, 0.5, 0.35, 0.8, 0.6, 0.3, 0.15]
    for k, (value, day) in enumerate(zip(values, 'MTWTFSS')):
        x = 922 + k * 46
        page.box(x, 196, 22, 168, 11, tuple(leaf) + (0.10,))
        page.box(x, 196 + 168 * (1 - value), 22, 168 * value, min(11, 84 * value), leaf if k == 3 else tuple(leaf) + (0.55,))
        page.text(x + 11, 392, day, 13, tuple(ink) + (0.5,), align=0.5)
    cards = (('Sow', 'Runner beans', 'Bed 3, two rows', '#e9a23b'), ('Plant out', 'Tomatoes', 'Glasshouse, 8 plants', '#d9634c'),
             ('Thin', 'Carrots', 'Bed 1, 5 cm apart', '#4f8f6a'), ('Feed', 'Roses', 'Along the wall', '#8a6aa8'))
    for k, (verb, name, text, colour) in enumerate(cards):
        cw = (w - 256 - 36 - 3 * 20) / 4
        x = 256 + k * (cw + 20)
        page.box(x, 440, cw, 244, 22, (1, 1, 1))
        page.box(x + 14, 454, cw - 28, 128, 14, linear(0, 454, 0, 582, [(0, tuple(rgb(colour)) + (0.30,)), (1, tuple(rgb(colour)) + (0.12,))]))
        for leafs in range(5):
            angle = math.radians(-150 + 30 * leafs)
            cx, cy, r = x + cw / 2, 572, 66
            tip = (cx + r * math.cos(angle), cy + r * math.sin(angle))
            left = (cx + 0.55 * r * math.cos(angle - 0.42), cy + 0.55 * r * math.sin(angle - 0.42))
            right = (cx + 0.55 * r * math.cos(angle + 0.42), cy + 0.55 * r * math.sin(angle + 0.42))
            page.c.new_path()
            page.c.move_to(cx, cy)
            page.c.curve_to(*left, *left, *tip)
            page.c.curve_to(*right, *right, cx, cy)
            page.c.set_source_rgba(*rgb(colour), 0.85 if leafs % 2 == 0 else 0.6)
            page.c.fill()
        page.text(x + 18, 612, verb, 13, rgb(colour), 'SemiBold')
        page.text(x + 18, 636, name, 18, ink, 'SemiBold')
        page.text(x + 18, 659, text, 13.5, tuple(ink) + (0.55,))
    return page.pixels()


def recipe_screen():
    """A cookery book on a tablet: portrait, 4 : 3."""
    page = Page(1620, 2160, 2)
    w, h = page.width, page.height
    ink, paper, accent = rgb('#2b2320'), rgb('#fbf7f1'), rgb('#c8553d')
    page.box(0, 0, w, h, 0.01, paper)
    page.c.save()
    page.c.rectangle(0, 0, w, 470)
    page.c.clip()
    page.box(0, 0, w, 470, 0.01, linear(0, 0, w, 470, [(0, rgb('#f4c98b')), (0.55, rgb('#e79a6b')), (1, rgb('#b9553f'))]))
    page.disc(w * 0.62, 262, 232, (0.20, 0.08, 0.05, 0.18))
    page.disc(w * 0.61, 250, 226, rgb('#fdf6ea'))
    page.disc(w * 0.61, 250, 188, rgb('#f3e3cc'))
    page.disc(w * 0.61, 250, 176, linear(w * 0.45, 90, w * 0.75, 420, [(0, rgb('#f0a04b')), (1, rgb('#d9662f'))]))
    random = np.random.default_rng(11)
    for _ in range(26):
        angle, reach = random.random() * 2 * math.pi, 150 * math.sqrt(random.random())
        x, y = w * 0.61 + reach * math.cos(angle), 250 + reach * math.sin(angle)
        tint = (rgb('#f7d070'), rgb('#8fae5d'), rgb('#b23a2e'), rgb('#fff1d0'))[random.integers(4)]
        page.disc(x + 1.5, y + 2.5, 8 + 12 * random.random(), (0.25, 0.08, 0.02, 0.22))
        page.disc(x, y, 7 + 11 * random.random(), tint)
    page.c.restore()
    page.text(40, 36, '18:05', 15, ink, 'SemiBold')
    page.text(40, 96, 'SUNDAY', 13, tuple(ink) + (0.75,), 'SemiBold', spacing=2)
    page.box(0, 430, w, h, 30, paper)
    page.text(40, 500, 'Pumpkin and sage', 42, ink, 'Bold')
    page.text(40, 532, 'A pan, an oven and forty minutes', 18, tuple(ink) + (0.6,))
    for k, (value, label) in enumerate((('4', 'people'), ('40', 'minutes'), ('1', 'pan'))):
        x = 40 + 150 * k
        page.box(x, 560, 136, 68, 18, (1, 1, 1))
        page.text(x + 18, 604, value, 27, accent, 'SemiBold')
        page.c.select_font_face(f'{FONT} SemiBold')
        page.c.set_font_size(27)
        page.text(x + 26 + page.c.text_extents(value).x_advance, 604, label, 15, tuple(ink) + (0.6,))
    page.text(40, 686, 'You need', 20, ink, 'SemiBold')
    for k, item in enumerate(('1 small pumpkin', '2 red onions', '12 leaves of sage', '3 spoons of oil', '80 g of hazelnuts',
                              'Salt and pepper')):
        y = 722 + 42 * k
        page.box(40, y - 14, 20, 20, 6, accent if k < 2 else tuple(ink) + (0.12,))
        if k < 2:
            page.line([(45, y - 4), (49, y), (55.5, y - 8)], (1, 1, 1), 2.2)
        page.text(74, y + 2, item, 17, ink if k >= 2 else tuple(ink) + (0.45,))
    page.text(360, 686, 'How it goes', 20, ink, 'SemiBold')
    steps = (('Cut the pumpkin into wedges, the onions into', 'quarters. Leave the skin on, it turns soft.'),
             ('Turn both in oil and salt, spread them in the', 'pan and bake them at 200 degrees.'),
             ('After half an hour add the nuts and the sage,', 'and wait for the edges to darken.'),
             ('Serve it in the pan, with bread and a green', 'salad beside it.'))
    for k, lines in enumerate(steps):
        y = 722 + 72 * k
        page.disc(374, y - 2, 14, tuple(accent) + (0.14,))
        page.text(374, y + 3.5, str(k + 1), 15, accent, 'SemiBold', align=0.5)
        for row, text in enumerate(lines):
            page.text(402, y + 3 + 25 * row, text, 17, tuple(ink) + (0.85,))
    page.box(40, h - 86, w - 80, 58, 29, accent)
    page.text(w / 2, h - 51, 'Start cooking', 18, (1, 1, 1), 'SemiBold', align=0.5)
    return page.pixels()


def imported_preview(size):
    """The picture of the row for the user's own frames: an outline, waiting, with a plus."""
    n = size * 4
    surface = cairo.ImageSurface(cairo.FORMAT_ARGB32, n, n)
    c = cairo.Context(surface)
    c.scale(n / 95, n / 95)
    teal = rgb('#0b7a75')
    for p in rounded_rect(38, 74, 8.5, centre=(47.5, 47.5)):
        c.line_to(*p)
    c.close_path()
    c.set_source_rgba(*teal, 0.10)
    c.fill_preserve()
    c.set_source_rgba(*teal, 0.75)
    c.set_line_width(2)
    c.set_dash([5, 4])
    c.set_line_cap(cairo.LINE_CAP_ROUND)
    c.stroke()
    c.set_dash([])
    c.set_line_width(2.6)
    c.set_source_rgb(*teal)
    for a, b in (((39.5, 47.5), (55.5, 47.5)), ((47.5, 39.5), (47.5, 55.5))):
        c.move_to(*a)
        c.line_to(*b)
    c.stroke()
    surface.flush()
    data = np.ndarray((n, n, 4), np.uint8, surface.get_data(), strides=(surface.get_stride(), 4, 1))
    from scene import unpremultiply
    return unpremultiply(cv2.resize(data, (size, size), interpolation=cv2.INTER_AREA))
