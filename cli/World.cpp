#include "cli/World.h"

#include "cli/Messages.h"
#include "hosts/desktop/StandardLog.h"
#include "hosts/desktop/UserFolders.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace quillomat {

void WaitingPhotoLibrary::requestAuthorization(std::function<void(PhotoAuthorization)> answer) {
    answer(PhotoAuthorization::authorized);
}

namespace {

namespace fs = std::filesystem;

Status makeDocumentsDirectory(const std::string& path) {
    std::error_code error;
    fs::create_directories(path, error);
    std::error_code unreadable;
    if (!fs::is_directory(path, unreadable)) {
        return Failure{"cannot be made a documents directory: " +
                       (error ? systemReason(error.value()) : std::string("not a directory"))};
    }
    // Whatever lies in the documents directory is the application's to read, replace and remove.
    const auto real = fs::canonical(path, unreadable);
    if (unreadable || real == real.root_path()) {
        return Failure{"the root folder is no documents directory"};
    }
    return {};
}

} // namespace

Result<std::unique_ptr<World>> World::open(const GlobalOptions& options, std::unique_ptr<WebClient> web) {
    const std::string resources = options.resources.empty() ? resourcesDirectory(runningProgram()) : options.resources;
    std::error_code error;
    if (resources.empty() || !fs::is_directory(resources, error)) {
        return Failure{resources.empty() ? "no resources found; name their folder with --resources"
                                         : resources + ": no such resources folder"};
    }
    std::string documents =
        options.documents.empty() ? defaultDocumentsDirectory(processEnvironment()) : options.documents;
    if (documents.empty()) {
        return Failure{"no documents directory; name one with --documents"};
    }
    while (documents.size() > 1 && documents.back() == '/') {
        documents.pop_back();
    }
    if (const auto made = makeDocumentsDirectory(documents); !made) {
        return Failure{documents + ": " + made.reason()};
    }
    if (!web) {
        web = std::make_unique<NoWebClient>();
    }
    return std::unique_ptr<World>(new World(options, std::move(documents), resources, std::move(web)));
}

World::World(const GlobalOptions& options, std::string documents, const std::string& resources,
             std::unique_ptr<WebClient> web)
    : options_(options)
    , log_(options.verbose ? std::unique_ptr<Log>(std::make_unique<StandardLog>())
                           : std::unique_ptr<Log>(std::make_unique<SilentLog>()))
    , web_(std::move(web))
    , bundle_(resources)
    , platform_{files_, bundle_, *web_,    photos_,  documentAccess_,      urls_,
                queue_, *log_,   Screen{}, Server{}, std::move(documents), ImageLimits{}} {
    platform_.screen.scale = options.screenScale;
    platform_.server = Server{options.server, {}};
    platform_.imageLimits.fileBytes = std::min(platform_.imageLimits.fileBytes, options.memory);
}

} // namespace quillomat
