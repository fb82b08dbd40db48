#include "world/client_home.h"

#include "server/frame_link.h"

#include <QProcess>
#include <QTcpServer>

#include <gtest/gtest.h>

#include <random>

quint16 FreePort() {
    static std::mt19937 l_random(std::random_device{}());
    for (int l_try = 0; l_try < 1000; ++l_try) {
        const auto l_port = static_cast<quint16>(10000 + l_random() % 20000);
        if (QTcpServer().listen(QHostAddress(QHostAddress::Any), l_port))
            return l_port;
    }
    ADD_FAILURE() << "no free port";
    return 0;
}

ProgramRun RunStoreTool(const QStringList& i_arguments) {
    QProcess l_process;
    l_process.start(QStringLiteral(TIDEWELL_STORE_PROGRAM), i_arguments);
    ProgramRun l_run;
    if (l_process.waitForFinished(g_patienceMs) && l_process.exitStatus() == QProcess::NormalExit)
        l_run.exitStatus = l_process.exitCode();
    l_run.output = l_process.readAllStandardOutput();
    l_run.errors = l_process.readAllStandardError();
    return l_run;
}

ClientHome::ClientHome(const QString& i_user, quint16 i_serverPort) : m_user(i_user), m_port(FreePort()) {
    Set("username", i_user);
    Set("password", QStringLiteral("password of ") + i_user);
    Set("server_host", QStringLiteral("127.0.0.1"));
    Set("server_port", QString::number(i_serverPort));
    Set("listening_port", QString::number(m_port));
    Set("use_upnp", QStringLiteral("no"));
    Set("download_folder", Path(QStringLiteral("downloads")));
}

QString ClientHome::Downloads(const char* ip_tree) const {
    return Path(QStringLiteral("downloads/")) + QString::fromUtf8(ip_tree);
}

void ClientHome::Edit(const QString& i_verb, const QStringList& i_arguments) const {
    const ProgramRun l_run = RunStoreTool(QStringList{i_verb, StoreFile()} + i_arguments);
    EXPECT_EQ(l_run.exitStatus, 0) << i_verb.toStdString() << ": " << l_run.errors.toStdString();
}

void ClientHome::Set(const char* ip_key, const QString& i_value) const {
    Edit(QStringLiteral("set"), {QString::fromUtf8(ip_key), i_value});
}

QString ClientHome::Setting(const char* ip_key) const {
    return QString::fromUtf8(RunStoreTool({QStringLiteral("get"), StoreFile(), QString::fromUtf8(ip_key)}).output)
        .trimmed();
}

QStringList ClientHome::Dump() const {
    const ProgramRun l_run = RunStoreTool({QStringLiteral("dump"), StoreFile()});
    EXPECT_EQ(l_run.exitStatus, 0) << l_run.errors.toStdString();
    return QString::fromUtf8(l_run.output).split(QLatin1Char('\n'));
}
