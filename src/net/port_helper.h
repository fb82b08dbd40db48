// Starts tidewell-upnp with one question and hands its answer over when the event loop comes round to it. Never blocks
// while a question is out; the helper ends by itself after limits::routerQuestionSeconds.
#pragma once

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>

class QProcess;

class PortHelper : public QObject {
    Q_OBJECT

public:
    // The fields of each line of the answer; no line at all when the helper came to no end or could not be started.
    using Answer = QList<QStringList>;
    using OnAnswer = std::function<void(const Answer&)>;

    explicit PortHelper(QObject* ip_parent);
    // Kills a helper that is still asking; its answer never comes.
    ~PortHelper() override;

    // One at a time: i_onAnswer may ask the next.
    void Ask(const QStringList& i_question, OnAnswer i_onAnswer);

    // The program that is started, beside this one at first; empty for none. For tests, which must not ask the real
    // network.
    static void SetProgram(const QString& i_path);

private:
    void Finish(const Answer& i_answer);

    std::unique_ptr<QProcess> mp_process;
    OnAnswer m_onAnswer;
};
