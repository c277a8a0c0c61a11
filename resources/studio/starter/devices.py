"""The devices: a phone and a display, made of millimetres, drawn by a Camera onto a Canvas."""

import math

import numpy as np

from scene import (homography, linear, metal, mix, outward_normals, project, rgb, rounded_rect, soft_rect)

METALS = {
    'graphite': rgb('#4a4c50'),
    'silver': rgb('#c9cbce'),
    'sand': rgb('#d6c4a8'),
    'blue': rgb('#2f4668'),
    'white': rgb('#e9e6df'),
}


class Screen:
    """One screen area: its integer quad on the canvas, and the hole that belongs to it."""

    def __init__(self, camera, width, height, radius, grid=1):
        """`grid` 2 puts the corners on even pixels, for a frame that is also used at half its size."""
        half = np.array([(-width / 2, -height / 2), (width / 2, -height / 2),
                         (-width / 2, height / 2), (width / 2, height / 2)])
        self.quad = [tuple(grid * int(math.floor(v / grid + 0.5)) for v in p) for p in camera.flat(half)]
        xs, ys = [p[0] for p in self.quad], [p[1] for p in self.quad]
        self.box = (min(xs), min(ys), max(xs) - min(xs), max(ys) - min(ys))
        self.aspect_error = (self.box[2] / width) / (self.box[3] / height) - 1
        self.radius = grid * int(round(radius * 0.5 * (self.box[2] / width + self.box[3] / height) / grid))
        w, h = self.box[2], self.box[3]
        self.matrix = homography([(0, 0), (w, 0), (0, h), (w, h)], self.quad)

    def outline(self, inset):
        """The screenshot's outline, `inset` pixels inside, as the composition warps it."""
        w, h = self.box[2], self.box[3]
        radius = max(self.radius - inset, 0.01)
        points = rounded_rect(w - 2 * inset, h - 2 * inset, radius, steps=64, centre=(w / 2, h / 2))
        return project(self.matrix, points)

    def place(self, unit):
        """Points given in fractions of the screen (0 to 1), on the canvas."""
        return project(self.matrix, np.asarray(unit, float) * np.array([self.box[2], self.box[3]]))


class Slab:
    """A flat device body with softly rounded corners and a rounded edge all around."""

    def __init__(self, width, height, radius, thickness, edge, colour):
        self.width, self.height, self.radius = width, height, radius
        self.thickness, self.edge, self.colour = thickness, edge, colour
        self.rim = soft_rect(width, height, radius, steps=64)

    def profile(self, steps=14):
        """(inset, z, outward share, forward share) from the front edge to the back edge."""
        rows = []
        for k in range(steps + 1):
            a = 0.5 * math.pi * k / steps
            rows.append((self.edge * (1 - math.sin(a)), -self.edge * (1 - math.cos(a)), math.sin(a), math.cos(a)))
        for k in range(steps + 1):
            a = 0.5 * math.pi * k / steps
            rows.append((self.edge * (1 - math.cos(a)), -self.thickness + self.edge * (1 - math.sin(a)),
                         math.cos(a), -math.sin(a)))
        return rows

    def silhouette(self, camera):
        return [camera.flat(self.rim, -self.edge), camera.flat(self.rim, -self.thickness + self.edge)]

    def draw(self, canvas, camera, satin=1.0):
        normals = outward_normals(self.rim)
        rows = self.profile()
        order = rows[::-1]
        for (i0, z0, o0, f0), (i1, z1, o1, f1) in zip(order, order[1:]):
            a = np.column_stack([self.rim - normals * i0, np.full(len(self.rim), z0)])
            b = np.column_stack([self.rim - normals * i1, np.full(len(self.rim), z1)])
            out, forward = (o0 + o1) / 2, (f0 + f1) / 2
            self._strip(canvas, camera, a, b, normals * out, forward, satin)

    def _strip(self, canvas, camera, a, b, radial, forward, satin):
        normal = np.column_stack([radial, np.full(len(radial), forward)])
        normal /= np.linalg.norm(normal, axis=1, keepdims=True)
        nxt = np.roll(normal, -1, axis=0)
        middle = (normal + nxt) / np.linalg.norm(normal + nxt, axis=1, keepdims=True)
        visible = camera.faces_viewer((a + b) / 2, middle)
        colours = metal(self.colour, middle @ camera.rotation.T, satin)
        pa, pb = camera.points(a), camera.points(b)
        c = canvas.context
        c.set_line_width(min(0.8, 0.06 * camera.scale))  # hides the seams between neighbours
        for k in np.nonzero(visible)[0]:
            n = (k + 1) % len(pa)
            c.move_to(*pa[k])
            c.line_to(*pa[n])
            c.line_to(*pb[n])
            c.line_to(*pb[k])
            c.close_path()
            c.set_source_rgb(*colours[k])
            c.fill_preserve()
            c.stroke()


