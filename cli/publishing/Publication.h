// What a maker publishes: the catalogue as installations will read it, checked whole, with the pictures it needs.
#pragma once

#include "cli/World.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/Value.h"

#include <map>
#include <string>
#include <vector>

namespace quillomat {

/// One frame as the web page shows it.
struct PublishedFrame {
    std::string row;
    std::string name;    // the mockup's name
    std::string picture; // its frame picture's name, without "-large"
    Size canvas;
    int screens = 1;
    std::string author; // empty for the maker's own
};

struct Publication {
    std::string localVersion;                    // the catalogue's own; empty when it has none
    Value catalogue;                             // without "version" and "otaImages"
    std::vector<std::string> otaImages;          // stripped names, each once, in the catalogue's order
    std::map<std::string, std::string> pictures; // name -> path of the file that holds it
    std::vector<PublishedFrame> frames;          // in gallery order
};

/// Joins the user's imports to the row of that name (made when there is none) and checks every row, gallery,
/// definition and picture. The failure lists what is wrong, one reason a line.
[[nodiscard]] Result<Publication> collectPublication(World& world, const std::string& row);

/// A version later than both: the later one with its last run of digits raised by one (".1" added when it has none).
[[nodiscard]] std::string versionAfter(const std::string& a, const std::string& b);

} // namespace quillomat
