"""Where things land in the picture: poses, the camera, and the quad of a screen.

Pure arithmetic, shared by the renderer (inside Blender) and by the finishing step (outside), so that
both see the same projection. Lengths are in millimetres, angles in degrees, z points up and the camera
of azimuth 0 stands on the -y side. Picture coordinates are pixels, y down, pixel centres at .5.
"""
import math

import numpy as np


def rotation(axis, degrees):
    c, s = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
    matrix = np.eye(4)
    i, j = {"x": (1, 2), "y": (2, 0), "z": (0, 1)}[axis]
    matrix[i, i] = matrix[j, j] = c
    matrix[i, j], matrix[j, i] = -s, s
    return matrix


def translation(x, y, z):
    matrix = np.eye(4)
    matrix[:3, 3] = (x, y, z)
    return matrix


def pose(item):
    """A device's local frame (x right, y up the screen, z out of the glass) placed in the world."""
    return (
        translation(*item.get("at", (0, 0, 0)))
        @ rotation("z", item.get("yaw", 0))
        @ rotation("x", item.get("lean", 90))
        @ rotation("y", item.get("bank", 0))
        @ rotation("z", item.get("roll", 0))
    )


def apply(matrix, points):
    points = np.asarray(points, float)
    return points @ matrix[:3, :3].T + matrix[:3, 3]


class Camera:
    """A pinhole camera that looks along a direction and slides until its subject fills the canvas."""

    def __init__(self, canvas, azimuth=0, elevation=0, fov=20, roll=0):
        self.width, self.height = canvas
        self.fov = fov
        self.focal = self.width / 2 / math.tan(math.radians(fov) / 2)
        turn = rotation("z", azimuth) @ rotation("x", 90 - elevation) @ rotation("z", roll)
        self.right, self.up, self.back = (turn[:3, k] for k in range(3))
        self.position = np.zeros(3)

    def project(self, points):
        relative = np.asarray(points, float) - self.position
        depth = -(relative @ self.back)
        x = self.width / 2 + self.focal * (relative @ self.right) / depth
        y = self.height / 2 - self.focal * (relative @ self.up) / depth
        return np.stack([x, y], axis=-1)

    def frame(self, points, fill, centre=(0.5, 0.5)):
        """Slides the camera so that the points fill that part of the canvas around that centre."""
        points = np.asarray(points, float)
        middle = points.mean(axis=0)
        distance = 8 * np.ptp(points, axis=0).max()
        shift = np.zeros(2)
        fill_w, fill_h = fill if isinstance(fill, (list, tuple)) else (fill, fill)
        for _ in range(60):
            self.position = middle + self.right * shift[0] + self.up * shift[1] + self.back * distance
            seen = self.project(points)
            low, high = seen.min(axis=0), seen.max(axis=0)
            size = high - low
            wanted = np.array([self.width * centre[0], self.height * centre[1]])
            offset = (low + high) / 2 - wanted
            unit = distance / self.focal
            shift += np.array([offset[0], -offset[1]]) * unit
            distance *= max(size[0] / (self.width * fill_w), size[1] / (self.height * fill_h)) ** 0.9
        return self

    def matrix(self):
        matrix = np.eye(4)
        for column, axis in enumerate((self.right, self.up, self.back, self.position)):
            matrix[:3, column] = axis
        return matrix


def rectangle_to_quad(width, height, quad):
    """The 3 x 3 homography of the rectangle (0, 0, width, height) onto quad (TL, TR, BL, BR)."""
    rows, right = [], []
    corners = [(0, 0), (width, 0), (0, height), (width, height)]
    for (x, y), (u, v) in zip(corners, np.asarray(quad, float)):
        rows += [[x, y, 1, 0, 0, 0, -u * x, -u * y], [0, 0, 0, x, y, 1, -v * x, -v * y]]
        right += [u, v]
    return np.append(np.linalg.solve(np.array(rows), np.array(right)), 1).reshape(3, 3)


def bounding_box(quad):
    quad = np.asarray(quad, float)
    return (*quad.min(axis=0), *np.ptp(quad, axis=0))


def transform(matrix, x, y):
    w = matrix[2, 0] * x + matrix[2, 1] * y + matrix[2, 2]
    u = (matrix[0, 0] * x + matrix[0, 1] * y + matrix[0, 2]) / w
    v = (matrix[1, 0] * x + matrix[1, 1] * y + matrix[1, 2]) / w
    return u, v


