#include "net/test_router.h"

#include <QNetworkInterface>
#include <QTimer>

#include <memory>

namespace {

constexpr const char* c_group = "239.255.255.250";
constexpr quint16 c_searchPort = 1900;
constexpr const char* c_service = "urn:schemas-upnp-org:service:WANIPConnection:1";
constexpr int c_invalidAction = 401;
constexpr int c_conflict = 718;
constexpr int c_noSuchEntry = 714;

std::string Element(const std::string& i_text, const std::string& i_name) {
    const std::size_t l_begin = i_text.find("<" + i_name + ">");
    const std::size_t l_end = i_text.find("</" + i_name + ">");
    if (l_begin == std::string::npos || l_end == std::string::npos)
        return {};
    const std::size_t l_text = l_begin + i_name.size() + 2;
    return i_text.substr(l_text, l_end - l_text);
}

// Headers and as much body as they announce.
bool IsWhole(const std::string& i_request) {
    const std::size_t l_head = i_request.find("\r\n\r\n");
    if (l_head == std::string::npos)
        return false;
    const std::size_t l_length = i_request.find("Content-Length: ");
    return l_length == std::string::npos ||
           i_request.size() >= l_head + 4 + static_cast<std::size_t>(std::stoul(i_request.substr(l_length + 16)));
}

int TakeRefusal(std::deque<int>& io_refusals) {
    if (io_refusals.empty())
        return 0;
    const int l_code = io_refusals.front();
    io_refusals.pop_front();
    return l_code;
}

std::string Envelope(const std::string& i_body) {
    return "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\" "
           "s:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\"><s:Body>" +
           i_body + "</s:Body></s:Envelope>";
}

std::string Fault(int i_code) {
    return Envelope("<s:Fault><faultcode>s:Client</faultcode><faultstring>UPnPError</faultstring><detail>"
                    "<UPnPError xmlns=\"urn:schemas-upnp-org:control-1-0\"><errorCode>" +
                    std::to_string(i_code) + "</errorCode></UPnPError></detail></s:Fault>");
}

} // namespace

TestRouter::TestRouter(const char* ip_address) : m_address(QString::fromLatin1(ip_address)) {
    if (!m_server.listen(m_address, 0))
        qFatal("no port to listen on");
    connect(&m_server, &QTcpServer::newConnection, this, &TestRouter::OnCaller);
    QNetworkInterface l_loopback = QNetworkInterface::interfaceFromName(QStringLiteral("lo"));
    if (!m_ear.bind(QHostAddress::AnyIPv4, c_searchPort, QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint) ||
        !m_ear.joinMulticastGroup(QHostAddress(QString::fromLatin1(c_group)), l_loopback))
        qFatal("searches cannot be heard: %s", qPrintable(m_ear.errorString()));
    connect(&m_ear, &QUdpSocket::readyRead, this, &TestRouter::OnSearch);
}

std::string TestRouter::Url() const {
    return "http://" + m_address.toString().toStdString() + ":" + std::to_string(Port()) + "/description.xml";
}

std::string TestRouter::ControlUrl() const {
    return "http://" + (controlHost.empty() ? m_address.toString().toStdString() : controlHost) + ":" +
           std::to_string(Port()) + "/control";
}

void TestRouter::OnSearch() {
    while (m_ear.hasPendingDatagrams()) {
        QByteArray l_search(static_cast<int>(m_ear.pendingDatagramSize()), '\0');
        QHostAddress l_sender;
        quint16 l_port = 0;
        m_ear.readDatagram(l_search.data(), l_search.size(), &l_sender, &l_port);
        ++searches;
        if (l_search.startsWith("M-SEARCH") && l_search.contains("InternetGatewayDevice"))
            QTimer::singleShot(searchDelay, this, [this, l_sender, l_port] { AnswerSearch(l_sender, l_port); });
    }
}

void TestRouter::AnswerSearch(const QHostAddress& i_sender, quint16 i_port) {
    // From the socket at its own address: the other one's would be the system's choice.
    QUdpSocket l_mouth;
    l_mouth.bind(m_address, 0);
    for (const Answer& l_answer : answers) {
        const std::string l_url = l_answer.url.empty() ? Url() : l_answer.url;
        const std::string l_tail = answersWithoutEnd ? "?" + std::to_string(++m_answered) : "";
        const std::string l_text = "HTTP/1.1 200 OK\r\nCACHE-CONTROL: max-age=120\r\nST: " + l_answer.target +
                                   "\r\nUSN: uuid:1\r\nEXT:\r\nLocation: " + l_url + l_tail + "\r\n\r\n";
        l_mouth.writeDatagram(l_text.data(), static_cast<qint64>(l_text.size()), i_sender, i_port);
    }
    if (answersWithoutEnd)
        QTimer::singleShot(20, this, [this, i_sender, i_port] { AnswerSearch(i_sender, i_port); });
}

void TestRouter::OnCaller() {
    while (QTcpSocket* const lp_caller = m_server.nextPendingConnection()) {
        connect(lp_caller, &QTcpSocket::disconnected, lp_caller, &QObject::deleteLater);
        connect(lp_caller, &QTcpSocket::bytesWritten, this, [this](qint64 i_bytes) { bytesSent += i_bytes; });
        connect(lp_caller, &QTcpSocket::readyRead, this, [this, lp_caller] {
            if (IsWhole(lp_caller->peek(1 << 20).toStdString()))
                OnRequest(lp_caller);
        });
    }
}

