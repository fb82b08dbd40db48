// The search page in a window with its two tool bars, over the real managers and an empty store, not connected to any
// server. Answers come in as they do from a peer, once they have been decoded.
#pragma once

#include "app/settings.h"
#include "app/show_is_over.h"
#include "app/text.h"
#include "app/timers.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "peer/search_reply.h"
#include "search/search_history.h"
#include "search/search_replies.h"
#include "search/wish_list_schema.h"
#include "sharing/shared_folders_manager.h"
#include "store/data_saver.h"
#include "transfers/transfer_queue_manager.h"
#include "ui/action_set_tool_bar.h"
#include "ui/event_tool_bar.h"
#include "ui/search_arrivals.h"
#include "ui/search_form.h"
#include "ui/search_results_form.h"
#include "ui/search_results_tree.h"
#include "ui/size_manager.h"

#include <QLineEdit>
#include <QMainWindow>
#include <QTabWidget>
#include <QTemporaryDir>

#include <memory>
#include <string>
#include <utility>
#include <vector>

class SearchPage {
public:
    // Of the user who answers.
    struct Answer {
        bool isFree = true;
        std::uint32_t speed = 0; // bytes a second
        std::uint32_t queue = 0;
    };

    SearchPage() {
        Q_INIT_RESOURCE(icons);
        qputenv("HOME", m_home.path().toUtf8());
        g_showIsOver = false;
        new TimerManager;
        new DataSaver;
        (new Server)->CreateData();
        new PeerMessenger;
        CreateSettingsTypes();
        CreateWishListTypes();
        new DelayedInvoker;
        new SharedFoldersManager;
        new TransferQueueManager;
        m_window = std::make_unique<QMainWindow>();
        m_window->resize(1000, 600);
        m_window->addToolBar(new ActionSetToolBar(m_window.get()));
        m_window->addToolBarBreak();
        m_window->addToolBar(new EventToolBar(m_window.get()));
        new SizeManager(m_window.get());
        mp_form = new SearchForm(m_window.get());
        m_window->setCentralWidget(mp_form);
        mp_form->resize(980, 520);
    }
    ~SearchPage() {
        g_showIsOver = true;
        delete transferQueueManager;
        delete sharedFoldersManager;
        delete delayedInvoker;
        delete peerMessenger;
        delete gp_server;
        delete dataSaver;
        delete timerManager;
        m_window.reset();
        // The program makes its Types once in a process.
        std::destroy_at(&d);
        std::construct_at(&d);
        g_showIsOver = false;
    }
    Q_DISABLE_COPY_MOVE(SearchPage)

    // Whether all that has arrived stands in its tree.
    bool IsPlaced() { return mp_form->findChild<SearchArrivals*>()->IsEmpty(); }
    QTabWidget* Tabs() { return mp_form->findChild<QTabWidget*>(QStringLiteral("searchTabControl")); }
    QTreeWidget* Wishes() { return mp_form->findChild<QTreeWidget*>(QStringLiteral("wishList")); }
    QLineEdit* Edit() { return mp_form->findChild<QLineEdit*>(QStringLiteral("searchEdit")); }
    SearchResultsForm* Tab(int i_index = 0) { return qobject_cast<SearchResultsForm*>(Tabs()->widget(i_index)); }
    SearchResultsTree* Tree(int i_index = 0) { return Tab(i_index)->Tree(); }

    // Answers the token.
    unsigned int Search(const std::string& i_text, bool i_isWish = false) {
        return gp_server->FileSearch(i_text, i_isWish);
    }

    static FileInfo File(const std::string& i_path, long long i_size = 1, int i_bitRate = 0) {
        FileInfo l_file;
        l_file.name = i_path;
        l_file.size = i_size;
        if (i_bitRate != 0) {
            l_file.attributes.attributes = {{FileAttributeBitRate, i_bitRate}, {FileAttributeLength, 200}};
        }
        return l_file;
    }
    void Reply(unsigned int i_token, const std::string& i_user, std::vector<FileInfo> i_files, Answer i_answer) {
        SearchReply l_reply;
        l_reply.user = i_user;
        l_reply.token = i_token;
        l_reply.files = std::move(i_files);
        l_reply.isFree = i_answer.isFree;
        l_reply.speed = i_answer.speed;
        l_reply.uploadsInQueue = i_answer.queue;
        Reply(l_reply);
    }
    void Reply(const SearchReply& i_reply) {
        const ItemPtr l_request = d.GetType("search_request")->HasItem(i_reply.token);
        if (!l_request) {
            return;
        }
        if (const ItemPtr l_results = m_replies.TakeSearchReply(l_request, i_reply)) {
            Q_EMIT peerMessenger->SearchResults(l_results);
        }
    }

    QTemporaryDir m_home;
    std::unique_ptr<QMainWindow> m_window;
    SearchForm* mp_form;

private:
    SearchReplies m_replies;
};
