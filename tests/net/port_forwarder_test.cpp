// The port forwarder with its real helper and the real UPnP library: against a router of ours on the loopback device,
// and against a real one in a network namespace.
#include "net/port_forwarder.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

#include <gmock/gmock.h>

#include "app/log.h"
#include "app/text.h"
#include "net/device_url.h"
#include "net/private_network.h"
#include "net/test_router.h"
#include "store/data.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

namespace {

constexpr int deadlineMilliseconds = 60'000;
constexpr const char* loopback = "127.0.0.1";

class RecordingLog : public LogSink {
public:
    RecordingLog() { SetLogSink(this); }
    ~RecordingLog() override { SetLogSink(nullptr); }

    void Log(QString i_area, int i_level, QString i_text, ItemPtr) override {
        EXPECT_EQ(i_area, QStringLiteral("Port Forwarding"));
        lines.push_back(std::to_string(i_level) + " " + ToUtf8(i_text));
    }
    std::vector<std::string> Take() { return std::exchange(lines, {}); }

    std::vector<std::string> lines;
};

class PortForwarderTest : public testing::Test {
protected:
    PortForwarderTest() { mp_forwarder->SetSearchInterface(QString::fromLatin1(loopback)); }

    void Map(int i_port) {
        QTcpSocket l_socket;
        l_socket.connectToHost(m_router.Address(), static_cast<quint16>(m_router.Port()));
        ASSERT_TRUE(l_socket.waitForConnected(deadlineMilliseconds));
        mp_forwarder->AddPortMapping(&l_socket, i_port);
    }
    std::vector<std::string> Settle() {
        EXPECT_TRUE(QTest::qWaitFor([this] { return mp_forwarder->IsIdle(); }, deadlineMilliseconds));
        return m_log.Take();
    }
    void FindRouter() {
        mp_forwarder->Init();
        ASSERT_THAT(Settle(),
                    ElementsAre("1 Initializing UPnP", "2 Device list found", FoundLine(), "2 Device XML found."));
    }
    std::string FoundLine() const { return "2 " + m_router.Url() + ", InternetGatewayDevice, found"; }
    std::string SkipLine(const std::string& i_target, const std::string& i_url) const {
        return "2 " + i_target + ", " + i_url + " skipping";
    }

    PrivateNetwork m_network;
    TestRouter m_router{loopback};
    RecordingLog m_log;
    std::unique_ptr<PortForwarder> mp_forwarder = std::make_unique<PortForwarder>();
};

const std::string c_ownAddressLine = "2 Found own address to be 127.0.0.1";
const std::string c_conflictLine = "2 Port already mapped, attempting to remove existing mapping before retrying.";
const std::string c_abortLine = "2 UPnP appears to not have been initialized, aborting.";

} // namespace

// The login is faster than the search: the mapping waits for it, and the window for neither.
TEST_F(PortForwarderTest, SearchesOnceAndMapsWhileTheWindowGoesOn) {
    QElapsedTimer l_clock;
    qint64 l_longestGap = 0;
    QTimer l_ticker;
    QObject::connect(&l_ticker, &QTimer::timeout, &l_ticker,
                     [&] { l_longestGap = std::max(l_longestGap, l_clock.restart()); });
    l_clock.start();
    l_ticker.start(5);
    mp_forwarder->Init();
    mp_forwarder->Init();
    Map(2234);
    EXPECT_THAT(m_log.lines, ElementsAre("1 Initializing UPnP"));
    EXPECT_THAT(Settle(),
                ElementsAre("1 Initializing UPnP", "2 Device list found", FoundLine(), "2 Device XML found.",
                            "1 Adding mapping for port 2234", c_ownAddressLine, "2 Port successfully mapped."));
    EXPECT_LT(l_longestGap, 1000) << "half the time of a search";
    EXPECT_EQ(m_router.mappings[2234], "127.0.0.1:2234 TCP TidewellQT 0");
    const int l_searches = m_router.searches;

    mp_forwarder->Init();
    EXPECT_THAT(Settle(), IsEmpty());
    EXPECT_EQ(m_router.searches, l_searches);
}

