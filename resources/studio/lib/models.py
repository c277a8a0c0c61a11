"""Meshes of the devices and props, built inside Blender. Lengths in millimetres, scaled by SCALE."""
import math

import bpy
import numpy as np
from mathutils import Matrix

from devices import DEVICES, FINISHES, body_box

SCALE = 0.01  # Blender units per millimetre


def material(name, colour, metallic=0.0, roughness=0.5, specular=0.5, **extra):
    if name in bpy.data.materials:
        return bpy.data.materials[name]
    result = bpy.data.materials.new(name)
    result.use_nodes = True
    shader = result.node_tree.nodes["Principled BSDF"]
    values = {"Base Color": (*colour, 1), "Metallic": metallic, "Roughness": roughness, "Specular": specular}
    values.update(extra)
    for key, value in values.items():
        shader.inputs[key].default_value = value
    return result


def finish(name):
    colour, metallic, roughness = FINISHES[name]
    return material("finish-" + name, colour, metallic, roughness)


def black_glass():
    return material("black-glass", (0.0035, 0.0035, 0.004), 0, 0.12, 0.15)


def outline(width, height, radius, inset=0.0, segments=14):
    """A rounded rectangle around the origin, counter-clockwise, the same number of points at any inset."""
    w, h = width / 2 - inset, height / 2 - inset
    r = max(radius - inset, 0.05)
    points = []
    for cx, cy, start in ((w - r, h - r, 0), (-w + r, h - r, 90), (-w + r, -h + r, 180), (w - r, -h + r, 270)):
        for k in range(segments + 1):
            angle = math.radians(start + 90 * k / segments)
            points.append((cx + r * math.cos(angle), cy + r * math.sin(angle)))
    return np.array(points)


def mesh_object(name, vertices, faces, look, matrix, smooth=True):
    mesh = bpy.data.meshes.new(name)
    mesh.from_pydata([tuple(v) for v in np.asarray(vertices) * SCALE], [], faces)
    mesh.materials.append(look)
    thing = bpy.data.objects.new(name, mesh)
    bpy.context.scene.collection.objects.link(thing)
    placed = np.array(matrix, float)
    placed[:3, 3] *= SCALE
    thing.matrix_world = Matrix(placed.tolist())
    if smooth:
        mesh.polygons.foreach_set("use_smooth", [True] * len(mesh.polygons))
        mesh.use_auto_smooth = True
        mesh.auto_smooth_angle = math.radians(50)
        modifier = thing.modifiers.new("normals", "WEIGHTED_NORMAL")
        modifier.keep_sharp = True
        modifier.weight = 100
    return thing


def loft(name, rings, look, matrix, close=True):
    """A solid through rings of 3-D points (bottom ring first), with caps when closed."""
    count = len(rings[0])
    faces = []
    for level in range(len(rings) - 1):
        a, b = level * count, (level + 1) * count
        faces += [(a + i, a + (i + 1) % count, b + (i + 1) % count, b + i) for i in range(count)]
    if close:
        faces.append(tuple(reversed(range(count))))
        last = (len(rings) - 1) * count
        faces.append(tuple(last + i for i in range(count)))
    return mesh_object(name, np.concatenate(rings), faces, look, matrix)


def slab(name, size, radius, depth, look, matrix, bevel=1.0, bevel_bottom=None, steps=6, centre=(0, 0, 0), segments=14):
    """A rounded plate with quarter-round edges; its top stands at the centre's z, its bottom depth below."""
    bottom = bevel if bevel_bottom is None else bevel_bottom
    profile = []
    for k in range(steps + 1):
        angle = math.pi / 2 * k / steps
        profile.append((bottom * (1 - math.sin(angle)), -depth + bottom * (1 - math.cos(angle))))
    for k in range(steps + 1):
        angle = math.pi / 2 * k / steps
        profile.append((bevel * (1 - math.cos(angle)), -bevel * (1 - math.sin(angle))))
    rings = []
    for inset, z in profile:
        flat = outline(*size, radius, inset, segments)
        rings.append(np.column_stack([flat, np.full(len(flat), z)]) + np.array(centre))
    return loft(name, rings, look, matrix)


