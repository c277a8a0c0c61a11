"""A small studio: slabs of metal and glass, one camera, one set of lights, drawn with cairo.

Coordinates: a device is described in millimetres, x to the right, y down, z towards the
viewer, its front glass in the plane z = 0. A `Camera` turns that into canvas pixels (y down).
Everything is drawn at SUPERSAMPLE times the canvas size and averaged at the end.
"""

import math

import cairo
import cv2
import numpy as np

SUPERSAMPLE = 2

# The lights, in view space: a large soft box at the upper left, a narrow rim at the right.
KEY = np.array([-0.55, -0.68, 0.48]) / np.linalg.norm([-0.55, -0.68, 0.48])
RIM = np.array([0.93, -0.05, 0.30]) / np.linalg.norm([0.93, -0.05, 0.30])
FILL = np.array([0.25, 0.85, 0.45]) / np.linalg.norm([0.25, 0.85, 0.45])


def rgb(text):
    """'#rrggbb' as three floats."""
    return tuple(int(text[i:i + 2], 16) / 255.0 for i in (1, 3, 5))


def mix(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def rounded_rect(width, height, rx, ry=None, steps=48, centre=(0.0, 0.0)):
    """Closed outline (N x 2) of a rounded rectangle about `centre`, clockwise from the top left."""
    ry = rx if ry is None else ry
    corners = [(-1, -1, math.pi), (1, -1, 1.5 * math.pi), (1, 1, 0.0), (-1, 1, 0.5 * math.pi)]
    points = []
    for sx, sy, start in corners:
        for k in range(steps + 1):
            angle = start + 0.5 * math.pi * k / steps
            points.append((sx * (width / 2 - rx) + rx * math.cos(angle),
                           sy * (height / 2 - ry) + ry * math.sin(angle)))
    return np.array(points) + np.array(centre)


def soft_rect(width, height, radius, steps=48, centre=(0.0, 0.0), exponent=2.35):
    """Like rounded_rect, with corners of continuous curvature (a superellipse quarter)."""
    corners = [(-1, -1, math.pi), (1, -1, 1.5 * math.pi), (1, 1, 0.0), (-1, 1, 0.5 * math.pi)]
    points = []
    for sx, sy, start in corners:
        for k in range(steps + 1):
            angle = start + 0.5 * math.pi * k / steps
            c, s = math.cos(angle), math.sin(angle)
            cx = math.copysign(abs(c) ** (2 / exponent), c)
            cy = math.copysign(abs(s) ** (2 / exponent), s)
            points.append((sx * (width / 2 - radius) + radius * cx,
                           sy * (height / 2 - radius) + radius * cy))
    return np.array(points) + np.array(centre)


def outward_normals(outline):
    """Unit normals of a clockwise outline (y down)."""
    tangent = np.roll(outline, -1, axis=0) - np.roll(outline, 1, axis=0)
    length = np.maximum(np.linalg.norm(tangent, axis=1, keepdims=True), 1e-12)
    tangent = tangent / length
    return np.stack([tangent[:, 1], -tangent[:, 0]], axis=1)


def homography(source, target):
    """3 x 3 matrix that takes four points to four points."""
    rows, right = [], []
    for (x, y), (u, v) in zip(source, target):
        rows.append([x, y, 1, 0, 0, 0, -u * x, -u * y])
        rows.append([0, 0, 0, x, y, 1, -v * x, -v * y])
        right += [u, v]
    return np.append(np.linalg.solve(np.array(rows, float), np.array(right, float)), 1.0).reshape(3, 3)


def project(matrix, points):
    points = np.asarray(points, float)
    out = np.concatenate([points, np.ones((len(points), 1))], axis=1) @ matrix.T
    return out[:, :2] / out[:, 2:3]


class Camera:
    """Turns device millimetres into canvas pixels: roll * pitch * yaw, then a pinhole."""

    def __init__(self, centre, scale, yaw=0.0, pitch=0.0, roll=0.0, distance=900.0):
        self.centre, self.scale, self.distance = centre, scale, distance
        y, p, r = (math.radians(a) for a in (yaw, pitch, roll))
        ry = np.array([[math.cos(y), 0, math.sin(y)], [0, 1, 0], [-math.sin(y), 0, math.cos(y)]])
        rx = np.array([[1, 0, 0], [0, math.cos(p), -math.sin(p)], [0, math.sin(p), math.cos(p)]])
        rz = np.array([[math.cos(r), -math.sin(r), 0], [math.sin(r), math.cos(r), 0], [0, 0, 1]])
        self.rotation = rz @ rx @ ry

    def points(self, xyz):
        v = np.asarray(xyz, float) @ self.rotation.T
        f = self.scale * self.distance / (self.distance - v[:, 2])
        return np.stack([self.centre[0] + v[:, 0] * f, self.centre[1] + v[:, 1] * f], axis=1)

    def flat(self, xy, z=0.0):
        xy = np.asarray(xy, float)
        return self.points(np.concatenate([xy, np.full((len(xy), 1), z)], axis=1))

    def faces_viewer(self, point, normal):
        v = point @ self.rotation.T
        eye = np.array([0, 0, self.distance])
        return np.einsum('ij,ij->i', eye - v, normal @ self.rotation.T) > 0


def metal(colour, normals, satin=1.0):
    """Colour of satin metal under the studio lights for view-space unit normals (N x 3)."""
    view = np.array([0.0, 0.0, 1.0])
    reflected = 2 * (normals @ view)[:, None] * normals - view
    key = np.clip(reflected @ KEY, 0, 1) ** 2.2
    rim = np.clip(reflected @ RIM, 0, 1) ** 9
    fill = np.clip(normals @ FILL, 0, 1)
    top = np.clip(normals @ KEY, 0, 1)
    light = 0.26 + 0.62 * top + 0.20 * fill
    base = np.array(colour)[None, :] * light[:, None]
    shine = satin * (0.62 * key + 0.42 * rim)[:, None]
    return np.clip(base + shine * (0.35 + 0.65 * np.array(colour))[None, :], 0, 1)


class Canvas:
    """A picture being drawn, in canvas pixels."""

    def __init__(self, width, height):
        self.width, self.height = width, height
        self.surface = cairo.ImageSurface(cairo.FORMAT_ARGB32, width * SUPERSAMPLE, height * SUPERSAMPLE)
        self.context = cairo.Context(self.surface)
        self.context.scale(SUPERSAMPLE, SUPERSAMPLE)
        self.context.set_antialias(cairo.ANTIALIAS_BEST)

    def path(self, points):
        c = self.context
        c.new_path()
        c.move_to(*points[0])
        for p in points[1:]:
            c.line_to(*p)
        c.close_path()

    def fill(self, points, source, operator=cairo.OPERATOR_OVER):
        self.path(points)
        self._source(source)
        self.context.set_operator(operator)
        self.context.fill()
        self.context.set_operator(cairo.OPERATOR_OVER)

    def stroke(self, points, source, width):
        self.path(points)
        self._source(source)
        self.context.set_line_width(width)
        self.context.set_line_join(cairo.LINE_JOIN_ROUND)
        self.context.stroke()

    def _source(self, source):
        if isinstance(source, cairo.Pattern):
            self.context.set_source(source)
        elif len(source) == 4:
            self.context.set_source_rgba(*source)
        else:
            self.context.set_source_rgb(*source)

    def cut(self, points):
        """Makes the inside of `points` fully transparent."""
        self.fill(points, (0, 0, 0, 1), cairo.OPERATOR_DEST_OUT)

    def alpha_layer(self, alpha, colour):
        """Composites `colour` through an alpha map of canvas size (float, 0 to 1)."""
        premultiplied = np.empty(alpha.shape + (4,), np.float32)
        for i, channel in enumerate((colour[2], colour[1], colour[0], 1.0)):
            premultiplied[..., i] = alpha * channel
        data = np.ascontiguousarray((premultiplied * 255 + 0.5).astype(np.uint8))
        layer = cairo.ImageSurface.create_for_data(data, cairo.FORMAT_ARGB32, alpha.shape[1], alpha.shape[0])
        c = self.context
        c.save()
        c.set_source_surface(layer, 0, 0)
        c.get_source().set_filter(cairo.FILTER_BILINEAR)
        c.paint()
        c.restore()

    def shadow(self, outlines, blur, strength, colour=(0.03, 0.045, 0.07)):
        """A blurred shadow of the union of `outlines`, fading out before the canvas ends."""
        step = 4
        small = cairo.ImageSurface(cairo.FORMAT_A8, math.ceil(self.width / step), math.ceil(self.height / step))
        c = cairo.Context(small)
        c.scale(1 / step, 1 / step)
        for outline in outlines:
            c.move_to(*outline[0])
            for p in outline[1:]:
                c.line_to(*p)
            c.close_path()
            c.fill()
        small.flush()
        mask = np.ndarray((small.get_height(), small.get_stride()), np.uint8, small.get_data())
        mask = mask[:, :small.get_width()].astype(np.float32) / 255
        mask = cv2.GaussianBlur(mask, (0, 0), blur / step, borderType=cv2.BORDER_CONSTANT)
        mask = cv2.resize(mask, (mask.shape[1] * step, mask.shape[0] * step), interpolation=cv2.INTER_CUBIC)
        mask = np.clip(mask[:self.height, :self.width], 0, 1)
        self.alpha_layer(mask * strength * self._fade(), colour)

    def _fade(self):
        """1 inside, falling smoothly to 0 over the outermost 6 % of the canvas."""
        def ramp(n):
            margin = 0.06 * min(self.width, self.height)
            distance = np.minimum(np.arange(n) + 0.5, n - np.arange(n) - 0.5)
            t = np.clip((distance - 2) / margin, 0, 1)
            return t * t * (3 - 2 * t)
        return np.outer(ramp(self.height), ramp(self.width)).astype(np.float32)

    def pixels(self, width=None, height=None):
        """The finished picture: straight (not premultiplied) RGBA, uint8."""
        self.surface.flush()
        h, w = self.height * SUPERSAMPLE, self.width * SUPERSAMPLE
        data = np.ndarray((h, w, 4), np.uint8, self.surface.get_data(), strides=(self.surface.get_stride(), 4, 1))
        size = (width or self.width, height or self.height)
        return unpremultiply(cv2.resize(data, size, interpolation=cv2.INTER_AREA))


def unpremultiply(bgra):
    alpha = bgra[..., 3:4].astype(np.float32)
    colour = bgra[..., 2::-1].astype(np.float32) * 255 / np.maximum(alpha, 1)
    out = np.concatenate([np.clip(colour + 0.5, 0, 255), alpha], axis=2).astype(np.uint8)
    out[out[..., 3] == 0] = 0
    return out


def linear(x0, y0, x1, y1, stops):
    pattern = cairo.LinearGradient(x0, y0, x1, y1)
    for offset, colour in stops:
        pattern.add_color_stop_rgba(offset, *(tuple(colour) + (1.0,) if len(colour) == 3 else colour))
    return pattern
