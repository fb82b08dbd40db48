// tidewell-demo: the client's own window, played by the Newcomer. It uses the home folder that it is given in HOME.
#include "newcomer.h"

#include "app/process_limits.h"
#include "app/quit_signals.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QNetworkProxy>

namespace {

NewcomerOptions ReadOptions(const QCoreApplication& i_application) {
    QCommandLineParser l_parser;
    l_parser.setApplicationDescription(
        QStringLiteral("Searches in the client's window, downloads what it finds, and looks at each page."));
    l_parser.addHelpOption();
    const QCommandLineOption l_search(QStringLiteral("search"), QStringLiteral("What is searched."),
                                      QStringLiteral("words"));
    const QCommandLineOption l_user(
        QStringLiteral("user"),
        QStringLiteral("Who must answer; can be given many times. The first of them has the wanted file."),
        QStringLiteral("name"));
    const QCommandLineOption l_name(QStringLiteral("name"),
                                    QStringLiteral("Name of the wanted file, which comes with its folder."),
                                    QStringLiteral("name"));
    const QCommandLineOption l_file(QStringLiteral("file"), QStringLiteral("Where the finished file must lie."),
                                    QStringLiteral("path"));
    const QCommandLineOption l_sha256(QStringLiteral("sha256"), QStringLiteral("Its digest, hexadecimal."),
                                      QStringLiteral("digest"));
    const QCommandLineOption l_pictures(QStringLiteral("pictures"),
                                        QStringLiteral("Folder for pictures of the window."), QStringLiteral("folder"));
    const QCommandLineOption l_seconds(QStringLiteral("seconds"), QStringLiteral("How long to wait in all."),
                                       QStringLiteral("number"), QStringLiteral("120"));
    const QList<QCommandLineOption> l_needed = {l_search, l_user, l_name, l_file, l_sha256, l_pictures};
    l_parser.addOptions(l_needed);
    l_parser.addOption(l_seconds);
    l_parser.process(i_application);
    for (const QCommandLineOption& l_option : l_needed) {
        if (!l_parser.isSet(l_option)) {
            l_parser.showHelp(2);
        }
    }
    return {l_parser.value(l_search),         l_parser.values(l_user),  l_parser.value(l_name),
            l_parser.value(l_file),           l_parser.value(l_sha256), l_parser.value(l_pictures),
            l_parser.value(l_seconds).toInt()};
}

} // namespace

int main(int i_count, char** ip_arguments) {
    RaiseDescriptorLimit();
    QApplication l_application(i_count, ip_arguments);
    QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
    const NewcomerOptions l_options = ReadOptions(l_application);
    QuitSignals l_quitSignals;
    MainWindow l_window;
    l_window.show();
    Player l_player(l_window, l_options.secondsAtMost);
    Newcomer l_newcomer(l_window, l_player, l_options);
    l_player.Play(l_newcomer.Steps());
    const int l_status = QApplication::exec();
    return l_status == 0 && !l_player.HasSeenAll() ? 1 : l_status;
}
