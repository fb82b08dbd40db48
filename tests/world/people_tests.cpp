// The user list and its groups between real clients: what one does in the window, the other feels.
#include "world/client_process.h"
#include "world/conditions.h"
#include "world/sample_file.h"
#include "world/scripted_peer.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

#include <csignal>

namespace {

class WorldPeople : public testing::Test {
protected:
    static void Do(DrivenClient& io_client, std::initializer_list<const char*> i_words) {
        QStringList l_words;
        for (const char* lp_word : i_words)
            l_words.append(QString::fromUtf8(lp_word));
        EXPECT_TRUE(io_client.Do(l_words).toBool()) << l_words.join(QLatin1Char(' ')).toStdString();
    }
    static QJsonValue Row(const char* ip_user, const char* ip_online, const char* ip_groups) {
        return QJsonArray{QString::fromUtf8(ip_user), QString::fromUtf8(ip_online), QString::fromUtf8(ip_groups)};
    }
    static void AwaitUsers(DrivenClient& io_client, const QJsonArray& i_rows) {
        QJsonArray l_rows;
        EXPECT_TRUE(WaitUntil([&] {
            l_rows = io_client.Do({QStringLiteral("rows"), QStringLiteral("userList")}).toArray();
            return l_rows == i_rows;
        })) << QJsonDocument(l_rows).toJson().toStdString();
    }
    static std::string Status(DrivenClient& io_client) {
        return io_client.Do({QStringLiteral("text"), QStringLiteral("statusEdit")}).toString().toStdString();
    }
    static void AwaitStatus(DrivenClient& io_client, const char* ip_status) {
        EXPECT_TRUE(WaitUntil([&] { return Status(io_client) == ip_status; })) << Status(io_client);
    }
    // By the dialog of the user's groups, which makes the group if it is new.
    static void PutIntoGroup(DrivenClient& io_client, const char* ip_user, const char* ip_group) {
        Do(io_client, {"userMenu", ip_user, "Set user's groups"});
        Do(io_client, {"type", "newGroupEdit", ip_group});
        Do(io_client, {"check", "groupListWidget", ip_group});
        Do(io_client, {"closeDialogs"});
    }
    static void SetPriority(DrivenClient& io_client, const char* ip_group, const char* ip_priority) {
        Do(io_client, {"action", "configure_user_groups"});
        Do(io_client, {"choose", "groupList", ip_group});
        Do(io_client, {"spin", "prioritySpinBox", ip_priority});
        Do(io_client, {"closeDialogs"});
    }

    const ServerProcess m_server;
};

} // namespace

TEST_F(WorldPeople, AddUserAsksTheServerFirst) {
    const ClientHome l_annaHome(QStringLiteral("anna"), m_server.Port());
    const ClientHome l_bertHome(QStringLiteral("bert"), m_server.Port());
    DrivenClient l_anna(l_annaHome);
    DrivenClient l_bert(l_bertHome);
    l_anna.AwaitConnected();
    l_bert.AwaitConnected();

    Do(l_anna, {"action", "manual_add_user"});
    Do(l_anna, {"type", "userNameEdit", "nobody of that name"});
    AwaitStatus(l_anna, "User name does not exist.");
    AwaitUsers(l_anna, {});
    Do(l_anna, {"track", "bert"}); // its answer is none to the dialog
    l_anna.AwaitOnline(QStringLiteral("bert"));
    EXPECT_EQ(Status(l_anna), "User name does not exist.");
    AwaitUsers(l_anna, {});
    Do(l_anna, {"type", "userNameEdit", "  bert "});
    AwaitStatus(l_anna, "User added to list.");
    AwaitUsers(l_anna, {Row("bert", "Online", "")});
    Do(l_anna, {"type", "userNameEdit", "bert"});
    EXPECT_EQ(Status(l_anna), "User already in list.");
    Do(l_anna, {"closeDialogs"});

    EXPECT_EQ(l_bert.Stop(SIGTERM), 0);
    AwaitUsers(l_anna, {Row("bert", "", "")});
    l_bert.Start();
    AwaitUsers(l_anna, {Row("bert", "Online", "")});
}

TEST_F(WorldPeople, ListAndGroupsAreThereAgainAfterARestart) {
    const ClientHome l_annaHome(QStringLiteral("anna"), m_server.Port());
    const ClientHome l_bertHome(QStringLiteral("bert"), m_server.Port());
    DrivenClient l_bert(l_bertHome);
    DrivenClient l_anna(l_annaHome);
    l_bert.AwaitConnected();
    l_anna.AwaitConnected();
    Do(l_anna, {"userMenu", "bert", "Add user to list"});
    Do(l_anna, {"closeDialogs"});
    PutIntoGroup(l_anna, "bert", "Chöre");
    PutIntoGroup(l_anna, "bert", "Arbeit & mehr");
    SetPriority(l_anna, "Chöre", "4");
    Do(l_anna, {"userMenu", "carl", "Add user to list"});
    Do(l_anna, {"userMenu", "dora", "Unshare files from user"});
    const QJsonArray l_users = {Row("bert", "Online", "Arbeit & mehr, Chöre"), Row("carl", "", "")};
    AwaitUsers(l_anna, l_users);

    EXPECT_EQ(l_anna.Stop(SIGTERM), 0);
    l_anna.Start();
    AwaitUsers(l_anna, l_users);
    EXPECT_EQ(Neighbour(l_anna.ItemOf("user_list_group", QStringLiteral("Chöre")), "group_download_priority"),
              QStringLiteral("4"));
    EXPECT_TRUE(HasNeighbour(l_anna.ItemOf("user", QStringLiteral("dora")), "unshared"));
    Do(l_anna, {"userMenu", "carl", "Remove user from list"});
    AwaitUsers(l_anna, {Row("bert", "Online", "Arbeit & mehr, Chöre")});
}

