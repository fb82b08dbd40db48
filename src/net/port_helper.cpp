#include "net/port_helper.h"

#include <QCoreApplication>
#include <QProcess>

#include <optional>
#include <utility>

#include "store/contract.h"

namespace {

// Killed processes end at once, unless the kernel holds them in the middle of something.
constexpr int c_patienceMilliseconds = 1000;

std::optional<QString>& Program() {
    static std::optional<QString> l_program;
    return l_program;
}

QString ProgramPath() {
    return Program().value_or(QCoreApplication::applicationDirPath() + QStringLiteral("/tidewell-upnp"));
}

PortHelper::Answer Fields(const QByteArray& i_output) {
    PortHelper::Answer l_answer;
    const QStringList l_lines = QString::fromUtf8(i_output).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString& l_line : l_lines)
        l_answer.append(l_line.split(QLatin1Char('\t')));
    return l_answer;
}

} // namespace

PortHelper::PortHelper(QObject* ip_parent) : QObject(ip_parent) {}

PortHelper::~PortHelper() {
    if (!mp_process)
        return;
    mp_process->disconnect(this);
    mp_process->kill();
    mp_process->waitForFinished(c_patienceMilliseconds);
}

void PortHelper::SetProgram(const QString& i_path) {
    Program() = i_path;
}

void PortHelper::Ask(const QStringList& i_question, OnAnswer i_onAnswer) {
    TIDEWELL_CONTRACT(!mp_process);
    m_onAnswer = std::move(i_onAnswer);
    mp_process = std::make_unique<QProcess>();
    mp_process->setProgram(ProgramPath());
    mp_process->setArguments(i_question);
    mp_process->setStandardInputFile(QProcess::nullDevice());
    mp_process->setStandardErrorFile(QProcess::nullDevice());
    // Queued: a program that is not there is told of from within start().
    connect(
        mp_process.get(), &QProcess::errorOccurred, this,
        [this](QProcess::ProcessError i_error) {
            if (i_error == QProcess::FailedToStart)
                Finish({});
        },
        Qt::QueuedConnection);
    connect(
        mp_process.get(), &QProcess::finished, this,
        [this](int i_code, QProcess::ExitStatus i_status) {
            const bool l_isWhole = i_status == QProcess::NormalExit && i_code == EXIT_SUCCESS;
            Finish(l_isWhole ? Fields(mp_process->readAllStandardOutput()) : Answer());
        },
        Qt::QueuedConnection);
    mp_process->start(QIODevice::ReadOnly);
}

void PortHelper::Finish(const Answer& i_answer) {
    mp_process.reset();
    const OnAnswer l_onAnswer = std::exchange(m_onAnswer, nullptr);
    l_onAnswer(i_answer);
}
