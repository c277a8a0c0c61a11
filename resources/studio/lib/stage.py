"""Runs inside Blender: builds one scene and renders its passes into float files.

blender -b --factory-startup -P stage.py -- SCENE OUTDIR SCALE SAMPLES THREADS
"""
import math
import os
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import bpy  # noqa: E402
import numpy as np  # noqa: E402
from mathutils import Matrix, Vector  # noqa: E402

import models  # noqa: E402
import scenes  # noqa: E402
from models import SCALE  # noqa: E402


def area_light(name, position, target, size, power, colour=(1, 1, 1), spread=180):
    light = bpy.data.lights.new(name, "AREA")
    light.shape = "RECTANGLE"
    light.size, light.size_y = size
    light.energy = power
    light.color = colour
    light.spread = math.radians(spread)
    thing = bpy.data.objects.new(name, light)
    thing.location = position
    thing.rotation_euler = (Vector(target) - Vector(position)).to_track_quat("-Z", "Y").to_euler()
    bpy.context.scene.collection.objects.link(thing)
    return thing


def world(strength):
    """A dim studio: brighter above than below, so that metal has something to show."""
    room = bpy.data.worlds.new("room")
    bpy.context.scene.world = room
    room.use_nodes = True
    nodes, links = room.node_tree.nodes, room.node_tree.links
    background = nodes["Background"]
    coordinates = nodes.new("ShaderNodeTexCoord")
    split = nodes.new("ShaderNodeSeparateXYZ")
    ramp = nodes.new("ShaderNodeMapRange")
    ramp.inputs["From Min"].default_value, ramp.inputs["From Max"].default_value = -0.4, 0.9
    ramp.inputs["To Min"].default_value, ramp.inputs["To Max"].default_value = 0.25 * strength, 1.1 * strength
    links.new(coordinates.outputs["Generated"], split.inputs[0])
    links.new(split.outputs["Z"], ramp.inputs["Value"])
    links.new(ramp.outputs[0], background.inputs["Strength"])
    background.inputs["Color"].default_value = (0.93, 0.97, 1.0, 1)


def lights(subject, reach, kind):
    """One large soft box from the upper left, a rim from the right, a gentle fill; sizes follow the subject."""
    middle = np.array(subject)
    def at(x, y, z):
        return tuple(middle + reach * np.array((x, y, z)))
    power = reach * reach
    if kind == "wall":
        area_light("key", at(-1.6, -2.4, 2.2), middle, (1.9 * reach, 1.9 * reach), 58 * power, (1, 0.985, 0.96))
        area_light("rim", at(2.0, -0.55, 0.4), middle, (0.5 * reach, 2.4 * reach), 12 * power, (0.95, 0.98, 1))
        area_light("edge", at(-2.0, -0.5, 0.6), middle, (0.5 * reach, 2.4 * reach), 10 * power)
        area_light("fill", at(0.6, -3.2, -0.4), middle, (2.5 * reach, 2.5 * reach), 9 * power)
    else:
        area_light("key", at(-1.7, -1.0, 2.6), middle, (2.0 * reach, 2.0 * reach), 60 * power, (1, 0.985, 0.96))
        area_light("rim", at(2.5, 1.0, 1.1), middle, (0.8 * reach, 2.4 * reach), 24 * power, (0.95, 0.98, 1))
        area_light("card", at(-0.3, 3.2, 1.5), middle, (5.0 * reach, 1.6 * reach), 26 * power)
        area_light("fill", at(0.8, -3.0, 0.8), middle, (2.6 * reach, 2.0 * reach), 9 * power)


def ground(kind, wall_y):
    surface = models.material("ground", (0.62, 0.62, 0.62), 0, 0.9, 0.1)
    things = []
    size = 60000.0
    flat = np.array([(-size, -size), (size, -size), (size, size), (-size, size)])
    if kind in ("floor", "both"):
        things.append(models.plate("floor", flat, 0, surface, np.eye(4)))
    if kind in ("wall", "both"):
        turn = np.eye(4)
        turn[:3, :3] = [[1, 0, 0], [0, 0, -1], [0, 1, 0]]
        turn[1, 3] = wall_y
        things.append(models.plate("wall", flat, 0, surface, turn))
    return things


BUILDERS = {"laptop": models.laptop, "display": models.display, "television": models.television}


def build(stage):
    for index, (item, matrix, base) in enumerate(stage.devices):
        name = f"device{index}"
        if item["kind"] in BUILDERS:
            BUILDERS[item["kind"]](item, matrix, name, base)
        elif item["kind"] == "watch":
            models.watch(item, matrix, name)
        elif item["kind"] == "back":
            models.back_of_phone(item, matrix, name)
        else:
            models.phone(item, matrix, name)
    for index, item in enumerate(stage.scene.get("prop", [])):
        models.prop(item, f"prop{index}")


def set_camera(camera):
    data = bpy.data.cameras.new("camera")
    data.sensor_fit = "HORIZONTAL"
    data.angle = math.radians(camera.fov)
    data.clip_start, data.clip_end = 0.05, 2000
    thing = bpy.data.objects.new("camera", data)
    matrix = camera.matrix()
    matrix[:3, 3] *= SCALE
    thing.matrix_world = Matrix(matrix.tolist())
    bpy.context.scene.collection.objects.link(thing)
    bpy.context.scene.camera = thing


