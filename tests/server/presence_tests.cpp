#include "server/scripted_client.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::UnorderedElementsAre;

namespace {

from_server::AddUserReply Add(ScriptedClient& io_client, const std::string& i_user) {
    io_client.Send(to_server::AddUser{i_user});
    const auto l_reply = io_client.Await<from_server::AddUserReply>();
    EXPECT_TRUE(l_reply);
    EXPECT_EQ(l_reply->user, i_user);
    return l_reply.value_or(from_server::AddUserReply());
}

UserStats StatsOf(ScriptedClient& io_client, const std::string& i_user) {
    io_client.Send(to_server::GetUserStats{i_user});
    const auto l_reply = io_client.Await<from_server::ReceivedUserStats>();
    EXPECT_TRUE(l_reply);
    EXPECT_EQ(l_reply->user, i_user);
    return l_reply ? l_reply->stats : UserStats();
}

} // namespace

TEST(ServerPresence, TrackersHearOfEveryComingAndGoing) {
    const ServerProcess l_server({QStringLiteral("--privileged"), QStringLiteral("bert")});
    ScriptedClient l_anna(l_server.Port(), "anna");
    const auto l_privileged = l_anna.Await<from_server::PrivilegedUsers>();
    ASSERT_TRUE(l_privileged);
    EXPECT_THAT(l_privileged->users, UnorderedElementsAre("bert"));

    EXPECT_FALSE(Add(l_anna, "bert").exists) << "has never been here, and is tracked all the same";
    {
        ScriptedClient l_bert(l_server.Port(), "bert");
        const auto l_came = l_anna.Await<from_server::UserStatus>();
        ASSERT_TRUE(l_came);
        EXPECT_EQ(l_came->user, "bert");
        EXPECT_GT(l_came->status, 0);
        EXPECT_TRUE(l_came->privileged);

        const auto l_present = Add(l_anna, "bert");
        EXPECT_TRUE(l_present.exists);
        EXPECT_GT(l_present.status, 0);
    }
    const auto l_went = l_anna.Await<from_server::UserStatus>();
    ASSERT_TRUE(l_went);
    EXPECT_EQ(l_went->status, 0);
    const auto l_absent = Add(l_anna, "bert");
    EXPECT_TRUE(l_absent.exists);
    EXPECT_EQ(l_absent.status, 0);

    l_anna.Send(to_server::UntrackUser{"bert"});
    l_anna.Settle();
    ScriptedClient l_bert(l_server.Port(), "bert");
    l_anna.Send(to_server::GetUserStatus{"bert"});
    const auto l_asked = l_anna.Await<from_server::UserStatus>();
    ASSERT_TRUE(l_asked);
    EXPECT_GT(l_asked->status, 0);
    l_anna.Settle();
    EXPECT_EQ(l_anna.TakeAll<from_server::UserStatus>(), 0) << "only the answer, no news";
}

TEST(ServerPresence, TellsTheAddressOfWhoIsHere) {
    const ServerProcess l_server;
    ScriptedClient l_anna(l_server.Port(), "anna");
    const auto l_reply = [&] {
        const auto l_message = l_anna.Await<from_server::UserAddress>();
        EXPECT_TRUE(l_message);
        return l_message ? l_message->address : TCPAddress(1, 1);
    };
    const auto l_address = [&](const std::string& i_user) {
        l_anna.Send(to_server::GetUserAddress{i_user});
        return l_reply();
    };
    EXPECT_EQ(l_address("bert"), TCPAddress(0, 0));
    {
        ScriptedClient l_bert(l_server.Port(), QHostAddress(0x7F000005));
        l_bert.LogIn("bert", "secret");
        // Asked before his port has come, the server waits for it.
        l_anna.Send(to_server::GetUserAddress{"bert"});
        l_anna.Settle();
        EXPECT_EQ(l_anna.TakeAll<from_server::UserAddress>(), 0);
        l_bert.Send(to_server::SetWaitPort{2234});
        EXPECT_EQ(l_reply(), TCPAddress(0x7F000005, 2234));

        for (const auto& [l_port, l_told] : {std::pair(2235, 2235), {65535, 65535}, {65536, 0}, {-1, 0}, {0, 0}}) {
            l_bert.Send(to_server::SetWaitPort{l_port});
            l_bert.Settle();
            EXPECT_EQ(l_address("bert"), TCPAddress(0x7F000005, l_told));
        }
    }
    {
        ScriptedClient l_brief(l_server.Port(), "brief");
        l_anna.Send(to_server::GetUserAddress{"brief"});
        l_anna.Settle();
    }
    EXPECT_EQ(l_reply(), TCPAddress(0, 0)) << "gone without a word about the port";
    EXPECT_EQ(l_address("bert"), TCPAddress(0, 0));
    ScriptedClient l_silent(l_server.Port(), "silent");
    EXPECT_EQ(l_address("silent"), TCPAddress(0x7F000001, 0)) << "has none to tell, after a while";
}

TEST(ServerPresence, KeepsTheFiguresAndAveragesTheSpeeds) {
    ServerProcess l_server;
    {
        ScriptedClient l_anna(l_server.Port(), "anna");
        EXPECT_EQ(StatsOf(l_anna, "anna").sharedFileCount, 0);
        l_anna.Send(to_server::FilesFolders{12, 3456});
        EXPECT_EQ(StatsOf(l_anna, "anna").sharedFileCount, 3456);
        l_anna.Send(to_server::FilesFolders{-1, -1});
        EXPECT_EQ(StatsOf(l_anna, "anna").sharedFileCount, 0);

        l_anna.Send(to_server::UploadSpeed{1000});
        EXPECT_EQ(StatsOf(l_anna, "anna").averageSpeed, 1000);
        l_anna.Send(to_server::UploadSpeed{3000});
        l_anna.Send(to_server::UploadSpeed{-5});
        EXPECT_EQ(StatsOf(l_anna, "anna").averageSpeed, 2000);
    }
    EXPECT_EQ(l_server.Stop(SIGTERM), 0);
    l_server.Start();
    ScriptedClient l_bert(l_server.Port(), "bert");
    EXPECT_EQ(StatsOf(l_bert, "anna").averageSpeed, 2000) << "of one who is offline, over a restart";
    EXPECT_EQ(StatsOf(l_bert, "nobody").averageSpeed, 0);

    ScriptedClient l_anna(l_server.Port(), "anna");
    for (int l_report = 0; l_report < 30; ++l_report) {
        l_anna.Send(to_server::UploadSpeed{0x7FFFFFFF});
    }
    EXPECT_GT(StatsOf(l_anna, "anna").averageSpeed, 0x60000000) << "the largest speed does not overflow";
}
