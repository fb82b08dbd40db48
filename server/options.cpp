#include "server/options.h"

#include "app/text.h"

#include <QCommandLineParser>

namespace {

constexpr qsizetype g_greetingLimit = 4096; // characters; every client gets it at every login

const QCommandLineOption& Listen() {
    static const QCommandLineOption l_option(QStringLiteral("listen"),
                                             QStringLiteral("IPv4 address to listen on (all of this machine's)."),
                                             QStringLiteral("address"), QStringLiteral("0.0.0.0"));
    return l_option;
}

const QCommandLineOption& Port() {
    static const QCommandLineOption l_option(QStringLiteral("port"),
                                             QStringLiteral("TCP port (2242); 0 lets the system choose a free one."),
                                             QStringLiteral("number"), QStringLiteral("2242"));
    return l_option;
}

const QCommandLineOption& DataFile() {
    static const QCommandLineOption l_option(
        QStringLiteral("data"),
        QStringLiteral("File of the accounts and waiting messages (tidewell-server.sqlite in this folder)."),
        QStringLiteral("file"), QStringLiteral("tidewell-server.sqlite"));
    return l_option;
}

const QCommandLineOption& Registration() {
    static const QCommandLineOption l_option(QStringLiteral("registration"),
                                             QStringLiteral("\"open\": an unknown name registers itself at its first "
                                                            "login (default); \"closed\": it is refused."),
                                             QStringLiteral("open|closed"), QStringLiteral("open"));
    return l_option;
}

const QCommandLineOption& Greeting() {
    static const QCommandLineOption l_option(
        QStringLiteral("motd"), QStringLiteral("Message of the day, sent at every login."), QStringLiteral("text"));
    return l_option;
}

const QCommandLineOption& Privileged() {
    static const QCommandLineOption l_option(QStringLiteral("privileged"),
                                             QStringLiteral("Name of a privileged user; can be given many times."),
                                             QStringLiteral("name"));
    return l_option;
}

// Empty when all is well, else the sentence for the operator.
QString Take(const QCommandLineParser& i_parser, Options& o_options) {
    bool l_isNumber = false;
    o_options.port = i_parser.value(Port()).toUShort(&l_isNumber);
    if (!l_isNumber) {
        return QStringLiteral("The port has to be a number from 0 to 65535.");
    }
    if (!o_options.listenAddress.setAddress(i_parser.value(Listen())) ||
        o_options.listenAddress.protocol() != QAbstractSocket::IPv4Protocol) {
        return QStringLiteral("The address to listen on has to be an IPv4 address.");
    }
    const QString l_registration = i_parser.value(Registration());
    if (l_registration != QStringLiteral("open") && l_registration != QStringLiteral("closed")) {
        return QStringLiteral("The registration has to be \"open\" or \"closed\".");
    }
    if (i_parser.value(Greeting()).size() > g_greetingLimit) {
        return QStringLiteral("The message of the day has more than %1 characters.").arg(g_greetingLimit);
    }
    if (!i_parser.positionalArguments().isEmpty()) {
        return QStringLiteral("The argument \"%1\" means nothing here.").arg(i_parser.positionalArguments().first());
    }
    o_options.isRegistrationOpen = l_registration == QStringLiteral("open");
    o_options.dataFile = i_parser.value(DataFile());
    o_options.greeting = ToUtf8(i_parser.value(Greeting()));
    for (const QString& l_name : i_parser.values(Privileged())) {
        o_options.privileged.insert(ToUtf8(l_name));
    }
    return {};
}

} // namespace

ParseResult ParseOptions(const QStringList& i_arguments, Options& o_options, QString& o_text) {
    QCommandLineParser l_parser;
    l_parser.setApplicationDescription(
        QStringLiteral("Central server of Tidewell: logins, rooms, private chat, and the meeting of clients."));
    const QCommandLineOption l_help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Shows this help."));
    l_parser.addOption(l_help);
    l_parser.addOptions({Listen(), Port(), DataFile(), Registration(), Greeting(), Privileged()});
    if (!l_parser.parse(i_arguments)) {
        o_text = l_parser.errorText();
        return ParseResult::Wrong;
    }
    if (l_parser.isSet(l_help)) {
        o_text = l_parser.helpText();
        return ParseResult::Help;
    }
    o_text = Take(l_parser, o_options);
    return o_text.isEmpty() ? ParseResult::Run : ParseResult::Wrong;
}
