// Recordings that come out of dice: maps of every kind, clips, borders, tiny pictures, recordings inside recordings.
// The dice are a random generator in tests and the fuzzer's bytes in the fuzz target. Nothing here asks the mathematics
// library, and dice are thrown in the order of the text (which arguments of a call are not), so that every machine
// makes the same recordings.
#pragma once

#include "geometry/Quad.h"
#include "platform/graphics/Rasterizer.h"
#include "platform/graphics/Recording.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <functional>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace quillomat::testing {

/// Numbers below a limit, from any source of bytes.
class Dice {
public:
    explicit Dice(std::function<std::uint8_t()> byte) : byte_(std::move(byte)) {}
    explicit Dice(unsigned seed)
        : byte_([random = std::mt19937(seed)]() mutable { return static_cast<std::uint8_t>(random() >> 8); }) {}

    [[nodiscard]] std::uint8_t byte() { return byte_(); }
    [[nodiscard]] bool chance(int of) { return below(of) == 0; }
    [[nodiscard]] int below(int limit) {
        const int high = byte();
        return (high << 8 | byte()) % limit;
    }
    [[nodiscard]] int between(int least, int most) { return least + below(most - least + 1); }

    /// Mostly what drawings hold, now and then what breaks them.
    [[nodiscard]] double number(double reach) {
        switch (below(24)) {
        case 0:
            return special();
        case 1:
            return std::bit_cast<double>(eightBytes());
        case 2:
        case 3:
            return between(-4, 4);
        default:
            return (between(-32768, 32767)) / 32768.0 * reach;
        }
    }

    [[nodiscard]] double special() {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        constexpr double specials[] = {0.0,      -0.0,      1e-300,       -1e300,
                                       1e300,    1e17,      1e-17,        5e-324,
                                       infinity, -infinity, 2147483648.0, std::numeric_limits<double>::quiet_NaN()};
        return specials[below(static_cast<int>(std::size(specials)))];
    }

private:
    [[nodiscard]] std::uint64_t eightBytes() {
        std::uint64_t bits = 0;
        for (int i = 0; i < 8; ++i) {
            bits = bits << 8 | byte();
        }
        return bits;
    }

    std::function<std::uint8_t()> byte_;
};

/// Stripes, steps and noise of its own colours: opaque, clear in places, or mixed.
inline Bitmap dicedBitmap(Dice& dice, PixelSize size) {
    Bitmap bitmap(size);
    const int kind = dice.below(4);
    std::minstd_rand noise(static_cast<unsigned>(dice.below(1000)) + 1);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            std::uint8_t* const pixel = bitmap.row(y) + static_cast<std::ptrdiff_t>(x) * 4;
            const unsigned random = static_cast<unsigned>(noise());
            const unsigned alpha = kind == 0                  ? 255U
                                   : (x / 3 + y / 2) % 3 == 0 ? 0U
                                   : kind == 1                ? 255U
                                                              : random >> 8 & 255U;
            const unsigned stripe = (x / 2 + y) % 2 == 0 ? 250U : 20U;
            pixel[0] = static_cast<std::uint8_t>(stripe * alpha / 255);
            pixel[1] = static_cast<std::uint8_t>((random >> 16 & 255U) * alpha / 255);
            pixel[2] = static_cast<std::uint8_t>(static_cast<unsigned>(x * 255 / size.width) * alpha / 255);
            pixel[3] = static_cast<std::uint8_t>(alpha);
        }
    }
    return bitmap;
}

inline Rect dicedRect(Dice& dice, double reach) {
    if (dice.chance(16)) {
        return Rect{{dice.number(reach), dice.number(reach)}, {dice.number(reach), dice.number(reach)}};
    }
    const int most = static_cast<int>(reach);
    return Rect{{static_cast<double>(dice.between(-8, 8)), static_cast<double>(dice.between(-8, 8))},
                {dice.between(1, most) / 2.0, dice.between(1, most) / 2.0}};
}

