#include "cli/publishing/DefinitionCheck.h"

#include "catalogue/CatalogueDocument.h"
#include "editor/MockupDefinition.h"
#include "platform/graphics/ImageFile.h"

#include <array>

namespace quillomat {

namespace {

double cross(Point a, Point b, Point c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// A screen seen by a camera is convex, clockwise with y pointing down, and has some area.
bool isSeenFromTheFront(const Quad& quad) {
    const std::array<Point, 4> corners{quad.topLeft, quad.topRight, quad.bottomRight, quad.bottomLeft};
    for (std::size_t i = 0; i < 4; ++i) {
        if (cross(corners[i], corners[(i + 1) % 4], corners[(i + 2) % 4]) < 1) {
            return false;
        }
    }
    return true;
}

void checkScreens(const MockupDefinition& definition, std::vector<std::string>& problems) {
    const int screens = definition.hasSecondScreen() ? 2 : 1;
    for (int screen = 1; screen <= screens; ++screen) {
        const std::string side = screen == 2 ? "2" : "";
        for (const char* code : {"F", ""}) {
            if (!isSeenFromTheFront(definition.storedCorners(code, side))) {
                problems.push_back(std::string(*code == 'F' ? "full-resolution" : "preview") + " corners of screen " +
                                   std::to_string(screen) + " do not enclose an area in order");
            }
        }
    }
}

bool isExtent(Size size) {
    const ImageLimits limits;
    return size.width >= 1 && size.height >= 1 && size.width <= limits.side && size.height <= limits.side &&
           size.width * size.height <= static_cast<double>(limits.pixels);
}

void checkPictures(const std::string& mockup, const MockupDefinition& definition, const PictureSize& pictureSize,
                   std::vector<std::string>& problems) {
    const std::string frame = lookupNameOfMockup(mockup);
    if (const auto size = pictureSize(frame); !size) {
        problems.push_back("frame picture " + frame + ": " + size.reason());
    }
    const std::string glare = definition.text("overlay");
    if (glare.empty()) {
        return;
    }
    if (const auto size = pictureSize(glare); !size) {
        problems.push_back("glare picture " + glare + ": " + size.reason());
    }
    if (!isExtent(definition.glareRect().size)) {
        problems.emplace_back("the glare rectangle has no extent");
    }
}

} // namespace

std::vector<std::string> problemsOfDefinition(const std::string& mockup, const Value& definitions,
                                              const PictureSize& pictureSize) {
    const Value record = definitions[mockup];
    if (!record.isObject()) {
        return {"has no definition"};
    }
    const MockupDefinition definition(record);
    std::vector<std::string> problems;
    if (!isExtent(definition.canvasSize())) {
        problems.emplace_back("the canvas has no extent, or one over the limit");
    }
    if (!isExtent(definition.frameRect().size)) {
        problems.emplace_back("the frame rectangle has no extent, or one over the limit");
    }
    checkPictures(mockup, definition, pictureSize, problems);
    // The preview of a "-large" mockup takes its first screen from the entry without the marker.
    const std::string stripped = lookupNameOfMockup(mockup);
    if (!definitions[stripped].isObject()) {
        problems.push_back("its preview needs a definition of " + stripped);
        return problems;
    }
    checkScreens(definition, problems);
    return problems;
}

} // namespace quillomat
