#include "app/Application.h"
#include "catalogue/CatalogueDocument.h"
#include "catalogue/SelectionTableViewController.h"
#include "cli/Commands.h"
#include "cli/WatchedWebClient.h"
#include "cli/World.h"
#include "platform/foundation/Conversions.h"

#include <memory>

namespace quillomat {

namespace {

Value versionOrNull(const Value& catalogue) {
    const Value version = catalogue["version"];
    return version.isString() ? version : Value::null();
}

std::string versionText(const Value& version) {
    return version.isString() ? printable(version.stringValue()) : std::string("none");
}

Value::Object comparison(const Value& local, const Value& published, bool available) {
    return {{"local", local}, {"published", published}, {"available", Value::boolean(available)}};
}

void printComparison(const Value& local, const Value& published, bool available) {
    printLine("local " + versionText(local) + ", published " + versionText(published) +
              (available ? ": an update is available" : ": nothing to do"));
}

std::string urlOf(const std::string& host, const std::string& path) {
    return "https://" + host + "/quillomat/updates/" + path;
}

/// Why a listed picture is not in the documents directory; empty when it is, or need not be.
std::string failureOfPicture(World& world, const WatchedWebClient& web, const Value& listed) {
    const std::string& name = listed.stringValue();
    if (!isPlainFileName(name)) {
        return "not a name that can be stored";
    }
    if (world.platform().bundle.pathForResource(deletePathExtension(name), "png")) {
        return {};
    }
    const std::string why = web.failureOf(urlOf(world.options().server, "images/" + name));
    return why.empty() ? world.files().failureOf(appendPathComponent(world.platform().documentsDirectory, name)) : why;
}

/// How many of the listed pictures will be asked for.
std::size_t picturesToFetch(const Platform& platform, const Value& catalogue) {
    std::size_t count = 0;
    for (const auto& listed : catalogue["otaImages"].elements()) {
        const std::string& name = listed.stringValue();
        const bool isHeld = platform.bundle.pathForResource(deletePathExtension(name), "png").has_value();
        count += isPlainFileName(name) && !isHeld ? 1U : 0U;
    }
    return count;
}

void warnOfPictures(World& world, const WatchedWebClient& web) {
    constexpr int mostLines = 10;
    int lines = 0;
    for (const auto& listed : web.catalogue()["otaImages"].elements()) {
        const std::string why = failureOfPicture(world, web, listed);
        if (!why.empty() && ++lines <= mostLines) {
            warn(describe(listed), why);
        }
    }
}

ExitStatus failWithoutCatalogue(const std::string& host, const std::string& why) {
    return fail(host, "the published catalogue could not be fetched: " + why);
}

/// What the update came to, beyond its pictures.
ExitStatus checkStored(World& world, const WatchedWebClient& web, const UpdateReport& report, const Value& published) {
    const std::string& host = world.options().server;
    const std::string& directory = world.platform().documentsDirectory;
    if (!report.catalogueArrived) {
        return failWithoutCatalogue("www." + host, web.failureOf(urlOf("www." + host, "main.json")));
    }
    if (!report.catalogueStored) {
        return fail(directory, "the published catalogue could not be stored: " +
                                   world.files().failureOf(directory + "/main.json"));
    }
    if (!(versionOrNull(CatalogueDocument(world.platform()).JSONFromFile()) == published)) {
        return fail("www." + host, "what arrived in the end is not the catalogue of version " + versionText(published) +
                                       "; update again when the server is in order");
    }
    return ExitStatus::done;
}

void reportUpdate(const GlobalOptions& options, Value::Object result, const UpdateReport& report) {
    if (options.json) {
        result.emplace_back("pictures", Value::object({{"fetched", Value::integer(report.fetchedPictures)},
                                                       {"skipped", Value::integer(report.skippedPictures)},
                                                       {"failed", Value::integer(report.failedPictures)}}));
        printJson(Value::object(std::move(result)));
        return;
    }
    const Value update = Value::object(std::move(result));
    printLine("updated from " + versionText(update["local"]) + " to " + versionText(update["published"]) + ": " +
              std::to_string(report.fetchedPictures) + " pictures fetched, " + std::to_string(report.skippedPictures) +
              " skipped, " + std::to_string(report.failedPictures) + " failed");
}

} // namespace

ExitStatus runUpdate(const GlobalOptions& options, bool checkOnly) {
    CurlOptions curl;
    curl.caCertificate = options.caCertificate;
    auto watched = std::make_unique<WatchedWebClient>(std::move(curl));
    auto& web = *watched;
    const auto world = World::open(options, std::move(watched));
    if (!world) {
        return fail("update", world.reason());
    }
    Platform& platform = (*world)->platform();
    const Value local = versionOrNull(CatalogueDocument(platform).JSONFromFile());

    Application application(platform);
    application.launch();
    HeadlessHost host(application.navigationController(), (*world)->queue());
    auto& list = dynamic_cast<SelectionTableViewController&>(host.top());
    if (!web.catalogue().isPresent()) {
        return failWithoutCatalogue(options.server, web.failureOf(urlOf(options.server, "main.json")));
    }
    const Value published = versionOrNull(web.catalogue());
    const bool available = list.navigationItem.rightBarButtonItem.has_value();
    if (checkOnly || !available) {
        if (options.json) {
            printJson(Value::object(comparison(local, published, available)));
        } else {
            printComparison(local, published, available);
        }
        return ExitStatus::done;
    }

    web.announce(picturesToFetch(platform, web.catalogue()));
    // The button's action, called for its report.
    const UpdateReport report = list.update();
    warnOfPictures(**world, web);
    if (const auto stored = checkStored(**world, web, report, published); stored != ExitStatus::done) {
        return stored;
    }
    host.advance(std::chrono::seconds(3));
    reportUpdate(options, comparison(local, published, available), report);
    return report.failedPictures == 0
               ? ExitStatus::done
               : fail(options.server, std::to_string(report.failedPictures) + " pictures did not arrive");
}

} // namespace quillomat
