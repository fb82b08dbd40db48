#include "net/private_network.h"

#include <QDir>
#include <QFile>

#include <arpa/inet.h>
#include <net/if.h>
#include <net/route.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

sockaddr AddressOf(const char* ip_text) {
    sockaddr_in l_address{};
    l_address.sin_family = AF_INET;
    inet_pton(AF_INET, ip_text, &l_address.sin_addr);
    sockaddr l_result;
    std::memcpy(&l_result, &l_address, sizeof l_result);
    return l_result;
}

void WriteFile(const char* ip_path, const std::string& i_text) {
    QFile l_file(QString::fromLatin1(ip_path));
    if (l_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        l_file.write(i_text.data(), static_cast<qint64>(i_text.size()));
}

// Root may make a network alone; others need to be the root of a user namespace first.
bool EnterNamespace() {
    if (unshare(CLONE_NEWNET) == 0)
        return true;
    const std::string l_user = std::to_string(getuid());
    const std::string l_group = std::to_string(getgid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
        return false;
    WriteFile("/proc/self/setgroups", "deny");
    WriteFile("/proc/self/uid_map", "0 " + l_user + " 1");
    WriteFile("/proc/self/gid_map", "0 " + l_group + " 1");
    return true;
}

bool Configure(int i_socket, const char* ip_device, const char* ip_address) {
    ifreq l_request{};
    std::strncpy(l_request.ifr_name, ip_device, IFNAMSIZ - 1);
    l_request.ifr_addr = AddressOf(ip_address);
    return ioctl(i_socket, SIOCSIFADDR, &l_request) == 0;
}

// The loopback device is the home network too: it has the router's address, and multicasts go there.
bool SetUp(int i_socket) {
    ifreq l_request{};
    std::strncpy(l_request.ifr_name, "lo", IFNAMSIZ - 1);
    l_request.ifr_flags = IFF_UP | IFF_RUNNING | IFF_LOOPBACK | IFF_MULTICAST;
    char l_device[] = "lo";
    rtentry l_route{};
    l_route.rt_dst = AddressOf("224.0.0.0");
    l_route.rt_genmask = AddressOf("240.0.0.0");
    l_route.rt_flags = RTF_UP;
    l_route.rt_dev = l_device;
    return ioctl(i_socket, SIOCSIFFLAGS, &l_request) == 0 &&
           Configure(i_socket, "lo:1", PrivateNetwork::routerAddress) && ioctl(i_socket, SIOCADDRT, &l_route) == 0;
}

} // namespace

PrivateNetwork::PrivateNetwork() {
    if (EnterNamespace()) {
        const int l_socket = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (!SetUp(l_socket))
            qFatal("the namespace's network cannot be set up: %s", std::strerror(errno));
        close(l_socket);
        return;
    }
    m_obstacle = std::string("no network namespace can be made here: ") + std::strerror(errno);
    mp_turn = std::make_unique<QLockFile>(QDir::temp().filePath(QStringLiteral("tidewell-test-router.lock")));
    mp_turn->lock();
}
