// The comparison with the published catalogue, and its download.
#include "catalogue/SelectionTableViewController.h"

#include "catalogue/UrlPath.h"
#include "platform/views/Controls.h"
#include "platform/views/Platform.h"

#include <chrono>

namespace quillomat {

namespace {

constexpr auto cataloguePath = "/quillomat/updates/main.json";
constexpr auto picturesPath = "/quillomat/updates/images/";

} // namespace

RevisionCheck SelectionTableViewController::checkVersion() {
    RevisionCheck check;
    check.local = revisionOf(JSONFromFile());
    if (const auto reply = platform().web.dataWithContentsOfUrl(platform().server.shortUrl(cataloguePath))) {
        if (const auto published = parseJson(*reply)) {
            check.published = revisionOf(*published);
        }
    }
    if (check.isUpdateAvailable()) {
        showUpdateButton();
    } else {
        navigationItem.rightBarButtonItem.reset();
    }
    return check;
}

void SelectionTableViewController::showUpdateButton() {
    navigationItem.rightBarButtonItem =
        BarButtonItem{.title = "Update Available",
                      .style = BarButtonStyle::done,
                      .bold = true,
                      .fontSize = 12,
                      .action = [weak = std::weak_ptr<SelectionTableViewController>(self())] {
                          if (const auto list = weak.lock()) {
                              list->update();
                          }
                      }};
}

UpdateReport SelectionTableViewController::update() {
    UpdateReport report;
    const auto progressBox = addProgressBox();

    std::optional<std::string> parseError;
    if (const auto reply = platform().web.dataWithContentsOfUrl(platform().server.shortUrl(cataloguePath))) {
        const auto published = parseJson(*reply);
        if (published) {
            for (const Value& name : (*published)["otaImages"].elements()) {
                fetchPicture(name, report);
            }
        } else {
            parseError = published.reason();
        }
    }
    // The document that is stored is fetched on its own, from the long host form, whatever became of the one above.
    storeCatalogue(std::move(parseError), report);

    platform().mainQueue.after(std::chrono::seconds(2),
                               [weak = std::weak_ptr<SelectionTableViewController>(self()), progressBox] {
                                   if (const auto list = weak.lock()) {
                                       list->finishUpdate(progressBox);
                                   }
                               });
    return report;
}

std::shared_ptr<View> SelectionTableViewController::addProgressBox() {
    const auto box = std::make_shared<View>(makeRect(0, 0, 200, 30));
    box->setCenter(view()->center());
    box->backgroundColor = Color::white();
    box->cornerRadius = 5.0;
    box->masksToBounds = true;

    const auto message = std::make_shared<TextView>();
    message->setFrame(makeRect(0, 0, 200, 30));
    message->backgroundColor = Color::clear();
    message->textColor = Color::black();
    message->editable = false;
    message->font = Font{.size = 15, .bold = false};
    message->text = "Downloading Files";
    message->scrollEnabled = false;
    message->alignment = TextAlignment::center;

    box->addSubview(message);
    view()->addSubview(box);
    return box;
}

void SelectionTableViewController::fetchPicture(const Value& name, UpdateReport& report) {
    const std::string& fileName = name.stringValue();
    // A name that would leave the documents directory is treated like a picture that did not arrive.
    if (!isPlainFileName(fileName)) {
        ++report.failedPictures;
        return;
    }
    if (platform().bundle.pathForResource(deletePathExtension(fileName), "png")) {
        ++report.skippedPictures;
        return;
    }
    if (!needsNoEscaping(fileName)) {
        ++report.failedPictures;
        return;
    }
    const auto picture = platform().web.dataWithContentsOfUrl(platform().server.shortUrl(picturesPath + fileName));
    const bool stored = picture && platform().files.write(appendPathComponent(mainDirectory(), fileName), *picture);
    ++(stored ? report.fetchedPictures : report.failedPictures);
}

void SelectionTableViewController::storeCatalogue(std::optional<std::string> error, UpdateReport& report) {
    const auto catalogue = platform().web.dataWithContentsOfUrl(platform().server.longUrl(cataloguePath));
    report.catalogueArrived = catalogue.has_value();
    if (!catalogue) {
        return;
    }
    // Plain concatenation: this directory ends in a separator.
    const std::string path = mainDirectory() + "main.json";
    const Status status = platform().files.write(path, *catalogue);
    report.catalogueStored = static_cast<bool>(status);
    // A good write leaves the slot as it is, so that the line may still carry the earlier parse error.
    if (!status) {
        error = status.reason();
    }
    platform().log.write("dorvane ERROR " + error.value_or("(null)") + " FilePath: " + path);
}

void SelectionTableViewController::finishUpdate(const std::shared_ptr<View>& progressBox) {
    progressBox->removeFromSuperview();
    viewDidLoad();
    tableView()->reloadData();
}

} // namespace quillomat
