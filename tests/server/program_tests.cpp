#include "server/scripted_client.h"

#include "app/text.h"

#include <QFile>
#include <QFileInfo>
#include <QTcpServer>

#include <gtest/gtest.h>

#include <csignal>

namespace {

QStringList At(const QString& i_dataFile, const QStringList& i_rest = {}) {
    return QStringList{QStringLiteral("--listen"), QStringLiteral("127.0.0.1"), QStringLiteral("--port"),
                       QStringLiteral("0"),        QStringLiteral("--data"),    i_dataFile} +
           i_rest;
}

} // namespace

TEST(ServerProgram, StopsCleanlyOnSigtermAndSigint) {
    for (const int l_signal : {SIGTERM, SIGINT}) {
        ServerProcess l_server;
        ScriptedClient l_anna(l_server.Port(), "anna");
        ScriptedClient l_busy(l_server.Port());
        l_busy.SendLogin("bert", "secret"); // a hash may be in the making
        EXPECT_EQ(l_server.Stop(l_signal), 0);
        EXPECT_TRUE(l_anna.AwaitClose());
    }
}

TEST(ServerProgram, KeepsItsDataFileFromOthers) {
    ServerProcess l_server;
    ScriptedClient l_anna(l_server.Port(), "anna");
    const QFile::Permissions l_others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_TRUE(QFileInfo::exists(l_server.DataFile()));
    for (const char* l_suffix : {"", "-wal"}) {
        const QString l_file = l_server.DataFile() + QString::fromUtf8(l_suffix);
        EXPECT_EQ(QFileInfo(l_file).permissions() & l_others, QFile::Permissions()) << l_suffix;
    }
    QFile l_file(l_server.DataFile() + QStringLiteral("-wal"));
    ASSERT_TRUE(l_file.open(QIODevice::ReadOnly));
    EXPECT_FALSE(l_file.readAll().contains("password of anna"));
}

TEST(ServerProgram, RefusesToStartWithASentence) {
    QTemporaryDir l_folder;
    const QString l_good = l_folder.filePath(QStringLiteral("good"));
    const QString l_garbage = l_folder.filePath(QStringLiteral("garbage"));
    QFile l_file(l_garbage);
    ASSERT_TRUE(l_file.open(QIODevice::WriteOnly));
    l_file.write(QByteArray(5000, 'x'));
    l_file.close();
    QTcpServer l_occupant;
    ASSERT_TRUE(l_occupant.listen(QHostAddress(QHostAddress::LocalHost)));

    const auto l_option = [](const char* i_name, const QString& i_value) {
        return QStringList{QString::fromUtf8(i_name), i_value};
    };
    const QStringList l_faults[] = {
        At(l_folder.filePath(QStringLiteral("no/such/folder"))),
        At(l_folder.path()),
        At(l_garbage),
        At(l_good, l_option("--port", QString::number(l_occupant.serverPort()))),
        At(l_good, l_option("--port", QStringLiteral("65536"))),
        At(l_good, l_option("--port", QStringLiteral("http"))),
        At(l_good, l_option("--listen", QStringLiteral("::1"))),
        At(l_good, l_option("--listen", QStringLiteral("somewhere"))),
        At(l_good, l_option("--registration", QStringLiteral("maybe"))),
        At(l_good, l_option("--motd", QString(5000, QLatin1Char('m')))),
        At(l_good, l_option("--parent-min-speed", QStringLiteral("-1"))),
        At(l_good, l_option("--parent-min-speed", QStringLiteral("2147483648"))),
        At(l_good, l_option("--parent-ratio", QStringLiteral("0"))),
        At(l_good, l_option("--parent-ratio", QStringLiteral("many"))),
        At(l_good, l_option("--wish-interval", QStringLiteral("0"))),
        At(l_good, l_option("--wish-interval", QStringLiteral("604801"))),
        At(l_good, {QStringLiteral("--nonsense")}),
        At(l_good, {QStringLiteral("nonsense")}),
    };
    for (const QStringList& l_options : l_faults) {
        const ProgramResult l_result = RunServer(l_options);
        EXPECT_EQ(l_result.exitStatus, 1) << ToUtf8(l_options.join(QLatin1Char(' ')));
        EXPECT_TRUE(l_result.errors.endsWith(".\n")) << l_result.errors.toStdString();
        EXPECT_TRUE(l_result.output.isEmpty());
    }
    EXPECT_EQ(QFileInfo(l_garbage).size(), 5000) << "a file of something else stays as it is";

    const ProgramResult l_help = RunServer({QStringLiteral("--help")});
    EXPECT_EQ(l_help.exitStatus, 0);
    for (const char* l_name : {"--listen", "--port", "--data", "--registration", "--motd", "--privileged",
                               "--parent-min-speed", "--parent-ratio", "--wish-interval"}) {
        EXPECT_TRUE(l_help.output.contains(l_name)) << l_name;
    }
}
