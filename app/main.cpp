// The window program: reads the options that all programs share, and opens the window.
#include "hosts/qt/WindowApplication.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/Trace.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QQuickStyle>
#include <QTranslator>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>

namespace {

using namespace quillomat;

constexpr int wrongUsage = 2;

int complain(const QString& message) {
    std::fprintf(stderr, "%s: %s\n", QUILLOMAT_PROGRAM, message.toUtf8().constData());
    return wrongUsage;
}

/// "512M", "2 GiB", "1048576": bytes.
std::optional<std::uint64_t> readSize(QString text) {
    text = text.trimmed().toUpper();
    for (const auto* ending : {"IB", "B"}) {
        if (text.endsWith(QLatin1String(ending))) {
            text.chop(static_cast<qsizetype>(qstrlen(ending)));
            break;
        }
    }
    int shift = 0;
    constexpr const char* units = "KMGT";
    for (int i = 0; i < 4; ++i) {
        if (text.endsWith(QLatin1Char(units[i]))) {
            shift = 10 * (i + 1);
            text.chop(1);
            break;
        }
    }
    bool isNumber = false;
    const qulonglong value = text.trimmed().toULongLong(&isNumber);
    if (!isNumber || value == 0 || value > (std::uint64_t{1} << 50 >> shift)) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(value) << shift;
}

void addOptions(QCommandLineParser& parser) {
    const auto add = [&parser](const QStringList& names, const char* description, const char* value = "") {
        parser.addOption({names, QString::fromUtf8(description), QString::fromUtf8(value)});
    };
    add({"documents"}, "Documents directory: stored catalogue, downloads, imports.", "DIR");
    add({"resources"}, "Application resources: main.json and images/.", "DIR");
    add({"server"}, "The maker's web server, short host form.", "HOST[:PORT]");
    add({"cacert"}, "Trust this certificate authority as well.", "FILE");
    add({"screen-scale"}, "The main screen's scale for intermediate pictures.", "N");
    add({"memory"}, "The ceiling for one render.", "SIZE");
    add({"trace"}, "Write the stages of the work and their times to this file.", "FILE");
    add({"json"}, "Taken for the command's sake; the window has no results to print.");
    add({"h", "help"}, "Print this.");
    add({"version"}, "Print the version.");
    add({"v", "verbose"}, "The application's log lines on standard error.");
    add({"appearance"}, "light, dark or auto (the default).", "LOOK");
    add({"reduce-motion"}, "Fade instead of sliding, whatever the desktop says.");
    add({"text-scale"}, "The size of the type, 0.85 to 2; by default as the desktop says.", "N");
    add({"screens"}, "Load the screens from this folder: for those who change them.", "DIR");
    add({"frame-log"}, "Write the milliseconds between frames to this file.", "FILE");
}

std::optional<QString> readOptions(const QCommandLineParser& parser, WindowOptions& options) {
    const auto text = [&parser](const char* name) { return parser.value(QString::fromUtf8(name)); };
    options.documents = text("documents").toStdString();
    options.resources = text("resources").toStdString();
    options.server = parser.isSet("server") ? text("server").toStdString() : QUILLOMAT_SERVER;
    options.tutorialUrl = QUILLOMAT_TUTORIAL_URL;
    options.caCertificate = text("cacert").toStdString();
    options.verbose = parser.isSet("verbose");
    options.reducesMotion = parser.isSet("reduce-motion");
    options.screens = text("screens");
    options.frameLog = text("frame-log");
    if (parser.isSet("screen-scale")) {
        bool isNumber = false;
        options.screenScale = text("screen-scale").toDouble(&isNumber);
        if (!isNumber || !(options.screenScale >= 0.25 && options.screenScale <= 8)) {
            return QStringLiteral("--screen-scale: expected a number from 0.25 to 8");
        }
    }
    if (parser.isSet("text-scale")) {
        bool isNumber = false;
        options.textScale = text("text-scale").toDouble(&isNumber);
        if (!isNumber || !(options.textScale >= 0.85 && options.textScale <= 2)) {
            return QStringLiteral("--text-scale: expected a number from 0.85 to 2");
        }
    }
    if (parser.isSet("memory")) {
        const auto size = readSize(text("memory"));
        if (!size) {
            return QStringLiteral("--memory: expected a size such as 512M or 2GiB");
        }
        options.memory = *size;
    }
    if (parser.isSet("appearance")) {
        options.appearance = text("appearance");
        if (!QStringList{"light", "dark", "auto"}.contains(options.appearance)) {
            return QStringLiteral("--appearance: expected light, dark or auto");
        }
    }
    return std::nullopt;
}

bool writeTrace(const std::string& path) {
    const std::string document = trace::stop();
    const Status written = SystemFileManager().write(path, std::as_bytes(std::span(document)));
    if (!written) {
        complain(QString::fromStdString(path + ": " + written.reason()));
    }
    return static_cast<bool>(written);
}

} // namespace

int main(int argc, char** argv) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Puts screenshots, in perspective, into device frames."));
    addOptions(parser);
    quillomat::WindowOptions options;
    // Questions about the program are answered where there is no display, too.
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    if (!parser.parse(arguments)) {
        return complain(parser.errorText());
    }
    if (parser.isSet("version")) {
        std::printf("%s %s\n", QUILLOMAT_PROGRAM, QUILLOMAT_VERSION);
        return 0;
    }
    if (parser.isSet("help")) {
        const QCoreApplication namedInTheText(argc, argv);
        std::printf("%s", parser.helpText().toUtf8().constData());
        return 0;
    }
    if (!parser.positionalArguments().isEmpty()) {
        return complain(QStringLiteral("%1: not an option").arg(parser.positionalArguments().constFirst()));
    }
    if (const auto trouble = readOptions(parser, options)) {
        return complain(*trouble);
    }

    const std::string tracePath = parser.value(QStringLiteral("trace")).toStdString();
    if (!tracePath.empty()) {
        quillomat::trace::start();
    }
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("quillomat"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Quillomat"));
    QGuiApplication::setApplicationVersion(QStringLiteral(QUILLOMAT_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.quillomat.Quillomat"));
    QQuickStyle::setStyle(QStringLiteral("Basic"));

    QTranslator translator;
    if (translator.load(QLocale(), QStringLiteral("quillomat"), QStringLiteral("_"),
                        QStringLiteral(":/translations"))) {
        QGuiApplication::installTranslator(&translator);
    }
    const auto opened = quillomat::WindowApplication::open(options);
    if (!opened) {
        complain(QString::fromStdString(opened.reason()));
        return 1;
    }
    if (const auto shown = (*opened)->show(); !shown) {
        complain(QString::fromStdString(shown.reason()));
        return 1;
    }
    const int status = QGuiApplication::exec();
    return tracePath.empty() || writeTrace(tracePath) ? status : 1;
}