TALL = 2731  # from this height of its box on, the application flattens a screen at half size, on black


class Screen:
    """One screen in one picture: its whole-pixel quad and the rounded outline that the hole follows.

    The hole is derived from the rounded quad, not from the unrounded projection, so that hole and
    screenshot agree by construction; the bezel takes up the fraction of a pixel between the two.
    """

    def __init__(self, quad, size, radius):
        self.exact = np.asarray(quad, float)
        self.quad = np.round(self.exact)
        tall = np.ptp(self.quad[:, 1]) >= TALL
        if tall:  # halves must be whole pixels: the upright quad gets an even width and height
            low = self.quad.min(axis=0)
            self.quad = low + 2 * np.round((self.quad - low) / 2)
        self.size = size  # of the glass area, millimetres
        self.box = bounding_box(self.quad)
        self.to_picture = rectangle_to_quad(size[0], size[1], self.quad)
        self.to_screen = np.linalg.inv(self.to_picture)
        self.radius = radius  # of the hole, millimetres
        # The application rounds a circle in the units of the bounding box, which is an ellipse on the
        # device: nearly the largest that cuts no more than the hole's own corner does. Nearly, so that
        # the screenshot is whole where the hole's corner begins to leave the edge.
        fitting = min(radius * self.box[2] / size[0], radius * self.box[3] / size[1])
        self.corner_radius = int(0.92 * fitting)

    def scaled(self, factor):
        other = Screen(self.quad * factor, self.size, self.radius)
        other.corner_radius = self.corner_radius * factor
        return other

    def grid(self, margin=4, canvas=None):
        """Pixel centres around the quad: (x0, y0, X, Y, U, V) with U, V in screen millimetres."""
        x0, y0 = np.floor(self.quad.min(axis=0)).astype(int) - margin
        x1, y1 = np.ceil(self.quad.max(axis=0)).astype(int) + margin
        if canvas is not None:
            x0, y0 = max(x0, 0), max(y0, 0)
            x1, y1 = min(x1, canvas[0]), min(y1, canvas[1])
        xs, ys = np.meshgrid(np.arange(x0, x1) + 0.5, np.arange(y0, y1) + 0.5)
        return x0, y0, xs, ys, *transform(self.to_screen, xs, ys)

    def distance(self, u, v, radius_x, radius_y=None):
        """Signed distance in pixels, positive inside, to the screen's outline with those corner radii."""
        width, height = self.size
        radius_y = radius_x if radius_y is None else radius_y
        x, y = transform(self.to_picture, u, v)
        corners = {"tl": self.quad[0], "tr": self.quad[1], "bl": self.quad[2], "br": self.quad[3]}
        result = np.full(u.shape, np.inf)
        for a, b in (("tl", "tr"), ("tr", "br"), ("br", "bl"), ("bl", "tl")):
            (ax, ay), (bx, by) = corners[a], corners[b]
            length = math.hypot(bx - ax, by - ay)
            result = np.minimum(result, ((bx - ax) * (y - ay) - (by - ay) * (x - ax)) / length)
        if radius_x > 0 and radius_y > 0:
            du = np.maximum(np.maximum(radius_x - u, u - (width - radius_x)), 0) / radius_x
            dv = np.maximum(np.maximum(radius_y - v, v - (height - radius_y)), 0) / radius_y
            reach = np.hypot(du, dv)
            slope_y, slope_x = np.gradient(reach)
            slope = np.maximum(np.hypot(slope_x, slope_y), 1e-9)
            in_corner = (du > 0) & (dv > 0)
            result = np.where(in_corner, np.minimum(result, (1 - reach) / slope), result)
        return result

    def pill_distance(self, u, v, pill):
        """Signed distance in pixels, positive inside, to a pill (cx, cy, width, height) on the glass."""
        cx, cy, width, height = pill
        radius = min(width, height) / 2
        du = np.maximum(np.abs(u - cx) - (width / 2 - radius), 0)
        dv = np.maximum(np.abs(v - cy) - (height / 2 - radius), 0)
        reach = np.hypot(du, dv)
        slope_y, slope_x = np.gradient(reach)
        return (radius - reach) / np.maximum(np.hypot(slope_x, slope_y), 1e-9)