/// Shifts, scales, affine and projective maps, maps onto quads, and nine numbers of any kind.
inline Homography dicedMap(Dice& dice, double reach) {
    Homography map;
    switch (dice.below(6)) {
    case 0:
        map.m[6] = dice.between(-20, 60);
        map.m[7] = dice.between(-20, 60);
        break;
    case 1:
        map.m[0] = dice.between(-64, 192) / 64.0;
        map.m[4] = dice.between(-64, 192) / 64.0;
        map.m[6] = dice.between(-640, 1280) / 32.0;
        map.m[7] = dice.between(-640, 1280) / 32.0;
        break;
    case 2:
        for (const std::size_t i : {0U, 1U, 3U, 4U}) {
            map.m[i] = dice.between(-128, 128) / 64.0;
        }
        map.m[6] = dice.number(reach);
        map.m[7] = dice.number(reach);
        break;
    case 3: {
        const auto corner = [&](double x, double y) {
            return Point{x + dice.between(-400, 400) / 16.0, y + dice.between(-400, 400) / 16.0};
        };
        const Quad quad{corner(5, 5), corner(70, 5), corner(5, 70), corner(70, 70)};
        map = Homography::fromTransform3D(rectToQuad(makeRect(0, 0, reach / 2, reach / 2), quad.topLeft, quad.topRight,
                                                     quad.bottomLeft, quad.bottomRight));
        break;
    }
    case 4:
        for (double& number : map.m) {
            number = dice.between(-96, 96) / 64.0;
        }
        map.m[2] = dice.between(-64, 64) / 4096.0;
        map.m[5] = dice.between(-64, 64) / 4096.0;
        map.m[8] = dice.between(1, 128) / 64.0;
        break;
    default:
        for (double& number : map.m) {
            number = dice.number(reach);
        }
    }
    return map;
}

inline Recording dicedRecording(Dice& dice, int depth = 0);

inline Image dicedPicture(Dice& dice, int depth) {
    if (depth < 2 && dice.chance(5)) {
        return imageOfRecording(dicedRecording(dice, depth + 1));
    }
    const int most = dice.chance(3) ? 90 : 9;
    const int width = dice.between(1, most);
    return Image::fromBitmap(dicedBitmap(dice, {width, dice.between(1, most)}));
}

inline LayerDraw dicedDraw(Dice& dice, PixelSize canvas, int depth) {
    const double reach = 2 * std::max(canvas.width, canvas.height);
    const auto color = [&] {
        const auto part = [&] { return dice.chance(20) ? dice.number(2) : dice.below(256) / 255.0; };
        const double red = part(), green = part(), blue = part();
        return Color{red, green, blue, dice.chance(2) ? 1 : part()};
    };
    LayerDraw draw;
    draw.map = dicedMap(dice, reach);
    draw.shape.rect = dicedRect(dice, reach);
    draw.shape.radius = dice.chance(2) ? 0 : dice.number(reach / 4);
    if (dice.chance(3)) {
        draw.fill = color();
    }
    if (!dice.chance(5)) {
        draw.picture = dicedPicture(dice, depth);
        draw.pictureRect = dice.chance(3) ? dicedRect(dice, reach) : draw.shape.rect;
        if (dice.chance(3)) { // pixel for pixel
            draw.pictureRect.size = {static_cast<double>(draw.picture.pixelSize().width),
                                     static_cast<double>(draw.picture.pixelSize().height)};
        }
    }
    draw.filter = dice.chance(2) ? PictureFilter::smooth : PictureFilter::area;
    if (dice.chance(4)) {
        draw.borderWidth = dice.number(6);
        draw.borderColor = color();
    }
    draw.opacity = dice.chance(3) ? dice.number(1.5) : 1;
    for (int clips = dice.chance(3) ? dice.between(1, 3) : 0; clips > 0; --clips) {
        const Homography map = dicedMap(dice, reach);
        const Rect rect = dicedRect(dice, reach);
        draw.clips.push_back({map, {rect, dice.chance(2) ? 0 : dice.number(reach / 4)}});
    }
    return draw;
}

