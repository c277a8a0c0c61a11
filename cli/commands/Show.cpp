#include "cli/Commands.h"
#include "cli/MockupList.h"

namespace quillomat {

ExitStatus runShow(const GlobalOptions& options, const std::string& mockup) {
    const auto world = World::open(options);
    if (!world) {
        return fail("show", world.reason());
    }
    const auto found = findMockup(**world, mockup);
    if (!found) {
        return fail(mockup, found.reason());
    }
    if (!found->definition.isPresent()) {
        return fail(found->name, "the catalogue has no definition of it");
    }
    printJson(found->definition);
    return ExitStatus::done;
}

} // namespace quillomat
