#include "cli/CommandLine.h"

#include "cli/Commands.h"
#include "cli/Names.h"
#include "cli/StandardStreams.h"
#include "platform/foundation/Trace.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <csignal>
#include <exception>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <string_view>

namespace quillomat {

namespace {

/// Runs the chosen command once the whole line is read.
using Run = std::function<ExitStatus()>;

/// "X,Y,W,H" in whole pixels.
std::string readCrop(const std::string& text, std::optional<PixelRect>& crop) {
    PixelRect rect;
    char end = 0;
    if (std::sscanf(text.c_str(), "%9d,%9d,%9d,%9d%c", &rect.x, &rect.y, &rect.width, &rect.height, &end) != 4 ||
        rect.width <= 0 || rect.height <= 0 || rect.x < 0 || rect.y < 0) {
        return "expected X,Y,W,H in whole pixels";
    }
    crop = rect;
    return {};
}

/// "512MiB", "2G", "1000000": bytes, with units of 1024 however they are spelt.
std::string readSize(const std::string& text, std::uint64_t& bytes) {
    constexpr std::string_view units = "kmgt";
    const char* end = text.data() + text.size();
    std::uint64_t count = 0;
    const auto [rest, error] = std::from_chars(text.data(), end, count);
    std::string unit(rest, end);
    std::transform(unit.begin(), unit.end(), unit.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto power = unit.empty() ? std::string_view::npos : units.find(unit[0]);
    const std::string_view tail = std::string_view(unit).substr(power == std::string_view::npos ? 0 : 1);
    const bool isUnit =
        power == std::string_view::npos ? tail.empty() || tail == "b" : tail.empty() || tail == "b" || tail == "ib";
    const unsigned shift = power == std::string_view::npos ? 0 : 10 * (static_cast<unsigned>(power) + 1);
    if (error != std::errc() || !isUnit || count == 0 || count > (std::numeric_limits<std::uint64_t>::max() >> shift)) {
        return "expected a size such as 512MiB";
    }
    bytes = count << shift;
    return {};
}

std::string readScreenScale(const std::string& text, double& scale) {
    double value = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    // Also refuses what is not a number, which compares with nothing.
    if (error != std::errc() || rest != end || !(value >= 0.25 && value <= 8)) {
        return "expected a number from 0.25 to 8";
    }
    scale = value;
    return {};
}

/// An option whose text is read by a function that says what is wrong with it; nothing when all is well.
CLI::Option* addReadOption(CLI::App& app, const std::string& name, const std::string& description,
                           const std::function<std::string(const std::string&)>& read) {
    return app.add_option_function<std::string>(
        name,
        [name, read](const std::string& text) {
            if (const auto why = read(text); !why.empty()) {
                throw CLI::ValidationError(name, why);
            }
        },
        description);
}

void addGlobalOptions(CLI::App& app, GlobalOptions& options) {
    app.add_option("--documents", options.documents, "Documents directory: stored catalogue, downloads, imports")
        ->type_name("DIR");
    app.add_option("--resources", options.resources, "Application resources: main.json and images/")->type_name("DIR");
    app.add_option("--server", options.server, "The maker's web server, short host form")->type_name("HOST[:PORT]");
    app.add_option("--cacert", options.caCertificate, "Trust this certificate authority as well")->type_name("FILE");
    addReadOption(app, "--screen-scale", "The main screen's scale for intermediate pictures, 0.25 to 8; default 1",
                  [&options](const std::string& text) { return readScreenScale(text, options.screenScale); })
        ->type_name("N");
    addReadOption(app, "--memory", "The ceiling for one render, such as 512MiB; default 1GiB",
                  [&options](const std::string& text) { return readSize(text, options.memory); })
        ->type_name("SIZE");
    app.add_option("--trace", options.trace, "Write the stages of the work and their times to this file")
        ->type_name("FILE");
    app.add_flag("--json", options.json, "Machine-readable results on standard output");
    app.add_flag("-v,--verbose", options.verbose, "The application's log lines on standard error");
}

void addCatalogueCommands(CLI::App& app, const GlobalOptions& options, Run& run) {
    auto* list = app.add_subcommand("list", "Rows and their mockups, one mockup a line");
    list->callback([&] { run = [&options] { return runList(options); }; });

    auto name = std::make_shared<std::string>();
    auto* show = app.add_subcommand("show", "A mockup's definition, as the editor sees it");
    show->add_option("MOCKUP", *name, "A name as list prints it")->required();
    show->callback([&options, &run, name] { run = [&options, name] { return runShow(options, *name); }; });
}

void addRenderCommand(CLI::App& app, const GlobalOptions& options, Run& run) {
    auto job = std::make_shared<RenderJob>();
    auto* render = app.add_subcommand("render", "Puts screenshots into a mockup");
    render->add_option("MOCKUP", job->mockup, "A name as list prints it")->required();
    // Given once a file, so that a file that follows is never taken for a second screenshot.
    render->add_option("-s,--screenshot", job->screenshots, "A screenshot; - is standard input")
        ->required()
        ->expected(1, 2)
        ->allow_extra_args(false)
        ->type_name("SHOT");
    render->add_option("-b,--background", job->background, "A picture behind everything")->type_name("PICTURE");
    addReadOption(*render, "--crop", "The part of the background to use; default: the middle, in the canvas's shape",
                  [job](const std::string& text) { return readCrop(text, job->crop); })
        ->type_name("X,Y,W,H");
    render->add_flag("--blur", job->blur, "Blur the background");
    render->add_flag("--glare", job->glare, "Draw the mockup's glare");
    render->add_flag("--best", job->best, "The smallest file, written more slowly");
    render->add_option("--dump", job->dump, "Write what is drawn to this file as well, for replay")->type_name("FILE");
    render
        ->add_option("-o,--output", job->output,
                     "The picture to write; - is standard output; default: the pictures folder")
        ->type_name("OUT");
    render->callback([&options, &run, job] { run = [&options, job] { return runRender(options, *job); }; });
}

void addReplayCommand(CLI::App& app, const GlobalOptions& options, Run& run) {
    auto job = std::make_shared<ReplayJob>();
    auto* replay = app.add_subcommand("replay", "Draws again what render --dump wrote");
    replay->add_option("FILE", job->recording, "A recording; - is standard input")->required();
    replay->add_flag("--best", job->best, "The smallest file, written more slowly");
    replay->add_option("-o,--output", job->output, "The picture to write; - is standard output")
        ->required()
        ->type_name("OUT");
    replay->callback([&options, &run, job] { run = [&options, job] { return runReplay(options, *job); }; });
}

void addDocumentCommands(CLI::App& app, const GlobalOptions& options, Run& run) {
    auto files = std::make_shared<std::vector<std::string>>();
    auto replace = std::make_shared<bool>(false);
    auto* importing = app.add_subcommand("import", "Copies definition and picture files into the documents directory");
    importing->add_option("FILE", *files, "Definitions (.cfg) and their pictures (.png)")->required();
    importing->add_flag("--replace", *replace, "Replace stored files of the same name");
    importing->callback([&options, &run, files, replace] {
        run = [&options, files, replace] { return runImport(options, *files, *replace); };
    });

    auto name = std::make_shared<std::string>();
    auto* remove = app.add_subcommand("delete", "Removes an imported mockup's two files");
    remove->add_option("MOCKUP", *name, "A name as list prints it")->required();
    remove->callback([&options, &run, name] { run = [&options, name] { return runDelete(options, *name); }; });
}

void addWebCommands(CLI::App& app, const GlobalOptions& options, Run& run) {
    auto checkOnly = std::make_shared<bool>(false);
    auto* update = app.add_subcommand("update", "Fetches the published catalogue when it is later than the stored one");
    update->add_flag("--check", *checkOnly, "Only compare");
    update->callback(
        [&options, &run, checkOnly] { run = [&options, checkOnly] { return runUpdate(options, *checkOnly); }; });

    auto directory = std::make_shared<std::string>();
    auto row = std::make_shared<std::string>("More");
    auto* publish = app.add_subcommand("publish", "Makes the folder that a web server must serve for updates");
    publish->add_option("DIR", *directory, "The folder to make")->required();
    publish->add_option("--row", *row, "The row that imported frames join")->type_name("NAME")->capture_default_str();
    publish->callback([&options, &run, directory, row] {
        run = [&options, directory, row] { return runPublish(options, *directory, *row); };
    });
}

std::string lowerCaseStart(std::string text) {
    // "At most" becomes "at most", and MOCKUP stays.
    if (text.size() > 1 && std::isupper(static_cast<unsigned char>(text[1])) == 0) {
        text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    }
    return text;
}

std::string chosenCommand(const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    return chosen.empty() ? std::string() : chosen.front()->get_name();
}

/// Where what was meant is described: with the chosen command, unless it is an option of all of them.
std::string seeHelp(const CLI::App& app, const std::string& option = {}) {
    const bool isOfAll = !option.empty() && app.get_option_no_throw(option) != nullptr;
    const std::string command = isOfAll ? std::string() : chosenCommand(app);
    return " (see quillomat " + (command.empty() ? "" : command + " ") + "--help)";
}

std::vector<std::string> commandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const auto* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    return names;
}

/// A word that nothing on the line asks for.
ExitStatus complainOfWord(const CLI::App& app, const std::string& word) {
    if (word.starts_with('-')) {
        return failUsage(word, "no such option" + seeHelp(app));
    }
    if (!chosenCommand(app).empty()) {
        return failUsage(word, "one word too many for " + chosenCommand(app) + seeHelp(app));
    }
    const auto nearest = nearestNames(word, commandNames(app), 1);
    const bool isNear = !nearest.empty() && editDistance(word, nearest.front()) <= 2;
    return failUsage(word, "no such command" + (isNear ? "; did you mean " + nearest.front() + "?" : seeHelp(app)));
}

/// The parser's message as one line of ours.
ExitStatus complainOf(const CLI::App& app, const CLI::ParseError& error) {
    if (const auto words = app.remaining(true); !words.empty()) {
        return complainOfWord(app, words.front());
    }
    if (chosenCommand(app).empty() && dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
        return failUsage("usage", "a command is required" + seeHelp(app));
    }
    std::string text = error.what();
    text.erase(std::min(text.find('\n'), text.size()));
    const auto colon = text.find(": ");
    if (colon == std::string::npos) {
        return failUsage(chosenCommand(app).empty() ? "usage" : chosenCommand(app),
                         lowerCaseStart(text) + seeHelp(app));
    }
    std::string why = text.substr(colon + 2);
    if (why.starts_with("At Most")) {
        why.replace(0, 7, "at most");
    }
    const std::string what = text.substr(0, colon);
    return failUsage(what, lowerCaseStart(why) + seeHelp(app, what));
}

/// Runs the command; whatever it throws is a failure like any other.
ExitStatus runCommand(const std::string& name, const Run& run) {
    try {
        const ExitStatus status = run();
        const Status said = finishResults();
        return said ? status : fail("standard output", said.reason());
    } catch (const std::bad_alloc&) {
        return fail(name, "not enough memory");
    } catch (const std::exception& error) {
        return fail(name, lowerCaseStart(error.what()));
    }
}

/// The command with its stages recorded. A trace that cannot be written is a failure of a command that worked.
ExitStatus runTraced(const std::string& name, const Run& run, const std::string& path) {
    trace::start();
    ExitStatus status = ExitStatus::failed;
    {
        const trace::Span span("command");
        status = runCommand(name, run);
    }
    const std::string document = trace::stop();
    SystemFileManager files;
    const Status written = writeOutputFile(files, path, std::as_bytes(std::span(document)));
    if (written) {
        return status;
    }
    const ExitStatus failed = fail(path, written.reason());
    return status == ExitStatus::done ? failed : status;
}

} // namespace

int runCommandLine(int argc, char** argv) {
    // A reader that goes away, and a file that may grow no further, are failed writes like any other.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);

    CLI::App app("Puts screenshots, in perspective, into device frames.", "quillomat");
    app.set_version_flag("--version", "quillomat " QUILLOMAT_VERSION);
    app.require_subcommand(1);
    app.fallthrough();
    GlobalOptions options;
    options.server = QUILLOMAT_SERVER;
    Run run;
    addGlobalOptions(app, options);
    addCatalogueCommands(app, options, run);
    addRenderCommand(app, options, run);
    addReplayCommand(app, options, run);
    addDocumentCommands(app, options, run);
    addWebCommands(app, options, run);
    for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        command->footer("The options of every command are those of quillomat --help.");
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        // Help was asked for with a command that is none.
        if (const auto words = app.remaining(); chosenCommand(app).empty() && !words.empty()) {
            return static_cast<int>(complainOfWord(app, words.front()));
        }
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        return static_cast<int>(complainOf(app, error));
    }
    if (options.trace == "-") {
        return static_cast<int>(failUsage("--trace", "expected a file"));
    }
    return static_cast<int>(options.trace.empty() ? runCommand(chosenCommand(app), run)
                                                  : runTraced(chosenCommand(app), run, options.trace));
}

} // namespace quillomat
