"""Reads a scene description and says where its devices, camera and screens are."""
import os
import tomllib

import numpy as np

from devices import DEVICES, hull, screen_corners
from optics import Camera, Screen, apply, pose, rotation, translation

HERE = os.path.dirname(os.path.abspath(__file__))
MARKER = 10  # a stored corner is the top-left of a 20 x 20 marker around the corner itself
SCENES = os.path.join(os.path.dirname(HERE), "scenes")


def names():
    """All scenes, in the order of the catalogue."""
    with open(os.path.join(SCENES, "order.toml"), "rb") as handle:
        rows = tomllib.load(handle)["row"]
    return [name for row in rows for name in row["scenes"]]


def rows():
    with open(os.path.join(SCENES, "order.toml"), "rb") as handle:
        return tomllib.load(handle)["row"]


def load(name):
    with open(os.path.join(SCENES, name + ".toml"), "rb") as handle:
        scene = tomllib.load(handle)
    scene["name"] = name
    return scene


def stand_pose(item):
    """(pose of the screen, pose of the thing's foot on the floor) of one device."""
    if item["kind"] == "laptop":
        base = translation(*item.get("at", (0, 0, 0))) @ rotation("z", item.get("yaw", 0))
        lift = DEVICES["laptop"]["screen"][1] / 2 + DEVICES["laptop"]["bezel"][3]
        lid = base @ translation(0, 3.5, 10.5) @ rotation("x", 180 - item.get("open", 112)) @ translation(0, lift + 1.5, 2.4)
        return lid, base
    if item["kind"] == "display":
        base = translation(*item.get("at", (0, 0, 0))) @ rotation("z", item.get("yaw", 0))
        middle = item.get("height", 350)
        return base @ translation(0, -14, middle) @ rotation("x", 90 - item.get("tilt", 0)), base
    matrix = pose(item)
    return matrix, matrix


class Stage:
    """A scene with everything placed: devices, camera, and the screens in picture coordinates."""

    def __init__(self, scene, scale=1.0):
        self.scene, self.scale = scene, scale
        self.canvas = tuple(int(round(side * scale)) for side in scene["canvas"])
        view = scene.get("camera", {})
        self.camera = Camera(self.canvas, view.get("azimuth", 0), view.get("elevation", 0), view.get("fov", 20), view.get("roll", 0))
        self.devices, points = [], []
        for item in scene["device"]:
            screen_pose, base = stand_pose(item)
            self.devices.append((item, screen_pose, base))
            if item.get("framed", True):
                points.append(self.outline(item, screen_pose, base))
        for item in scene.get("prop", []):
            if item.get("framed", False):
                width, depth, height = item["size"]
                box = [(x, y, z) for x in (-width / 2, width / 2) for y in (-depth / 2, depth / 2) for z in (0, height)]
                points.append(apply(pose({"lean": 0, **item}), box))
        self.camera.frame(np.concatenate(points), view.get("fill", 0.8), view.get("centre", (0.5, 0.5)))

    @staticmethod
    def outline(item, screen_pose, base):
        kind = "phone" if item["kind"] == "back" else item["kind"]
        points = [apply(screen_pose, hull(kind, DEVICES[kind]))]
        if kind == "laptop":
            points.append(apply(base, [(x, y, z) for x in (-150, 150) for y in (-214, 2) for z in (0, 10)]))
        if kind == "display":
            points.append(apply(base, [(x, y, 0) for x in (-95, 95) for y in (-75, 85)]))
        if kind == "watch":
            points.append(apply(screen_pose, [(0, y, -z) for y in (-27, 27) for z in (0, 51)]))
        if kind == "television":
            points.append(apply(screen_pose, [(x, -460, 0) for x in (-380, 380)]))
        return np.concatenate(points)

    def quad(self, number):
        item, screen_pose, _ = self.screen_device(number)
        seen = self.camera.project(apply(screen_pose, screen_corners(DEVICES[item["kind"]])))
        return seen

    def screen_device(self, number):
        for item, screen_pose, base in self.devices:
            if item.get("screen", 0) == number:
                return item, screen_pose, base
        raise KeyError(f"{self.scene['name']}: no device with screen {number}")

    def screens(self):
        """Screens 1 and, where there is one, 2."""
        if self.scale > 1:  # a larger printing of the same picture: the same corners, multiplied
            return [screen.scaled(int(self.scale)) for screen in Stage(self.scene).screens()]
        result = []
        for number in (1, 2):
            if not any(item.get("screen", 0) == number for item, _, _ in self.devices):
                break
            item, _, _ = self.screen_device(number)
            device = DEVICES[item["kind"]]
            result.append(Screen(self.quad(number), device["screen"], device["radius"]))
        return result


def definition(scene, factor=1):
    """The record of one mockup as the catalogue carries it; factor 1 or that of the "-large" printing."""
    from finish import glare_box
    stage = Stage(scene)
    width, height = (side * factor for side in stage.canvas)
    record = {}
    shrink = 300 / max(width, height)
    left, top = (300 - width * shrink) / 2, (300 - height * shrink) / 2
    corners = ("topLeft", "topRight", "bottomLeft", "bottomRight")
    screens = [screen.scaled(factor) if factor > 1 else screen for screen in stage.screens()]
    for suffix, screen in zip(("", "2"), screens):
        for corner, (x, y) in zip(corners, screen.quad):
            record[f"{corner}X{suffix}"] = int(round(left + x * shrink)) - MARKER
            record[f"{corner}Y{suffix}"] = int(round(top + y * shrink)) - MARKER
        for corner, (x, y) in zip(corners, screen.quad):
            record[f"F{corner}X{suffix}"] = int(x) - MARKER
            record[f"F{corner}Y{suffix}"] = int(y) - MARKER
    record["cornerRadius"] = min(screen.corner_radius for screen in screens)
    record["noCorner"] = record["cornerRadius"] == 0
    record["doubleImage"] = len(screens) == 2
    box = glare_box(stage) if "glare" in scene else (0, 0, 0, 0)
    record["overlay"] = scene["name"] + "-glare.png" if "glare" in scene else ""
    for key, value in zip(("glareX", "glareY", "glareWidth", "glareHeight"), box):
        record[key] = value * factor
    record["frameWidth"], record["frameHeight"] = width, height
    record["finalFrameWidth"], record["finalFrameHeight"] = width, height
    return record
