// The caps of the server, lowered so that they are met in a moment. The server runs in a thread of the test.
#include "server/central_server.h"
#include "server/scripted_client.h"
#include "server/traffic.h"

#include <QElapsedTimer>
#include <QThread>

#include <gtest/gtest.h>

#include <deque>
#include <future>

using std::chrono::milliseconds;

namespace {

class ServerThread : public QThread {
public:
    explicit ServerThread(const Limits& i_limits) : m_limits(i_limits) {
        std::future<quint16> l_port = m_portPromise.get_future();
        start();
        m_port = l_port.get();
    }
    ~ServerThread() override {
        quit();
        wait();
    }

    quint16 Port() const { return m_port; }

private:
    void run() override {
        Options l_options;
        l_options.listenAddress = QHostAddress(QHostAddress::LocalHost);
        l_options.port = 0;
        QTemporaryDir l_folder;
        Database l_database;
        QString l_error;
        EXPECT_TRUE(l_database.Open(l_folder.filePath(QStringLiteral("data")), l_error));
        CentralServer l_server(l_database, l_options, m_limits);
        EXPECT_TRUE(l_server.Listen(l_error));
        m_portPromise.set_value(l_server.ListenPort());
        exec();
    }

    const Limits m_limits;
    std::promise<quint16> m_portPromise;
    quint16 m_port = 0;
};

} // namespace

TEST(ServerLimits, AStrangerWhoDoesNotLogInIsPutOut) {
    Limits l_limits;
    l_limits.loginTime = milliseconds(300);
    const ServerThread l_server(l_limits);
    ScriptedClient l_client(l_server.Port(), "anna");
    ScriptedClient l_silent(l_server.Port());
    ScriptedClient l_slow(l_server.Port());
    l_slow.SendBytes("half"); // bytes alone gain no time
    EXPECT_TRUE(l_silent.AwaitClose());
    EXPECT_TRUE(l_slow.AwaitClose());
    l_client.Settle();
}

TEST(ServerLimits, OneAddressHoldsFewStrangersAndAllTogetherTheNewest) {
    Limits l_limits;
    l_limits.unauthenticated = 5;
    l_limits.unauthenticatedPerAddress = 3;
    const ServerThread l_server(l_limits);
    std::deque<ScriptedClient> l_strangers;
    for (int l_count = 0; l_count < 3; ++l_count) {
        l_strangers.emplace_back(l_server.Port(), QHostAddress(0x7F000002));
    }
    ScriptedClient l_fourth(l_server.Port(), QHostAddress(0x7F000002));
    EXPECT_TRUE(l_fourth.AwaitClose());

    for (const quint32 l_address : {0x7F000003, 0x7F000004, 0x7F000005}) {
        l_strangers.emplace_back(l_server.Port(), QHostAddress(l_address));
    }
    EXPECT_TRUE(l_strangers.front().AwaitClose()) << "the oldest makes room";
    l_strangers.pop_front();
    for (ScriptedClient& l_stranger : l_strangers) {
        l_stranger.SendLogin("anna", "");
        EXPECT_TRUE(l_stranger.Await<from_server::LoginReply>());
    }
}

TEST(ServerLimits, WhoFindsAllSessionsTakenWaits) {
    Limits l_limits;
    l_limits.sessions = 2;
    const ServerThread l_server(l_limits);
    ScriptedClient l_anna(l_server.Port(), "anna");
    auto l_bert = std::make_unique<ScriptedClient>(l_server.Port(), "bert");
    ScriptedClient l_third(l_server.Port());
    l_third.SendLogin("carl", "secret");
    for (int l_count = 0; l_count < 20; ++l_count) {
        l_anna.Settle();
    }
    EXPECT_FALSE(l_third.Socket().waitForReadyRead(0));
    l_bert.reset();
    const auto l_reply = l_third.Await<from_server::LoginReply>();
    ASSERT_TRUE(l_reply);
    EXPECT_TRUE(l_reply->accepted);
}

