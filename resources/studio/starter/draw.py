#!/usr/bin/python3
"""Draws the sample inputs, the tests' small catalogue, and a catalogue of drawn frames.

    ./draw.py                     the sample inputs, into resources/samples
    ./draw.py --fixtures DIR      a small catalogue with a frame of every kind, for the tests
    ./draw.py --frames DIR        the drawn frames at full size, as a catalogue of their own (main.json, images/)

What it needs is in tools/packages/starter.
"""

import argparse
import json
import pathlib

import numpy as np
from PIL import Image

import frames
import samples
from scene import homography, rgb

RESOURCES = pathlib.Path(__file__).resolve().parents[2]


def save_png(path, pixels):
    Image.fromarray(pixels).save(path, optimize=True)
    print(f'{path.name}: {pixels.shape[1]} x {pixels.shape[0]}, {path.stat().st_size // 1024} KiB')


def save_frame(folder, frame):
    save_png(folder / frame.name, frame.canvas.pixels(*(frame.picture_size or (None, None))))
    if frame.glare:
        save_png(folder / frame.glare_name(), frame.glare[2])


def compose(frame, shots, size, with_glare=True):
    """A quick composition for the previews: straight RGBA, `size` pixels square."""
    import cv2
    k = size / max(frame.canvas.width, frame.canvas.height)
    w, h = round(frame.canvas.width * k), round(frame.canvas.height * k)
    big = (w * 3, h * 3)
    result = Image.new('RGBA', big)
    for screen, shot in zip(frame.screens, shots):
        quad = [(x * 3 * k, y * 3 * k) for x, y in screen.quad]
        sh, sw = shot.shape[:2]
        matrix = homography([(0, 0), (sw, 0), (0, sh), (sw, sh)], quad)
        rgba = np.dstack([shot, np.full(shot.shape[:2], 255, np.uint8)])
        outline = [tuple(p * 3 * k) for p in screen.outline(0.5)]
        mask = np.zeros((big[1], big[0]), np.uint8)
        cv2.fillPoly(mask, [np.round(np.array(outline)).astype(np.int32)], 255, cv2.LINE_AA)
        warped = cv2.warpPerspective(cv2.GaussianBlur(rgba, (0, 0), 1.0), matrix, big, flags=cv2.INTER_AREA)
        warped[..., 3] = mask
        result.alpha_composite(Image.fromarray(warped))
    result.alpha_composite(Image.fromarray(frame.canvas.pixels(*big)))
    if frame.glare and with_glare:
        x, y, pixels = frame.glare
        layer = Image.fromarray(pixels).resize((round(pixels.shape[1] * 3 * k), round(pixels.shape[0] * 3 * k)))
        result.alpha_composite(layer, (round(x * 3 * k), round(y * 3 * k)))
    square = Image.new('RGBA', (size * 3, size * 3))
    square.paste(result, ((size * 3 - big[0]) // 2, (size * 3 - big[1]) // 2))
    return np.array(square.convert('RGBa').resize((size, size), Image.LANCZOS).convert('RGBA'))


def write_catalogue(path, version, rows, definitions):
    """`rows` are (type, description, size, preview, names)."""
    document = {
        'version': version,
        'tableItems': [{'sizeLabel': size, 'typeLabel': kind, 'descLabel': text, 'previewImage': preview}
                       for kind, text, size, preview, _ in rows],
        'viewInfo': {kind: {'images': names} for kind, _, _, _, names in rows},
        'editInfo': definitions,
    }
    path.write_text(json.dumps(document, indent=2, ensure_ascii=False) + '\n', encoding='utf-8')


def draw_samples(folder):
    folder.mkdir(parents=True, exist_ok=True)
    shots = {'screenshot.png': samples.trail_screen(), 'screenshot-2.png': samples.rest_screen(),
             'screenshot-wide.png': samples.studio_screen(),
             'screenshot-tablet.png': samples.recipe_screen()}
    for name, pixels in shots.items():
        save_png(folder / name, pixels)
    Image.fromarray(samples.background()).save(folder / 'background.jpg', quality=87, optimize=True)
    print('background.jpg:', (folder / 'background.jpg').stat().st_size // 1024, 'KiB')


def draw_frames(resources):
    images = resources / 'images'
    images.mkdir(parents=True, exist_ok=True)
    graphite = frames.upright('phone-graphite.png', (3000, 3000), 'graphite').add_glare()
    silver = frames.upright('phone-silver.png', (3000, 3000), 'silver').add_glare()
    sand = frames.upright('phone-sand.png', (3000, 3000), 'sand', grid=2).add_glare()
    tilted = frames.tilted('phone-tilted.png', (3000, 3000), 'silver').add_glare()
    # Its hole is rounded by the picture alone: a very tall screen is flattened at half size, where a radius means another.
    tall = frames.tall('tablet-upright.png', (3000, 3600), 'graphite', noCorner=True).add_glare(0.10)
    pair = frames.duo('phones-crossed.png', (3000, 3000), 'silver', 'graphite')
    desk = frames.display('display-front.png', (3000, 2400), 'silver').add_glare(0.09)

    definitions = {f.name: f.definition() for f in (graphite, silver, tilted, tall, pair, desk)}
    definitions['phone-sand.png'] = sand.definition(0.5)
    definitions['phone-sand-large.png'] = sand.definition()
    for frame in (graphite, silver, sand, tilted, tall, pair, desk):
        save_frame(images, frame)

    one, two, wide = samples.trail_screen(), samples.rest_screen(), samples.studio_screen()
    leaf = samples.recipe_screen()
    previews = {'row-upright.png': (graphite, [one]), 'row-perspective.png': (tilted, [two]),
                'row-sizes.png': (sand, [two]), 'row-tablets.png': (tall, [leaf]),
                'row-pairs.png': (pair, [one, two]), 'row-desk.png': (desk, [wide])}
    for name, (frame, shots) in previews.items():
        save_png(images / name, compose(frame, shots, 285))
    save_png(images / 'row-imported.png', samples.imported_preview(285))

    rows = [
        ('Phones, upright', 'Front on, with a soft shadow. For pages that let the screen speak.', '3000 × 3000',
         'row-upright.png', ['phone-graphite.png', 'phone-silver.png']),
        ('Phones, in perspective', 'Turned towards the light, seen from close by.', '3000 × 3000',
         'row-perspective.png', ['phone-tilted.png']),
        ('Two sizes', 'One frame for the web and, large, for print.', '1500 and 3000',
         'row-sizes.png', ['phone-sand.png', 'phone-sand-large.png']),
        ('Pairs', 'Two phones, two screenshots, one shadow over the other.', '3000 × 3000',
         'row-pairs.png', ['phones-crossed.png']),
        ('Tablets', 'Upright, on a tall canvas that it nearly fills.', '3000 × 3600',
         'row-tablets.png', ['tablet-upright.png']),
        ('Desk', 'A wide display with square corners.', '3000 × 2400',
         'row-desk.png', ['display-front.png']),
        ('Imported', 'Frames of your own. Add them with Options.', '', 'row-imported.png', []),
    ]
    write_catalogue(resources / 'main.json', '1.0', rows, definitions)


def draw_fixtures(folder):
    images = folder / 'images'
    images.mkdir(parents=True, exist_ok=True)
    up = frames.upright('upright.png', (480, 480), 'graphite').add_glare()
    tilt = frames.tilted('tilted.png', (480, 480), 'silver')
    two = frames.duo('duo.png', (520, 480), 'silver', 'graphite')
    pair = frames.upright('pair.png', (480, 480), 'sand', grid=2)
    tall = frames.tall('tall.png', (2520, 3440), 'blue')
    square = frames.display('square.png', (500, 400), 'silver')
    small = frames.upright('small-frame.png', (400, 440), 'white')
    small.rectangle = (400, 440)

    definitions = {f.name: f.definition() for f in (up, tilt, two, tall, square)}
    definitions['pair.png'] = pair.definition(0.5)
    definitions['pair-large.png'] = pair.definition()
    definitions['small-frame.png'] = small.definition(canvas_size=(480, 500))
    for frame in (up, tilt, two, pair, tall, square, small):
        save_frame(images, frame)
    shot = np.empty((420, 194, 3), np.uint8)
    shot[:] = [int(255 * v) for v in rgb('#3ec6be')]
    save_png(images / 'row-phones.png', compose(up, [shot], 95))
    save_png(images / 'row-imported.png', samples.imported_preview(95))
    rows = [
        ('Phones', 'One screen', '480 × 480', 'row-phones.png',
         ['upright.png', 'tilted.png', 'pair.png', 'pair-large.png', 'tall.png', 'small-frame.png']),
        ('Scenes', 'Two screens, and square corners', '520 × 480', 'row-phones.png', ['duo.png', 'square.png']),
        ('Imported', 'Frames of your own', '', 'row-imported.png', []),
    ]
    write_catalogue(folder / 'main.json', '1.0', rows, definitions)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('--fixtures', type=pathlib.Path, metavar='DIR')
    parser.add_argument('--frames', type=pathlib.Path, metavar='DIR')
    options = parser.parse_args()
    if options.fixtures:
        draw_fixtures(options.fixtures)
    if options.frames:
        draw_frames(options.frames)
    if not (options.fixtures or options.frames):
        draw_samples(RESOURCES / 'samples')


if __name__ == '__main__':
    main()