// The one slot is held while others queue up. A new priority counts from the next newcomer on.
TEST_F(WorldPeople, APriorityOrdersTheQueueAtTheNextNewUpload) {
    const ClientHome l_home(QStringLiteral("source"), m_server.Port());
    const QString l_file = l_home.Path(QStringLiteral("shared/song.bin"));
    WriteSampleFile(l_file, 1000, 1);
    l_home.Edit(QStringLiteral("share"), {l_home.Path(QStringLiteral("shared")), QStringLiteral("public")});
    l_home.Edit(QStringLiteral("friend"), {QStringLiteral("grouped"), QStringLiteral("friends")});
    DrivenClient l_source(l_home);
    l_source.AwaitConnected();

    ConnectedPeer l_holder("holder", m_server.Port(), l_home.Port());
    ConnectedPeer l_first("first", m_server.Port(), l_home.Port());
    ConnectedPeer l_grouped("grouped", m_server.Port(), l_home.Port());
    ConnectedPeer l_last("last", m_server.Port(), l_home.Port());
    int l_queued = 0;
    const auto l_queue = [&](ConnectedPeer& io_asker) {
        io_asker.link.Send(QueueUpload{l_file.toStdString()});
        ++l_queued;
        EXPECT_TRUE(WaitUntil([&] { return l_source.Items("upload_entry").size() == l_queued; }));
        l_source.AwaitOnline(QString::fromStdString(io_asker.peer.User()));
    };
    // The users, by their place in the queue.
    const auto l_order = [&] {
        QStringList l_users(l_queued);
        for (const QJsonValue& l_entry : l_source.Items("upload_entry"))
            l_users[Neighbour(l_entry.toObject(), "effective_upload_order").toInt()] =
                Neighbour(l_entry.toObject(), "user");
        return l_users.join(QLatin1Char(' ')).toStdString();
    };
    l_queue(l_holder);
    ASSERT_TRUE(l_holder.link.Await<TransferRequest>());
    l_queue(l_first);
    l_queue(l_grouped);
    EXPECT_TRUE(WaitUntil([&] { return l_order() == "holder first grouped"; })) << l_order();
    SetPriority(l_source, "friends", "1");
    EXPECT_EQ(l_order(), "holder first grouped");
    l_queue(l_last);
    EXPECT_TRUE(WaitUntil([&] { return l_order() == "grouped holder first last"; })) << l_order();
}

TEST_F(WorldPeople, UnshareStopsARunningUpload) {
    const ClientHome l_sourceHome(QStringLiteral("source"), m_server.Port());
    const ClientHome l_takerHome(QStringLiteral("taker"), m_server.Port());
    constexpr qint64 l_size = 200 * 1024 * 1024;
    const QString l_file = l_sourceHome.Path(QStringLiteral("shared/album/song.bin"));
    const QString l_partial = l_takerHome.Downloads("downloading/album/song.bin");
    WriteSampleFile(l_file, l_size, 7);
    l_sourceHome.Edit(QStringLiteral("share"), {l_sourceHome.Path(QStringLiteral("shared")), QStringLiteral("public")});
    l_sourceHome.Set("upload_speed_limit", QStringLiteral("4096"));
    l_sourceHome.Set("upload_speed_limit_enabled", QStringLiteral("yes"));
    l_takerHome.Edit(QStringLiteral("want"), {l_sourceHome.User(), l_file, QString::number(l_size)});
    DrivenClient l_source(l_sourceHome);
    DrivenClient l_taker(l_takerHome);
    EXPECT_TRUE(WaitUntil([&] { return SizeOf(l_partial) > 0; }));
    l_source.AwaitStatus("upload_entry", QStringLiteral("uploading"));

    Do(l_source, {"userMenu", "taker", "Unshare files from user"});
    EXPECT_TRUE(l_source.Items("upload_entry").isEmpty());
    l_taker.AwaitStatus("download_entry", QStringLiteral("denied"));
    EXPECT_LT(SizeOf(l_partial), l_size);
    EXPECT_EQ(Neighbour(l_taker.Items("download_entry")[0].toObject(), "denial_reason"),
              QStringLiteral("File not shared."));

    // It goes on once the files are shared again and the taker asks again.
    EXPECT_FALSE(
        l_source.Do({QStringLiteral("userMenu"), QStringLiteral("taker"), QStringLiteral("Unshare files from user")})
            .toBool());
    Do(l_source, {"userMenu", "taker", "Re-share files with user"});
    EXPECT_EQ(l_taker.Stop(SIGTERM), 0);
    const qint64 l_got = SizeOf(l_partial);
    l_taker.Start();
    EXPECT_TRUE(WaitUntil([&] { return SizeOf(l_partial) > l_got; }));
}
