// Whatever clients choose among their offers, come, go, vanish and come back, no ring comes about.
#include "server/client_tree.h"
#include "server/event_rate.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

namespace {

// A network of processes that behave like the client: they keep their connections to each other when they lose the
// server, and try nobody twice.
class Network {
public:
    explicit Network(unsigned i_seed) : m_random(i_seed) {}

    void Step() {
        const std::string l_name = "user " + std::to_string(m_random() % 30);
        Process& l_process = m_processes[l_name];
        switch (m_random() % 12) {
        case 0:
            Die(l_name);
            break;
        case 1:
            LoseServer(l_name, l_process);
            break;
        case 2:
        case 3:
            m_tree.SetCapacity(l_name, l_process.isOnline ? static_cast<std::int64_t>(m_random() % 4) : 0);
            break;
        case 4:
        case 5:
        case 6:
            Adopt(l_name, l_process);
            break;
        default:
            GoOnline(l_name, l_process);
        }
    }

    bool HasRing() const {
        for (const auto& [l_start, l_process] : m_processes) {
            std::size_t l_steps = 0;
            for (auto l_at = m_processes.find(l_start); !l_at->second.parent.empty();
                 l_at = m_processes.find(l_at->second.parent)) {
                if (++l_steps > m_processes.size())
                    return true;
            }
        }
        return false;
    }
    int Adoptions() const { return m_adoptions; }
    int Depth() const { return m_depth; }

private:
    struct Process {
        bool isOnline = false;
        std::string parent;
        std::set<std::string> candidates;
        std::set<std::string> tried;
    };

    void GoOnline(const std::string& i_name, Process& io_process) {
        if (io_process.isOnline)
            return;
        io_process.isOnline = true;
        m_tree.Enter(i_name, reinterpret_cast<Session*>(&io_process));
        m_tree.SetCapacity(i_name, 2);
        Report(i_name, io_process);
    }
    void Report(const std::string& i_name, Process& io_process) {
        if (!io_process.isOnline)
            return;
        if (!io_process.parent.empty()) {
            m_tree.FindParent(i_name);
            return;
        }
        m_tree.LoseParent(i_name);
        for (const std::string& l_offered : m_tree.Offer(i_name)) {
            if (io_process.tried.insert(l_offered).second)
                io_process.candidates.insert(l_offered);
        }
    }
    void LoseServer(const std::string& i_name, Process& io_process) {
        if (io_process.isOnline)
            m_tree.Leave(i_name);
        io_process.isOnline = false;
    }
    void Adopt(const std::string& i_name, Process& io_process) {
        if (!io_process.parent.empty() || io_process.candidates.empty())
            return;
        auto l_chosen = io_process.candidates.begin();
        std::advance(l_chosen, static_cast<std::ptrdiff_t>(m_random() % io_process.candidates.size()));
        io_process.parent = *l_chosen;
        io_process.candidates.clear();
        ++m_adoptions;
        Report(i_name, io_process);
        int l_depth = 0;
        for (std::string l_at = i_name; !l_at.empty() && l_depth <= 100; l_at = m_processes[l_at].parent)
            ++l_depth;
        m_depth = std::max(m_depth, l_depth);
    }
    void Die(const std::string& i_name) {
        LoseServer(i_name, m_processes[i_name]);
        m_processes[i_name] = Process();
        for (auto& [l_other, l_process] : m_processes) {
            l_process.candidates.erase(i_name);
            if (l_process.parent == i_name) {
                l_process.parent.clear();
                Report(l_other, l_process);
            }
        }
    }

    std::mt19937 m_random;
    const Limits m_limits;
    ClientTree m_tree{m_limits};
    std::map<std::string, Process> m_processes;
    int m_adoptions = 0;
    int m_depth = 0; // the greatest so far
};

} // namespace

TEST(ServerClientTree, NeverClosesARing) {
    int l_depth = 0;
    for (unsigned l_seed = 0; l_seed < 20; ++l_seed) {
        Network l_network(l_seed);
        for (int l_step = 0; l_step < 1000; ++l_step) {
            l_network.Step();
            ASSERT_FALSE(l_network.HasRing()) << l_seed << " " << l_step;
        }
        EXPECT_GT(l_network.Adoptions(), 30);
        l_depth = std::max(l_depth, l_network.Depth());
    }
    EXPECT_GT(l_depth, 4);
}

TEST(ServerClientTree, ForgetsWhoStaysAway) {
    Limits l_limits;
    for (const auto& [l_memory, l_isOffered] :
         {std::pair(std::chrono::hours(1), false), {std::chrono::hours(0), true}}) {
        l_limits.departureMemory = l_memory;
        ClientTree l_tree(l_limits);
        int l_session = 0;
        auto* lp_session = reinterpret_cast<Session*>(&l_session);
        l_tree.Enter("upper", lp_session);
        l_tree.SetCapacity("upper", 5);
        l_tree.Enter("lower", lp_session);
        l_tree.SetCapacity("lower", 5);
        l_tree.LoseParent("lower");
        EXPECT_EQ(l_tree.Offer("lower"), std::vector<std::string>{"upper"});
        l_tree.Leave("lower");
        l_tree.Enter("lower", lp_session);
        l_tree.SetCapacity("lower", 5);
        l_tree.LoseParent("upper");
        EXPECT_EQ(!l_tree.Offer("upper").empty(), l_isOffered);
    }
}

TEST(ServerEventRate, AllowsTheBurstAndThenThePace) {
    const auto l_start = EventRate::Clock::now();
    EventRate l_rate(10, 30, l_start);
    const auto l_count = [&](std::chrono::milliseconds i_at) {
        int l_taken = 0;
        while (l_rate.Take(l_start + i_at))
            ++l_taken;
        return l_taken;
    };
    using std::chrono::milliseconds;
    EXPECT_EQ(l_count(milliseconds(0)), 30);
    EXPECT_EQ(l_count(milliseconds(99)), 0);
    EXPECT_EQ(l_count(milliseconds(1001)), 10);
    EXPECT_EQ(l_count(milliseconds(100'000)), 30);
}
