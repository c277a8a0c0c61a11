// How long the window's preview takes, in processor time: a marker's drag, and a large photograph as the background.
//
//   benchmark_preview [MOCKUP] [DRAGS]
//
// Everything is the window's own, in design mode and without a display: shell, editor, recording and drawing. A drag is
// what one movement of the mouse costs: the core's answer to it (the interface's thread) and the picture (the worker's,
// held to one thread here).
#include "editor/EditingViewController.h"
#include "hosts/qt/EditorScreen.h"
#include "hosts/qt/Presentations.h"
#include "hosts/qt/PreviewPainter.h"
#include "hosts/qt/WindowApplication.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <random>
#include <stdexcept>

namespace {

using namespace quillomat;

const QString source = QStringLiteral(QUILLOMAT_SOURCE_DIR);

double processorMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

/// A window's shell with one editor open, and a finger for it.
class Session {
public:
    explicit Session(const QString& mockup) {
        WindowOptions options;
        options.documents = folder_.filePath(QStringLiteral("documents")).toStdString();
        options.resources = (source + QStringLiteral("/resources")).toStdString();
        options.server = "quillomat.invalid";
        auto opened = WindowApplication::open(options);
        if (!opened) {
            throw std::runtime_error(opened.reason());
        }
        application_ = std::move(opened).value();
        QObject::connect(&shell(), &Shell::pushed, [this](QObject* screen) { front_ = screen; });
        shell().launch();
        openEditor(mockup);
    }

    [[nodiscard]] EditorScreen& editor() { return *qobject_cast<EditorScreen*>(front_); }

    void choose(EditorScreen::Tool tool, const QString& file) {
        editor().press(tool);
        auto* picker = qobject_cast<PresentationModel*>(shell().presentation());
        if (picker == nullptr) {
            throw std::runtime_error("no picker");
        }
        picker->choose(file);
        if (picker->crop() != nullptr) {
            picker->finishCrop();
        }
        for (int turn = 0; shell().presentation() != nullptr; ++turn) {
            auto* shown = qobject_cast<PresentationModel*>(shell().presentation());
            if (turn == 100) {
                throw std::runtime_error("a picker stays open");
            }
            shown->isLeaving() ? shown->dismissalEnded() : shown->answer(0);
        }
    }

private:
    [[nodiscard]] Shell& shell() { return application_->shell(); }

    void openEditor(const QString& mockup) {
        auto& list = *qobject_cast<ListScreen*>(front_);
        const int rows = qobject_cast<CatalogueRows*>(list.rows())->rowCount();
        for (int row = 0; row < rows; ++row) {
            list.select(row);
            auto& gallery = *qobject_cast<GalleryScreen*>(front_);
            if (const auto index = gallery.names().indexOf(mockup); index >= 0) {
                gallery.tap(static_cast<int>(index));
                return;
            }
            shell().back();
        }
        throw std::runtime_error("no such mockup");
    }

    QTemporaryDir folder_;
    std::unique_ptr<WindowApplication> application_;
    QObject* front_ = nullptr;
};

/// As a telephone takes it: 12 megapixels, with grain.
QString photograph(const QTemporaryDir& folder) {
    QImage image = QImage(source + QStringLiteral("/resources/samples/background.jpg"))
                       .scaled(4000, 3000, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                       .convertToFormat(QImage::Format_RGB888);
    std::minstd_rand random(3);
    for (int y = 0; y < image.height(); ++y) {
        uchar* const row = image.scanLine(y);
        for (int x = 0; x < image.width() * 3; ++x) {
            row[x] = static_cast<uchar>(std::clamp(row[x] + static_cast<int>(random() % 31) - 15, 0, 255));
        }
    }
    const QString path = folder.filePath(QStringLiteral("photograph.jpg"));
    image.save(path, "JPEG", 90);
    return path;
}

/// From the chosen file to the first picture with it, the file's reading included.
double openPhotograph(const QString& mockup, const QString& path, double scale) {
    double best = std::numeric_limits<double>::max();
    for (int run = 0; run < 5; ++run) {
        Session session(mockup);
        const QRectF viewport = session.editor().viewport();
        const QSize pixels(qRound(viewport.width() * scale), qRound(viewport.height() * scale));
        PreviewPainter painter(/*threads=*/1);
        (void)painter.paint(recordViewport(session.editor(), pixels));
        const double start = processorMilliseconds();
        session.choose(EditorScreen::Background, path);
        (void)painter.paint(recordViewport(session.editor(), pixels));
        best = std::min(best, processorMilliseconds() - start);
    }
    return best;
}

struct Times {
    double interface = std::numeric_limits<double>::max();
    double worker = std::numeric_limits<double>::max();
    double worst = 0;
};

Times dragMarker(Session& session, double scale, int drags) {
    EditorScreen& editor = session.editor();
    const QRectF viewport = editor.viewport();
    const QSize pixels(qRound(viewport.width() * scale), qRound(viewport.height() * scale));
    PreviewPainter painter(/*threads=*/1);
    (void)painter.paint(recordViewport(editor, pixels));
    const auto marker = editor.editor()->bottomRightControl();
    std::vector<double> sums;
    double interface = 0;
    double worker = 0;
    for (int i = 0; i < drags; ++i) {
        const double start = processorMilliseconds();
        editor.drag(marker, {i % 2 == 0 ? 3.0 : -3.0, i % 4 < 2 ? 2.0 : -2.0});
        const Recording recording = recordViewport(editor, pixels);
        const double recorded = processorMilliseconds();
        (void)painter.paint(recording);
        const double end = processorMilliseconds();
        interface += recorded - start;
        worker += end - recorded;
        sums.push_back(end - start);
    }
    std::sort(sums.begin(), sums.end());
    return {interface / drags, worker / drags, sums[sums.size() * 95 / 100]};
}

void report(const char* what, double scale, const Times& times) {
    std::printf("| %s | %.0f | %.2f | %.2f | %.2f | %.2f |\n", what, scale, times.interface, times.worker,
                times.interface + times.worker, times.worst);
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const QStringList words = QGuiApplication::arguments();
    const QString mockup = words.size() > 1 ? words[1] : QStringLiteral("phone-tilted.png");
    const int drags = std::max(1, words.size() > 2 ? words[2].toInt() : 100);
    try {
        Session session(mockup);
        std::printf("| %s, dragging a marker | scale | interface | worker | both | 95 of 100 within |\n"
                    "|---|---|---|---|---|---|\n",
                    qPrintable(mockup));
        const auto drag = [&](const char* what) {
            for (const double scale : {1.0, 2.0, 3.0}) {
                report(what, scale, dragMarker(session, scale, drags));
            }
        };
        drag("frame alone");
        session.choose(EditorScreen::Left, source + QStringLiteral("/resources/samples/screenshot.png"));
        drag("with a screenshot");
        session.choose(EditorScreen::Background, source + QStringLiteral("/resources/samples/background.jpg"));
        drag("and a background");
        const QTemporaryDir folder;
        const QString path = photograph(folder);
        std::printf("\n| a photograph of 12 megapixels as the background, %.1f MB | scale | to its first picture |\n"
                    "|---|---|---|\n",
                    static_cast<double>(QFileInfo(path).size()) / 1e6);
        for (const double scale : {1.0, 2.0, 3.0}) {
            std::printf("| | %.0f | %.1f |\n", scale, openPhotograph(mockup, path, scale));
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
