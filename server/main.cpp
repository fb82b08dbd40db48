// tidewell-server: the central server as a program.
#include "server/central_server.h"
#include "server/database.h"
#include "server/options.h"

#include "app/process_limits.h"
#include "app/quit_signals.h"
#include "app/text.h"

#include <QCoreApplication>

#include <sodium.h>
#include <sys/stat.h>

#include <cstdio>

namespace {

int Fail(const QString& i_sentence) {
    std::fprintf(stderr, "%s\n", ToUtf8(i_sentence).c_str());
    return 1;
}

} // namespace

int main(int i_count, char** ip_arguments) {
    RaiseDescriptorLimit();
    QCoreApplication l_application(i_count, ip_arguments);
    Options l_options;
    QString l_text;
    switch (ParseOptions(QCoreApplication::arguments(), l_options, l_text)) {
    case ParseResult::Help:
        std::fputs(ToUtf8(l_text).c_str(), stdout);
        return 0;
    case ParseResult::Wrong:
        return Fail(l_text);
    case ParseResult::Run:
        break;
    }
    if (sodium_init() < 0) {
        return Fail(QStringLiteral("The system has no source of random numbers."));
    }

    const QuitSignals l_quitSignals;
    ::umask(S_IRWXG | S_IRWXO); // the data file holds password hashes and private messages
    Database l_database;
    if (!l_database.Open(l_options.dataFile, l_text)) {
        return Fail(l_text);
    }
    CentralServer l_server(l_database, l_options, Limits());
    if (!l_server.Listen(l_text)) {
        return Fail(l_text);
    }
    // Scripts wait for this line, and read from it the port that the system chose.
    std::printf("listening on %s:%d\n", ToUtf8(l_server.ListenAddress().toString()).c_str(), l_server.ListenPort());
    std::fflush(stdout);
    return QCoreApplication::exec();
}
