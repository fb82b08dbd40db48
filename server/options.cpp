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

const QCommandLineOption& ParentMinSpeed() {
    static const QCommandLineOption l_option(
        QStringLiteral("parent-min-speed"),
        QStringLiteral("KiB/s of upload below which a client takes no children in the tree of searches (1)."),
        QStringLiteral("number"), QStringLiteral("1"));
    return l_option;
}

const QCommandLineOption& ParentRatio() {
    static const QCommandLineOption l_option(
        QStringLiteral("parent-ratio"),
        QStringLiteral("Tenths of a KiB/s of upload that a client needs for each child (50)."),
        QStringLiteral("number"), QStringLiteral("50"));
    return l_option;
}

const QCommandLineOption& WishInterval() {
    static const QCommandLineOption l_option(QStringLiteral("wish-interval"),
                                             QStringLiteral("Seconds between two saved searches of a client (720)."),
                                             QStringLiteral("seconds"), QStringLiteral("720"));
    return l_option;
}

// Empty when the number lies in the range and was taken, else the sentence for the operator.
template <class Number>
QString TakeNumber(const QCommandLineParser& i_parser, const QCommandLineOption& i_option, int i_lowest, int i_highest,
                   Number& o_number) {
    bool l_isNumber = false;
    const int l_number = i_parser.value(i_option).toInt(&l_isNumber);
    if (!l_isNumber || l_number < i_lowest || l_number > i_highest) {
        return QStringLiteral("The value of --%1 has to be a number from %2 to %3.")
            .arg(i_option.names().first())
            .arg(i_lowest)
            .arg(i_highest);
    }
    o_number = static_cast<Number>(l_number);
    return {};
}

QString TakeTreeTerms(const QCommandLineParser& i_parser, TreeTerms& o_terms) {
    for (const QString& l_fault : {TakeNumber(i_parser, ParentMinSpeed(), 0, 1'000'000, o_terms.parentMinSpeed),
                                   TakeNumber(i_parser, ParentRatio(), 1, 1'000'000, o_terms.parentRatio),
                                   TakeNumber(i_parser, WishInterval(), 1, 7 * 24 * 3600, o_terms.wishInterval)}) {
        if (!l_fault.isEmpty()) {
            return l_fault;
        }
    }
    return {};
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
    if (const QString l_fault = TakeTreeTerms(i_parser, o_options.tree); !l_fault.isEmpty()) {
        return l_fault;
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
    l_parser.setApplicationDescription(QStringLiteral(
        "Central server of Tidewell: logins, rooms, private chat, searches, and the meeting of clients."));
    const QCommandLineOption l_help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Shows this help."));
    l_parser.addOption(l_help);
    l_parser.addOptions({Listen(), Port(), DataFile(), Registration(), Greeting(), Privileged(), ParentMinSpeed(),
                         ParentRatio(), WishInterval()});
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
