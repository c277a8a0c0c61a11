#include "app/Application.h"
#include "catalogue/SelectionTableViewController.h"
#include "cli/Commands.h"
#include "cli/World.h"
#include "platform/foundation/Conversions.h"
#include "platform/graphics/ImageFile.h"

#include <algorithm>
#include <memory>

namespace quillomat {

namespace {

constexpr std::uint64_t importLimit = std::uint64_t{1} << 30;

struct ImportedFile {
    std::string source;
    std::string stored;      // its name in the documents directory
    std::string kind;        // "definition", "picture" or "other"
    std::string counterpart; // the name it needs beside it; empty for what needs none
    std::string remark;      // what else is to be said about it
    bool complete = false;
};

ImportedFile classify(const std::string& source, const Bytes& bytes) {
    ImportedFile file{source, lastPathComponent(source), "other", {}, {}, false};
    if (file.stored.find(".cfg") != std::string::npos) {
        file.kind = "definition";
        file.counterpart = replaceAll(file.stored, ".cfg", ".png");
        if (const auto json = parseJson(bytes); !json || !json->isObject()) {
            file.remark = "is not a definition: " + (json ? std::string("not an object") : json.reason());
        }
    } else if (readImageHeader(bytes)) {
        file.kind = "picture";
        file.counterpart = replaceAll(file.stored, ".png", ".cfg");
        if (file.counterpart == file.stored) {
            file.counterpart.clear();
            file.remark = "no definition can name it: its name has no .png";
        }
    } else {
        file.remark = file.stored == "main.json"
                          ? "is the catalogue from now on"
                          : "neither a definition nor a picture; it is stored and nothing reads it";
    }
    return file;
}

/// Reads every file before anything is changed: what cannot be imported is said first.
Result<std::vector<ImportedFile>> checkFiles(World& world, const std::vector<std::string>& names, bool replace) {
    std::vector<ImportedFile> files;
    for (const auto& name : names) {
        const auto bytes = world.files().read(name, importLimit);
        if (!bytes) {
            return Failure{name + ": " + bytes.reason()};
        }
        auto file = classify(name, *bytes);
        if (!isPlainFileName(file.stored)) {
            return Failure{name + ": not a name that can be stored"};
        }
        const auto isOfThatName = [&](const ImportedFile& other) { return other.stored == file.stored; };
        if (std::any_of(files.begin(), files.end(), isOfThatName)) {
            return Failure{name + ": another of the files is called " + file.stored + " as well"};
        }
        if (!replace &&
            world.files().fileExists(appendPathComponent(world.platform().documentsDirectory, file.stored))) {
            return Failure{name + ": " + file.stored + " is stored already; replace it with --replace"};
        }
        files.push_back(std::move(file));
    }
    return files;
}

/// Picks the file in the list's document picker, and answers "Yes" where it asks to replace.
Status importFile(World& world, HeadlessHost& host, SelectionTableViewController& list, const ImportedFile& file) {
    list.showFilePicker();
    host.pickDocument(file.source);
    host.press("Yes");
    const auto stored =
        world.files().read(appendPathComponent(world.platform().documentsDirectory, file.stored), importLimit);
    const auto source = world.files().read(file.source, importLimit);
    if (!stored || !source || *stored != *source) {
        const std::string& folder = world.platform().documentsDirectory;
        const std::string why = world.files().failureOf(appendPathComponent(folder, file.stored));
        return Failure{"could not be copied into " + folder + (why.empty() ? "" : ": " + why)};
    }
    return {};
}

void report(const GlobalOptions& options, const std::vector<ImportedFile>& files) {
    Value::Array results;
    for (const auto& file : files) {
        results.push_back(Value::object({{"file", Value::string(file.source)},
                                         {"stored", Value::string(file.stored)},
                                         {"kind", Value::string(file.kind)},
                                         {"complete", Value::boolean(file.complete)}}));
        if (!options.json) {
            printLine(printable(file.stored) + "\t" + file.kind + (file.complete ? "" : "\tincomplete"));
        }
        if (!file.complete && !file.counterpart.empty()) {
            warn(file.stored, file.kind == "definition"
                                  ? "its picture " + file.counterpart + " is missing, so it does not show yet"
                                  : "its definition " + file.counterpart + " is missing, so it does not show yet");
        }
        if (!file.remark.empty()) {
            warn(file.stored, file.remark);
        }
    }
    if (options.json) {
        printJson(Value::array(std::move(results)));
    }
}

} // namespace

ExitStatus runImport(const GlobalOptions& options, const std::vector<std::string>& files, bool replace) {
    const auto world = World::open(options);
    if (!world) {
        return fail("import", world.reason());
    }
    auto checked = checkFiles(**world, files, replace);
    if (!checked) {
        // The reason names its file already.
        const auto colon = checked.reason().find(": ");
        return fail(checked.reason().substr(0, colon), checked.reason().substr(colon + 2));
    }
    Application application((*world)->platform());
    application.launch();
    HeadlessHost host(application.navigationController(), (*world)->queue());
    auto& list = dynamic_cast<SelectionTableViewController&>(host.top());
    auto imported = std::move(checked).value();
    for (const auto& file : imported) {
        if (const auto done = importFile(**world, host, list, file); !done) {
            return fail(file.source, done.reason());
        }
    }
    for (auto& file : imported) {
        file.complete = !file.counterpart.empty() && (*world)->files().fileExists(appendPathComponent(
                                                         (*world)->platform().documentsDirectory, file.counterpart));
    }
    report(options, imported);
    return ExitStatus::done;
}

} // namespace quillomat
