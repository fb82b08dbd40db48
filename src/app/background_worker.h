// One thread that does jobs in the order in which they are given, for what takes too long for the main thread.
//
// A job runs on the thread and touches nothing but what it holds; what it answers runs on the owner's thread, when
// the event loop comes round there.
#pragma once

#include <QObject>
#include <QThread>

#include <atomic>
#include <functional>

class BackgroundWorker {
public:
    using Finish = std::function<void()>;
    // Tests the flag often enough to end soon once it is set; what it answers then is dropped.
    using Job = std::function<Finish(const std::atomic<bool>& i_stop)>;

    // The thread's name has 15 bytes at most, or is cut.
    explicit BackgroundWorker(const char* ip_name);
    // Waits for the job under way, which is told to stop. The others never start, and nothing is finished any more.
    ~BackgroundWorker();

    void Do(Job i_job);

private:
    std::atomic<bool> m_stop = false;
    QThread m_thread; // runs from the first job on
    QObject m_here;
    QObject m_there;
};
