// A whole platform for tests: real files in a temporary documents and resources folder, and fakes for everything else.
#pragma once

#include "TinyPng.h"
#include "platform/views/Platform.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace quillomat::testing {

inline Bytes bytesOf(std::string_view text) {
    Bytes bytes(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        bytes[i] = static_cast<std::byte>(text[i]);
    }
    return bytes;
}

inline std::string textOf(std::span<const std::byte> bytes) {
    std::string text(bytes.size(), '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        text[i] = static_cast<char>(bytes[i]);
    }
    return text;
}

/// A new folder that goes away with it.
class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string pattern = (std::filesystem::temp_directory_path() / "quillomat-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        path_ = pattern;
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    [[nodiscard]] const std::string& path() const { return path_; }

private:
    std::string path_;
};

/// What a test's fakes did, in order, one line each: "copy a -> b", "start a", "fetch https://…".
using Journal = std::vector<std::string>;

/// Thrown where a `JournalledFiles` is told to stop: the process is killed at that point, as far as the files can tell.
struct Killed : std::runtime_error {
    Killed() : std::runtime_error("killed") {}
};

/// The machine's files, with every change written into the journal, and with faults on demand.
class JournalledFiles final : public FileManager {
public:
    explicit JournalledFiles(Journal& journal) : journal_(journal) {}

    static constexpr int never = -1;
    /// Changes (writes, copies, removals) counted from 0 that fail from here on, as on a full disk.
    int failFromChange = never;
    /// The one change that fails alone.
    int failChange = never;
    /// The change before which the process dies, and the one after which it does.
    int dieBeforeChange = never;
    int dieAfterChange = never;
    bool failListings = false;
    bool failReads = false;

    [[nodiscard]] int changes() const { return changes_; }

    [[nodiscard]] bool fileExists(const std::string& path) const override { return system_.fileExists(path); }
    [[nodiscard]] Result<std::vector<std::string>> contentsOfDirectory(const std::string& path) const override {
        if (failListings) {
            return Failure{"input/output error"};
        }
        return system_.contentsOfDirectory(path);
    }
    [[nodiscard]] Result<Bytes> read(const std::string& path, std::uint64_t limit) const override {
        if (failReads) {
            return Failure{"input/output error"};
        }
        return system_.read(path, limit);
    }
    Status write(const std::string& path, std::span<const std::byte> bytes) override {
        return change("write " + path, [&] { return system_.write(path, bytes); });
    }
    Status copy(const std::string& from, const std::string& to) override {
        return change("copy " + from + " -> " + to, [&] { return system_.copy(from, to); });
    }
    Status remove(const std::string& path) override {
        return change("remove " + path, [&] { return system_.remove(path); });
    }

private:
    template <typename Operation> Status change(const std::string& line, Operation operation) {
        const int number = changes_++;
        if (number == dieBeforeChange) {
            throw Killed();
        }
        journal_.push_back(line);
        const bool fails = number == failChange || (failFromChange != never && number >= failFromChange);
        Status status = fails ? Status(Failure{"no space left on device"}) : operation();
        if (number == dieAfterChange) {
            throw Killed();
        }
        return status;
    }

    Journal& journal_;
    SystemFileManager system_;
    int changes_ = 0;
};

/// Answers from a map; everything else is a failed fetch.
class FakeWebClient final : public WebClient {
public:
    explicit FakeWebClient(Journal& journal) : journal_(journal) {}

    std::map<std::string, Bytes> replies;
    std::vector<std::string> requests;
    /// Runs before each answer, with the number of the request counted from 0.
    std::function<void(const std::string& url, std::size_t number)> onRequest;

    [[nodiscard]] std::optional<Bytes> dataWithContentsOfUrl(const std::string& url) override {
        requests.push_back(url);
        journal_.push_back("fetch " + url);
        if (onRequest) {
            onRequest(url, requests.size() - 1);
        }
        const auto found = replies.find(url);
        return found == replies.end() ? std::nullopt : std::optional<Bytes>(found->second);
    }

private:
    Journal& journal_;
};

/// Keeps the pictures that are written; answers the request for access at once or from a thread of its own.
class RecordingPhotoLibrary final : public PhotoLibrary {
public:
    ~RecordingPhotoLibrary() override { join(); }

