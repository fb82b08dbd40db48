// The world around one client in the tree of clients, played on plain sockets by a process of its own: the server,
// which sends chat lines, a parent, which sends searches, and the children who get them.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

#include <sys/types.h>

inline constexpr int c_children = 20;
inline constexpr int c_floodSearches = 100'000;
inline constexpr int c_pacedPerSecond = 500;

// What the parent does meanwhile. The text of each chat line is the phase and the moment of its sending.
enum class Phase { Quiet, Paced, Flood, Over };

// Of a clock that all processes share.
inline std::int64_t NowNanoseconds() {
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

// A listening socket on a port of the system's choice.
struct Listener {
    int socket;
    std::uint16_t port;
};
Listener Listen();
int ConnectTo(std::uint16_t i_port);

class TreeWorld {
public:
    // Starts the process. The client connects to the server's port first, if i_withServer, and then to the other one:
    // the parent, then each child.
    explicit TreeWorld(bool i_withServer);
    // Waits for the process's end and answers the seconds from the flood's first search to its last arrival at a child.
    // Negative when some child did not get all of them.
    double FloodSeconds();

    std::uint16_t ServerPort() const { return m_server.port; }
    std::uint16_t TreePort() const { return m_tree.port; }

private:
    Listener m_server;
    Listener m_tree;
    int m_result; // to be read
    pid_t m_process;
};
