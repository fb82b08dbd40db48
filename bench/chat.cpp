// How fluent the window stays in a full room: its text stands at the limit, lines come in at an even pace, and a timer
// tells how late the event loop answers. Then a room of 10,000 users: listed, sorted by each column, entered again.
//
//   chat [SECONDS [LINES_PER_SECOND [CHARACTERS]]]    60, 100 and 80 if left out

#include "app/settings.h"
#include "net/server.h"
#include "store/data.h"
#include "ui/chat_view.h"
#include "ui/main_window.h"
#include "ui/room_form.h"
#include "ui/room_user_list.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace {

constexpr const char* c_room = "full";
constexpr int c_users = 10'000;

std::string Line(int i_number, std::size_t i_characters) {
    std::string l_line = "line " + std::to_string(i_number) + " see http://a.example/?n=1&m=2 <b>";
    while (l_line.size() < i_characters) {
        l_line += " word";
    }
    return l_line.substr(0, i_characters);
}

template <class Widget>
Widget* InRoom() {
    return d.GetType("room")->GetItem(c_room)->HasItem("room_form").AsPointer<RoomForm>()->findChild<Widget*>();
}

void Say(int i_number, std::size_t i_characters) {
    Q_EMIT gp_server->RoomChat(c_room, "user" + std::to_string(i_number % 97), Line(i_number, i_characters));
}

// Milliseconds by which each tick of a timer came after the one before, beyond its interval.
class Heartbeat : public QObject {
public:
    Heartbeat() {
        m_timer.setTimerType(Qt::PreciseTimer);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            m_delays.push_back(static_cast<double>(m_clock.nsecsElapsed()) / 1e6 - c_interval);
            m_clock.start();
        });
        m_clock.start();
        m_timer.start(c_interval);
    }

    double Quantile(double i_part) {
        std::sort(m_delays.begin(), m_delays.end());
        return m_delays.at(static_cast<std::size_t>(i_part * static_cast<double>(m_delays.size() - 1)));
    }

private:
    static constexpr int c_interval = 2;

    QTimer m_timer;
    QElapsedTimer m_clock;
    std::vector<double> m_delays;
};

void MeasureChat(int i_seconds, int i_pace, std::size_t i_characters) {
    ChatView* const lp_view = InRoom<ChatView>();
    int l_number = 0;
    for (qsizetype l_before = -1; lp_view->HtmlSize() > l_before; ++l_number) {
        l_before = lp_view->HtmlSize();
        Say(l_number, i_characters);
    }
    QCoreApplication::processEvents();

    Heartbeat l_heartbeat;
    QElapsedTimer l_clock;
    QTimer l_lines;
    l_lines.setTimerType(Qt::PreciseTimer);
    const int l_first = l_number;
    const std::clock_t l_used = std::clock();
    QObject::connect(&l_lines, &QTimer::timeout, lp_view, [&] {
        const qint64 l_due = l_clock.elapsed() * i_pace / 1000;
        while (l_number - l_first < l_due) {
            Say(l_number++, i_characters);
        }
        if (l_clock.elapsed() >= i_seconds * 1000) {
            QCoreApplication::exit();
        }
    });
    l_clock.start();
    l_lines.start(1000 / i_pace);
    QApplication::exec();
    std::printf("%d lines of %zu characters in %d s: the loop is late by %.1f ms (median), %.1f (99%%), %.1f (most); "
                "processor %.0f%%\n",
                l_number - l_first, i_characters, i_seconds, l_heartbeat.Quantile(0.5), l_heartbeat.Quantile(0.99),
                l_heartbeat.Quantile(1),
                100.0 * static_cast<double>(std::clock() - l_used) / CLOCKS_PER_SEC / i_seconds);
}

void Time(const char* ip_what, const std::function<void()>& i_work) {
    QElapsedTimer l_clock;
    l_clock.start();
    i_work();
    const double l_work = static_cast<double>(l_clock.nsecsElapsed()) / 1e6;
    QCoreApplication::processEvents();
    std::printf("%-44s %6.1f ms, with painting %6.1f ms\n", ip_what, l_work,
                static_cast<double>(l_clock.nsecsElapsed()) / 1e6);
}

// In the order in which the server's message is acted upon.
void EnterRoom(const std::vector<std::string>& i_users) {
    const ItemPtr l_room = d.GetType("room")->GetItem(c_room);
    l_room.NewItem("in_room");
    l_room.Disconnect("user");
    for (const std::string& l_user : i_users) {
        l_room.Connect(d.GetType("user")->GetItem(l_user));
    }
    int l_number = 0;
    for (const std::string& l_name : i_users) {
        const ItemPtr l_user = d.GetType("user")->GetItem(l_name);
        l_user.Connect(d.GetType("average_download_speed")->GetItem(l_number * 31 % 50'000));
        l_user.Connect(d.GetType("shared_files_count")->GetItem(l_number * 17 % 9'000));
        l_user.Connect(d.GetType("country_code")->GetItem(++l_number % 3 ? "de" : "fr"));
    }
}

void MeasureUsers() {
    std::vector<std::string> l_users;
    for (int l_user = 0; l_user < c_users; ++l_user) {
        l_users.push_back("user " + std::to_string(l_user * 7919 % c_users));
    }
    Time("10,000 users listed", [&] { EnterRoom(l_users); });
    RoomUserList* const lp_list = InRoom<RoomUserList>();
    const char* const l_columns[] = {"sorted by nothing", "sorted by flag", "sorted by name", "sorted by files",
                                     "sorted by speed"};
    for (int l_column = 1; l_column < 5; ++l_column) {
        Time(l_columns[l_column], [&] { lp_list->sortByColumn(l_column, Qt::DescendingOrder); });
    }
    Time("one leaves",
         [&] { d.GetType("room")->GetItem(c_room)->Disconnect(d.GetType("user")->GetItem(l_users.front())); });
    Time("10,000 users listed again after a loss", [&] { EnterRoom(l_users); });
}

} // namespace

int main(int i_count, char** ip_arguments) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir l_home;
    qputenv("HOME", l_home.path().toUtf8());
    qputenv("XDG_RUNTIME_DIR", l_home.path().toUtf8());
    QApplication l_application(i_count, ip_arguments);
    const auto l_argument = [&](int i_index, int i_default) {
        return i_count > i_index ? std::atoi(ip_arguments[i_index]) : i_default;
    };
    MainWindow l_window;
    SetSetting("username", "me");
    l_window.show();
    d.GetType("room")->GetItem(c_room)->NewItem("in_room");
    MeasureUsers();
    MeasureChat(l_argument(1, 60), l_argument(2, 100), static_cast<std::size_t>(l_argument(3, 80)));
    return 0;
}