class Phone:
    """A 19.5 : 9 phone: satin frame, black glass, thin even bezel, one small round camera."""

    SCREEN_W, SCREEN_H, SCREEN_R = 66.0, 143.05, 9.0
    BEZEL, LIP, ROUNDING = 1.9, 1.35, 1.8
    BUTTONS = ((1, -28, 20), (-1, -34, 11), (-1, -20, 11))  # side, middle, length
    CAMERA_Y, CAMERA_SIZE = 5.2, 1.0

    def __init__(self, colour, grid=1, inset=1.0):
        self.grid, self.inset = grid, inset
        border = 2 * (self.BEZEL + self.LIP)
        self.colour = METALS[colour]
        self.body = Slab(self.SCREEN_W + border, self.SCREEN_H + border,
                         self.SCREEN_R + self.BEZEL + self.LIP + self.ROUNDING, 7.8, self.LIP, self.colour)

    def screen(self, camera):
        return Screen(camera, self.SCREEN_W, self.SCREEN_H, self.SCREEN_R, self.grid)

    def outlines(self, camera):
        return self.body.silhouette(camera)

    def shadow(self, canvas, camera, reach=1.0):
        k = camera.scale * reach
        for dx, dy, blur, strength in ((1.2, 2.6, 2.2, 0.34), (3.6, 8.5, 9.0, 0.30), (6.0, 15.0, 17.0, 0.20)):
            moved = [o + np.array([dx * k, dy * k]) for o in self.outlines(camera)]
            canvas.shadow(moved, blur * k, strength)

    def draw(self, canvas, camera):
        """Draws the phone and cuts its hole; returns the Screen."""
        screen = self.screen(camera)
        self._buttons(canvas, camera, in_front=False)
        self.body.draw(canvas, camera)
        self._buttons(canvas, camera, in_front=True)
        self._glass(canvas, camera)
        canvas.cut(screen.outline(self.inset))
        self._camera(canvas, camera)
        return screen

    def _buttons(self, canvas, camera, in_front):
        """The keys on the two long sides: on a side that shows, they lie over the body; else behind it."""
        half = self.body.width / 2
        for side, y, length in self.BUTTONS:
            z = -self.body.thickness / 2
            shows = camera.faces_viewer(np.array([[side * half, y, z]]), np.array([[side, 0.0, 0.0]]))[0]
            if shows != in_front:
                continue
            button = Slab(1.3, length, 0.62, 3.0, 0.6, mix(self.colour, (0, 0, 0), 0.10))
            button.rim = button.rim + np.array([side * half, y])
            button.draw(canvas, _Shifted(camera, z + 1.5))

    def _glass(self, canvas, camera):
        b = self.body
        glass_w, glass_h = b.width - 2 * self.LIP, b.height - 2 * self.LIP
        seam = camera.flat(soft_rect(glass_w + 0.16, glass_h + 0.16, b.radius - self.LIP + 0.08))
        canvas.fill(seam, mix(self.colour, (0, 0, 0), 0.82))
        glass = camera.flat(soft_rect(glass_w - 0.24, glass_h - 0.24, b.radius - self.LIP - 0.12))
        corner = camera.flat(np.array([(-glass_w / 2, -glass_h / 2), (glass_w / 2, glass_h / 2)]))
        canvas.fill(glass, linear(*corner[0], *corner[1], [(0, rgb('#24262a')), (0.18, rgb('#0d0e10')),
                                                          (0.7, rgb('#08090a')), (1, rgb('#15171a'))]))
        inner = camera.flat(soft_rect(glass_w - 0.5, glass_h - 0.5, b.radius - self.LIP - 0.25))
        canvas.stroke(inner, linear(*corner[0], *corner[1], [(0, (1, 1, 1, 0.30)), (0.25, (1, 1, 1, 0.05)),
                                                            (0.75, (1, 1, 1, 0.02)), (1, (1, 1, 1, 0.12))]),
                      0.10 * camera.scale)

    def _camera(self, canvas, camera):
        y, size = -self.SCREEN_H / 2 + self.CAMERA_Y, self.CAMERA_SIZE

        def ring(radius, dx=0.0, dy=0.0):
            radius, dx, dy = radius * size, dx * size, dy * size
            return camera.flat(soft_rect(2 * radius, 2 * radius, radius, centre=(dx, y + dy), exponent=2.0))
        canvas.fill(ring(1.95), rgb('#050607'))
        canvas.fill(ring(1.25), rgb('#0e1116'))
        canvas.fill(ring(0.95), rgb('#121a2a'))
        canvas.fill(ring(0.55), rgb('#070a12'))
        canvas.fill(ring(0.20, -0.34, -0.38), (0.72, 0.82, 1.0, 0.75))


