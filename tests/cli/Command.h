// Runs the real program beside a test, in folders of the test's own, and looks at what it says and leaves behind.
#pragma once

#include "Process.h"
#include "TemporaryFolder.h"
#include "TinyPng.h"
#include "platform/foundation/Value.h"
#include "platform/graphics/ImageFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quillomat::testing {

using Words = std::vector<std::string>;

/// How a run came out. `status` is -1 when it was killed or did not end in time.
struct Ran {
    int status = -1;
    std::string out;
    std::string err;
    long peakKilobytes = 0;

    [[nodiscard]] Value json() const {
        const auto parsed = parseJson(out);
        return parsed ? *parsed : Value();
    }
};

struct RunSettings {
    std::map<std::string, std::string> environment = {};
    std::string input = {};                                // standard input
    std::string output = {};                               // a file to take standard output instead
    std::string errors = {};                               // a file to take standard error instead
    std::optional<rlim_t> fileSize = {};                   // the size no file may grow beyond, as on a full disk
    std::chrono::milliseconds limit{60000};                // after that it is killed
    std::function<bool()> killWhen = [] { return false; }; // killed, without a chance to tidy up, when this says so
};

inline std::string programPath() {
    return std::string(QUILLOMAT_BINARY_DIR) + "/bin/quillomat";
}

inline std::string fixturesPath(const std::string& name) {
    return std::string(QUILLOMAT_SOURCE_DIR) + "/tests/fixtures/" + name;
}

inline std::string contentOfFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

