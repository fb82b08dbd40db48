// One client of the tree with a parent and 20 children: how many searches a second it passes on, beside a plain loop of
// reads and writes between the same sockets, and how much later a chat line of the server is heard meanwhile.
#include "tree_world.h"

#include "app/settings.h"
#include "app/timers.h"
#include "dnet/dnet_manager.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "store/data_saver.h"

#include <QCoreApplication>
#include <QTcpSocket>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr double c_wantedDelay = 50; // ms

double ProcessSeconds() {
    rusage l_usage = {};
    getrusage(RUSAGE_SELF, &l_usage);
    const auto l_seconds = [](const timeval& i_time) {
        return static_cast<double>(i_time.tv_sec) + static_cast<double>(i_time.tv_usec) / 1e6;
    };
    return l_seconds(l_usage.ru_utime) + l_seconds(l_usage.ru_stime);
}

// What a loop of blocking calls reaches that knows nothing of frames.
double PlainSeconds() {
    TreeWorld l_world(false);
    const int l_parent = ConnectTo(l_world.TreePort());
    std::vector<int> l_children;
    while (l_children.size() < c_children)
        l_children.push_back(ConnectTo(l_world.TreePort()));
    char l_piece[16 * 1024];
    ssize_t l_count;
    while ((l_count = read(l_parent, l_piece, sizeof l_piece)) > 0) {
        for (const int l_child : l_children) {
            for (ssize_t l_done = 0; l_done < l_count;)
                l_done +=
                    std::max<ssize_t>(write(l_child, l_piece + l_done, static_cast<std::size_t>(l_count - l_done)), 0);
        }
    }
    return l_world.FloodSeconds();
}

// The delays of chat lines, by what the parent did meanwhile.
class Listening : public QObject {
public:
    Listening() { connect(gp_server, &Server::PrivateChat, this, &Listening::OnPrivateChat); }

    double FloodProcessSeconds() const { return m_overAt - m_floodAt; }
    double Print(const char* ip_name, Phase i_phase) {
        std::vector<double>& l_delays = m_delays[static_cast<int>(i_phase)];
        if (l_delays.empty())
            return 0;
        std::sort(l_delays.begin(), l_delays.end());
        std::printf("chat lines %-27s p50 %6.2f ms  p99 %6.2f ms  longest %6.2f ms  (%zu lines)\n", ip_name,
                    l_delays[l_delays.size() / 2], l_delays[l_delays.size() * 99 / 100], l_delays.back(),
                    l_delays.size());
        return l_delays[l_delays.size() * 99 / 100];
    }

private:
    void OnPrivateChat(const std::string&, const std::string& i_text) {
        const auto l_phase = static_cast<Phase>(std::stoi(i_text));
        const std::int64_t l_sent = std::stoll(i_text.substr(i_text.find(' ')));
        if (l_phase == Phase::Over) {
            m_overAt = ProcessSeconds();
            QCoreApplication::quit();
            return;
        }
        std::vector<double>& l_delays = m_delays[static_cast<int>(l_phase)];
        if (l_phase == Phase::Flood && l_delays.empty())
            m_floodAt = ProcessSeconds();
        l_delays.push_back(static_cast<double>(NowNanoseconds() - l_sent) / 1e6);
    }

    std::vector<double> m_delays[static_cast<int>(Phase::Over)];
    double m_floodAt = 0;
    double m_overAt = 0;
};

QTcpSocket* Connected(std::uint16_t i_port) {
    auto* const lp_socket = new QTcpSocket;
    lp_socket->setSocketDescriptor(ConnectTo(i_port));
    return lp_socket;
}

void MeasureClient(TreeWorld& io_world, double i_plainSeconds) {
    TimerManager l_timers;
    DataSaver l_saver;
    Server l_server;
    l_server.CreateData();
    PeerMessenger l_messenger;
    CreateSettingsTypes();
    DNetManager l_manager;
    Listening l_listening;

    SetSetting("username", "me");
    SetSetting("password", "secret");
    SetSetting("server_host", "127.0.0.1");
    SetSetting("server_port", io_world.ServerPort());
    l_server.Connect();
    l_manager.OnDNetConnectionAccepted("parent", Connected(io_world.TreePort()));
    for (int l_child = 0; l_child < c_children; ++l_child)
        l_manager.OnDNetConnectionRequested("child " + std::to_string(l_child), Connected(io_world.TreePort()));
    QCoreApplication::exec();

    const double l_seconds = io_world.FloodSeconds();
    const bool l_isWhole = l_seconds > 0 && d.GetType("dnet_child")->CountItems() == c_children;
    std::printf("all of %d searches at each of %d children  %s\n", c_floodSearches, c_children,
                l_isWhole ? "PASS" : "SHORT");
    std::printf("%.0f searches a second passed on, %.2f of the plain loop's %.0f; %.1f us of the processor each\n",
                c_floodSearches / l_seconds, i_plainSeconds / l_seconds, c_floodSearches / i_plainSeconds,
                l_listening.FloodProcessSeconds() * 1e6 / c_floodSearches);
    const double l_quiet = l_listening.Print("without searches", Phase::Quiet);
    const std::string l_paced = "at " + std::to_string(c_pacedPerSecond) + " searches a second";
    l_listening.Print(l_paced.c_str(), Phase::Paced);
    const double l_flood = l_listening.Print("while searches flood in", Phase::Flood);
    std::printf("p99 of the delay added by the flood: %.2f ms (wanted: %.0f or less)  %s\n", l_flood - l_quiet,
                c_wantedDelay, l_flood - l_quiet <= c_wantedDelay ? "PASS" : "SHORT");
}

} // namespace

int main(int i_count, char** ip_arguments) {
    const double l_plainSeconds = PlainSeconds();
    TreeWorld l_world(true); // before any thread of ours
    QCoreApplication l_application(i_count, ip_arguments);
    MeasureClient(l_world, l_plainSeconds);
    return 0;
}
