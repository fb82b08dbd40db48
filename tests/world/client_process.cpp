#include "world/client_process.h"

#include "world/conditions.h"

#include <QFile>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <csignal>
#include <iostream>

ClientProcess::ClientProcess(const ClientHome& i_home) : ClientProcess(i_home, QStringLiteral(TIDEWELL_PROGRAM)) {}

ClientProcess::ClientProcess(const ClientHome& i_home, const QString& i_program)
    : m_home(i_home), m_program(i_program) {
    QProcessEnvironment l_environment = QProcessEnvironment::systemEnvironment();
    l_environment.insert(QStringLiteral("HOME"), i_home.Path());
    l_environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    l_environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), i_home.Path());
    m_process.setProcessEnvironment(l_environment);
    m_process.setStandardErrorFile(i_home.Path(QStringLiteral("errors")), QIODevice::Append);
    Start();
}

ClientProcess::~ClientProcess() {
    EXPECT_TRUE(IsRunning() || m_isEndWanted) << "the client has ended by itself";
    Kill();
    if (testing::Test::HasFailure()) {
        QFile l_errors(m_home.Path(QStringLiteral("errors")));
        if (l_errors.open(QIODevice::ReadOnly))
            std::cerr << m_home.User().toStdString() << ": " << l_errors.readAll().toStdString() << '\n';
    }
}

void ClientProcess::Start() {
    m_isEndWanted = false;
    m_process.start(m_program, {});
    EXPECT_TRUE(m_process.waitForStarted(g_patienceMs)) << m_process.errorString().toStdString();
}

int ClientProcess::Stop(int i_signal) {
    m_isEndWanted = true;
    ::kill(static_cast<pid_t>(m_process.processId()), i_signal);
    return m_process.waitForFinished(g_patienceMs) && m_process.exitStatus() == QProcess::NormalExit
               ? m_process.exitCode()
               : -1;
}

void ClientProcess::Kill() {
    m_isEndWanted = true;
    m_process.kill();
    m_process.waitForFinished(g_patienceMs);
}

DrivenClient::DrivenClient(const ClientHome& i_home)
    : ClientProcess(i_home, QStringLiteral(TIDEWELL_WORLD_CLIENT_PROGRAM)) {}

QJsonValue DrivenClient::Do(const QStringList& i_command) {
    m_process.write(QJsonDocument(QJsonArray::fromStringList(i_command)).toJson(QJsonDocument::Compact) + '\n');
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(g_patienceMs)) {
            ADD_FAILURE() << "no answer to " << i_command.join(QLatin1Char(' ')).toStdString();
            return {};
        }
    }
    return QJsonDocument::fromJson(m_process.readLine()).array().at(0);
}

void DrivenClient::SaveOnAndOn() {
    for (int l_count = 0; l_count < 1000; ++l_count)
        m_process.write("[\"fiveMinutes\"]\n");
    while (m_process.bytesToWrite() > 0 && m_process.waitForBytesWritten(g_patienceMs)) {
    }
}

QJsonArray DrivenClient::Items(const char* ip_type) {
    return Do({QStringLiteral("items"), QString::fromUtf8(ip_type)}).toArray();
}

QJsonObject DrivenClient::ItemOf(const char* ip_type, const QString& i_value) {
    for (const QJsonValue& l_item : Items(ip_type)) {
        if (l_item[QStringLiteral("value")] == i_value)
            return l_item.toObject();
    }
    return {};
}

int DrivenClient::CountEvents(const QStringList& i_words) {
    const QJsonArray l_events = Do({QStringLiteral("events")}).toArray();
    return static_cast<int>(std::count(l_events.begin(), l_events.end(), QJsonArray::fromStringList(i_words)));
}

void DrivenClient::AwaitEvent(const QStringList& i_words) {
    EXPECT_TRUE(WaitUntil([&] { return CountEvents(i_words) > 0; })) << i_words.join(QLatin1Char(' ')).toStdString();
}

void DrivenClient::AwaitConnected() {
    EXPECT_TRUE(WaitUntil([&] { return Do({QStringLiteral("isConnected")}).toBool(); }));
}

void DrivenClient::AwaitOnline(const QString& i_user) {
    EXPECT_TRUE(WaitUntil([&] { return HasNeighbour(ItemOf("user", i_user), "is_online"); })) << i_user.toStdString();
}

void DrivenClient::AwaitStatus(const char* ip_type, const QString& i_status) {
    const std::string l_statusType = std::string(ip_type) + "_status";
    QJsonArray l_items;
    EXPECT_TRUE(WaitUntil([&] {
        l_items = Items(ip_type);
        return l_items.size() == 1 && Neighbour(l_items[0].toObject(), l_statusType.c_str()) == i_status;
    })) << QJsonDocument(l_items).toJson().toStdString();
}

QString Neighbour(const QJsonObject& i_item, const char* ip_type) {
    return i_item[QStringLiteral("to")][QString::fromUtf8(ip_type)][0].toString();
}

bool HasNeighbour(const QJsonObject& i_item, const char* ip_type) {
    return i_item[QStringLiteral("to")].toObject().contains(QString::fromUtf8(ip_type));
}