void TestRouter::OnRequest(QTcpSocket* ip_caller) {
    const std::string l_request = ip_caller->readAll().toStdString();
    if (l_request.starts_with("GET ")) {
        requests.push_back(l_request.substr(0, l_request.find(' ', 4)));
        QTimer::singleShot(descriptionDelay, ip_caller, [this, ip_caller] { Describe(ip_caller); });
    } else {
        OnAction(ip_caller, l_request);
    }
}

void TestRouter::Describe(QTcpSocket* ip_caller) {
    const std::string l_text = DescriptionText();
    switch (description) {
    case Description::Good:
        return Reply(ip_caller, "200 OK", l_text);
    case Description::Broken:
        return Reply(ip_caller, "200 OK", "<<root \"&\0<a b=><service><controlURL" + std::string(70'000, '<') + "]]>");
    case Description::Missing:
        return Reply(ip_caller, "404 Not Found", l_text);
    case Description::Moved:
        return Reply(ip_caller, "302 Found\r\nLocation: http://127.0.0.1/elsewhere.xml", "");
    case Description::Endless:
        return PourEndlessly(ip_caller);
    case Description::Trickling:
        return Trickle(ip_caller);
    }
}

void TestRouter::PourEndlessly(QTcpSocket* ip_caller) {
    ip_caller->write("HTTP/1.1 200 OK\r\nContent-Length: 1000000000\r\n\r\n");
    const auto l_pour = [ip_caller] {
        if (ip_caller->bytesToWrite() < 1 << 20)
            ip_caller->write(QByteArray(1 << 20, 'x'));
    };
    connect(ip_caller, &QTcpSocket::bytesWritten, ip_caller, l_pour);
    l_pour();
}

void TestRouter::Trickle(QTcpSocket* ip_caller) {
    ip_caller->write("HTTP/1.1 200 OK\r\n\r\n");
    QTimer* const lp_tap = new QTimer(ip_caller);
    connect(lp_tap, &QTimer::timeout, ip_caller, [ip_caller] { ip_caller->write("<"); });
    lp_tap->start(100);
}

void TestRouter::OnAction(QTcpSocket* ip_caller, const std::string& i_request) {
    const auto l_asksFor = [&i_request](const char* ip_action) {
        return i_request.find(c_service + std::string("#") + ip_action + "\"") != std::string::npos;
    };
    const std::string l_name = l_asksFor("AddPortMapping")      ? "AddPortMapping"
                               : l_asksFor("DeletePortMapping") ? "DeletePortMapping"
                                                                : "";
    requests.push_back(l_name);
    const int l_code = l_name.empty()               ? c_invalidAction
                       : l_name == "AddPortMapping" ? Add(i_request)
                                                    : Delete(i_request);
    if (l_code != 0)
        return Reply(ip_caller, "500 Internal Server Error", Fault(l_code));
    Reply(ip_caller, "200 OK",
          Envelope("<u:" + l_name + "Response xmlns:u=\"" + c_service + "\"></u:" + l_name + "Response>"));
}

// Like real ones: whoever has the port keeps it against others.
int TestRouter::Add(const std::string& i_request) {
    if (const int l_refusal = TakeRefusal(refusals))
        return l_refusal;
    const int l_port = std::stoi(Element(i_request, "NewExternalPort"));
    const std::string l_client = Element(i_request, "NewInternalClient");
    const auto l_present = mappings.find(l_port);
    if (l_present != mappings.end() && !l_present->second.starts_with(l_client + ":"))
        return c_conflict;
    mappings[l_port] = l_client + ":" + Element(i_request, "NewInternalPort") + " " +
                       Element(i_request, "NewProtocol") + " " + Element(i_request, "NewPortMappingDescription") + " " +
                       Element(i_request, "NewLeaseDuration");
    return 0;
}

int TestRouter::Delete(const std::string& i_request) {
    if (const int l_refusal = TakeRefusal(removalRefusals))
        return l_refusal;
    return mappings.erase(std::stoi(Element(i_request, "NewExternalPort"))) == 1 ? 0 : c_noSuchEntry;
}

std::string TestRouter::DescriptionText() const {
    return "<?xml version=\"1.0\"?><root xmlns=\"urn:schemas-upnp-org:device-1-0\"><URLBase>" +
           ControlUrl().substr(0, ControlUrl().rfind('/') + 1) +
           "</URLBase><device><deviceType>urn:schemas-upnp-org:device:InternetGatewayDevice:1</deviceType><deviceList>"
           "<device><deviceType>urn:schemas-upnp-org:device:WANDevice:1</deviceType><deviceList><device>"
           "<deviceType>urn:schemas-upnp-org:device:WANConnectionDevice:1</deviceType><serviceList><service>"
           "<serviceType>" +
           std::string(c_service) +
           "</serviceType><controlURL>/control</controlURL><eventSubURL>/event</eventSubURL>"
           "<SCPDURL>/scpd.xml</SCPDURL></service></serviceList></device></deviceList></device></deviceList></device>"
           "</root>";
}

void TestRouter::Reply(QTcpSocket* ip_caller, const char* ip_status, const std::string& i_body) {
    const std::string l_reply = std::string("HTTP/1.1 ") + ip_status +
                                "\r\nContent-Type: text/xml\r\nContent-Length: " + std::to_string(i_body.size()) +
                                "\r\nConnection: close\r\n\r\n" + i_body;
    ip_caller->write(l_reply.data(), static_cast<qint64>(l_reply.size()));
    ip_caller->disconnectFromHost();
}