def configure(samples, threads):
    scene = bpy.context.scene
    scene.render.engine = "CYCLES"
    scene.render.film_transparent = True
    scene.render.threads_mode, scene.render.threads = "FIXED", threads
    scene.render.use_persistent_data = False
    scene.render.image_settings.file_format = "OPEN_EXR"
    scene.render.image_settings.color_mode = "RGBA"
    scene.render.image_settings.color_depth = "32"
    scene.view_settings.view_transform = "Standard"
    cycles = scene.cycles
    cycles.samples = samples
    cycles.use_adaptive_sampling = True
    cycles.adaptive_threshold = 0.012
    cycles.adaptive_min_samples = 12
    cycles.use_denoising = False
    cycles.max_bounces = 4
    cycles.diffuse_bounces, cycles.glossy_bounces = 2, 3
    cycles.transmission_bounces = 0
    cycles.caustics_reflective = cycles.caustics_refractive = False
    cycles.sample_clamp_indirect = 2.0
    cycles.sample_clamp_direct = 12.0
    cycles.blur_glossy = 0.6
    cycles.seed = 7


def shoot(size, path):
    scene = bpy.context.scene
    scene.render.resolution_x, scene.render.resolution_y = size
    scene.render.resolution_percentage = 100
    scene.render.filepath = path
    start = time.time()
    bpy.ops.render.render(write_still=True)
    print(f"PASS {os.path.basename(path)} {size[0]}x{size[1]} {time.time() - start:.1f}", flush=True)


def border(stage):
    """Renders only the part of the canvas that the devices and props can touch."""
    scene = bpy.context.scene
    things = [o for o in scene.objects if o.type == "MESH" and o.visible_camera]
    corners = [np.array(o.matrix_world @ Vector(c)) / SCALE for o in things for c in o.bound_box]
    seen = stage.camera.project(np.array(corners)) / np.array(stage.canvas)
    low, high = np.clip(seen.min(axis=0) - 0.01, 0, 1), np.clip(seen.max(axis=0) + 0.01, 0, 1)
    scene.render.use_border, scene.render.use_crop_to_border = True, False
    scene.render.border_min_x, scene.render.border_max_x = low[0], high[0]
    scene.render.border_min_y, scene.render.border_max_y = 1 - high[1], 1 - low[1]


def glow(name, colour):
    result = bpy.data.materials.new(name)
    result.use_nodes = True
    nodes = result.node_tree.nodes
    nodes.clear()
    emission = nodes.new("ShaderNodeEmission")
    emission.inputs[0].default_value = (*colour, 1)
    output = nodes.new("ShaderNodeOutputMaterial")
    result.node_tree.links.new(emission.outputs[0], output.inputs[0])
    return result


def main():
    name, folder, scale, samples, threads = sys.argv[sys.argv.index("--") + 1:]
    scale, samples, threads = float(scale), int(samples), int(threads)
    scene = scenes.load(name)
    stage = scenes.Stage(scene, scale)
    for thing in list(bpy.data.objects):
        bpy.data.objects.remove(thing)
    configure(samples, threads)
    build(stage)
    set_camera(stage.camera)
    kind = scene.get("ground", "floor")
    things = ground(kind, scene.get("wall", 20))
    points = np.concatenate([stage.outline(*device) for device in stage.devices if device[0].get("framed", True)])
    reach = np.ptp(points, axis=0).max() * SCALE
    lights((points.min(axis=0) + points.max(axis=0)) / 2 * SCALE, reach, "wall" if kind == "wall" else "floor")
    world(0.6)

    objects = [o for o in bpy.data.objects if o.type == "MESH" and o not in things]
    for thing in things:
        thing.visible_camera = False
    border(stage)
    shoot(stage.canvas, os.path.join(folder, name + ".beauty.exr"))

    for thing in things:
        thing.visible_camera = True
        thing.is_shadow_catcher = True
    hidden = [o for o in objects if o.name.endswith("-screen")]
    for thing in objects:
        thing.visible_camera = False
    for thing in hidden:
        bpy.data.objects.remove(thing)
    objects = [o for o in objects if o not in hidden]
    bpy.context.scene.render.use_border = False
    settings = bpy.context.scene.cycles
    settings.adaptive_threshold, settings.adaptive_min_samples = 0.008, 16
    settings.samples = min(64, samples)
    # Shadows are soft: a small picture of them, seen through nothing, is enlarged under the device afterwards.
    shrink = min(1.0, scene.get("shadow_side", 250) / max(stage.canvas))
    shoot(tuple(max(1, int(round(side * shrink))) for side in stage.canvas), os.path.join(folder, name + ".shadow.exr"))

    if len(stage.devices) > 1 or scene.get("mask"):
        for thing in things + [o for o in bpy.data.objects if o.type == "LIGHT"]:
            bpy.data.objects.remove(thing)
        bpy.context.scene.world = bpy.data.worlds.new("dark")
        bpy.context.scene.world.use_nodes = False
        bpy.context.scene.world.color = (0, 0, 0)
        looks = {0: glow("none", (0, 0, 0)), 1: glow("one", (1, 0, 0)), 2: glow("two", (0, 1, 0))}
        for thing in objects:
            thing.visible_camera = True
            number = 0
            if thing.name.endswith("-glass") or thing.name.endswith("-ring") or thing.name.endswith("-lens"):
                number = stage.devices[int(thing.name[6:].split("-")[0])][0].get("screen", 0) if thing.name.startswith("device") else 0
            thing.data.materials.clear()
            thing.data.materials.append(looks[number])
        cycles = bpy.context.scene.cycles
        cycles.max_bounces = 0
        cycles.samples, cycles.adaptive_min_samples, cycles.adaptive_threshold = 96, 6, 0.02
        border(stage)
        shoot(stage.canvas, os.path.join(folder, name + ".mask.exr"))


main()
