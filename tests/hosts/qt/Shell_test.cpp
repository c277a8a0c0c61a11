#include "hosts/qt/Shell.h"

#include "TestApplication.h"
#include "hosts/desktop/FolderPhotoLibrary.h"
#include "hosts/desktop/PlainDocumentAccess.h"
#include "hosts/desktop/UserFolders.h"
#include "hosts/qt/PatientWebClient.h"
#include "hosts/qt/QtMainQueue.h"
#include "platform/views/Platform.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace quillomat {
namespace {

/// Answers each request with a catalogue of a later version; before it does, things happen on the interface's thread.
class EventfulWebClient final : public WebClient {
public:
    std::optional<Bytes> dataWithContentsOfUrl(const std::string& url) override {
        requests.push_back(url);
        QMetaObject::invokeMethod(
            qApp, [this] { meanwhile(); }, Qt::BlockingQueuedConnection);
        const std::string document = R"({"version": "999", "tableItems": [], "viewInfo": {}, "editInfo": {}})";
        const auto bytes = std::as_bytes(std::span(document));
        return Bytes(bytes.begin(), bytes.end());
    }

    std::vector<std::string> requests;
    std::function<void()> meanwhile = [] {};
};

class NoBrowser final : public UrlOpener {
public:
    void open(const std::string& /*url*/) override {}
};

class ShellDuringAFetch : public testing::Test {
protected:
    ShellDuringAFetch() {
        patient.setWaiting([this](bool waiting) { shell.setWaiting(waiting); });
        queue.setDoor([this](MainQueue::Task task) { shell.perform(std::move(task)); });
        QObject::connect(&shell, &Shell::pushed,
                         [this](QObject* screen) { front = qobject_cast<ScreenModel*>(screen); });
    }

    QCoreApplication& application = testApplication(); // before what needs it
    QTemporaryDir folder;
    EventfulWebClient web;
    PatientWebClient patient{web};
    SystemFileManager files;
    DirectoryBundle bundle{std::string(QUILLOMAT_SOURCE_DIR) + "/tests/fixtures/catalogue"};
    FolderPhotoLibrary photos{folder.path().toStdString(), files};
    PlainDocumentAccess documents;
    NoBrowser urls;
    QtMainQueue queue;
    SilentLog log;
    Platform platform{files,
                      bundle,
                      patient,
                      photos,
                      documents,
                      urls,
                      queue,
                      log,
                      Screen{},
                      Server{"quillomat.invalid", ""},
                      folder.path().toStdString(),
                      ImageLimits{}};
    Shell shell{platform, {}};
    ScreenModel* front = nullptr;
};

TEST_F(ShellDuringAFetch, whatMustHappenHappensAfterwards) {
    bool hasHappened = false;
    bool hadHappened = true;
    web.meanwhile = [&] {
        shell.perform([&] { hasHappened = true; });
        hadHappened = hasHappened;
    };
    shell.launch();
    EXPECT_EQ(web.requests.size(), 1U);
    EXPECT_FALSE(hadHappened);
    EXPECT_TRUE(hasHappened);
}

TEST_F(ShellDuringAFetch, pressesAreNotTakenAndNotKept) {
    shell.launch();
    ASSERT_NE(front, nullptr);
    ASSERT_EQ(front->rightTitle(), QStringLiteral("Update Available"));
    web.meanwhile = [&] {
        EXPECT_TRUE(shell.isWaiting());
        front->pressRight(); // one update is enough
        front->pressLeft();  // nor does the sheet of options come
        EXPECT_EQ(shell.presentation(), nullptr);
    };
    front->pressRight();
    EXPECT_EQ(web.requests.size(), 3U) << "the comparison, and the update's two";
    EXPECT_EQ(shell.presentation(), nullptr);
    EXPECT_FALSE(shell.isWaiting());
}

TEST_F(ShellDuringAFetch, progressBoxStandsOnTheScreenBeforeTheUpdateFetchesAnything) {
    shell.launch();
    ASSERT_NE(front, nullptr);
    std::vector<QString> notices;
    web.meanwhile = [&] { notices.push_back(front->notice()); };
    front->pressRight();
    EXPECT_EQ(notices, (std::vector<QString>(2, QStringLiteral("Downloading Files"))));
}

TEST_F(ShellDuringAFetch, answersAreNotTakenAndStandAsBefore) {
    shell.launch();
    front->pressLeft();
    auto* sheet = qobject_cast<PresentationModel*>(shell.presentation());
    ASSERT_NE(sheet, nullptr);
    web.meanwhile = [&] {
        sheet->answer(static_cast<int>(sheet->actions().size()) - 1);
        EXPECT_FALSE(sheet->isLeaving());
    };
    shell.perform([this] { (void)patient.dataWithContentsOfUrl("https://quillomat.invalid/"); });
    EXPECT_EQ(shell.presentation(), sheet);
    EXPECT_FALSE(sheet->isLeaving());
    sheet->answer(static_cast<int>(sheet->actions().size()) - 1);
    EXPECT_TRUE(sheet->isLeaving());
}

} // namespace
} // namespace quillomat
