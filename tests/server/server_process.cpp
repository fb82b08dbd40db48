#include "server/server_process.h"

#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <csignal>

namespace {

QString Program() {
    return QStringLiteral(TIDEWELL_SERVER_PROGRAM);
}

} // namespace

ServerProcess::ServerProcess(const QStringList& i_options) {
    Start(i_options);
}

ServerProcess::~ServerProcess() {
    Kill();
}

void ServerProcess::Start(const QStringList& i_options) {
    m_process.setStandardErrorFile(ErrorFile());
    m_process.start(Program(),
                    QStringList{QStringLiteral("--listen"), QStringLiteral("127.0.0.1"), QStringLiteral("--port"),
                                QString::number(m_port), QStringLiteral("--data"), DataFile()} +
                        i_options);
    QByteArray l_line;
    while (!l_line.endsWith('\n') && (m_process.bytesAvailable() > 0 || m_process.waitForReadyRead(g_patienceMs))) {
        l_line += m_process.readLine();
    }
    static const QRegularExpression l_announcement(QStringLiteral("^listening on 127\\.0\\.0\\.1:(\\d+)\n$"));
    const QRegularExpressionMatch l_match = l_announcement.match(QString::fromUtf8(l_line));
    ASSERT_TRUE(l_match.hasMatch()) << l_line.toStdString() << Errors().toStdString();
    m_port = l_match.captured(1).toUShort();
}

int ServerProcess::Stop(int i_signal) {
    ::kill(static_cast<pid_t>(m_process.processId()), i_signal);
    const bool l_ended = m_process.waitForFinished(g_patienceMs) && m_process.exitStatus() == QProcess::NormalExit;
    EXPECT_TRUE(Errors().isEmpty()) << Errors().toStdString();
    return l_ended ? m_process.exitCode() : -1;
}

QString ServerProcess::ErrorFile() const {
    return m_folder.filePath(QStringLiteral("errors"));
}

QByteArray ServerProcess::Errors() const {
    QFile l_file(ErrorFile());
    return l_file.open(QIODevice::ReadOnly) ? l_file.readAll() : QByteArray();
}

void ServerProcess::Kill() {
    m_process.kill();
    m_process.waitForFinished(g_patienceMs);
}

ProgramResult RunServer(const QStringList& i_options) {
    QProcess l_process;
    l_process.start(Program(), i_options);
    ProgramResult l_result;
    if (l_process.waitForFinished(g_patienceMs) && l_process.exitStatus() == QProcess::NormalExit) {
        l_result.exitStatus = l_process.exitCode();
    }
    l_process.kill();
    l_process.waitForFinished();
    l_result.output = l_process.readAllStandardOutput();
    l_result.errors = l_process.readAllStandardError();
    return l_result;
}
