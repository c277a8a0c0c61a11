// The catalogue as text: its rows and the mockups that each gallery would show.
#pragma once

#include <string>
#include <vector>

namespace quillomat {

class CatalogueDocument;

struct ListedMockup {
    std::string name;
    bool isImported = false; // its definition is a user's file
    friend bool operator==(const ListedMockup&, const ListedMockup&) = default;
};

struct ListedRow {
    std::string name; // the row's "typeLabel"
    std::vector<ListedMockup> mockups;
    friend bool operator==(const ListedRow&, const ListedRow&) = default;
};

/// Rows in display order, mockups in gallery order, exactly as the list and the galleries would show them now.
[[nodiscard]] std::vector<ListedRow> listCatalogue(const CatalogueDocument& document);

} // namespace quillomat