TEST(ServerLimits, AMemberWhoDoesNotReadIsPutOutAndTheTalkGoesOn) {
    Limits l_limits;
    l_limits.sendQueue = 64 * 1024;
    l_limits.trafficBurst = 64 * 1024 * 1024;
    const ServerThread l_server(l_limits);
    ScriptedClient l_speaker(l_server.Port(), "speaker");
    ScriptedClient l_listener(l_server.Port(), "listener");
    ScriptedClient l_sleeper(l_server.Port(), "sleeper");
    l_sleeper.Socket().setReadBufferSize(1);
    l_sleeper.Socket().setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 4096);
    for (ScriptedClient* lp_client : {&l_speaker, &l_listener, &l_sleeper}) {
        lp_client->Enter("harbour");
    }
    // The system holds some megabytes between server and sleeper before the queue begins to grow.
    const std::string l_text(32 * 1024, 'x');
    bool l_isSleeperOut = false;
    for (int l_line = 0; l_line < 1000 && !l_isSleeperOut; ++l_line) {
        l_speaker.Send(to_server::RoomChat{"harbour", l_text});
        EXPECT_TRUE(l_speaker.Await<from_server::RoomChat>());
        EXPECT_TRUE(l_listener.Await<from_server::RoomChat>());
        l_isSleeperOut = l_listener.TakeAll<from_server::UserLeftRoom>() > 0;
    }
    EXPECT_TRUE(l_isSleeperOut);
    l_speaker.Settle();
    l_listener.Settle();
}

TEST(ServerLimits, AFloodSlowsOnlyItsSenderAndLosesNothing) {
    Limits l_limits;
    l_limits.trafficBurst = 20'000;
    l_limits.trafficPerSecond = 20'000;
    const ServerThread l_server(l_limits);
    ScriptedClient l_flooder(l_server.Port(), "flooder");
    ScriptedClient l_other(l_server.Port(), "other");
    QElapsedTimer l_time;
    l_time.start();
    const int l_questions = 500; // some 100 bytes of cost each
    for (int l_count = 0; l_count < l_questions; ++l_count) {
        l_flooder.Send(to_server::GetUserStatus{"nobody"});
    }
    l_other.Settle();
    l_other.Settle();
    l_flooder.Socket().waitForReadyRead(g_patienceMs);
    l_flooder.Settle();
    EXPECT_EQ(l_flooder.TakeAll<from_server::UserStatus>(), l_questions);
    EXPECT_GT(l_time.elapsed(), 1000) << "at least 50,000 bytes of cost, of which 20,000 come for free";
}

TEST(ServerLimits, TheTrafficAllowanceRefillsUpToTheBurst) {
    const auto l_start = TrafficBudget::Clock::now();
    TrafficBudget l_budget(1000, 100, l_start);
    EXPECT_EQ(l_budget.Wait(l_start).count(), 0);
    l_budget.Pay(1500);
    EXPECT_EQ(l_budget.Wait(l_start).count(), 5001);
    EXPECT_EQ(l_budget.Wait(l_start + milliseconds(2000)).count(), 3001);
    EXPECT_EQ(l_budget.Wait(l_start + milliseconds(5001)).count(), 0);
    l_budget.Wait(l_start + std::chrono::hours(100'000));
    l_budget.Pay(1100);
    EXPECT_EQ(l_budget.Wait(l_start + std::chrono::hours(100'000)).count(), 1001)
        << "no more than the burst is saved up";
    // Asked every tenth of a millisecond, the time adds up all the same.
    milliseconds l_wait(1);
    for (int l_step = 0; l_step <= 10'020; ++l_step) {
        l_wait = l_budget.Wait(l_start + std::chrono::hours(100'000) + std::chrono::microseconds(100 * l_step));
    }
    EXPECT_EQ(l_wait.count(), 0);
}
