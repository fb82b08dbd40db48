#include "net/port_forwarder.h"

#include <QHostAddress>
#include <QTcpSocket>

#include <netinet/in.h>
#include <sys/socket.h>

#include <optional>
#include <utility>

#include <miniupnpc/miniupnpc.h>
#include <miniupnpc/upnpcommands.h>

#include "app/log.h"
#include "app/text.h"
#include "net/device_url.h"
#include "store/item.h"

PortForwarder* portForwarder = nullptr;

namespace {

// What a router answers for a port that someone has already.
constexpr int c_conflict = 718;

void LogStep(const QString& i_text) {
    Log(QStringLiteral("Port Forwarding"), 1, i_text, ItemPtr());
}

void LogDetail(const QString& i_text) {
    Log(QStringLiteral("Port Forwarding"), 2, i_text, ItemPtr());
}

void LogMissingRouter() {
    LogDetail(QStringLiteral("UPnP appears to not have been initialized, aborting."));
}

// The number behind the word in the one line of an answer.
std::optional<int> Number(const PortHelper::Answer& i_answer, QLatin1String i_word) {
    if (i_answer.size() != 1 || i_answer.first().size() != 2 || i_answer.first().at(0) != i_word)
        return std::nullopt;
    bool l_isNumber = false;
    const int l_number = i_answer.first().at(1).toInt(&l_isNumber);
    return l_isNumber ? std::optional(l_number) : std::nullopt;
}

// The IPv4 address of the socket's local end; empty for none, as after the connection has gone.
QString OwnAddress(const QTcpSocket* ip_socket) {
    if (!ip_socket)
        return {};
    sockaddr_storage l_address{};
    socklen_t l_size = sizeof l_address;
    if (getsockname(static_cast<int>(ip_socket->socketDescriptor()), reinterpret_cast<sockaddr*>(&l_address),
                    &l_size) != 0)
        return {};
    // IPv4 addresses come in IPv6 clothes too.
    bool l_isIpv4 = false;
    const quint32 l_number = QHostAddress(reinterpret_cast<const sockaddr*>(&l_address)).toIPv4Address(&l_isIpv4);
    return l_isIpv4 ? QHostAddress(l_number).toString() : QString();
}

} // namespace

PortForwarder::PortForwarder() : m_helper(this) {
    portForwarder = this;
}

PortForwarder::~PortForwarder() {
    portForwarder = nullptr;
}

void PortForwarder::Do(Task i_task) {
    m_waiting.push_back(std::move(i_task));
    if (!m_isBusy)
        End();
}

// Of what was under way; the next one starts.
void PortForwarder::End() {
    m_isBusy = !m_waiting.empty();
    if (!m_isBusy)
        return;
    const Task l_task = std::move(m_waiting.front());
    m_waiting.pop_front();
    l_task();
}

void PortForwarder::Init() {
    if (std::exchange(m_initialized, true))
        return;
    Do([this] { Search(); });
}

void PortForwarder::Search() {
    LogStep(QStringLiteral("Initializing UPnP"));
    QStringList l_question{QStringLiteral("find")};
    if (!m_searchInterface.isEmpty())
        l_question.append(m_searchInterface);
    m_helper.Ask(l_question, [this](const PortHelper::Answer& i_answer) { OnSearched(i_answer); });
}

void PortForwarder::OnSearched(const PortHelper::Answer& i_answer) {
    const QList<Device> l_devices = Devices(i_answer);
    if (l_devices.isEmpty()) {
        LogDetail(QStringLiteral("No device list found during discovery. miniupnp error code: %1")
                      .arg(Number(i_answer, QLatin1String("error")).value_or(UPNPDISCOVER_UNKNOWN_ERROR)));
        End();
        return;
    }
    LogDetail(QStringLiteral("Device list found"));
    Describe(ChooseDevice(l_devices));
}

QList<PortForwarder::Device> PortForwarder::Devices(const PortHelper::Answer& i_answer) {
    QList<Device> l_devices;
    for (const QStringList& l_fields : i_answer) {
        if (l_fields.size() == 4 && l_fields.at(0) == QLatin1String("device"))
            l_devices.append({l_fields.at(1) == QLatin1String("own"), l_fields.at(2), l_fields.at(3)});
    }
    return l_devices;
}

// A device that names another's address as its own is passed by, whatever it says it is.
QString PortForwarder::ChooseDevice(const QList<Device>& i_devices) {
    const Device* lp_first = nullptr;
    for (const Device& l_device : i_devices) {
        if (l_device.isOwn && l_device.target.contains(QLatin1String("InternetGatewayDevice"))) {
            LogDetail(QStringLiteral("%1, InternetGatewayDevice, found").arg(l_device.url));
            return l_device.url;
        }
        LogDetail(QStringLiteral("%1, %2 skipping").arg(l_device.target, l_device.url));
        if (l_device.isOwn && !lp_first)
            lp_first = &l_device;
    }
    if (!lp_first)
        return {};
    LogDetail(QStringLiteral("Defaulting to first device found, %1").arg(lp_first->target));
    return lp_first->url;
}