namespace command_detail {

/// What the child does between the fork and the program: only calls that are safe there.
[[noreturn]] inline void becomeProgram(const std::vector<char*>& arguments, const std::vector<char*>& environment,
                                       const std::string& input, const std::string& output, const std::string& errors,
                                       const std::optional<rlim_t>& fileSize) {
    const int in = ::open(input.c_str(), O_RDONLY);
    const int out = ::open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    const int err = ::open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(in, STDIN_FILENO);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(err, STDERR_FILENO);
    if (fileSize) {
        const rlimit limit{*fileSize, *fileSize};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    const rlimit noDump{0, 0};
    ::setrlimit(RLIMIT_CORE, &noDump);
    ::execve(arguments[0], arguments.data(), environment.data());
    ::_exit(127);
}

inline std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// The most memory the program has held so far; 0 while it is still the test that has forked.
inline long peakKilobytesOf(pid_t id) {
    std::ifstream file("/proc/" + std::to_string(id) + "/status");
    std::string word;
    long peak = 0;
    bool isProgram = false;
    while (file >> word) {
        if (word == "Name:") {
            file >> word;
            isProgram = word == "quillomat";
        } else if (word == "VmHWM:") {
            file >> peak;
        }
    }
    return isProgram ? peak : 0;
}

} // namespace command_detail

/// Runs the program to its end in an environment of its own: a home inside `scratch`, no network proxies.
inline Ran runProgram(const TemporaryFolder& scratch, Words words, const RunSettings& settings = {}) {
    static int number = 0;
    const std::string stem = "run-" + std::to_string(++number);
    const std::string input = scratch.add(stem + ".in", settings.input);
    const std::string errors = settings.errors.empty() ? scratch.path(stem + ".err") : settings.errors;
    const std::string output = settings.output.empty() ? scratch.path(stem + ".out") : settings.output;
    words.insert(words.begin(), programPath());
    std::map<std::string, std::string> variables{{"HOME", scratch.path("home")}, {"PATH", "/usr/bin:/bin"}};
    for (const auto& [name, value] : settings.environment) {
        variables[name] = value;
    }
    std::vector<std::string> environment;
    for (const auto& [name, value] : variables) {
        environment.push_back(name + "=" + value);
    }
    const auto argumentPointers = command_detail::pointersTo(words);
    const auto environmentPointers = command_detail::pointersTo(environment);

    const pid_t id = ::fork();
    if (id == 0) {
        command_detail::becomeProgram(argumentPointers, environmentPointers, input, output, errors, settings.fileSize);
    }
    Ran ran;
    if (id < 0) {
        return ran;
    }
    int status = 0;
    const auto end = std::chrono::steady_clock::now() + settings.limit;
    while (::waitpid(id, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > end || settings.killWhen()) {
            ::kill(id, SIGKILL);
            ::waitpid(id, &status, 0);
            break;
        }
        ran.peakKilobytes = std::max(ran.peakKilobytes, command_detail::peakKilobytesOf(id));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ran.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    ran.out = settings.output.empty() ? contentOfFile(output) : std::string();
    ran.err = settings.errors.empty() ? contentOfFile(errors) : std::string();
    return ran;
}

/// A terminal for a program to write to.
class Terminal {
public:
    Terminal() : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        if (::grantpt(master_) == 0 && ::unlockpt(master_) == 0) {
            name_ = ::ptsname(master_);
        }
        // Open as long as the test looks at it, so that nothing is lost when the program ends.
        slave_ = ::open(name_.c_str(), O_RDWR | O_NOCTTY);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() {
        ::close(slave_);
        ::close(master_);
    }

    [[nodiscard]] const std::string& name() const { return name_; }
    /// What has been written so far.
    [[nodiscard]] std::string text() const {
        std::string text(65536, '\0');
        text.resize(static_cast<std::size_t>(std::max<ssize_t>(::read(master_, text.data(), text.size()), 0)));
        return text;
    }

private:
    int master_;
    int slave_ = -1;
    std::string name_;
};

/// A documents folder of the test's own over the catalogue of the fixtures.
class CommandTest : public ::testing::Test {
protected:
    TemporaryFolder folder;
    std::string documents = folder.path("documents");
    std::string resources = fixturesPath("catalogue");

    Ran run(Words words, const RunSettings& settings = {}) const {
        words.insert(words.end(), {"--documents", documents, "--resources", resources});
        return runProgram(folder, std::move(words), settings);
    }

    [[nodiscard]] static bool exists(const std::string& path) {
        std::error_code error;
        return std::filesystem::exists(std::filesystem::symlink_status(path, error));
    }
    [[nodiscard]] static std::vector<std::string> namesIn(const std::string& directory) {
        const auto names = SystemFileManager().contentsOfDirectory(directory);
        return names ? *names : std::vector<std::string>();
    }
    [[nodiscard]] static PixelSize sizeOf(const std::string& picture) {
        const auto image = imageFromFile(SystemFileManager(), picture);
        return image ? image->pixelSize() : PixelSize{};
    }
    [[nodiscard]] std::string picture(const std::string& name) const { return fixturesPath("pictures/" + name); }

    /// The files of an import, outside the documents folder: a 60 x 80 frame whose screen is all but a rim of 10, and
    /// its definition. `author` may be empty. Gives the path without the ending.
    std::string addImportFiles(const std::string& name, const std::string& author = "Ada") const {
        folder.add("mine/" + name + ".cfg",
                   R"({"left_top_x": 10, "left_top_y": 10, "right_top_x": 50, "right_top_y": "10",
                       "left_bottom_x": 10, "left_bottom_y": 70, "right_bottom_x": 50, "right_bottom_y": 70,
                       "template_width": 60, "template_height": 80)" +
                       (author.empty() ? "" : R"(, "author": ")" + author + '"') + "}");
        addPicture("mine/" + name + ".png", 60, 80, [](int x, int y) {
            const bool isScreen = x >= 10 && x < 50 && y >= 10 && y < 70;
            return isScreen ? Rgba{0, 0, 0, 0} : Rgba{40, 200, 60, 255};
        });
        return folder.path("mine/" + name);
    }
    template <typename Pixel>
    std::string addPicture(const std::string& name, int width, int height, Pixel pixel) const { // NOLINT
        const Bytes png = tinyPng(width, height, pixel);
        return folder.add(name, std::string_view(reinterpret_cast<const char*>(png.data()), png.size()));
    }
    std::string addPicture(const std::string& name, int width, int height, Rgba colour = {200, 30, 30, 255}) const {
        return addPicture(name, width, height, [colour](int, int) { return colour; });
    }
    /// Imports a frame of that name and looks that it worked.
    void import(const std::string& name, const std::string& author = "Ada") const {
        const std::string stem = addImportFiles(name, author);
        ASSERT_EQ(run({"import", stem + ".cfg", stem + ".png"}).status, 0);
    }
};

/// The pixel of a picture file, as stored (premultiplied).
inline Rgba pixelOf(const std::string& picture, int x, int y) {
    const std::string text = contentOfFile(picture);
    const auto decoded = decodeImage(std::as_bytes(std::span(text.data(), text.size())));
    if (!decoded || x >= decoded->width() || y >= decoded->height()) {
        return {};
    }
    const std::uint8_t* at = decoded->row(y) + static_cast<std::ptrdiff_t>(x) * 4;
    return {at[0], at[1], at[2], at[3]};
}

/// One line, "quillomat: what: why", without control characters.
inline ::testing::AssertionResult isOneComplaint(const std::string& text) {
    if (!text.starts_with("quillomat: ") || text.empty() || text.back() != '\n' || text.find('\n') != text.size() - 1 ||
        text.find(": ", 11) == std::string::npos) {
        return ::testing::AssertionFailure() << "not one line of \"quillomat: what: why\": " << text;
    }
    return ::testing::AssertionSuccess();
}

} // namespace quillomat::testing
