// What people see of rooms and private chats: what they type in one window is read in the other.
#include "world/client_process.h"
#include "world/conditions.h"

#include "server/server_process.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

const QString g_room = QStringLiteral("Hafen & Mole");
const QString g_anna = QStringLiteral("anna");
const QString g_bert = QStringLiteral("bert");

void Enter(DrivenClient& io_client) {
    io_client.Do({QStringLiteral("enter"), g_room});
}

void Write(DrivenClient& io_client, const char* ip_kind, const QString& i_name, const QString& i_text) {
    EXPECT_TRUE(io_client.Do({QStringLiteral("write"), QString::fromUtf8(ip_kind), i_name, i_text}).toBool());
}

// The lines on show in the tab of a "room" or of the "chat" with a user.
QStringList Shown(DrivenClient& io_client, const char* ip_kind, const QString& i_name) {
    return io_client.Do({QStringLiteral("shown"), QString::fromUtf8(ip_kind), i_name})
        .toString()
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void AwaitShown(DrivenClient& io_client, const char* ip_kind, const QString& i_name, const QStringList& i_lines) {
    QStringList l_shown;
    EXPECT_TRUE(WaitUntil([&] { return (l_shown = Shown(io_client, ip_kind, i_name)) == i_lines; }))
        << io_client.Home().User().toStdString() << " reads:\n"
        << l_shown.join(QLatin1Char('\n')).toStdString();
}

void AwaitUsers(DrivenClient& io_client, const QStringList& i_users) {
    QStringList l_users;
    EXPECT_TRUE(WaitUntil([&] {
        l_users.clear();
        for (const QJsonValue& l_user : io_client.Do({QStringLiteral("listed"), g_room}).toArray())
            l_users.append(l_user.toString());
        return l_users == i_users;
    })) << io_client.Home().User().toStdString()
        << " sees " << l_users.join(QLatin1Char(' ')).toStdString();
}

} // namespace

TEST(WorldTalk, TwoPeopleMeetInARoomAndMeetAgainAfterTheServerWasGone) {
    ServerProcess l_server;
    const ClientHome l_annaHome(g_anna, l_server.Port());
    const ClientHome l_bertHome(g_bert, l_server.Port());
    DrivenClient l_anna(l_annaHome);
    DrivenClient l_bert(l_bertHome);
    for (DrivenClient* lp_client : {&l_anna, &l_bert}) {
        lp_client->AwaitConnected();
        Enter(*lp_client);
        EXPECT_TRUE(WaitUntil([&] { return HasNeighbour(lp_client->ItemOf("room", g_room), "in_room"); }));
    }
    for (DrivenClient* lp_client : {&l_anna, &l_bert})
        AwaitUsers(*lp_client, {g_anna, g_bert});

    const QString l_greeting = QStringLiteral("Grüße  <b>an alle</b> \U0001F30A & http://a.example/?x=1&y=2");
    Write(l_bert, "room", g_room, l_greeting);
    AwaitShown(l_anna, "room", g_room, {QStringLiteral("[bert] ") + l_greeting});
    Write(l_anna, "room", g_room, QStringLiteral("ほぅ"));
    const QStringList l_talk = {QStringLiteral("[bert] ") + l_greeting, QStringLiteral("[anna] ほぅ")};
    for (DrivenClient* lp_client : {&l_anna, &l_bert})
        AwaitShown(*lp_client, "room", g_room, l_talk);

    l_bert.Do({QStringLiteral("leave"), g_room});
    AwaitUsers(l_anna, {g_anna});
    AwaitUsers(l_bert, {});
    AwaitShown(l_bert, "room", g_room, {});
    Enter(l_bert);
    AwaitUsers(l_anna, {g_anna, g_bert});
    AwaitUsers(l_bert, {g_anna, g_bert});

    l_server.Kill();
    AwaitShown(l_bert, "room", g_room, {QStringLiteral("* Disconnected.")});
    l_anna.AwaitEvent({QStringLiteral("disconnected")});
    l_server.Start();
    for (DrivenClient* lp_client : {&l_anna, &l_bert}) {
        lp_client->Do({QStringLiteral("halfMinute")});
        lp_client->AwaitConnected();
    }
    for (DrivenClient* lp_client : {&l_anna, &l_bert})
        AwaitUsers(*lp_client, {g_anna, g_bert});
    Write(l_anna, "room", g_room, QStringLiteral("back"));
    AwaitShown(l_bert, "room", g_room,
               {QStringLiteral("* Disconnected."), QStringLiteral("* Reconnected."), QStringLiteral("[anna] back")});
    AwaitShown(l_anna, "room", g_room,
               l_talk + QStringList{QStringLiteral("* Disconnected."), QStringLiteral("* Reconnected."),
                                    QStringLiteral("[anna] back")});
}

TEST(WorldTalk, APrivateMessageWaitsForItsReader) {
    const ServerProcess l_server;
    const ClientHome l_annaHome(g_anna, l_server.Port());
    const ClientHome l_bertHome(g_bert, l_server.Port());
    DrivenClient l_anna(l_annaHome);
    DrivenClient l_bert(l_bertHome);
    l_anna.AwaitConnected();
    l_bert.AwaitConnected();
    EXPECT_EQ(l_bert.Stop(SIGTERM), 0);

    Write(l_anna, "chat", g_bert, QStringLiteral("später, ünd <i>so</i>"));
    AwaitShown(l_anna, "chat", g_bert, {QStringLiteral("[anna] später, ünd <i>so</i>")});
    Write(l_anna, "chat", g_anna, QStringLiteral("sent")); // behind it on the same road
    l_anna.AwaitEvent({QStringLiteral("private"), g_anna, QStringLiteral("sent")});
    l_bert.Start();
    AwaitShown(l_bert, "chat", g_anna, {QStringLiteral("[anna] später, ünd <i>so</i>")});
    EXPECT_EQ(l_bert.Do({QStringLiteral("alerts")}).toArray(), QJsonArray{g_anna}) << "its tab is not on show";
    Write(l_bert, "chat", g_anna, QStringLiteral("gelesen"));
    AwaitShown(l_anna, "chat", g_bert,
               {QStringLiteral("[anna] später, ünd <i>so</i>"), QStringLiteral("[bert] gelesen")});

    // Nobody hears of someone who is shut out.
    l_bert.Do({QStringLiteral("ignore"), g_anna});
    Write(l_anna, "chat", g_bert, QStringLiteral("unheard"));
    l_bert.AwaitEvent({QStringLiteral("private"), g_anna, QStringLiteral("unheard")});
    AwaitShown(l_bert, "chat", g_anna,
               {QStringLiteral("[anna] später, ünd <i>so</i>"), QStringLiteral("[bert] gelesen")});
}