class Tablet(Phone):
    """A 4 : 3 tablet, upright: a wider bezel that holds the camera, and small corners. Its body covers the corners
    of the screen's bounding box, which the composition of very tall screens paints black."""

    SCREEN_W, SCREEN_H, SCREEN_R = 160.0, 213.34, 4.6
    BEZEL, LIP, ROUNDING = 8.0, 1.5, 0.0
    BUTTONS = ((1, -78, 24), (1, -50, 24))
    CAMERA_Y, CAMERA_SIZE = -4.0, 0.75


class _Shifted:
    """The same camera, looking at something moved along z."""

    def __init__(self, camera, dz):
        self.camera, self.dz = camera, dz
        self.rotation, self.scale = camera.rotation, camera.scale

    def _moved(self, xyz):
        return np.asarray(xyz, float) + np.array([0, 0, self.dz])

    def points(self, xyz):
        return self.camera.points(self._moved(xyz))

    def faces_viewer(self, point, normal):
        return self.camera.faces_viewer(self._moved(point), normal)


def glare(screen, width, height, strength=0.13):
    """Straight RGBA of a broad diagonal soft-box reflection that ends at the screen's edge,
    and the rectangle it belongs into: (x, y, pixels)."""
    import cairo
    import cv2
    outline = screen.outline(2.0)
    x0, y0 = (int(v) for v in np.floor(outline.min(axis=0)))
    x1, y1 = (int(v) for v in np.ceil(outline.max(axis=0)))
    w, h = x1 - x0, y1 - y0

    def coverage(points):
        surface = cairo.ImageSurface(cairo.FORMAT_A8, w, h)
        c = cairo.Context(surface)
        c.translate(-x0, -y0)
        c.move_to(*points[0])
        for p in points[1:]:
            c.line_to(*p)
        c.close_path()
        c.fill()
        surface.flush()
        data = np.ndarray((h, surface.get_stride()), np.uint8, surface.get_data())
        return data[:, :w].astype(np.float32) / 255

    band = coverage(screen.place([(0.30, -0.05), (1.05, -0.05), (1.05, 0.26), (-0.05, 0.93), (-0.05, 0.36)]))
    thin = coverage(screen.place([(1.05, 0.33), (1.05, 0.42), (-0.05, 1.09), (-0.05, 1.00)]))
    soft = cv2.GaussianBlur(band, (0, 0), 0.012 * h) * 0.72 + cv2.GaussianBlur(thin, (0, 0), 0.010 * h) * 0.34
    yy, xx = np.mgrid[0:h, 0:w].astype(np.float32)
    fall = np.clip(1.08 - 0.85 * (0.35 * (1 - xx / w) + 0.65 * yy / h), 0.12, 1)
    alpha = soft * fall * strength * coverage(outline)
    out = np.full((h, w, 4), 255, np.uint8)
    out[..., 3] = (alpha * 255 + 0.5).astype(np.uint8)
    out[out[..., 3] == 0] = 0
    return x0, y0, out