def plate(name, points, z, look, matrix):
    vertices = np.column_stack([points, np.full(len(points), z)])
    return mesh_object(name, vertices, [tuple(range(len(points)))], look, matrix, smooth=False)


def tube(name, path, radius, look, matrix, sides=24):
    """A round rod along a straight path of (centre, radius factor) pairs: knobs, lenses, feet."""
    rings = []
    (start, end) = (np.array(p, float) for p in path)
    axis = (end - start) / np.linalg.norm(end - start)
    helper = np.array((0, 0, 1.0)) if abs(axis[2]) < 0.9 else np.array((1.0, 0, 0))
    u = np.cross(axis, helper)
    u /= np.linalg.norm(u)
    v = np.cross(axis, u)
    edge = min(radius * 0.2, np.linalg.norm(end - start) * 0.4)
    levels = [(start, radius - edge), (start + axis * edge * 0.3, radius - edge * 0.3), (start + axis * edge, radius),
              (end - axis * edge, radius), (end - axis * edge * 0.3, radius - edge * 0.3), (end, radius - edge)]
    turns = np.linspace(0, 2 * math.pi, sides, endpoint=False)
    for centre, r in levels:
        rings.append(centre + r * (np.cos(turns)[:, None] * u + np.sin(turns)[:, None] * v))
    return loft(name, rings, look, matrix)


def dome(name, centre, radius, height, look, matrix, sides=56):
    """A low round cap, so that a lens mirrors more than one spot of the room."""
    turns = np.linspace(0, 2 * math.pi, sides, endpoint=False)
    rings = []
    for angle in np.radians(np.linspace(0, 84, 9)):
        r = radius * math.cos(angle)
        rings.append(np.column_stack([r * np.cos(turns), r * np.sin(turns), np.full(sides, height * math.sin(angle))]) + np.array(centre))
    return loft(name, rings, look, matrix)


def holdout_material():
    name = "holdout"
    if name in bpy.data.materials:
        return bpy.data.materials[name]
    result = bpy.data.materials.new(name)
    result.use_nodes = True
    nodes = result.node_tree.nodes
    nodes.clear()
    hole = nodes.new("ShaderNodeHoldout")
    output = nodes.new("ShaderNodeOutputMaterial")
    result.node_tree.links.new(hole.outputs[0], output.inputs[0])
    return result


def front(device, look, matrix, name):
    """Body, glass and screen of anything flat with a screen; glass lies at z = 0."""
    (x, y, w, h), radius = body_box(device)
    centre = (x + w / 2, y + h / 2, 0)
    rim, depth, bevel = device["rim"], device["depth"], device["bevel"]
    slab(name + "-body", (w, h), radius, depth, look, matrix, bevel=min(bevel, 0.72 * rim), bevel_bottom=bevel,
         centre=(centre[0], centre[1], 0.05))
    seam = material("seam", (0.01, 0.01, 0.011), 0, 0.6, 0.2)
    slab(name + "-seam", (w - 2 * rim + 0.3, h - 2 * rim + 0.3), radius - rim + 0.15, 0.6, seam, matrix, bevel=0.02,
         centre=(centre[0], centre[1], 0.07), steps=2)
    slab(name + "-glass", (w - 2 * rim, h - 2 * rim), max(radius - rim, 0.2), 0.6, black_glass(), matrix,
         bevel=min(0.35, rim * 0.4), centre=(centre[0], centre[1], 0.10), steps=4)


def screen_holdout(device, matrix, name):
    """A hole in the film, slightly inside the screen's edge; the exact edge is cut afterwards."""
    width, height = device["screen"]
    inset = 0.006 * min(width, height)
    top = inset
    if "camera" in device:
        _, cy, _, size = device["camera"]
        top = cy + size / 2 + inset
    flat = outline(width - 2 * inset, height - inset - top, max(device["radius"] * 0.9, 0.1), 0)
    flat[:, 1] -= (top - inset) / 2
    return plate(name + "-screen", flat, 0.13, holdout_material(), matrix)


