#include "app/background_worker.h"

#include <utility>

BackgroundWorker::BackgroundWorker(const char* ip_name) {
    m_thread.setObjectName(QString::fromLatin1(ip_name));
    m_there.moveToThread(&m_thread);
}

BackgroundWorker::~BackgroundWorker() {
    m_stop = true;
    m_thread.quit();
    m_thread.wait();
}

void BackgroundWorker::Do(Job i_job) {
    if (!m_thread.isRunning())
        m_thread.start();
    QMetaObject::invokeMethod(
        &m_there,
        [this, l_job = std::move(i_job)] {
            if (m_stop)
                return;
            Finish l_finish = l_job(m_stop);
            QMetaObject::invokeMethod(&m_here, std::move(l_finish), Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
}