TEST_F(PortForwarderTest, LogsWhatTheRouterAnswersAndTriesAgainOnAConflict) {
    ASSERT_NO_FATAL_FAILURE(FindRouter());

    m_router.mappings[1000] = "10.0.0.9:1000 TCP other 0";
    Map(1000);
    EXPECT_THAT(Settle(), ElementsAre("1 Adding mapping for port 1000", c_ownAddressLine, c_conflictLine,
                                      "1 Removing mapping for port 1000", "2 Port mapping successfully removed.",
                                      "2 Second mapping attempt successful."));
    EXPECT_THAT(m_router.mappings[1000], StartsWith("127.0.0.1:1000 "));

    m_router.refusals = {718, 718};
    m_router.removalRefusals = {714};
    Map(1001);
    EXPECT_THAT(Settle(),
                ElementsAre("1 Adding mapping for port 1001", c_ownAddressLine, c_conflictLine,
                            "1 Removing mapping for port 1001", "2 Port mapping removal failed, miniupnp error: 714"));
    m_router.refusals = {718, 501};
    Map(1001);
    EXPECT_THAT(Settle(), testing::Contains("2 Second mapping attempt failed, miniupnp error: 501"));
    m_router.refusals = {725};
    Map(1001);
    EXPECT_THAT(Settle(), ElementsAre("1 Adding mapping for port 1001", c_ownAddressLine,
                                      "2 Port mapping failure, miniupnp error: 725"));
    EXPECT_FALSE(m_router.mappings.contains(1001));

    mp_forwarder->RemovePortMapping(1000);
    EXPECT_THAT(Settle(), ElementsAre("1 Removing mapping for port 1000", "2 Port mapping successfully removed."));
    EXPECT_THAT(m_router.mappings, IsEmpty());

    mp_forwarder->AddPortMapping(std::make_unique<QTcpSocket>().get(), 1002);
    EXPECT_THAT(Settle(), ElementsAre("1 Adding mapping for port 1002",
                                      "2 The connection to the server has no IPv4 address, aborting."));
}

TEST_F(PortForwarderTest, GivesUpForGoodWhereNobodyAnswers) {
    m_router.answers.clear();
    mp_forwarder->Init();
    Map(2234);
    mp_forwarder->RemovePortMapping(2234);
    EXPECT_THAT(Settle(),
                ElementsAre("1 Initializing UPnP", "2 No device list found during discovery. miniupnp error code: 0",
                            "1 Adding mapping for port 2234", c_abortLine, "1 Removing mapping for port 2234",
                            c_abortLine));
    mp_forwarder->Init();
    EXPECT_TRUE(mp_forwarder->IsIdle());
}

TEST_F(PortForwarderTest, WaitsForSlowAnswers) {
    m_router.searchDelay = 2500;
    m_router.descriptionDelay = 1500;
    FindRouter();
}

// The library tells of the last answer first.
TEST_F(PortForwarderTest, PassesOverOtherDevicesAndThoseThatNameOthers) {
    const std::string l_foreign = "http://127.0.0.9:" + std::to_string(m_router.Port()) + "/description.xml";
    TestRouter l_victim("127.0.0.9");
    l_victim.answers.clear();
    const std::string l_gateway = m_router.answers[0].target;
    m_router.answers = {{"urn:last:1", m_router.Url()}, {}, {"urn:printer:1", m_router.Url()}, {l_gateway, l_foreign}};
    mp_forwarder->Init();
    EXPECT_THAT(Settle(), ElementsAre("1 Initializing UPnP", "2 Device list found", SkipLine(l_gateway, l_foreign),
                                      SkipLine("urn:printer:1", m_router.Url()), FoundLine(), "2 Device XML found."));
    EXPECT_THAT(l_victim.requests, IsEmpty());

    m_router.answers = {{"urn:printer:1", m_router.Url()}, {l_gateway, "http://localhost:80/x"}};
    mp_forwarder = std::make_unique<PortForwarder>();
    mp_forwarder->SetSearchInterface(QString::fromLatin1(loopback));
    mp_forwarder->Init();
    EXPECT_THAT(Settle(),
                ElementsAre("1 Initializing UPnP", "2 Device list found", SkipLine(l_gateway, "http://localhost:80/x"),
                            SkipLine("urn:printer:1", m_router.Url()),
                            "2 Defaulting to first device found, urn:printer:1", "2 Device XML found."));

    m_router.answers = {{l_gateway, l_foreign}};
    m_router.requests.clear();
    mp_forwarder = std::make_unique<PortForwarder>();
    mp_forwarder->SetSearchInterface(QString::fromLatin1(loopback));
    mp_forwarder->Init();
    EXPECT_THAT(Settle(), ElementsAre("1 Initializing UPnP", "2 Device list found", SkipLine(l_gateway, l_foreign),
                                      "2 Device XML not found."));
    EXPECT_THAT(m_router.requests, IsEmpty());
}

TEST_F(PortForwarderTest, EndsASearchThatIsAnsweredWithoutEnd) {
    m_router.answersWithoutEnd = true;
    mp_forwarder->Init();
    const std::vector<std::string> l_lines = Settle();
    EXPECT_EQ(l_lines.at(1), "2 Device list found");
    EXPECT_EQ(l_lines.back(), "2 Device XML found.");
    EXPECT_LE(l_lines.size(), 70U);
}

struct BadDescription {
    const char* name;
    TestRouter::Description description;
    std::vector<std::string> lines; // the last ones
};