class Display:
    """A 16 : 9 desktop display with square screen corners, on a foot."""

    SCREEN_W, SCREEN_H = 600.0, 337.5
    BEZEL = 7.0

    def __init__(self, colour):
        self.colour = METALS[colour]
        self.body = Slab(self.SCREEN_W + 2 * self.BEZEL + 4, self.SCREEN_H + 2 * self.BEZEL + 4, 7.0, 16.0, 2.0,
                         self.colour)

    def draw(self, canvas, camera):
        screen = Screen(camera, self.SCREEN_W, self.SCREEN_H, 0.0)
        self._stand(canvas, camera)
        k = camera.scale
        canvas.shadow([o + np.array([0, 7 * k]) for o in self.body.silhouette(camera)], 9 * k, 0.22)
        canvas.shadow([o + np.array([10 * k, 22 * k]) for o in self.body.silhouette(camera)], 26 * k, 0.16)
        self._neck(canvas, camera)
        self.body.draw(canvas, camera)
        glass_w, glass_h = self.body.width - 4, self.body.height - 4
        corner = camera.flat(np.array([(-glass_w / 2, -glass_h / 2), (glass_w / 2, glass_h / 2)]))
        canvas.fill(camera.flat(soft_rect(glass_w + 0.4, glass_h + 0.4, 5.2)), mix(self.colour, (0, 0, 0), 0.8))
        canvas.fill(camera.flat(soft_rect(glass_w - 0.6, glass_h - 0.6, 4.8)),
                    linear(*corner[0], *corner[1], [(0, rgb('#26282c')), (0.3, rgb('#0e0f11')), (1, rgb('#141518'))]))
        canvas.stroke(camera.flat(soft_rect(glass_w - 1.4, glass_h - 1.4, 4.5)),
                      linear(*corner[0], *corner[1], [(0, (1, 1, 1, 0.26)), (0.3, (1, 1, 1, 0.04)), (1, (1, 1, 1, 0.10))]),
                      0.3 * k)
        canvas.cut(screen.outline(1.0))
        return screen

    def _neck(self, canvas, camera):
        top, bottom = self.body.height / 2 - 20, self.body.height / 2 + 72
        outline = [(-42, top), (42, top), (50, bottom), (-50, bottom)]
        a, b = camera.flat(np.array([(-50.0, 0.0), (50.0, 0.0)]), -20)
        c = self.colour
        canvas.fill(camera.flat(np.array(outline, float), -20), linear(a[0], 0, b[0], 0, [
            (0, mix(c, (0, 0, 0), 0.38)), (0.06, mix(c, (1, 1, 1), 0.12)), (0.30, mix(c, (1, 1, 1), 0.30)),
            (0.62, mix(c, (0, 0, 0), 0.10)), (0.94, mix(c, (0, 0, 0), 0.26)), (1, mix(c, (1, 1, 1), 0.10))]))
        y0 = camera.flat(np.array([(0.0, self.body.height / 2)]), -20)[0][1]
        y1 = camera.flat(np.array([(0.0, self.body.height / 2 + 46)]), -20)[0][1]
        canvas.fill(camera.flat(np.array(outline, float), -20),
                    linear(0, y0, 0, y1, [(0, (0, 0, 0, 0.62)), (0.35, (0, 0, 0, 0.26)), (1, (0, 0, 0, 0))]))

    def _stand(self, canvas, camera):
        k = camera.scale
        y = self.body.height / 2 + 72
        foot = soft_rect(236, 30, 14.9, centre=(0, y), exponent=2.3)
        for dy, blur, strength in ((6, 3.5, 0.42), (12, 12, 0.26), (16, 26, 0.18)):
            canvas.shadow([camera.flat(foot * np.array([1.02, 1.0]) + np.array([2.0, dy]), -20)], blur * k, strength)
        c = self.colour
        thick = soft_rect(236, 30, 14.9, centre=(0, y + 4.0), exponent=2.3)
        a, b = camera.flat(np.array([(-118.0, y), (118.0, y)]), -20)
        canvas.fill(camera.flat(thick, -20), linear(a[0], 0, b[0], 0, [
            (0, mix(c, (0, 0, 0), 0.5)), (0.12, mix(c, (0, 0, 0), 0.1)), (0.4, mix(c, (0, 0, 0), 0.32)),
            (0.9, mix(c, (0, 0, 0), 0.55)), (1, mix(c, (0, 0, 0), 0.2))]))
        top, bottom = camera.flat(np.array([(0.0, y - 15), (0.0, y + 15)]), -20)[:, 1]
        canvas.fill(camera.flat(foot, -20), linear(a[0], top, b[0], bottom, [
            (0, mix(c, (1, 1, 1), 0.22)), (0.45, mix(c, (0, 0, 0), 0.04)), (1, mix(c, (0, 0, 0), 0.18))]))
        canvas.stroke(camera.flat(soft_rect(235, 29, 14.4, centre=(0, y), exponent=2.3), -20),
                      linear(0, top, 0, bottom, [(0, (1, 1, 1, 0.05)), (0.7, (1, 1, 1, 0.12)), (1, (1, 1, 1, 0.55))]), 0.5 * k)
        contact = soft_rect(112, 9, 4.4, centre=(0, y - 1.0))
        canvas.shadow([camera.flat(contact, -20)], 3.0 * k, 0.5)
