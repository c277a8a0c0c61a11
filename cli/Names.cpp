#include "cli/Names.h"

#include <algorithm>
#include <utility>

namespace quillomat {

std::size_t editDistance(std::string_view a, std::string_view b) {
    // Three rows of the usual table: this one, the one above, and the one above that for swaps.
    std::vector<std::size_t> before(b.size() + 1);
    std::vector<std::size_t> above(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::swap(before, above);
        std::swap(above, row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = above[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({replaced, above[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                row[j] = std::min(row[j], before[j - 2] + 1);
            }
        }
    }
    return row[b.size()];
}

std::vector<std::string> nearestNames(std::string_view name, const std::vector<std::string>& candidates,
                                      std::size_t count) {
    // No file has a longer name, and the work grows with the product of the lengths.
    constexpr std::size_t longest = 255;
    name = name.substr(0, longest);
    std::vector<std::pair<std::size_t, const std::string*>> ranked;
    for (const auto& candidate : candidates) {
        if (candidate.size() > longest) {
            continue;
        }
        ranked.emplace_back(editDistance(name, candidate), &candidate);
    }
    std::stable_sort(ranked.begin(), ranked.end(), [](const auto& x, const auto& y) { return x.first < y.first; });
    std::vector<std::string> nearest;
    for (const auto& [distance, candidate] : ranked) {
        if (nearest.size() < count && std::find(nearest.begin(), nearest.end(), *candidate) == nearest.end()) {
            nearest.push_back(*candidate);
        }
    }
    return nearest;
}

std::string withPngExtension(std::string name) {
    if (!name.ends_with(".png")) {
        name += ".png";
    }
    return name;
}

} // namespace quillomat
