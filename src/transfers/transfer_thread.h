// What the two workers share: one socket and one file that are theirs while they run, a stop flag that also wakes
// every wait, and notices to the main thread that never pile up: one at a time, holding the latest figures.
//
// The object itself lives on the main thread, and all its signals are sent from there. Notices travel as calls posted
// to the object, so deleting it drops what is still on the way.
#pragma once

#include <QElapsedTimer>
#include <QMutex>
#include <QThread>
#include <QTimer>

#include <chrono>

class QFile;
class QTcpSocket;

class TransferThread : public QThread {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds kStallLimit{30000};

    ~TransferThread() override;

    // Main thread: gives the socket, which must have no other owner left, to the worker and starts it, once the event
    // loop comes round: the socket may just be sending the signal that brought it here. Does nothing any more after
    // SignalExit(), and ends at once in failure when the process has run out of descriptors.
    void Begin();

    // Ends the worker at its next step and wakes it from any wait. Any thread.
    void SignalExit();

    // Progress is shown at most this often; steps in between are folded into the next notice, and what is left is
    // delivered before the end.
    static constexpr std::chrono::milliseconds kNoticeSpacing{50};

protected:
    // Neither object is owned; both outlive the run. i_stallLimit bounds each wait for the peer.
    TransferThread(QTcpSocket* ip_socket, QFile* ip_file, std::chrono::milliseconds i_stallLimit);

    // Moves the bytes; false on any failure. Runs on the worker.
    virtual bool Perform() = 0;
    // Sent on the main thread, in this order: any number of progress notices, then the one that ends it.
    virtual void EmitProgress(qint64 i_position, int i_bytesPerSecond) = 0;
    virtual void EmitEnd(bool i_success) = 0;

    // Worker only from here on.
    enum class Wait { Ready, Stopped, TimedOut, Failed };

    bool ExitSignalled() const;
    // Until the socket can be read (or written), at most for i_limit. An error or a hang-up counts as ready: the call
    // that follows tells which.
    Wait WaitForSocket(bool i_toWrite, std::chrono::milliseconds i_limit) const;
    // True when the time passed without a stop.
    bool Sleep(std::chrono::milliseconds i_time) const;
    // Hands the kernel whatever the socket object still buffers for the peer.
    bool FlushSocket();
    void ReportProgress(qint64 i_position, int i_bytesPerSecond);

    QTcpSocket* const mp_socket;
    QFile* const mp_file;
    const std::chrono::milliseconds m_stallLimit;

private:
    void run() override;
    void TakeSocketAndStart();
    void OnNotice();
    void DeliverProgress();
    void OnEnd(bool i_success);

    const int m_wakeDescriptor; // eventfd, readable from SignalExit() on; -1 if there was no descriptor left
    // Given back just before the start: Qt ends the process when it finds none for the new thread. -1 likewise.
    int m_spareDescriptor;

    mutable QMutex m_exitMutex;
    bool m_exit = false;

    // Main thread: runs while a notice that came too soon is held back.
    QTimer m_spacing;
    QElapsedTimer m_sinceNotice;

    // The latest figures, and whether a notice that will fetch them is on its way.
    QMutex m_progressMutex;
    qint64 m_position = 0;
    int m_bytesPerSecond = 0;
    bool m_noticeInFlight = false;
};