def camera_eye(device, matrix, name):
    """The front camera: a lens behind the glass, just bright enough to be believed."""
    cx, cy, width, height = device["camera"]
    x = -device["screen"][0] / 2 + cx
    y = device["screen"][1] / 2 - cy
    x += width / 2 - height / 2
    lens = material("lens", (0.004, 0.006, 0.014), 0, 0.05, 0.9)
    ring = material("lens-ring", (0.012, 0.012, 0.014), 0.6, 0.35)
    tube(name + "-ring", ((x, y, 0.0), (x, y, 0.13)), height * 0.36, ring, matrix, sides=40)
    tube(name + "-lens", ((x, y, 0.0), (x, y, 0.15)), height * 0.24, lens, matrix, sides=40)


def side_button(name, x, y, z, length, width, out, look, matrix):
    side = 1 if x > 0 else -1
    turn = np.eye(4)
    turn[:3, 0], turn[:3, 1], turn[:3, 2] = (0, 0, -side), (0, 1, 0), (side, 0, 0)
    turn[:3, 3] = (x, y, z)
    slab(name, (width, length), min(width, length) / 2 * 0.98, 1.2 + out, look, matrix @ turn, bevel=0.35, bevel_bottom=0.05,
         centre=(0, 0, out), steps=4, segments=8)


def phone(item, matrix, name):
    device = DEVICES[item["kind"]]
    look = finish(item["finish"])
    front(device, look, matrix, name)
    if "camera" in device:
        camera_eye(device, matrix, name)
    if device["buttons"]:
        (x, y, w, h), _ = body_box(device)
        middle = -device["depth"] / 2
        side_button(name + "-power", x + w, h * 0.13, middle, 17, 2.6, 0.55, look, matrix)
        side_button(name + "-up", x, h * 0.19, middle, 11, 2.6, 0.55, look, matrix)
        side_button(name + "-down", x, h * 0.10, middle, 11, 2.6, 0.55, look, matrix)
        band = material("band-" + item["finish"], tuple(c * 0.55 for c in FINISHES[item["finish"]][0]), 0.2, 0.5)
        for side in (x + 0.004, x + w - 0.004):
            for height in (y + 13, y + h - 13):
                side_button(f"{name}-band{side:.0f}{height:.0f}", side, height, -3.5, 1.1, 5.0, 0.012, band, matrix)
    screen_holdout(device, matrix, name)


def back_of_phone(item, matrix, name):
    """A phone seen from behind, for company: plain back, a camera island, no screen in the picture."""
    device = DEVICES["phone"]
    look = finish(item["finish"])
    (x, y, w, h), radius = body_box(device)
    depth = device["depth"]
    slab(name + "-body", (w, h), radius, depth, look, matrix, bevel=1.2, bevel_bottom=1.7)
    colour, metallic, _ = FINISHES[item["finish"]]
    panel = material("panel-" + item["finish"], colour, 0.55 * metallic, 0.42)
    turn = np.diag([-1.0, 1, -1, 1])
    turn[2, 3] = -depth
    slab(name + "-panel", (w - 2.2, h - 2.2), radius - 1.1, 0.5, panel, matrix @ turn, bevel=0.3, centre=(0, 0, 0.12), steps=4)
    island = (x + 18, h / 2 - 27)
    slab(name + "-island", (23, 43), 11.4, 1.6, panel, matrix @ turn, bevel=0.8, centre=(*island, 1.5), steps=6)
    lens = material("back-lens", (0.004, 0.007, 0.016), 0, 0.05, 0.6)
    for dy in (10.2, -10.2):
        cx, cy = island[0], island[1] + dy
        tube(f"{name}-ring{dy}", ((cx, cy, 1.0), (cx, cy, 2.5)), 8.2, look, matrix @ turn, sides=64)
        tube(f"{name}-rim{dy}", ((cx, cy, 1.0), (cx, cy, 2.56)), 7.2, black_glass(), matrix @ turn, sides=64)
        tube(f"{name}-iris{dy}", ((cx, cy, 1.0), (cx, cy, 2.60)), 4.7, material("iris", (0.02, 0.021, 0.024), 0.3, 0.4), matrix @ turn, sides=56)
        dome(f"{name}-lens{dy}", (cx, cy, 2.55), 3.8, 1.1, lens, matrix @ turn)
    lamp = material("lamp", (0.75, 0.7, 0.55), 0, 0.25)
    tube(name + "-lamp", ((island[0] + 17, island[1] + 10, 0.1), (island[0] + 17, island[1] + 10, 0.25)), 2.4, lamp, matrix @ turn)


