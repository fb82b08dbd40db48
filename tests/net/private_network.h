// A network of the test's own: a network namespace in which only the loopback device is up, so that searches for
// routers neither leave the machine nor meet those of other tests.
#pragma once

#include <QLockFile>

#include <memory>
#include <string>

class PrivateNetwork {
public:
    // An address that routers have at home; stands when IsIsolated().
    static constexpr const char* routerAddress = "192.168.77.1";

    // Before the process has threads or sockets. Where no namespace can be made, only the loopback device may be
    // used, and tests wait for each other.
    PrivateNetwork();

    bool IsIsolated() const { return m_obstacle.empty(); }
    // Why there is no namespace.
    const std::string& Obstacle() const { return m_obstacle; }

private:
    std::string m_obstacle;
    std::unique_ptr<QLockFile> mp_turn;
};
