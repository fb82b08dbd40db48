#include "tree_world.h"

#include "dnet/dnet_messages.h"
#include "net/frame_reader.h"
#include "net/message.h"
#include "net/messages_from_server.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

constexpr auto c_phase = 2s; // of those that end by the clock
constexpr auto c_betweenLines = 5ms;
constexpr auto c_mostSilence = 20s; // then a child is held to have been let go of

void Require(bool i_holds, const char* ip_what) {
    if (!i_holds) {
        std::perror(ip_what);
        std::_Exit(1);
    }
}

void Write(int i_socket, std::string_view i_bytes) {
    while (!i_bytes.empty()) {
        const ssize_t l_count = send(i_socket, i_bytes.data(), i_bytes.size(), MSG_NOSIGNAL);
        if (l_count <= 0)
            return; // who is let go of is told by what arrives
        i_bytes.remove_prefix(static_cast<std::size_t>(l_count));
    }
}

std::string FrameOf(const MemStream& i_body) {
    return std::string(MakeFrame(i_body).GetWritten());
}

std::string Search(std::uint32_t i_token) {
    return FrameOf(EncodeDNetSearch({"somebody", i_token, "three usual words"}));
}

// Counts what arrives at the children.
class Children {
public:
    explicit Children(std::vector<int> i_sockets) : m_sockets(std::move(i_sockets)) {
        m_thread = std::thread([this] { Drain(); });
    }
    ~Children() {
        m_isOver = true;
        m_thread.join();
    }

    // Waits until each child has got i_bytes more than i_before; false if they stop coming.
    bool WaitFor(const std::array<std::uint64_t, c_children>& i_before, std::uint64_t i_bytes) const {
        std::uint64_t l_last = 0;
        auto l_lastChange = std::chrono::steady_clock::now();
        for (;;) {
            const auto l_now = Arrived();
            if (std::equal(l_now.begin(), l_now.end(), i_before.begin(),
                           [=](std::uint64_t i_is, std::uint64_t i_was) { return i_is - i_was >= i_bytes; }))
                return true;
            std::uint64_t l_sum = 0;
            for (const std::uint64_t l_of : l_now)
                l_sum += l_of;
            if (l_sum != l_last)
                l_lastChange = std::chrono::steady_clock::now();
            else if (std::chrono::steady_clock::now() - l_lastChange > c_mostSilence)
                return false;
            l_last = l_sum;
            std::this_thread::sleep_for(1ms);
        }
    }
    std::array<std::uint64_t, c_children> Arrived() const {
        std::array<std::uint64_t, c_children> l_bytes;
        std::copy(m_arrived.begin(), m_arrived.end(), l_bytes.begin());
        return l_bytes;
    }

private:
    void Drain() {
        std::vector<pollfd> l_polled;
        for (const int l_socket : m_sockets)
            l_polled.push_back({l_socket, POLLIN, 0});
        std::vector<char> l_piece(256 * 1024);
        while (!m_isOver) {
            poll(l_polled.data(), l_polled.size(), 10);
            for (std::size_t l_child = 0; l_child < l_polled.size(); ++l_child) {
                if (l_polled[l_child].revents == 0)
                    continue;
                const ssize_t l_count = recv(l_polled[l_child].fd, l_piece.data(), l_piece.size(), MSG_DONTWAIT);
                if (l_count > 0)
                    m_arrived[l_child] += static_cast<std::uint64_t>(l_count);
                else
                    l_polled[l_child].fd = -1;
            }
        }
    }

    std::vector<int> m_sockets;
    std::array<std::atomic<std::uint64_t>, c_children> m_arrived{};
    std::atomic<bool> m_isOver = false;
    std::thread m_thread;
};

// Accepts the login and sends a chat line every few milliseconds.
class ChattyServer {
public:
    ChattyServer(int i_socket, const std::atomic<Phase>& i_phase) : m_socket(i_socket), m_phase(i_phase) {
        char l_login[4096];
        Require(recv(m_socket, l_login, sizeof l_login, 0) > 0, "login");
        from_server::LoginReply l_reply;
        l_reply.accepted = true;
        Write(m_socket, FrameOf(Encode(l_reply)));
        m_listening = std::thread([this] {
            char l_piece[65536];
            while (recv(m_socket, l_piece, sizeof l_piece, 0) > 0) {
            }
        });
        m_talking = std::thread([this] { Talk(); });
    }
    ~ChattyServer() {
        m_talking.join();
        shutdown(m_socket, SHUT_RD);
        m_listening.join();
    }

private:
    // The last line tells that it is over; the client leaves then.
    void Talk() {
        for (Phase l_phase = Phase::Quiet; l_phase != Phase::Over;) {
            l_phase = m_phase;
            from_server::PrivateChat l_line;
            l_line.user = "friend";
            l_line.text = std::to_string(static_cast<int>(l_phase)) + " " + std::to_string(NowNanoseconds());
            Write(m_socket, FrameOf(Encode(l_line)));
            std::this_thread::sleep_for(c_betweenLines);
        }
    }

