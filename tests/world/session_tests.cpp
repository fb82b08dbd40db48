#include "world/client_process.h"
#include "world/conditions.h"

#include "server/scripted_client.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include <csignal>

namespace {

bool IsOnline(ScriptedClient& io_watcher, const char* ip_user) {
    io_watcher.Send(to_server::GetUserStatus{ip_user});
    const auto l_status =
        io_watcher.Await<from_server::UserStatus>([&](const auto& i_reply) { return i_reply.user == ip_user; });
    return l_status && l_status->status > 0;
}

} // namespace

TEST(WorldSession, TheClientLogsInAndEndsCleanlyOnEverySignal) {
    const ServerProcess l_server;
    ScriptedClient l_watcher(l_server.Port(), "watcher");
    const ClientHome l_home(QStringLiteral("anna"), l_server.Port());
    ClientProcess l_client(l_home);
    for (const int l_signal : {SIGTERM, SIGINT, SIGHUP}) {
        if (!l_client.IsRunning())
            l_client.Start();
        EXPECT_TRUE(WaitUntil([&] { return IsOnline(l_watcher, "anna"); }));
        EXPECT_EQ(l_client.Stop(l_signal), 0) << l_signal;
        EXPECT_TRUE(WaitUntil([&] { return !IsOnline(l_watcher, "anna"); }));
    }
    const QFile::Permissions l_others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_EQ(QFileInfo(l_home.StoreFile()).permissions() & l_others, QFile::Permissions());
    EXPECT_EQ(l_home.Setting("username"), QStringLiteral("anna"));
}

TEST(WorldSession, ARefusedLoginIsNotRetried) {
    const ServerProcess l_server;
    ScriptedClient(l_server.Port()).LogIn("anna", "another password");
    const ClientHome l_home(QStringLiteral("anna"), l_server.Port());
    DrivenClient l_client(l_home);
    const QStringList l_refusal = {QStringLiteral("failed"), QStringLiteral("INVALIDPASS")};
    l_client.AwaitEvent(l_refusal);
    for (int l_tick = 0; l_tick < 3; ++l_tick)
        l_client.Do({QStringLiteral("halfMinute")});
    EXPECT_EQ(l_client.CountEvents(l_refusal), 1);
    EXPECT_FALSE(l_client.Do({QStringLiteral("isConnected")}).toBool());

    l_client.Do({QStringLiteral("set"), QStringLiteral("password"), QStringLiteral("another password")});
    l_client.Do({QStringLiteral("connect")});
    l_client.AwaitConnected();
    EXPECT_EQ(l_client.CountEvents(l_refusal), 1);
}

TEST(WorldSession, ALostServerIsFoundAgainAtTheNextTick) {
    ServerProcess l_server;
    const ClientHome l_home(QStringLiteral("anna"), l_server.Port());
    const ClientHome l_otherHome(QStringLiteral("bert"), l_server.Port());
    DrivenClient l_anna(l_home);
    DrivenClient l_bert(l_otherHome);
    l_anna.AwaitConnected();
    l_bert.AwaitConnected();
    l_anna.Do({QStringLiteral("track"), QStringLiteral("bert")});
    l_anna.AwaitOnline(QStringLiteral("bert"));

    l_server.Kill();
    l_anna.AwaitEvent({QStringLiteral("disconnected")});
    EXPECT_FALSE(HasNeighbour(l_anna.ItemOf("user", QStringLiteral("bert")), "is_online"));
    l_anna.Do({QStringLiteral("halfMinute")});
    l_anna.AwaitEvent({QStringLiteral("failed"), QStringLiteral("socket error")});
    l_bert.AwaitEvent({QStringLiteral("disconnected")});

    l_server.Start();
    for (DrivenClient* lp_client : {&l_anna, &l_bert}) {
        lp_client->Do({QStringLiteral("halfMinute")});
        lp_client->AwaitConnected();
    }
    l_anna.AwaitOnline(QStringLiteral("bert"));

    // Who leaves by choice stays away.
    l_bert.Do({QStringLiteral("disconnect")});
    l_bert.Do({QStringLiteral("halfMinute")});
    EXPECT_FALSE(l_bert.Do({QStringLiteral("isConnected")}).toBool());
    EXPECT_TRUE(WaitUntil([&] { return !HasNeighbour(l_anna.ItemOf("user", QStringLiteral("bert")), "is_online"); }));
    EXPECT_EQ(l_bert.CountEvents({QStringLiteral("connected")}), 2);
}

TEST(WorldSession, TheSecondLoginOfANameEndsTheFirst) {
    const ServerProcess l_server;
    const ClientHome l_firstHome(QStringLiteral("anna"), l_server.Port());
    const ClientHome l_secondHome(QStringLiteral("anna"), l_server.Port());
    DrivenClient l_first(l_firstHome);
    l_first.AwaitConnected();
    DrivenClient l_second(l_secondHome);
    l_second.AwaitConnected();
    l_first.AwaitEvent({QStringLiteral("disconnected")});
    EXPECT_TRUE(l_second.Do({QStringLiteral("isConnected")}).toBool());
    // To the first it is a loss like any other.
    l_first.Do({QStringLiteral("halfMinute")});
    l_first.AwaitConnected();
    l_second.AwaitEvent({QStringLiteral("disconnected")});
}
