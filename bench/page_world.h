// The managers that the pages of transfers and shares stand on, with a home of their own and an empty store, and a
// window on Qt's offscreen platform. One to a process.
#pragma once

#include "app/settings.h"
#include "app/show_is_over.h"
#include "app/timers.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "processor_time.h"
#include "resident_memory.h"
#include "sharing/shared_folders_manager.h"
#include "store/data_saver.h"
#include "transfers/transfer_queue_manager.h"
#include "ui/action_set_tool_bar.h"
#include "ui/event_tool_bar.h"
#include "ui/size_manager.h"

#include <QApplication>
#include <QMainWindow>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

class PageWorld {
public:
    PageWorld() {
        qputenv("HOME", m_home.path().toUtf8());
        new TimerManager;
        new DataSaver;
        (new Server)->CreateData();
        m_window = std::make_unique<QMainWindow>();
        m_window->addToolBar(new ActionSetToolBar(m_window.get()));
        new PeerMessenger;
        CreateSettingsTypes();
        new SharedFoldersManager;
        new SizeManager(m_window.get());
        new TransferQueueManager;
        m_window->addToolBar(new EventToolBar(m_window.get()));
        SetSetting("download_folder", (m_home.path() + QStringLiteral("/dl")).toStdString());
    }
    ~PageWorld() {
        g_showIsOver = true;
        delete transferQueueManager;
        delete sharedFoldersManager;
        delete peerMessenger;
        delete gp_server;
        delete dataSaver;
        delete timerManager;
    }
    void Show(QWidget* ip_page) {
        m_window->setCentralWidget(ip_page);
        m_window->resize(1000, 600);
        m_window->show();
    }
    // Until nothing waits any more and the window is painted.
    void Settle() {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        m_window->repaint();
    }

    std::unique_ptr<QMainWindow> m_window;

private:
    QTemporaryDir m_home;
};

// Milliseconds that this thread, the main one, works: a busy machine does not blur them.
template <class Work>
double Time(Work i_work) {
    const double l_before = ThreadMicroseconds();
    i_work();
    return (ThreadMicroseconds() - l_before) / 1000;
}

// A figure with its limit, if there is one; what exceeds it is said so.
inline void Judge(const char* ip_what, double i_milliseconds, std::optional<double> i_limit) {
    std::printf("%-40s %8.1f ms", ip_what, i_milliseconds);
    if (i_limit) {
        std::printf(" (wanted: under %.0f)  %s", *i_limit, i_milliseconds < *i_limit ? "ok" : "MISSED");
    }
    std::printf("\n");
    std::fflush(stdout);
}
