#include "cli/Commands.h"
#include "cli/World.h"
#include "cli/publishing/Publication.h"
#include "cli/publishing/PublicationPages.h"
#include "platform/foundation/Conversions.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

namespace quillomat {

namespace {

constexpr std::uint64_t fileLimit = std::uint64_t{1} << 30;

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text.data(), text.size()));
}

/// The tree a static web server serves. Files whose content is already right are not touched.
class Site {
public:
    Site(FileManager& files, std::string root) : files_(files), root_(std::move(root)) {}

    [[nodiscard]] int changed() const { return changed_; }
    [[nodiscard]] std::string pathOf(const std::string& name) const { return appendPathComponent(root_, name); }

    Status put(const std::string& name, std::span<const std::byte> bytes) {
        const std::string path = pathOf(name);
        const auto old = files_.read(path, fileLimit);
        if (old && std::equal(old->begin(), old->end(), bytes.begin(), bytes.end())) {
            return {};
        }
        if (changed_ == 0 && !wasCutShort()) {
            if (auto begun = begin(); !begun) {
                return begun;
            }
        }
        std::error_code error;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
        if (auto written = files_.write(path, bytes); !written) {
            return Failure{path + ": " + written.reason()};
        }
        ++changed_;
        return {};
    }

    /// Stands from the first changed picture to the stored catalogue: when it is found at the start, an earlier run was
    /// cut short, and installations have yet to hear of the pictures it changed. It is not below what is served.
    [[nodiscard]] bool wasCutShort() const { return files_.fileExists(pathOf(mark)); }
    void finish() {
        if (wasCutShort()) {
            static_cast<void>(files_.remove(pathOf(mark)));
        }
    }

private:
    static constexpr const char* mark = ".quillomat-publishing";

    Status begin() {
        std::error_code error;
        std::filesystem::create_directories(root_, error);
        auto written = files_.write(pathOf(mark), {});
        return written ? written : Status(Failure{root_ + ": " + written.reason()});
    }

    FileManager& files_;
    std::string root_;
    int changed_ = 0;
};

Status putPictures(World& world, Site& site, const Publication& publication) {
    for (const auto& [name, path] : publication.pictures) {
        const auto bytes = world.files().read(path, fileLimit);
        if (!bytes) {
            return Failure{path + ": " + bytes.reason()};
        }
        if (auto put = site.put("quillomat/updates/images/" + name, *bytes); !put) {
            return put;
        }
    }
    return {};
}

Status putPages(World& world, Site& site, const Publication& publication) {
    for (const auto& frame : publication.frames) {
        const auto preview = framePreview(world, publication, frame);
        if (!preview) {
            return Failure{preview.reason()};
        }
        if (auto put = site.put("quillomat/mockups/previews/" + frame.name, *preview); !put) {
            return put;
        }
    }
    const std::string mockups = mockupsPage(publication);
    if (auto put = site.put("quillomat/mockups/index.html", bytesOf(mockups)); !put) {
        return put;
    }
    const std::string support = supportPage();
    return site.put("quillomat/support/index.html", bytesOf(support));
}

Value withVersion(const std::string& version, const Publication& publication) {
    Value::Array names;
    for (const auto& name : publication.otaImages) {
        names.push_back(Value::string(name));
    }
    Value::Object members{{"version", Value::string(version)}};
    const auto& rest = publication.catalogue.members();
    members.insert(members.end(), rest.begin(), rest.end());
    members.emplace_back("otaImages", Value::array(std::move(names)));
    return Value::object(std::move(members));
}

/// The version published so far stays as long as neither the catalogue nor a picture has changed.
std::string chooseVersion(World& world, const Site& site, const Publication& publication, const std::string& local,
                          bool picturesChanged) {
    const auto bytes = world.files().read(site.pathOf("quillomat/updates/main.json"), fileLimit);
    const auto old = bytes ? parseJson(*bytes) : Result<Value>(Failure{"none"});
    const std::string published = old ? (*old)["version"].stringValue() : std::string();
    if (!picturesChanged && !published.empty() && withVersion(published, publication) == *old) {
        return published;
    }
    return versionAfter(local, published);
}

ExitStatus failWithLines(const std::string& reasons) {
    std::size_t start = 0;
    while (start < reasons.size()) {
        const std::size_t end = std::min(reasons.find('\n', start), reasons.size());
        complain("publish", reasons.substr(start, end - start));
        start = end + 1;
    }
    return ExitStatus::failed;
}

} // namespace

ExitStatus runPublish(const GlobalOptions& options, const std::string& directory, const std::string& row) {
    const auto world = World::open(options);
    if (!world) {
        return fail("publish", world.reason());
    }
    if (row == "Imported") {
        return fail("publish", "the row \"Imported\" is the users' own; name another with --row");
    }
    const auto publication = collectPublication(**world, row);
    if (!publication) {
        return failWithLines(publication.reason());
    }
    Site site((*world)->files(), directory);
    const bool wasCutShort = site.wasCutShort();
    // The catalogue goes last: whoever reads it finds everything it names.
    if (const auto put = putPictures(**world, site, *publication); !put) {
        return fail("publish", put.reason());
    }
    const bool picturesChanged = site.changed() > 0 || wasCutShort;
    if (const auto put = putPages(**world, site, *publication); !put) {
        return fail("publish", put.reason());
    }
    const std::string version = chooseVersion(**world, site, *publication, publication->localVersion, picturesChanged);
    const std::string document = writeJson(withVersion(version, *publication));
    if (const auto put = site.put("quillomat/updates/main.json", bytesOf(document)); !put) {
        return fail("publish", put.reason());
    }
    site.finish();
    if (options.json) {
        printJson(Value::object({{"version", Value::string(version)},
                                 {"frames", Value::integer(static_cast<std::int64_t>(publication->frames.size()))},
                                 {"pictures", Value::integer(static_cast<std::int64_t>(publication->pictures.size()))},
                                 {"changedFiles", Value::integer(site.changed())}}));
    } else {
        printLine(site.changed() == 0
                      ? "version " + printable(version) + ": nothing has changed"
                      : "version " + printable(version) + ": " + std::to_string(publication->frames.size()) +
                            " frames, " + std::to_string(publication->pictures.size()) + " pictures, " +
                            std::to_string(site.changed()) + " files written");
    }
    return ExitStatus::done;
}

} // namespace quillomat
