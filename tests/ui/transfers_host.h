// The managers that the pages of transfers and shares stand on, and a window to put a page into, all real.
#pragma once

#include "app/settings.h"
#include "app/show_is_over.h"
#include "app/text.h"
#include "app/timers.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "sharing/shared_folders_manager.h"
#include "store/data_saver.h"
#include "transfers/transfer_queue_manager.h"
#include "ui/action_set_tool_bar.h"
#include "ui/event_tool_bar.h"
#include "ui/size_manager.h"

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

class PageTest : public testing::Test {
protected:
    PageTest() {
        qputenv("HOME", m_home.path().toUtf8());
        RenewStore();
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
        SetSetting("download_folder", ToUtf8(m_home.filePath(QStringLiteral("dl"))));
    }
    ~PageTest() override {
        g_showIsOver = true;
        delete transferQueueManager;
        delete sharedFoldersManager;
        delete peerMessenger;
        delete gp_server;
        delete dataSaver;
        delete timerManager;
        m_window.reset();
        RenewStore();
    }
    // The page fills the window, which is active from then on.
    void ShowPage(QWidget* ip_page) {
        m_window->setCentralWidget(ip_page);
        m_window->resize(1000, 600);
        m_window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
    }

    std::unique_ptr<QMainWindow> m_window;

private:
    static void RenewStore() {
        std::destroy_at(&d);
        std::construct_at(&d);
        g_showIsOver = false;
    }

    QTemporaryDir m_home;
};

inline std::vector<std::string> ActionTexts() {
    std::vector<std::string> l_texts;
    for (const QAction* const lp_action : actionBar->actions()) {
        l_texts.push_back(lp_action->text().toStdString());
    }
    return l_texts;
}

// As a click on the button that the focus has brought.
inline void Press(const char* i_text) {
    for (QAction* const lp_action : actionBar->actions()) {
        if (lp_action->text() == QLatin1String(i_text)) {
            return lp_action->trigger();
        }
    }
    ADD_FAILURE() << "no button " << i_text;
}

inline QTreeWidgetItem* Child(QTreeWidget* ip_tree, std::initializer_list<int> i_path) {
    QTreeWidgetItem* lp_row = ip_tree->invisibleRootItem();
    for (const int l_index : i_path) {
        lp_row = lp_row ? lp_row->child(l_index) : nullptr;
    }
    if (!lp_row) {
        ADD_FAILURE() << "no such row";
        std::abort();
    }
    return lp_row;
}

// The texts of the rows below, with those below them in brackets: "a (b c)".
inline std::string Tree(const QTreeWidgetItem* ip_row, int i_column) {
    std::string l_text;
    for (int l_index = 0; l_index < ip_row->childCount(); ++l_index) {
        const QTreeWidgetItem* const lp_child = ip_row->child(l_index);
        if (!lp_child->isHidden()) {
            const std::string l_below = Tree(lp_child, i_column);
            l_text += (l_text.empty() ? "" : " ") + lp_child->text(i_column).toStdString() +
                      (l_below.empty() ? "" : " (" + l_below + ")");
        }
    }
    return l_text;
}
