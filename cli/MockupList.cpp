#include "cli/MockupList.h"

#include "app/Application.h"
#include "catalogue/CatalogueDocument.h"
#include "catalogue/CatalogueListing.h"
#include "cli/Names.h"
#include "editor/EditingViewController.h"
#include "editor/MockupDefinition.h"

#include <algorithm>
#include <string_view>

namespace quillomat {

namespace {

/// The definitions as an editor assembles them: the catalogue's, with the imports converted and added.
Value definitionsOf(World& world) {
    Application application(world.platform());
    const auto editor =
        std::dynamic_pointer_cast<EditingViewController>(application.storyboard().instantiate("editingViewController"));
    editor->view();
    return editor->editInfo();
}

std::optional<std::string> authorOf(const MockupDefinition& definition) {
    if (!definition.hasCreator()) {
        return std::nullopt;
    }
    constexpr std::string_view words = " Mockup created by ";
    const std::string credit = definition.text("creator");
    return credit.starts_with(words) ? credit.substr(words.size()) : credit;
}

} // namespace

std::vector<std::string> listRows(World& world) {
    std::vector<std::string> rows;
    for (const auto& row : listCatalogue(CatalogueDocument(world.platform()))) {
        rows.push_back(row.name);
    }
    return rows;
}

std::vector<MockupSummary> listMockups(World& world) {
    const Value definitions = definitionsOf(world);
    std::vector<MockupSummary> mockups;
    for (const auto& row : listCatalogue(CatalogueDocument(world.platform()))) {
        for (const auto& entry : row.mockups) {
            const Value record = definitions[entry.name];
            const MockupDefinition definition(record);
            mockups.push_back({row.name, entry.name, definition.canvasSize(), definition.hasSecondScreen() ? 2 : 1,
                               authorOf(definition), entry.isImported, record});
        }
    }
    return mockups;
}

Result<MockupSummary> findMockup(World& world, const std::string& name) {
    const auto mockups = listMockups(world);
    const std::string wanted = withPngExtension(name);
    std::vector<std::string> names;
    for (const auto& mockup : mockups) {
        if (mockup.name == name || mockup.name == wanted) {
            return mockup;
        }
        names.push_back(mockup.name);
    }
    std::string reason = "no such mockup";
    const auto nearest = nearestNames(wanted, names);
    for (std::size_t i = 0; i < nearest.size(); ++i) {
        reason += (i == 0 ? "; did you mean " : i + 1 < nearest.size() ? ", " : " or ") + nearest[i];
    }
    return Failure{reason + (nearest.empty() ? "" : "?")};
}

} // namespace quillomat
