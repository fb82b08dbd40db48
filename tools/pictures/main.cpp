// tidewell-pictures: opens the client's own window on the home folder given in HOME and saves a picture of each scene.
#include "contents.h"
#include "palettes.h"
#include "picture_file.h"
#include "scenes.h"

#include "net/server.h"
#include "ui/main_window.h"
#include "ui/window_style.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDeadlineTimer>
#include <QDir>
#include <QNetworkProxy>
#include <QPixmap>

#include <cstdio>

namespace {

constexpr std::chrono::seconds c_patience(120);
constexpr std::chrono::milliseconds c_settling(100); // timers of a moment, such as that of the room list

void Run(std::chrono::milliseconds i_time) {
    const QDeadlineTimer l_end(i_time);
    while (!l_end.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
}

bool Await(bool (*i_condition)()) {
    const QDeadlineTimer l_end(c_patience);
    while (!i_condition() && !l_end.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    }
    return i_condition();
}

bool IsLoggedIn() {
    return gp_server->IsConnected();
}

bool Take(const Scene& i_scene, const QString& i_folder, const QString& i_suffix) {
    QWidget* const lp_window = i_scene.show();
    Run(c_settling);
    const QString l_path = QStringLiteral("%1/%2%3.png").arg(i_folder, QLatin1String(i_scene.name), i_suffix);
    const bool l_isSaved = SavePicture(lp_window->grab().toImage(), l_path);
    if (lp_window != mainWindow) {
        lp_window->close();
        Run(c_settling);
    }
    if (!l_isSaved) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(l_path));
    }
    return l_isSaved;
}

} // namespace

int main(int i_count, char** ip_arguments) {
    QApplication l_application(i_count, ip_arguments);
    QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
    QApplication::setStyle(new WindowStyle(QStringLiteral("Fusion")));

    QCommandLineParser l_parser;
    const QCommandLineOption l_dark(QStringLiteral("dark"), QStringLiteral("With a dark palette."));
    const QCommandLineOption l_suffix(QStringLiteral("suffix"), QStringLiteral("Behind the name of each scene."),
                                      QStringLiteral("text"));
    const QCommandLineOption l_only(QStringLiteral("only"), QStringLiteral("This scene and no other."),
                                    QStringLiteral("name"));
    const QCommandLineOption l_first(QStringLiteral("first"), QStringLiteral("The scenes of a first start."));
    l_parser.addOptions({l_dark, l_suffix, l_only, l_first});
    l_parser.addHelpOption();
    l_parser.addPositionalArgument(QStringLiteral("folder"), QStringLiteral("Where the pictures go."));
    l_parser.process(l_application);
    if (l_parser.positionalArguments().size() != 1) {
        l_parser.showHelp(2);
    }
    const QString l_folder = l_parser.positionalArguments().constFirst();
    QDir().mkpath(l_folder);
    QApplication::setPalette(l_parser.isSet(l_dark) ? DarkPalette() : LightPalette());

    MainWindow l_window;
    l_window.show();
    const bool l_isFirst = l_parser.isSet(l_first);
    if (!l_isFirst) {
        if (!Await(IsLoggedIn)) {
            std::fputs("no login\n", stderr);
            return 1;
        }
        FillStore();
        if (!Await(IsStoreFilled)) {
            std::fputs("the store does not fill\n", stderr);
            return 1;
        }
    }
    Run(c_settling);
    bool l_isFine = true;
    for (const Scene& l_scene : l_isFirst ? FirstScenes() : Scenes()) {
        if (!l_parser.isSet(l_only) || l_parser.value(l_only) == QLatin1String(l_scene.name)) {
            l_isFine = Take(l_scene, l_folder, l_parser.value(l_suffix)) && l_isFine;
        }
    }
    return l_isFine ? 0 : 1;
}
