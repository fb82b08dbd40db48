// tidewell-demo: the client's own window, watched by the Newcomer. It uses the home folder that it is given in HOME.
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
        QStringLiteral("Waits in the client's window until the download queued in its home folder has arrived."));
    l_parser.addHelpOption();
    const QCommandLineOption l_file(QStringLiteral("file"), QStringLiteral("Where the finished file must lie."),
                                    QStringLiteral("path"));
    const QCommandLineOption l_sha256(QStringLiteral("sha256"), QStringLiteral("Its digest, hexadecimal."),
                                      QStringLiteral("digest"));
    const QCommandLineOption l_pictures(QStringLiteral("pictures"),
                                        QStringLiteral("Folder for pictures of the window."), QStringLiteral("folder"));
    const QCommandLineOption l_seconds(QStringLiteral("seconds"), QStringLiteral("How long to wait in all."),
                                       QStringLiteral("number"), QStringLiteral("120"));
    l_parser.addOptions({l_file, l_sha256, l_pictures, l_seconds});
    l_parser.process(i_application);
    if (!l_parser.isSet(l_file) || !l_parser.isSet(l_sha256) || !l_parser.isSet(l_pictures)) {
        l_parser.showHelp(2);
    }
    return {l_parser.value(l_file), l_parser.value(l_sha256), l_parser.value(l_pictures),
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
    Newcomer l_newcomer(l_window, l_options);
    const int l_status = QApplication::exec();
    return l_status == 0 && !l_newcomer.HasSeenAll() ? 1 : l_status;
}
