#include "net/port_helper_gate.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <set>
#include <string_view>

#include "net/device_url.h"
#include "net/limits.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Gate {
    const Clock::time_point start = Clock::now();
    bool acceptsOwnMachine = false;
    int datagrams = 0;
    std::size_t streamBytes = 0;
    bool wasCutShort = false;
    std::set<std::string> ownUrls;
};

Gate& TheGate() {
    static Gate l_gate;
    return l_gate;
}

bool IsOwnMachine(std::uint32_t i_address) {
    return i_address >> 24 == 127;
}

void Note(std::string_view i_answer, std::uint32_t i_sender) {
    const std::string_view l_url = LocationOf(i_answer);
    const bool l_isNear = IsPrivateOrLinkLocal(i_sender) || (TheGate().acceptsOwnMachine && IsOwnMachine(i_sender));
    if (l_isNear && HostAddress(l_url) == i_sender)
        TheGate().ownUrls.emplace(l_url);
}

bool IsDatagramSocket(int i_socket) {
    int l_kind = 0;
    socklen_t l_size = sizeof l_kind;
    return getsockopt(i_socket, SOL_SOCKET, SO_TYPE, &l_kind, &l_size) == 0 && l_kind == SOCK_DGRAM;
}

ssize_t Receive(int i_socket, void* op_bytes, std::size_t i_size, int i_flags, sockaddr* op_sender,
                socklen_t* iop_senderSize) {
    return syscall(SYS_recvfrom, i_socket, op_bytes, i_size, i_flags, op_sender, iop_senderSize);
}

// A search goes on for as long as answers come. To it, 0 means that nobody answers any more.
ssize_t ReceiveDatagram(int i_socket, void* op_bytes, std::size_t i_size, int i_flags, sockaddr* op_sender,
                        socklen_t* iop_senderSize) {
    Gate& l_gate = TheGate();
    if (l_gate.datagrams == limits::routerSearchAnswers ||
        Clock::now() - l_gate.start > std::chrono::seconds(limits::routerSearchSeconds))
        return 0;
    ++l_gate.datagrams;
    sockaddr_in l_sender{};
    socklen_t l_senderSize = sizeof l_sender;
    const ssize_t l_result =
        Receive(i_socket, op_bytes, i_size, i_flags, reinterpret_cast<sockaddr*>(&l_sender), &l_senderSize);
    if (l_result > 0 && l_sender.sin_family == AF_INET)
        Note({static_cast<const char*>(op_bytes), static_cast<std::size_t>(l_result)}, ntohl(l_sender.sin_addr.s_addr));
    if (op_sender && iop_senderSize && *iop_senderSize >= sizeof l_sender) {
        *reinterpret_cast<sockaddr_in*>(op_sender) = l_sender;
        *iop_senderSize = sizeof l_sender;
    }
    // An empty datagram would look like the end: the library gets something to skip instead.
    if (l_result == 0 && i_size > 0) {
        *static_cast<char*>(op_bytes) = '\n';
        return 1;
    }
    return l_result;
}

ssize_t ReceiveStream(int i_socket, void* op_bytes, std::size_t i_size, int i_flags, sockaddr* op_sender,
                      socklen_t* iop_senderSize) {
    Gate& l_gate = TheGate();
    const ssize_t l_result = Receive(i_socket, op_bytes, i_size, i_flags, op_sender, iop_senderSize);
    if (l_result <= 0)
        return l_result;
    l_gate.streamBytes += static_cast<std::size_t>(l_result);
    if (l_gate.streamBytes <= limits::routerAnswer)
        return l_result;
    l_gate.wasCutShort = true;
    return 0;
}

} // namespace

namespace gate {

void AcceptOwnMachine() {
    TheGate().acceptsOwnMachine = true;
}

bool NamesItsSender(const std::string& i_descriptionUrl) {
    return TheGate().ownUrls.contains(i_descriptionUrl);
}

bool WasCutShort() {
    return TheGate().wasCutShort;
}

} // namespace gate

extern "C" ssize_t recvfrom(int i_socket, void* op_bytes, std::size_t i_size, int i_flags, sockaddr* op_sender,
                            socklen_t* iop_senderSize) {
    const auto l_receive = IsDatagramSocket(i_socket) ? ReceiveDatagram : ReceiveStream;
    return l_receive(i_socket, op_bytes, i_size, i_flags, op_sender, iop_senderSize);
}