void PrintTo(const BadDescription& i_description, std::ostream* op_stream) {
    *op_stream << i_description.name;
}

class BadDescriptionTest : public PortForwarderTest, public testing::WithParamInterface<BadDescription> {};

TEST_P(BadDescriptionTest, IsALineOfTheLog) {
    m_router.description = GetParam().description;
    mp_forwarder->Init();
    Map(2234);
    const std::vector<std::string> l_lines = Settle();
    ASSERT_GE(l_lines.size(), 4U);
    EXPECT_EQ(std::vector<std::string>(l_lines.begin() + 3, l_lines.end()), GetParam().lines);
    EXPECT_EQ(m_router.requests.front(), "GET /description.xml");
    EXPECT_LT(m_router.bytesSent, 20 << 20);
    EXPECT_THAT(m_router.mappings, IsEmpty());
}

const std::vector<std::string> c_notFound = {"2 Device XML not found.", "1 Adding mapping for port 2234", c_abortLine};

INSTANTIATE_TEST_SUITE_P(All, BadDescriptionTest,
                         testing::Values(BadDescription{"Missing", TestRouter::Description::Missing, c_notFound},
                                         BadDescription{"Moved", TestRouter::Description::Moved, c_notFound},
                                         BadDescription{"Endless", TestRouter::Description::Endless, c_notFound},
                                         BadDescription{"Trickling", TestRouter::Description::Trickling, c_notFound},
                                         BadDescription{"Broken",
                                                        TestRouter::Description::Broken,
                                                        {"2 Device XML found.", "1 Adding mapping for port 2234",
                                                         c_ownAddressLine,
                                                         "2 Port mapping failure, miniupnp error: 401"}}),
                         [](const auto& i_info) { return i_info.param.name; });

TEST_F(PortForwarderTest, LeavesAControlAddressElsewhereAlone) {
    m_router.controlHost = "127.0.0.9";
    mp_forwarder->Init();
    Map(2234);
    EXPECT_THAT(Settle(), ElementsAre("1 Initializing UPnP", "2 Device list found", FoundLine(), "2 Device XML found.",
                                      "2 Its control address " + m_router.ControlUrl() + " is not its own, not used.",
                                      "1 Adding mapping for port 2234", c_abortLine));
}

TEST_F(PortForwarderTest, EndsAtOnceInTheMiddleOfASearch) {
    mp_forwarder->Init();
    Map(2234);
    ASSERT_TRUE(QTest::qWaitFor([this] { return m_router.searches > 0; }, deadlineMilliseconds));
    QElapsedTimer l_clock;
    l_clock.start();
    mp_forwarder.reset();
    EXPECT_LT(l_clock.elapsed(), 1000);
    EXPECT_THAT(m_log.lines, ElementsAre("1 Initializing UPnP"));
}

TEST_F(PortForwarderTest, SaysSoWhenTheHelperIsMissingOrDies) {
    QTemporaryDir l_folder;
    QFile l_program(l_folder.filePath(QStringLiteral("dies")));
    ASSERT_TRUE(l_program.open(QIODevice::WriteOnly));
    l_program.write("#!/bin/sh\necho 'device\town\tInternetGatewayDevice\thttp://10.0.0.1/'\nkill -SEGV $$\n");
    l_program.close();
    l_program.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    for (const QString& l_path : {QStringLiteral("/nowhere/at/all"), l_program.fileName()}) {
        PortHelper::SetProgram(l_path);
        mp_forwarder = std::make_unique<PortForwarder>();
        mp_forwarder->Init();
        EXPECT_THAT(Settle(), ElementsAre("1 Initializing UPnP",
                                          "2 No device list found during discovery. miniupnp error code: -1"));
    }
}

// Nothing confined: the search goes where the system sends it, and only a home network's address will do.
TEST_F(PortForwarderTest, FindsRoutersOfAHomeNetworkOnly) {
    if (!m_network.IsIsolated())
        GTEST_SKIP() << m_network.Obstacle();
    mp_forwarder->SetSearchInterface({});
    TestRouter l_router(PrivateNetwork::routerAddress);
    mp_forwarder->Init();
    const std::vector<std::string> l_lines = Settle();
    EXPECT_THAT(l_lines, testing::Contains("2 " + l_router.Url() + ", InternetGatewayDevice, found"));
    EXPECT_EQ(l_lines.back(), "2 Device XML found.");
    EXPECT_THAT(m_router.requests, IsEmpty()) << "its address is the own machine's";
}

