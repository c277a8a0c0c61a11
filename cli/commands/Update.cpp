#include "app/Application.h"
#include "catalogue/CatalogueDocument.h"
#include "cli/Commands.h"
#include "cli/WatchedWebClient.h"
#include "cli/World.h"
#include "platform/network/CurlWebClient.h"

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

} // namespace

ExitStatus runUpdate(const GlobalOptions& options, bool checkOnly) {
    CurlOptions curl;
    curl.caCertificate = options.caCertificate;
    auto watched = std::make_unique<WatchedWebClient>(std::make_unique<CurlWebClient>(std::move(curl)));
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
    if (!web.catalogue().isPresent()) {
        return fail(options.server, "the published catalogue could not be fetched");
    }
    const Value published = versionOrNull(web.catalogue());
    const bool available = host.top().navigationItem.rightBarButtonItem.has_value();
    if (checkOnly || !available) {
        if (options.json) {
            printJson(Value::object(comparison(local, published, available)));
        } else {
            printComparison(local, published, available);
        }
        return ExitStatus::done;
    }

    const std::size_t skipped = countHeldPictures(platform, web.catalogue());
    web.announce(web.catalogue()["otaImages"].count() - skipped);
    host.pressRightBarButton();
    host.advance(std::chrono::seconds(3));
    const std::size_t fetched = web.picturesArrived();
    const std::size_t failed = web.catalogue()["otaImages"].count() - skipped - fetched;
    const Value stored = versionOrNull(CatalogueDocument(platform).JSONFromFile());
    if (!(stored == published)) {
        return fail("update", "the published catalogue could not be stored in " + platform.documentsDirectory);
    }
    if (options.json) {
        auto result = comparison(local, published, available);
        result.emplace_back("pictures", Value::object({{"fetched", Value::integer(static_cast<std::int64_t>(fetched))},
                                                       {"skipped", Value::integer(static_cast<std::int64_t>(skipped))},
                                                       {"failed", Value::integer(static_cast<std::int64_t>(failed))}}));
        printJson(Value::object(std::move(result)));
    } else {
        printLine("updated from " + versionText(local) + " to " + versionText(published) + ": " +
                  std::to_string(fetched) + " pictures fetched, " + std::to_string(skipped) + " skipped, " +
                  std::to_string(failed) + " failed");
    }
    return failed == 0 ? ExitStatus::done : fail("update", std::to_string(failed) + " pictures did not arrive");
}

} // namespace quillomat
