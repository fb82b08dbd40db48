// The client as a program for tests: the real main window, driven by lines on stdin. A line is a JSON array of texts,
// the command and its arguments; each is answered by one line, a JSON array of one value. Ends like the program does,
// on a signal, and at the end of stdin.
#include "app/process_limits.h"
#include "app/quit_signals.h"
#include "app/settings.h"
#include "app/text.h"
#include "app/timers.h"
#include "dnet/dnet_manager.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "store/data.h"
#include "transfers/transfer_queue_manager.h"
#include "ui/main_window.h"
#include "world/talk_commands.h"
#include "world/window_commands.h"

#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkProxy>
#include <QSocketNotifier>

#include <cstdio>
#include <functional>
#include <unistd.h>

namespace {

QJsonValue Text(std::string_view i_text) {
    return ToQString(i_text);
}

QJsonObject Describe(ItemPtr i_item) {
    std::map<Type*, ItemSet> l_neighbours;
    i_item.GetConnectedItems(l_neighbours);
    QJsonObject l_to;
    for (const auto& [lp_type, l_items] : l_neighbours) {
        QJsonArray l_values;
        for (Item* lp_item : l_items)
            l_values.append(Text(lp_item->AsView()));
        if (!l_values.isEmpty())
            l_to[ToQString(lp_type->GetName())] = l_values;
    }
    return {{QStringLiteral("value"), Text(i_item.AsView())}, {QStringLiteral("to"), l_to}};
}

QJsonArray DescribeAll(const std::string& i_type) {
    QJsonArray l_items;
    for (Item* lp_item : g(i_type))
        l_items.append(Describe(lp_item));
    return l_items;
}

// The answers to all searches of this text: one object a file.
QJsonArray DescribeAnswers(const std::string& i_text) {
    QJsonArray l_answers;
    for (Item* lp_results :
         d.GetType("search_request_text")->HasItem(i_text).GetItems("search_request").GetItems("search_results")) {
        for (Item* lp_file : lp_results->GetItems("search_result")) {
            const auto l_text = [lp_file](const char* ip_type) { return Text(lp_file->HasItem(ip_type).AsView()); };
            l_answers.append(QJsonObject{{QStringLiteral("user"), Text(lp_results->HasItem("user").AsView())},
                                         {QStringLiteral("folder"), l_text("search_result_file_folder")},
                                         {QStringLiteral("name"), l_text("search_result_file_name")},
                                         {QStringLiteral("size"), l_text("search_result_file_size")},
                                         {QStringLiteral("bitrate"), l_text("bitrate")},
                                         {QStringLiteral("mode"), l_text("bitrate_mode")}});
        }
    }
    return l_answers;
}

class Driver : public QObject {
public:
    Driver() : m_input(STDIN_FILENO, QSocketNotifier::Read) {
        connect(&m_input, &QSocketNotifier::activated, this, &Driver::OnInput);
        RecordEvents();
        AddCommands();
        AddWindowCommands(m_commands);
        AddTalkCommands(m_commands);
    }

private:
    void RecordEvents() {
        const auto l_record = [this](const QStringList& i_words) {
            m_events.append(QJsonArray::fromStringList(i_words));
        };
        connect(gp_server, &Server::Connected, this, [=] { l_record({QStringLiteral("connected")}); });
        connect(gp_server, &Server::Disconnected, this, [=] { l_record({QStringLiteral("disconnected")}); });
        connect(gp_server, &Server::ConnectionFailed, this, [=](const std::string& i_reason) {
            l_record({QStringLiteral("failed"), ToQString(i_reason)});
        });
        connect(gp_server, &Server::RoomChat, this,
                [=](const std::string& i_room, const std::string& i_user, const std::string& i_text) {
                    l_record({QStringLiteral("room"), ToQString(i_room), ToQString(i_user), ToQString(i_text)});
                });
        connect(gp_server, &Server::PrivateChat, this, [=](const std::string& i_user, const std::string& i_text) {
            l_record({QStringLiteral("private"), ToQString(i_user), ToQString(i_text)});
        });
        connect(dnetManager, &DNetManager::DNetSearchRequest, this,
                [=](const std::string& i_user, quint32, const std::string& i_text) {
                    l_record({QStringLiteral("heard"), ToQString(i_user), ToQString(i_text)});
                });
    }