def laptop(item, matrix, name, base):
    device = DEVICES["laptop"]
    look = finish(item["finish"])
    front(device, look, matrix, name)
    screen_holdout(device, matrix, name)
    (x, y, w, h), radius = body_box(device)
    deep, thick = 216.0, 10.5
    slab(name + "-base", (w, deep), 10.5, thick, look, base, bevel=1.6, bevel_bottom=4.0, centre=(0, -deep / 2 + 2, thick), steps=7)
    dark = material("well", (0.006, 0.006, 0.007), 0, 0.6, 0.2)
    key = material("key", (0.022, 0.022, 0.024), 0, 0.42, 0.4)
    top, left, right = -24.0, -w / 2 + 20, w / 2 - 20
    pitch = (right - left) / 14.5
    rows = [(0.62, [1] * 14 + [0.5]), (1, [1] * 13 + [1.5]), (1, [1.5] + [1] * 13), (1, [1.8] + [1] * 11 + [1.7]),
            (1, [2.3] + [1] * 10 + [2.2]), (1, [1.1, 1.1, 1.1, 1.25, 5.4, 1.25, 1.1, 1.1, 1.1])]
    bottom = top - sum(r[0] for r in rows) * pitch
    slab(name + "-well", (right - left + 3.4, top - bottom + 3.4), 3.2, 0.5, dark, base, bevel=0.1,
         centre=((left + right) / 2, (top + bottom) / 2, thick + 0.02), steps=2)
    y_row = top
    for row, (tall, widths) in enumerate(rows):
        x_key, unit = left, (right - left) / sum(widths)
        for column, wide in enumerate(widths):
            size = (wide * unit - 2.5, tall * pitch - 2.5)
            slab(f"{name}-key{row}-{column}", size, 1.7, 0.9, key, base, bevel=0.3, bevel_bottom=0.05, steps=3, segments=4,
                 centre=(x_key + wide * unit / 2, y_row - tall * pitch / 2, thick + 0.75))
            x_key += wide * unit
        y_row -= tall * pitch
    pad = (118, 70)
    pad_centre = (0, bottom - 9 - pad[1] / 2)
    colour, metallic, roughness = FINISHES[item["finish"]]
    groove = material("groove-" + item["finish"], tuple(c * 0.25 for c in colour), 0.5, 0.6)
    touch = material("touch-" + item["finish"], tuple(c * 0.92 for c in colour), metallic, roughness + 0.08)
    slab(name + "-groove", (pad[0] + 0.9, pad[1] + 0.9), 4.4, 0.3, groove, base, bevel=0.02, centre=(*pad_centre, thick + 0.01), steps=2)
    slab(name + "-pad", pad, 4, 0.3, touch, base, bevel=0.05, centre=(*pad_centre, thick + 0.03), steps=2)
    hinge = np.eye(4)
    tube(name + "-hinge", ((-w * 0.40, 1.0, thick - 0.5), (w * 0.40, 1.0, thick - 0.5)), 4.0, dark, base @ hinge, sides=32)


def display(item, matrix, name, base):
    device = DEVICES["display"]
    look = finish(item["finish"])
    front(device, look, matrix, name)
    screen_holdout(device, matrix, name)
    neck = np.eye(4)
    neck[:3, :3] = [[1, 0, 0], [0, 0, -1], [0, 1, 0]]
    slab(name + "-neck", (150, 330), 6, 9, look, base @ neck, bevel=1.6, centre=(0, 165, -38), steps=6)
    slab(name + "-foot", (190, 165), 9, 5.5, look, base, bevel=1.5, centre=(0, 6, 5.5), steps=6)