void PortForwarder::Describe(const QString& i_url) {
    if (i_url.isEmpty()) {
        OnDescribed(i_url, {});
        return;
    }
    m_helper.Ask({QStringLiteral("describe"), i_url},
                 [this, i_url](const PortHelper::Answer& i_answer) { OnDescribed(i_url, i_answer); });
}

void PortForwarder::OnDescribed(const QString& i_url, const PortHelper::Answer& i_answer) {
    const bool l_isThere = i_answer.size() == 1 && i_answer.first().size() == 3;
    if (l_isThere) {
        m_controlUrl = i_answer.first().at(1);
        m_serviceType = i_answer.first().at(2);
        LogDetail(QStringLiteral("Device XML found."));
        // A description, too, may send its reader to someone else.
        if (HostAddress(ToUtf8(m_controlUrl)) != HostAddress(ToUtf8(i_url))) {
            LogDetail(QStringLiteral("Its control address %1 is not its own, not used.").arg(m_controlUrl));
            m_controlUrl.clear();
        }
    } else {
        LogDetail(QStringLiteral("Device XML not found."));
    }
    End();
}

void PortForwarder::AddPortMapping(QTcpSocket* ip_socket, int i_port) {
    // The connection may be gone when the search has come to its end.
    const QString l_ownAddress = OwnAddress(ip_socket);
    Do([this, l_ownAddress, i_port] { Map(l_ownAddress, i_port); });
}

void PortForwarder::Map(const QString& i_ownAddress, int i_port) {
    LogStep(QStringLiteral("Adding mapping for port %1").arg(i_port));
    if (m_controlUrl.isEmpty()) {
        LogMissingRouter();
        End();
        return;
    }
    if (i_ownAddress.isEmpty()) {
        LogDetail(QStringLiteral("The connection to the server has no IPv4 address, aborting."));
        End();
        return;
    }
    LogDetail(QStringLiteral("Found own address to be %1").arg(i_ownAddress));
    AskForMapping(i_ownAddress, i_port,
                  [this, i_ownAddress, i_port](int i_code) { OnMapped(i_ownAddress, i_port, i_code); });
}

void PortForwarder::OnMapped(const QString& i_ownAddress, int i_port, int i_code) {
    if (i_code == c_conflict) {
        LogDetail(QStringLiteral("Port already mapped, attempting to remove existing mapping before retrying."));
        Unmap(i_port, [this, i_ownAddress, i_port] { MapAgain(i_ownAddress, i_port); });
        return;
    }
    LogDetail(i_code == UPNPCOMMAND_SUCCESS ? QStringLiteral("Port successfully mapped.")
                                            : QStringLiteral("Port mapping failure, miniupnp error: %1").arg(i_code));
    End();
}

void PortForwarder::MapAgain(const QString& i_ownAddress, int i_port) {
    AskForMapping(i_ownAddress, i_port, [this](int i_code) {
        if (i_code == UPNPCOMMAND_SUCCESS)
            LogDetail(QStringLiteral("Second mapping attempt successful."));
        else if (i_code != c_conflict)
            LogDetail(QStringLiteral("Second mapping attempt failed, miniupnp error: %1").arg(i_code));
        End();
    });
}

void PortForwarder::AskForMapping(const QString& i_ownAddress, int i_port, OnResult i_onResult) {
    m_helper.Ask({QStringLiteral("add"), m_controlUrl, m_serviceType, QString::number(i_port), i_ownAddress},
                 [l_onResult = std::move(i_onResult)](const PortHelper::Answer& i_answer) {
                     l_onResult(Number(i_answer, QLatin1String("result")).value_or(UPNPCOMMAND_UNKNOWN_ERROR));
                 });
}

void PortForwarder::RemovePortMapping(int i_port) {
    Do([this, i_port] { Unmap(i_port, [this] { End(); }); });
}

void PortForwarder::Unmap(int i_port, Task i_then) {
    LogStep(QStringLiteral("Removing mapping for port %1").arg(i_port));
    if (m_controlUrl.isEmpty()) {
        LogMissingRouter();
        i_then();
        return;
    }
    m_helper.Ask({QStringLiteral("delete"), m_controlUrl, m_serviceType, QString::number(i_port)},
                 [l_then = std::move(i_then)](const PortHelper::Answer& i_answer) {
                     const int l_code = Number(i_answer, QLatin1String("result")).value_or(UPNPCOMMAND_UNKNOWN_ERROR);
                     LogDetail(l_code == UPNPCOMMAND_SUCCESS
                                   ? QStringLiteral("Port mapping successfully removed.")
                                   : QStringLiteral("Port mapping removal failed, miniupnp error: %1").arg(l_code));
                     l_then();
                 });
}
