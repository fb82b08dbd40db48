#include "world/client_process.h"
#include "world/conditions.h"

#include "server/server_process.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

const QString g_room = QStringLiteral("Hafen & Mole");

QStringList Members(DrivenClient& io_client) {
    QStringList l_members;
    for (const QJsonValue& l_user :
         io_client.ItemOf("room", g_room)[QStringLiteral("to")][QStringLiteral("user")].toArray())
        l_members.append(l_user.toString());
    l_members.sort();
    return l_members;
}

} // namespace

TEST(WorldChat, RoomsAreRelayedBetweenTwoClients) {
    const ServerProcess l_server;
    const ClientHome l_annaHome(QStringLiteral("anna"), l_server.Port());
    const ClientHome l_bertHome(QStringLiteral("bert"), l_server.Port());
    DrivenClient l_anna(l_annaHome);
    auto l_bert = std::make_unique<DrivenClient>(l_bertHome);
    const QStringList l_both = {QStringLiteral("anna"), QStringLiteral("bert")};
    for (DrivenClient* lp_client : {&l_anna, l_bert.get()}) {
        lp_client->AwaitConnected();
        lp_client->Do({QStringLiteral("enter"), g_room});
        EXPECT_TRUE(WaitUntil([&] { return HasNeighbour(lp_client->ItemOf("room", g_room), "in_room"); }));
    }
    EXPECT_EQ(Members(*l_bert), l_both);
    EXPECT_TRUE(WaitUntil([&] { return Members(l_anna) == l_both; }));

    const QString l_text = QStringLiteral("Grüße <b>an alle</b> \U0001F30A");
    l_bert->Do({QStringLiteral("say"), g_room, l_text});
    for (DrivenClient* lp_client : {&l_anna, l_bert.get()})
        lp_client->AwaitEvent({QStringLiteral("room"), g_room, QStringLiteral("bert"), l_text});
    EXPECT_EQ(l_bert->CountEvents({QStringLiteral("room"), g_room, QStringLiteral("bert"), l_text}), 1);

    l_bert.reset();
    EXPECT_TRUE(WaitUntil([&] { return Members(l_anna) == QStringList{QStringLiteral("anna")}; }));
    l_anna.Do({QStringLiteral("leave"), g_room});
    EXPECT_TRUE(WaitUntil([&] { return !HasNeighbour(l_anna.ItemOf("room", g_room), "in_room"); }));
    EXPECT_TRUE(Members(l_anna).isEmpty());
}

TEST(WorldChat, PrivateChatReachesTheReaderAlsoLater) {
    const ServerProcess l_server;
    const ClientHome l_annaHome(QStringLiteral("anna"), l_server.Port());
    const ClientHome l_bertHome(QStringLiteral("bert"), l_server.Port());
    DrivenClient l_anna(l_annaHome);
    DrivenClient l_bert(l_bertHome);
    l_anna.AwaitConnected();
    l_bert.AwaitConnected();
    l_anna.Do({QStringLiteral("tell"), QStringLiteral("bert"), QStringLiteral("now")});
    l_bert.AwaitEvent({QStringLiteral("private"), QStringLiteral("anna"), QStringLiteral("now")});
    l_bert.Do({QStringLiteral("tell"), QStringLiteral("anna"), QStringLiteral("read")});
    l_anna.AwaitEvent({QStringLiteral("private"), QStringLiteral("bert"), QStringLiteral("read")});

    EXPECT_EQ(l_bert.Stop(SIGTERM), 0);
    l_anna.Do({QStringLiteral("tell"), QStringLiteral("bert"), QStringLiteral("later")});
    l_anna.Do({QStringLiteral("tell"), QStringLiteral("anna"), QStringLiteral("sent")}); // behind it on the same road
    l_anna.AwaitEvent({QStringLiteral("private"), QStringLiteral("anna"), QStringLiteral("sent")});
    l_bert.Start();
    l_bert.AwaitEvent({QStringLiteral("private"), QStringLiteral("anna"), QStringLiteral("later")});
    EXPECT_EQ(l_bert.CountEvents({QStringLiteral("private"), QStringLiteral("anna"), QStringLiteral("now")}), 0);

    // What was delivered and acknowledged does not come again.
    l_bert.Do({QStringLiteral("tell"), QStringLiteral("bert"), QStringLiteral("to myself")});
    l_bert.AwaitEvent({QStringLiteral("private"), QStringLiteral("bert"), QStringLiteral("to myself")});
    EXPECT_EQ(l_bert.Stop(SIGTERM), 0);
    l_bert.Start();
    l_bert.AwaitConnected();
    l_anna.Do({QStringLiteral("tell"), QStringLiteral("bert"), QStringLiteral("last")});
    l_bert.AwaitEvent({QStringLiteral("private"), QStringLiteral("anna"), QStringLiteral("last")});
    EXPECT_EQ(l_bert.CountEvents({QStringLiteral("private"), QStringLiteral("anna"), QStringLiteral("later")}), 0);
}