inline Recording dicedRecording(Dice& dice, int depth) {
    const int width = dice.between(1, 90);
    Recording recording({width, dice.between(1, 90)});
    for (int draws = dice.between(1, 4); draws > 0; --draws) {
        recording.add(dicedDraw(dice, recording.size(), depth));
    }
    return recording;
}

/// FNV-1a over the pixels: for telling pictures apart in a line of text.
inline std::uint64_t hashOf(const Bitmap& bitmap) {
    std::uint64_t hash = 14695981039346656037U;
    for (const std::uint8_t byte : bitmap.bytes()) {
        hash = (hash ^ byte) * 1099511628211U;
    }
    return hash;
}

struct NamedRecording {
    std::string name;
    Recording recording;
};

/// What mockups are made of, larger than what dice make, and a hundred throws of the dice.
inline std::vector<NamedRecording> recordingsForEveryMachine() {
    std::vector<NamedRecording> all;
    Dice dice(7);
    const auto picture = [&dice](int width, int height) {
        return Image::fromBitmap(dicedBitmap(dice, {width, height}));
    };
    const auto onto = [&](const std::string& name, const Quad& quad, int width, int height) {
        Recording recording({331, 257});
        LayerDraw background;
        background.shape = {makeRect(0, 0, 331, 257), 0};
        background.picture = picture(width / 2 + 3, height / 3 + 3);
        background.pictureRect = background.shape.rect;
        background.filter = PictureFilter::smooth;
        recording.add(background);
        LayerDraw draw;
        draw.shape = {makeRect(0, 0, 200, 300), 14.25};
        draw.map = Homography::fromTransform3D(
            rectToQuad(draw.shape.rect, quad.topLeft, quad.topRight, quad.bottomLeft, quad.bottomRight));
        draw.picture = picture(width, height);
        draw.pictureRect = draw.shape.rect;
        draw.opacity = 0.875;
        draw.borderWidth = 1.5;
        draw.borderColor = {0.1, 0.2, 0.3, 0.6};
        recording.add(draw);
        LayerDraw overlay;
        overlay.shape = {makeRect(0, 0, 331, 257), 0};
        overlay.picture = picture(331, 257);
        overlay.pictureRect = overlay.shape.rect;
        overlay.opacity = 0.5;
        recording.add(overlay);
        all.push_back({name, recording});
    };
    onto("mild", {{40.2, 22.1}, {290.4, 30}, {44, 240.5}, {280.75, 231}}, 240, 300);
    onto("strong", {{90, 40}, {240, 110}, {60, 249}, {230, 180}}, 333, 444);
    onto("upright", {{30.25, 20.5}, {300.25, 20.5}, {30.25, 240.5}, {300.25, 240.5}}, 97, 151);
    onto("oblique", {{160, 10}, {320, 130}, {20, 125}, {170, 250}}, 240, 300);
    onto("shrunk three times", {{60, 30}, {260, 34}, {64, 230}, {258, 226}}, 630, 800);
    onto("shrunk three times and slanted", {{60, 30}, {260, 80}, {44, 200}, {250, 250}}, 630, 700);
    onto("shrunk three times, from right to left", {{260, 34}, {60, 30}, {258, 226}, {64, 230}}, 630, 800);
    onto("shrunk three times, upside down", {{60, 220}, {260, 190}, {60, 30}, {250, 34}}, 630, 800);
    onto("shrunk five times", {{60, 30}, {260, 44}, {64, 230}, {268, 226}}, 930, 1000);
    onto("shrunk nine times", {{60, 30}, {160, 34}, {64, 130}, {158, 126}}, 900, 1300);
    onto("enlarged", {{-40, -30}, {380, -20}, {-30, 300}, {370, 290}}, 21, 17);
    onto("reaching far away", {{10, 10}, {320, 120}, {12, 240}, {321, 122}}, 300, 300);
    for (unsigned seed = 1; seed <= 100; ++seed) {
        Dice thrown(seed);
        all.push_back({"dice " + std::to_string(seed), dicedRecording(thrown)});
    }
    return all;
}

} // namespace quillomat::testing
