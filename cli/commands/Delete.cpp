#include "catalogue/CatalogueDocument.h"
#include "cli/Commands.h"
#include "cli/MockupList.h"
#include "cli/Names.h"

namespace quillomat {

namespace {

/// The definition files in the documents directory that are imports of that mockup name.
std::vector<std::string> definitionsOf(World& world, const std::string& mockup) {
    std::vector<std::string> names = CatalogueDocument(world.platform()).importedDefinitions();
    std::erase_if(names, [&](const std::string& name) { return pictureNameOfImport(name) != mockup; });
    return names;
}

} // namespace

ExitStatus runDelete(const GlobalOptions& options, const std::string& mockup) {
    const auto world = World::open(options);
    if (!world) {
        return fail("delete", world.reason());
    }
    const auto found = findMockup(**world, mockup);
    // An import whose picture is missing is not listed, and can still be deleted.
    const std::string name = found ? found->name : withPngExtension(mockup);
    auto files = definitionsOf(**world, name);
    if (files.empty()) {
        return found ? fail(name, "built into the application, only imports can be deleted")
                     : fail(mockup, found.reason());
    }
    files.push_back(name);
    for (const auto& file : files) {
        const std::string path = appendPathComponent((*world)->platform().documentsDirectory, file);
        if (!(*world)->files().fileExists(path)) {
            continue;
        }
        if (const auto removed = (*world)->files().remove(path); !removed) {
            return fail(file, removed.reason());
        }
    }
    if (options.json) {
        printJson(Value::object({{"deleted", Value::string(name)}}));
    } else {
        printLine(printable(name) + " deleted");
    }
    return ExitStatus::done;
}

} // namespace quillomat