TEST_F(PortForwarderTest, UnderstandsARealRouter) {
    if (!m_network.IsIsolated())
        GTEST_SKIP() << m_network.Obstacle();
    const QString l_program = QStringLiteral("/usr/sbin/miniupnpd");
    if (!QFile::exists(l_program))
        GTEST_SKIP() << "the package miniupnpd-nftables is not installed";
    m_router.answers.clear();
    QTemporaryDir l_folder;
    QProcess l_daemon;
    l_daemon.setProcessChannelMode(QProcess::MergedChannels);
    // One device is both sides of the router, which is enough to be found and asked.
    l_daemon.start(l_program,
                   {QStringLiteral("-d"), QStringLiteral("-f"), QStringLiteral("/dev/null"), QStringLiteral("-i"),
                    QStringLiteral("lo"), QStringLiteral("-o"), QStringLiteral("11.0.0.7"), QStringLiteral("-a"),
                    QString::fromLatin1(PrivateNetwork::routerAddress), QStringLiteral("-P"),
                    l_folder.filePath(QStringLiteral("pid"))});
    ASSERT_TRUE(l_daemon.waitForStarted(deadlineMilliseconds));
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return QFile::exists(l_folder.filePath(QStringLiteral("pid"))); }, deadlineMilliseconds))
        << l_daemon.readAll().toStdString();

    mp_forwarder->SetSearchInterface({});
    mp_forwarder->Init();
    TestRouter l_peer(PrivateNetwork::routerAddress);
    l_peer.answers.clear();
    QTcpSocket l_socket;
    l_socket.connectToHost(l_peer.Address(), static_cast<quint16>(l_peer.Port()));
    ASSERT_TRUE(l_socket.waitForConnected(deadlineMilliseconds));
    mp_forwarder->AddPortMapping(&l_socket, 2234);
    const std::vector<std::string> l_lines = Settle();
    l_daemon.kill();
    l_daemon.waitForFinished();
    const std::string l_said = l_daemon.readAllStandardOutput().toStdString();

    // Whether it can do as it was told depends on the kernel's tables; its answer must come through either way.
    std::string l_answer = "2 Port successfully mapped.";
    const std::string l_refusal = "Returning UPnPError ";
    if (const std::size_t l_place = l_said.find(l_refusal); l_place != std::string::npos)
        l_answer = "2 Port mapping failure, miniupnp error: " + l_said.substr(l_place + l_refusal.size(), 3);
    EXPECT_THAT(l_said, HasSubstr("ext port 2234 to 192.168.77.1:2234 protocol TCP for: TidewellQT"));
    // A busy router may answer a search twice, and is then named twice.
    ASSERT_GE(l_lines.size(), 7U);
    EXPECT_THAT(l_lines[2], MatchesRegex("2 http://192.168.77.1:[0-9]+/rootDesc.xml, InternetGatewayDevice, found"));
    EXPECT_THAT(l_lines, Contains("2 Device XML found."));
    EXPECT_THAT(l_lines, Contains("2 Found own address to be 192.168.77.1"));
    EXPECT_EQ(l_lines.back(), l_answer);
}

TEST(DeviceUrlTest, TakesOnlyAddressesInFigures) {
    EXPECT_EQ(HostAddress("http://192.168.1.1:5000/desc.xml"), 0xC0A80101U);
    EXPECT_EQ(HostAddress("HTTP://10.0.0.1/"), 0x0A000001U);
    for (const char* lp_url :
         {"", "http://", "http://10.0.0.1", "https://10.0.0.1/", "http://router/", "http://10.0.0.1:0/",
          "http://10.0.0.1:65536/", "http://10.0.0.1:80@example.org/", "http://user@10.0.0.1/", "http://10.0.0.1:/",
          "http://10.0.0/", "http://10.0.0.1.2/", "http://0xa000001/", "http://[::1]/", "http://10.0.0.1/a b"})
        EXPECT_EQ(HostAddress(lp_url), std::nullopt) << lp_url;

    for (const char* lp_url : {"http://10.255.0.1/", "http://172.16.0.1/", "http://172.31.255.1/",
                               "http://192.168.9.9/", "http://169.254.1.1/"})
        EXPECT_TRUE(IsPrivateOrLinkLocal(HostAddress(lp_url).value())) << lp_url;
    for (const char* lp_url : {"http://127.0.0.1/", "http://8.8.8.8/", "http://172.15.0.1/", "http://172.32.0.1/",
                               "http://192.169.0.1/", "http://11.0.0.1/", "http://0.0.0.0/", "http://239.255.255.250/"})
        EXPECT_FALSE(IsPrivateOrLinkLocal(HostAddress(lp_url).value())) << lp_url;

    EXPECT_EQ(LocationOf("HTTP/1.1 200 OK\r\nST: x\r\nLOCATION:  http://a/ \r\n\r\n"), "http://a/");
    EXPECT_EQ(LocationOf("location:http://a/\nLocation: http://b/"), "http://a/");
    EXPECT_EQ(LocationOf("X-Location: http://a/\r\nLocation"), "");
}