    PhotoAuthorization answer = PhotoAuthorization::authorized;
    bool answerOnAnotherThread = false;
    int requests = 0;
    std::vector<Image> written;

    void requestAuthorization(std::function<void(PhotoAuthorization)> completion) override {
        ++requests;
        if (answerOnAnotherThread) {
            threads_.emplace_back([completion = std::move(completion), given = answer] { completion(given); });
        } else {
            completion(answer);
        }
    }
    void writeToSavedPhotosAlbum(const Image& image) override { written.push_back(image); }
    /// Waits until every answer has been given.
    void join() {
        for (std::thread& thread : threads_) {
            thread.join();
        }
        threads_.clear();
    }

private:
    std::vector<std::thread> threads_;
};

class RecordingUrlOpener final : public UrlOpener {
public:
    std::vector<std::string> opened;
    void open(const std::string& url) override { opened.push_back(url); }
};

/// Grants or refuses access and writes every call into the journal.
class RecordingDocumentAccess final : public DocumentAccess {
public:
    explicit RecordingDocumentAccess(Journal& journal) : journal_(journal) {}

    bool grants = true;

    bool startAccessing(const std::string& path) override {
        journal_.push_back("start " + path);
        return grants;
    }
    void stopAccessing(const std::string& path) override { journal_.push_back("stop " + path); }
    void coordinateReading(const std::string& path, const std::function<void()>& read) override {
        journal_.push_back("coordinate " + path);
        read();
        journal_.push_back("coordinated " + path);
    }

private:
    Journal& journal_;
};

/// Everything above over a fresh pair of folders. `platform` may be changed before an application is made of it.
struct FakePlatform {
    FakePlatform() {
        std::filesystem::create_directories(documentsDirectory());
        std::filesystem::create_directories(resourcesDirectory() + "/images");
    }

    TemporaryDirectory directory;
    Journal journal;
    RecordingLog log;
    SteppedMainQueue queue;
    FakeWebClient web{journal};
    RecordingPhotoLibrary photos;
    RecordingUrlOpener urls;
    RecordingDocumentAccess documents{journal};
    JournalledFiles files{journal};
    DirectoryBundle bundle{directory.path() + "/resources"};
    Platform platform{.files = files,
                      .bundle = bundle,
                      .web = web,
                      .photos = photos,
                      .documents = documents,
                      .urls = urls,
                      .mainQueue = queue,
                      .log = log,
                      .screen = {},
                      .server = {"maker.test", "https://tutorial.test/importing"},
                      .documentsDirectory = directory.path() + "/documents",
                      .imageLimits = {}};

    [[nodiscard]] std::string documentsDirectory() const { return directory.path() + "/documents"; }
    [[nodiscard]] std::string resourcesDirectory() const { return directory.path() + "/resources"; }
    /// A folder for what the user picks; made when first asked for.
    [[nodiscard]] std::string elsewhere() const {
        std::filesystem::create_directories(directory.path() + "/elsewhere");
        return directory.path() + "/elsewhere";
    }
    [[nodiscard]] std::string document(const std::string& name) const { return documentsDirectory() + "/" + name; }

    static void put(const std::string& path, std::string_view text) { std::ofstream(path, std::ios::binary) << text; }
    static void put(const std::string& path, const Bytes& bytes) { put(path, textOf(bytes)); }
    template <typename Content> void putDocument(const std::string& name, const Content& content) {
        put(document(name), content);
    }
    template <typename Content> void putResource(const std::string& name, const Content& content) {
        put(resourcesDirectory() + "/" + name, content);
    }
    template <typename Content> void putResourceImage(const std::string& name, const Content& content) {
        put(resourcesDirectory() + "/images/" + name, content);
    }
    /// A file that a user could pick; its path.
    template <typename Content> std::string putElsewhere(const std::string& name, const Content& content) {
        put(elsewhere() + "/" + name, content);
        return elsewhere() + "/" + name;
    }
    /// The text of a stored file; empty when there is none.
    [[nodiscard]] std::string documentText(const std::string& name) const {
        std::ifstream file(document(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    [[nodiscard]] bool hasDocument(const std::string& name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(document(name)));
    }
    [[nodiscard]] std::vector<std::string> documentNames() const {
        return SystemFileManager().contentsOfDirectory(documentsDirectory()).value();
    }
};

} // namespace quillomat::testing
