// A router of ours, that does what a test tells it to: it answers searches, describes itself and keeps port mappings.
// It lives in the test's process and event loop, and notes who asks what.
#pragma once

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUdpSocket>

#include <deque>
#include <map>
#include <string>
#include <vector>

class TestRouter : public QObject {
public:
    // How it describes itself: as well as it can; in pieces that end in the middle; without end; a byte now and then;
    // with a page that says that there is none; by pointing elsewhere.
    enum class Description { Good, Broken, Endless, Trickling, Missing, Moved };

    struct Answer {
        std::string target = "urn:schemas-upnp-org:device:InternetGatewayDevice:1";
        std::string url; // its own when empty
    };

    explicit TestRouter(const char* ip_address);

    std::string Url() const;        // of its description
    std::string ControlUrl() const; // as it describes it
    int Port() const { return m_server.serverPort(); }
    QHostAddress Address() const { return m_address; }

    // What follows is the test's to set.
    std::vector<Answer> answers{Answer()}; // to each search for a gateway, in this order; none: silence
    bool answersWithoutEnd = false;        // every answer with another address
    int searchDelay = 0;                   // milliseconds
    int descriptionDelay = 0;
    Description description = Description::Good;
    std::string controlHost;  // in the description; its own when empty
    std::deque<int> refusals; // error codes of the next requests for a mapping, 0 for none
    std::deque<int> removalRefusals;

    // By outer port: "inner address:inner port protocol description lease".
    std::map<int, std::string> mappings;
    std::vector<std::string> requests; // "GET /path", "AddPortMapping"
    int searches = 0;
    qint64 bytesSent = 0;

private:
    void OnSearch();
    void AnswerSearch(const QHostAddress& i_sender, quint16 i_port);
    void OnCaller();
    void OnRequest(QTcpSocket* ip_caller);
    void Describe(QTcpSocket* ip_caller);
    void PourEndlessly(QTcpSocket* ip_caller);
    void Trickle(QTcpSocket* ip_caller);
    void OnAction(QTcpSocket* ip_caller, const std::string& i_request);
    int Add(const std::string& i_request);
    int Delete(const std::string& i_request);
    std::string DescriptionText() const;
    static void Reply(QTcpSocket* ip_caller, const char* ip_status, const std::string& i_body);

    QHostAddress m_address;
    QUdpSocket m_ear;
    QTcpServer m_server;
    int m_answered = 0;
};
