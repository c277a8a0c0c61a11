"""The frames of the starter set, and their definitions."""

import math

import numpy as np

from devices import Display, Phone, Screen, Tablet, glare
from scene import Camera, Canvas

MARKER = 10  # a stored corner is the origin of a 20 x 20 marker; the corner is its centre
PREVIEW = 300.0
CORNERS = ('topLeft', 'topRight', 'bottomLeft', 'bottomRight')


class Frame:
    """A drawn frame: its picture, its screens, and what its definition says."""

    def __init__(self, name, canvas, screens, **flags):
        self.name, self.canvas, self.screens, self.flags = name, canvas, screens, flags
        self.picture_size = None     # the picture's pixels, when they are not the canvas's
        self.rectangle = None        # where the picture is drawn, when that is not the whole canvas
        self.glare = None            # (x, y, RGBA)

    def add_glare(self, strength=0.13):
        self.glare = glare(self.screens[0], self.canvas.width, self.canvas.height, strength)
        return self

    def glare_name(self):
        return self.name.replace('.png', '-glare.png')

    def definition(self, scale=1.0, canvas_size=None):
        """The record for a canvas `scale` times the one drawn."""
        width, height = canvas_size or (round(self.canvas.width * scale), round(self.canvas.height * scale))
        record = {}
        for index, screen in enumerate(self.screens):
            record.update(preview_corners(screen.quad, scale, width, height, '2' if index else ''))
        for index, screen in enumerate(self.screens):
            for corner, point in zip(CORNERS, screen.quad):
                for axis, value in zip('XY', point):
                    record[f"F{corner}{axis}{'2' if index else ''}"] = round(value * scale) - MARKER
        if self.flags.get('noCorner'):
            record['noCorner'] = True
        else:
            record['cornerRadius'] = round(self.screens[0].radius * scale)
        if len(self.screens) > 1:
            record['doubleImage'] = True
        frame_width, frame_height = self.rectangle or (self.canvas.width, self.canvas.height)
        record['frameWidth'], record['frameHeight'] = round(frame_width * scale), round(frame_height * scale)
        record['finalFrameWidth'], record['finalFrameHeight'] = width, height
        if self.glare:
            x, y, pixels = self.glare
            record['overlay'] = self.glare_name()
            record['glareX'], record['glareY'] = round(x * scale), round(y * scale)
            record['glareWidth'] = round(pixels.shape[1] * scale)
            record['glareHeight'] = round(pixels.shape[0] * scale)
        else:
            record['overlay'] = ''
        return record


def preview_corners(quad, scale, width, height, suffix):
    """The corners in the 300-point preview square: the canvas, scaled to fit, about the same centre.

    Each is rounded away from the quad's middle, so that no slit shows beside the bezel.
    """
    fit = PREVIEW / max(width, height)
    left, top = (PREVIEW - width * fit) / 2, (PREVIEW - height * fit) / 2
    points = [(left + x * scale * fit, top + y * scale * fit) for x, y in quad]
    middle = [sum(p[i] for p in points) / 4 for i in (0, 1)]
    record = {}
    for corner, point in zip(CORNERS, points):
        for axis, value, centre in zip('XY', point, middle):
            away = math.floor(value + 0.25) if value < centre else math.ceil(value - 0.25)
            record[f'{corner}{axis}{suffix}'] = away - MARKER
    return record


def level_camera(centre, scale, yaw, pitch, distance, rolls):
    """The camera, among rolls, whose quad's bounding box has the screen's own shape: there a round
    corner of the screen is a round corner of the box, which is what the composition warps."""
    def error(roll):
        camera = Camera(centre, scale, yaw, pitch, roll, distance)
        return abs(Screen(camera, Phone.SCREEN_W, Phone.SCREEN_H, Phone.SCREEN_R).aspect_error)
    roll = min(np.arange(rolls[0], rolls[1], 0.1), key=error)
    return Camera(centre, scale, yaw, pitch, float(roll), distance)


def phone_frame(name, size, camera, phone, reach=1.0):
    canvas = Canvas(*size)
    phone.shadow(canvas, camera, reach)
    return Frame(name, canvas, [phone.draw(canvas, camera)])


def upright(name, size, colour, fill=0.817, lift=0.01, reach=1.0, grid=1):
    """A phone front on, in the middle; `fill` is its share of the canvas's height."""
    width, height = size
    phone = Phone(colour, grid, inset=float(grid))
    scale = fill * height / phone.body.height
    return phone_frame(name, size, Camera((width / 2, height * (0.5 - lift)), scale), phone, reach)


def tilted(name, size, colour, fill=0.88):
    """A phone turned and leaning, seen from close by."""
    width, height = size
    scale = fill * height / 166
    camera = level_camera((width * 0.522, height * 0.489), scale, 34, 19, 400, (6, 30))
    # The far edge shrinks: one and a half pixels of the box are still one pixel there.
    return phone_frame(name, size, camera, Phone(colour, inset=1.5), 0.85)


def duo(name, size, left, right):
    """Two phones at different heights, the right one in front; its shadow falls on the left one."""
    width, height = size
    scale = 0.0047 * height
    canvas = Canvas(*size)
    back, front = Phone(left), Phone(right)
    far = Camera((width * 0.325, height * 0.455), scale * 0.96, 0, 0, -7)
    near = Camera((width * 0.655, height * 0.535), scale * 1.03, 0, 0, 6)
    screens = []
    for phone, camera in ((back, far), (front, near)):
        phone.shadow(canvas, camera)
        screens.append(phone.draw(canvas, camera))
    return Frame(name, canvas, screens)


def display(name, size, colour):
    width, height = size
    canvas = Canvas(*size)
    scale = width * 0.84 / 618
    camera = Camera((width / 2, height * 0.43), scale, distance=2600)
    return Frame(name, canvas, [Display(colour).draw(canvas, camera)], noCorner=True)


def tall(name, size, colour, **flags):
    """A tablet so large that its screen box is 2731 pixels tall or more, where the composition flattens
    the screen at half size, and whatever the warped screen leaves of its box turns black. Front on,
    it leaves nothing but what the body covers."""
    width, height = size
    device = Tablet(colour, grid=2, inset=2.0)
    camera = Camera((width / 2, height * 0.488), 0.885 * height / device.body.height)
    frame = phone_frame(name, size, camera, device, 0.62)
    frame.flags.update(flags)
    assert frame.screens[0].box[3] >= 2731
    return frame