def television(item, matrix, name, base):
    device = DEVICES["television"]
    look = finish(item["finish"])
    front(device, look, matrix, name)
    screen_holdout(device, matrix, name)
    cloth = material("cloth", (0.03, 0.03, 0.032), 0, 0.85, 0.2)
    slab(name + "-bar", (760, 58), 24, 72, cloth, matrix, bevel=16, bevel_bottom=4,
         centre=(0, -DEVICES["television"]["screen"][1] / 2 - 120, 46), steps=8)


def strap(name, side, width, look, matrix, case):
    """One half of a watch band: a soft cross-section swept along a curve that closes behind the wrist."""
    # Around a wrist of 54 x 52 mm: from under the case to the middle of the far side.
    radius_y, radius_z, middle = 27.0, 26.0, -25.0
    first = math.asin((case / 2 - 3.2) / radius_y)
    path = []
    for k in range(61):
        angle = first + (math.pi - first) * k / 60
        path.append((side * radius_y * math.sin(angle), middle + radius_z * math.cos(angle)))
    path = np.array(path)
    tangent = np.gradient(path, axis=0)
    tangent /= np.linalg.norm(tangent, axis=1)[:, None]
    thick, rings = 2.4, []
    for k, ((y, z), (ty, tz)) in enumerate(zip(path, tangent)):
        across = width * (1 - 0.10 * min(k / 18, 1))
        section = outline(across, thick, 1.1, 0, 5)
        normal = np.array((-tz, ty)) * side
        ring = [(px, y + normal[0] * pz, z + normal[1] * pz) for px, pz in section]
        rings.append(np.array(ring if side > 0 else ring[::-1]))
    return loft(name, rings, look, matrix)


def watch(item, matrix, name):
    device = DEVICES["watch"]
    look = finish(item["finish"])
    (x, y, w, h), radius = body_box(device)
    front(device, look, matrix, name)
    screen_holdout(device, matrix, name)
    band_look = material("strap-" + item.get("strap", "sand"), {"sand": (0.42, 0.33, 0.24), "black": (0.018, 0.018, 0.02),
                         "teal": (0.02, 0.11, 0.11), "white": (0.70, 0.68, 0.64)}[item.get("strap", "sand")], 0, 0.62, 0.3)
    for side in (1, -1):
        strap(f"{name}-strap{side}", side, w * 0.66, band_look, matrix, h)
    ridged = []
    for k in range(72):
        angle = 2 * math.pi * k / 72
        ridged.append((3.5 * (1.0 if k % 2 else 0.965) * math.cos(angle), 3.5 * (1.0 if k % 2 else 0.965) * math.sin(angle)))
    rings = []
    for out, grow in ((0.0, 0.9), (0.4, 1.0), (2.0, 1.0), (2.5, 0.9)):
        rings.append(np.array([(x + w - 0.5 + out, 7.5 + a * grow, -device["depth"] / 2 - 0.2 + b * grow) for a, b in ridged]))
    loft(name + "-crown", rings, look, matrix)
    side_button(name + "-side", x + w - 0.2, -7.5, -device["depth"] / 2, 11, 2.8, 0.5, look, matrix)


PROP_LOOKS = {"stone": ((0.52, 0.50, 0.47), 0.75), "sand": ((0.55, 0.42, 0.31), 0.75), "white": ((0.78, 0.77, 0.75), 0.7),
              "slate": ((0.07, 0.075, 0.08), 0.7), "teal": ((0.03, 0.17, 0.16), 0.65)}


def prop(item, name):
    """Blocks, drums and easels that devices lean on."""
    from optics import pose
    colour, roughness = PROP_LOOKS[item.get("look", "stone")]
    look = material("prop-" + item.get("look", "stone"), colour, 0, roughness, 0.25)
    matrix = pose({"lean": 0, **item})
    width, depth, height = item["size"]
    if item["kind"] == "block":
        slab(name, (width, depth), item.get("radius", 3), height, look, matrix, bevel=item.get("bevel", 1.6), centre=(0, 0, height), steps=6)
    elif item["kind"] == "drum":
        slab(name, (width, depth), min(width, depth) / 2 - 0.01, height, look, matrix, bevel=item.get("bevel", 1.6), centre=(0, 0, height),
             steps=6, segments=32)
