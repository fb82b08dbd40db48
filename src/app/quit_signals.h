// Turns SIGTERM, SIGINT and SIGHUP into the ordinary end of the event loop, so that destructors run, the store is saved
// and the process ends with status 0.
#pragma once

#include <QObject>

#include <memory>

class QSocketNotifier;

// One at a time, made after the application object and before anything that must be shut down in order. A signal that
// comes before the event loop runs ends the loop as soon as it starts. The destructor gives the signals back to whoever
// had them before.
class QuitSignals : public QObject {
    Q_OBJECT

public:
    QuitSignals();
    ~QuitSignals() override;

private:
    void OnSignalArrived();

    int m_pipeEnds[2] = {-1, -1}; // read, write
    std::unique_ptr<QSocketNotifier> mp_notifier;
};