    void AddCommands() {
        m_commands["events"] = [this](const Arguments&) { return m_events; };
        m_commands["isConnected"] = [](const Arguments&) { return gp_server->IsConnected(); };
        m_commands["items"] = [](const Arguments& i_words) { return DescribeAll(i_words.at(1)); };
        m_commands["answers"] = [](const Arguments& i_words) { return DescribeAnswers(i_words.at(1)); };
        AddAction("search", [](const Arguments& i_words) { gp_server->FileSearch(i_words.at(1), false); });
        AddAction("wish", [](const Arguments& i_words) {
            d.GetType("wish_list_item")->GetItem(i_words.at(1))->NewItem("wish_list_item_enabled");
        });
        AddAction("askList", [](const Arguments& i_words) { peerMessenger->GetUserSharedFiles(i_words.at(1)); });
        AddAction("unshare",
                  [](const Arguments& i_words) { d.GetType("user")->GetItem(i_words.at(1))->NewItem("unshared"); });
        AddAction("connect", [](const Arguments&) { gp_server->Connect(); });
        AddAction("disconnect", [](const Arguments&) { gp_server->Disconnect(); });
        AddAction("enter", [](const Arguments& i_words) { gp_server->EnterRoom(i_words.at(1)); });
        AddAction("leave", [](const Arguments& i_words) { gp_server->LeaveRoom(i_words.at(1)); });
        AddAction("say", [](const Arguments& i_words) { gp_server->SendRoomChat(i_words.at(1), i_words.at(2)); });
        AddAction("tell", [](const Arguments& i_words) { gp_server->SendPrivateChat(i_words.at(1), i_words.at(2)); });
        AddAction("track", [](const Arguments& i_words) { gp_server->TrackUser(i_words.at(1)); });
        // user, file, folder, size
        AddAction("want", [](const Arguments& i_words) {
            transferQueueManager->AddDownload(i_words.at(1), i_words.at(2), i_words.at(3), std::stoll(i_words.at(4)),
                                              0);
        });
        AddAction("set", [](const Arguments& i_words) { SetSetting(i_words.at(1), i_words.at(2)); });
        // group, number
        AddAction("priority", [](const Arguments& i_words) {
            d.GetType("user_list_group")
                ->GetItem(i_words.at(1))
                ->Connect(d.GetType("group_download_priority")->GetItem(i_words.at(2)));
        });
        // The shared timers' next tick, now.
        AddAction("halfMinute", [](const Arguments&) { Fire(timerManager->HalfMinuteTimer()); });
        AddAction("fiveMinutes", [](const Arguments&) { Fire(timerManager->FiveMinuteTimer()); });
    }

    void AddAction(const char* ip_name, const std::function<void(const Arguments&)>& i_action) {
        m_commands[ip_name] = [i_action](const Arguments& i_words) {
            i_action(i_words);
            return true;
        };
    }

    static void Fire(QTimer* ip_timer) { QMetaObject::invokeMethod(ip_timer, "timeout", Qt::DirectConnection); }

    void OnInput() {
        char l_bytes[4096];
        const ssize_t l_count = ::read(STDIN_FILENO, l_bytes, sizeof(l_bytes));
        if (l_count <= 0) {
            m_input.setEnabled(false);
            QCoreApplication::quit();
            return;
        }
        m_pending.append(l_bytes, l_count);
        for (qsizetype l_end = m_pending.indexOf('\n'); l_end >= 0; l_end = m_pending.indexOf('\n')) {
            const QByteArray l_line = m_pending.left(l_end);
            m_pending.remove(0, l_end + 1);
            Answer(l_line);
        }
    }

    void Answer(const QByteArray& i_line) {
        Arguments l_words;
        for (const QJsonValue& l_word : QJsonDocument::fromJson(i_line).array())
            l_words.push_back(ToUtf8(l_word.toString()));
        const QByteArray l_answer =
            QJsonDocument(QJsonArray{m_commands.at(l_words.at(0))(l_words)}).toJson(QJsonDocument::Compact) + '\n';
        std::fwrite(l_answer.data(), 1, static_cast<std::size_t>(l_answer.size()), stdout);
        std::fflush(stdout);
    }

    QSocketNotifier m_input;
    QByteArray m_pending;
    QJsonArray m_events; // in order, each an array of words
    Commands m_commands;
};

} // namespace

int main(int i_count, char** ip_arguments) {
    RaiseDescriptorLimit();
    QApplication l_application(i_count, ip_arguments);
    QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
    const QuitSignals l_quitSignals;
    MainWindow l_window;
    l_window.show();
    const Driver l_driver;
    return QApplication::exec();
}