    int m_socket;
    const std::atomic<Phase>& m_phase;
    std::thread m_listening;
    std::thread m_talking;
};

void SendPaced(int i_parent) {
    const auto l_start = std::chrono::steady_clock::now();
    for (std::uint32_t l_token = 0; std::chrono::steady_clock::now() - l_start < c_phase; ++l_token) {
        Write(i_parent, Search(l_token));
        std::this_thread::sleep_until(l_start + (l_token + 1) * 1'000'000us / c_pacedPerSecond);
    }
}

double Flood(int i_parent, const Children& i_children) {
    constexpr int c_atOnce = 100;
    std::string l_piece;
    for (std::uint32_t l_token = 0; l_token < c_atOnce; ++l_token)
        l_piece += Search(l_token);
    const auto l_before = i_children.Arrived();
    const auto l_start = NowNanoseconds();
    for (int l_sent = 0; l_sent < c_floodSearches; l_sent += c_atOnce)
        Write(i_parent, l_piece);
    const bool l_isWhole = i_children.WaitFor(l_before, std::uint64_t{l_piece.size()} * c_floodSearches / c_atOnce);
    return l_isWhole ? static_cast<double>(NowNanoseconds() - l_start) / 1e9 : -1;
}

int Accept(const Listener& i_listener) {
    const int l_socket = accept(i_listener.socket, nullptr, nullptr);
    Require(l_socket != -1, "accept");
    const int l_on = 1;
    setsockopt(l_socket, IPPROTO_TCP, TCP_NODELAY, &l_on, sizeof l_on);
    return l_socket;
}

double Play(const Listener& i_server, const Listener& i_tree, bool i_withServer) {
    std::atomic<Phase> l_phase = Phase::Quiet;
    const int l_serverSocket = i_withServer ? Accept(i_server) : -1;
    const int l_parent = Accept(i_tree);
    std::vector<int> l_sockets;
    while (l_sockets.size() < c_children)
        l_sockets.push_back(Accept(i_tree));
    const Children l_children(std::move(l_sockets));
    // The first search makes a parent of the candidate; what the children are told besides has come when it has.
    const std::string l_first = Search(0);
    Write(l_parent, l_first);
    Require(l_children.WaitFor({}, l_first.size()), "the first search");
    double l_seconds = 0;
    if (i_withServer) {
        const ChattyServer l_server(l_serverSocket, l_phase);
        std::this_thread::sleep_for(c_phase);
        l_phase = Phase::Paced;
        SendPaced(l_parent);
        std::this_thread::sleep_for(100ms);
        l_phase = Phase::Flood;
        l_seconds = Flood(l_parent, l_children);
        l_phase = Phase::Over;
    } else {
        l_seconds = Flood(l_parent, l_children);
        shutdown(l_parent, SHUT_WR);
    }
    return l_seconds;
}

sockaddr_in Loopback(std::uint16_t i_port) {
    sockaddr_in l_address = {};
    l_address.sin_family = AF_INET;
    l_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    l_address.sin_port = htons(i_port);
    return l_address;
}

} // namespace

Listener Listen() {
    const int l_socket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in l_address = Loopback(0);
    socklen_t l_length = sizeof l_address;
    auto* const lp_address = reinterpret_cast<sockaddr*>(&l_address);
    Require(bind(l_socket, lp_address, l_length) == 0 && listen(l_socket, c_children + 1) == 0 &&
                getsockname(l_socket, lp_address, &l_length) == 0,
            "listen");
    return {l_socket, ntohs(l_address.sin_port)};
}

int ConnectTo(std::uint16_t i_port) {
    const int l_socket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in l_address = Loopback(i_port);
    Require(connect(l_socket, reinterpret_cast<const sockaddr*>(&l_address), sizeof l_address) == 0, "connect");
    return l_socket;
}

TreeWorld::TreeWorld(bool i_withServer) : m_server(Listen()), m_tree(Listen()) {
    int l_pipe[2];
    Require(pipe(l_pipe) == 0, "pipe");
    m_process = fork();
    if (m_process == 0) {
        const double l_seconds = Play(m_server, m_tree, i_withServer);
        std::_Exit(write(l_pipe[1], &l_seconds, sizeof l_seconds) == sizeof l_seconds ? 0 : 1);
    }
    close(l_pipe[1]);
    close(m_server.socket);
    close(m_tree.socket);
    m_result = l_pipe[0];
}

double TreeWorld::FloodSeconds() {
    double l_seconds = 0;
    Require(read(m_result, &l_seconds, sizeof l_seconds) == sizeof l_seconds, "the other process");
    close(m_result);
    waitpid(m_process, nullptr, 0);
    return l_seconds;
}
