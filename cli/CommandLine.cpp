#include "cli/CommandLine.h"

#include "cli/Commands.h"

#include <CLI/CLI.hpp>

#include <cctype>
#include <csignal>
#include <functional>
#include <memory>

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

void addGlobalOptions(CLI::App& app, GlobalOptions& options) {
    app.add_option("--documents", options.documents, "Documents directory: stored catalogue, downloads, imports")
        ->type_name("DIR");
    app.add_option("--resources", options.resources, "Application resources: main.json and images/")->type_name("DIR");
    app.add_option("--server", options.server, "The maker's web server, short host form")->type_name("HOST[:PORT]");
    app.add_option("--cacert", options.caCertificate, "Trust this certificate authority as well")->type_name("FILE");
    app.add_option("--screen-scale", options.screenScale, "The main screen's scale for intermediate pictures")
        ->check(CLI::Range(0.25, 8.0))
        ->type_name("N");
    app.add_option("--memory", options.memory, "The ceiling for one render")
        ->transform(CLI::AsSizeValue(/*kb_is_1000=*/false))
        ->type_name("SIZE");
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
    render
        ->add_option_function<std::string>(
            "--crop",
            [job](const std::string& text) {
                if (const auto why = readCrop(text, job->crop); !why.empty()) {
                    throw CLI::ValidationError("--crop", why);
                }
            },
            "The part of the background to use; default: the middle, in the canvas's shape")
        ->type_name("X,Y,W,H");
    render->add_flag("--blur", job->blur, "Blur the background");
    render->add_flag("--glare", job->glare, "Draw the mockup's glare");
    render
        ->add_option("-o,--output", job->output,
                     "The picture to write; - is standard output; default: the pictures folder")
        ->type_name("OUT");
    render->callback([&options, &run, job] { run = [&options, job] { return runRender(options, *job); }; });
}

void addDocumentCommands(CLI::App& app, const GlobalOptions& options, Run& run) {
    auto files = std::make_shared<std::vector<std::string>>();
    auto replace = std::make_shared<bool>(false);
    auto* import = app.add_subcommand("import", "Copies definition and picture files into the documents directory");
    import->add_option("FILE", *files, "Definitions (.cfg) and their pictures (.png)")->required();
    import->add_flag("--replace", *replace, "Replace stored files of the same name");
    import->callback([&options, &run, files, replace] {
        run = [&options, files, replace] { return runImport(options, *files, *replace);
};
} // namespace
);

auto name = std::make_shared<std::string>();
auto* remove = app.add_subcommand("delete", "Removes an imported mockup's two files");
remove->add_option("MOCKUP", *name, "A name as list prints it")->required();
remove->callback([&options, &run, name] { run = [&options, name] { return runDelete(options, *name); }; });
} // namespace quillomat

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

/// The parser's message as one line of ours.
ExitStatus complainOf(const CLI::ParseError& error) {
    std::string text = error.what();
    text.erase(std::min(text.find('\n'), text.size()));
    if (!text.empty() && text.size() > 1 && std::islower(static_cast<unsigned char>(text[1])) != 0) {
        text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    }
    return failUsage("usage", text + " (see quillomat --help)");
}

} // namespace

int runCommandLine(int argc, char** argv) {
    // A reader that goes away is a failed write like any other.
    std::signal(SIGPIPE, SIG_IGN);

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
    addDocumentCommands(app, options, run);
    addWebCommands(app, options, run);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        return static_cast<int>(complainOf(error));
    }
    return static_cast<int>(run());
}

} // namespace quillomat
