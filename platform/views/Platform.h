// The outside world as controllers see it: references to interfaces, handed to them when the Storyboard makes them.
#pragma once

#include "platform/foundation/Bundle.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/Geometry.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/MainQueue.h"
#include "platform/foundation/WebClient.h"
#include "platform/graphics/Image.h"
#include "platform/graphics/ImageFile.h"
#include "platform/graphics/PngWriter.h"

#include <functional>
#include <string>

namespace quillomat {

enum class PhotoAuthorization { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

class PhotoLibrary {
public:
    virtual ~PhotoLibrary() = default;
    /// Asks once; the answer may arrive on any thread.
    virtual void requestAuthorization(std::function<void(PhotoAuthorization)> answer) = 0;
    /// Hands the picture over. A picture that is still its encoded PNG document is stored as those very bytes; they may
    /// lie in a draft (`Platform::savedDraft`) of whoever stores them.
    virtual void writeToSavedPhotosAlbum(const Image& image) = 0;
};

/// Reading files that belong to somebody else.
class DocumentAccess {
public:
    virtual ~DocumentAccess() = default;
    virtual bool startAccessing(const std::string& path) = 0;
    virtual void stopAccessing(const std::string& path) = 0;
    /// Runs `read` while no other program is in the middle of writing the file.
    virtual void coordinateReading(const std::string& path, const std::function<void()>& read) = 0;
};

class UrlOpener {
public:
    virtual ~UrlOpener() = default;
    virtual void open(const std::string& url) = 0;
};

/// The main screen: its bounds in points lay out root views; its scale is that of intermediate pictures, apart from any
/// display's pixel ratio, so that the same mockup gives the same picture everywhere.
struct Screen {
    Size size{360, 740};
    double scale = 1;
};

/// Addresses on the maker's web server.
struct Server {
    std::string host; // short form, with a port when it is not the usual one
    std::string tutorialUrl;

    [[nodiscard]] std::string shortUrl(const std::string& path) const { return "https://" + host + path; }
    [[nodiscard]] std::string longUrl(const std::string& path) const { return "https://www." + host + path; }
};

struct Platform {
    FileManager& files;
    Bundle& bundle;
    WebClient& web;
    PhotoLibrary& photos;
    DocumentAccess& documents;
    UrlOpener& urls;
    MainQueue& mainQueue;
    Log& log;
    Screen screen;
    Server server;
    std::string documentsDirectory; // without a trailing separator
    ImageLimits imageLimits;
    PngEffort savedEffort = PngEffort::fast; // what saved pictures are written with
    /// Begins the file that a picture is going to be stored in, where that is known before it is encoded; may be empty.
    DraftMaker savedDraft = {};
    /// Told of each full-resolution picture while it is still what was recorded; may be empty.
    std::function<void(const Image&)> composed = {};
};

} // namespace quillomat
