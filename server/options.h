// The command line of tidewell-server.
#pragma once

#include "server/search_tree.h"

#include <QHostAddress>
#include <QString>
#include <QStringList>

#include <set>
#include <string>

struct Options {
    QHostAddress listenAddress{QHostAddress::AnyIPv4}; // the protocol has room for IPv4 addresses only
    quint16 port = 2242;                               // 0: the system chooses
    QString dataFile = QStringLiteral("tidewell-server.sqlite");
    bool isRegistrationOpen = true;
    std::string greeting;
    std::set<std::string> privileged;
    TreeTerms tree;
};

enum class ParseResult {
    Run,
    Help, // o_text is the help
    Wrong // o_text is a sentence that names the fault
};

[[nodiscard]] ParseResult ParseOptions(const QStringList& i_arguments, Options& o_options, QString& o_text);
