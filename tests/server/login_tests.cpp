#include "server/scripted_client.h"

#include <gtest/gtest.h>

#include <chrono>
#include <deque>

TEST(ServerLogin, RegistersAnUnknownNameAndThenInsistsOnItsPassword) {
    const ServerProcess l_server({QStringLiteral("--motd"), QStringLiteral("Grüße")});
    {
        ScriptedClient l_first(l_server.Port());
        const auto l_reply = l_first.LogIn("anna", "secret");
        EXPECT_TRUE(l_reply.accepted);
        EXPECT_EQ(l_reply.greeting, "Grüße");
        EXPECT_EQ(l_reply.address, 0x7F000001U);
    }
    for (const char* l_wrong : {"Secret", "secret ", "s"}) {
        ScriptedClient l_guesser(l_server.Port());
        const auto l_reply = l_guesser.LogIn("anna", l_wrong);
        EXPECT_FALSE(l_reply.accepted);
        EXPECT_EQ(l_reply.reason, "INVALIDPASS");
        EXPECT_TRUE(l_guesser.AwaitClose());
    }
    ScriptedClient l_other(l_server.Port());
    EXPECT_TRUE(l_other.LogIn("Anna", "another person").accepted) << "names differ by case";
    ScriptedClient l_again(l_server.Port());
    EXPECT_TRUE(l_again.LogIn("anna", "secret").accepted);
}

TEST(ServerLogin, RefusesNamesAndPasswordsThatCannotBeWithASentence) {
    const ServerProcess l_server;
    const std::pair<std::string, std::string> l_impossible[] = {
        {"", "secret"},
        {std::string(65, 'a'), "secret"},
        {std::string(20000, 'a'), "secret"},
        {"anna\n", "secret"},
        {" anna", "secret"},
        {"an\u202Ena", "secret"}, // turns the rest of the line around
        {"an\xFFna", "secret"},   // not UTF-8
        {"anna", ""},
        {"anna", std::string(257, 'a')},
    };
    for (const auto& [l_user, l_password] : l_impossible) {
        ScriptedClient l_client(l_server.Port());
        const auto l_reply = l_client.LogIn(l_user, l_password);
        EXPECT_FALSE(l_reply.accepted) << l_user;
        EXPECT_EQ(l_reply.reason.find("INVALIDPASS"), std::string::npos);
        EXPECT_EQ(l_reply.reason.back(), '.') << l_reply.reason;
        EXPECT_TRUE(l_client.AwaitClose());
    }
    ScriptedClient l_longest(l_server.Port());
    EXPECT_TRUE(l_longest.LogIn(std::string(64, 'a'), std::string(256, 'b')).accepted);
}

TEST(ServerLogin, ClosedRegistrationAdmitsOnlyWhoIsRegistered) {
    ServerProcess l_server;
    ScriptedClient(l_server.Port()).LogIn("anna", "secret");
    l_server.Stop(SIGTERM);
    l_server.Start({QStringLiteral("--registration"), QStringLiteral("closed")});

    ScriptedClient l_stranger(l_server.Port());
    const auto l_reply = l_stranger.LogIn("bert", "secret");
    EXPECT_FALSE(l_reply.accepted);
    EXPECT_FALSE(l_reply.reason.empty());
    EXPECT_TRUE(l_stranger.AwaitClose());
    ScriptedClient l_known(l_server.Port());
    EXPECT_TRUE(l_known.LogIn("anna", "secret").accepted);
}

TEST(ServerLogin, TheSecondLoginOfANameEndsTheFirst) {
    const ServerProcess l_server;
    ScriptedClient l_watcher(l_server.Port(), "watcher");
    ScriptedClient l_first(l_server.Port(), "anna");
    l_watcher.Enter("harbour");
    l_first.Enter("harbour");

    ScriptedClient l_second(l_server.Port(), "anna");
    EXPECT_TRUE(l_first.AwaitClose());
    EXPECT_TRUE(l_watcher.Await<from_server::UserLeftRoom>());
    // The end of the first leaves the second alone.
    l_second.Settle();
    l_watcher.Send(to_server::PrivateChat{"anna", "still there?"});
    EXPECT_TRUE(l_second.Await<from_server::PrivateChat>());

    // Only the password makes it the second login of that name.
    ScriptedClient l_guesser(l_server.Port());
    EXPECT_EQ(l_guesser.LogIn("anna", "guess").reason, "INVALIDPASS");
    l_second.Settle();
    EXPECT_TRUE(l_second.IsAlive());
}

TEST(ServerLogin, TwoRegistrationsOfOneNameAtOnceMakeOneAccount) {
    const ServerProcess l_server;
    ScriptedClient l_one(l_server.Port());
    ScriptedClient l_two(l_server.Port());
    l_one.SendLogin("anna", "one");
    l_two.SendLogin("anna", "two");
    const auto l_firstReply = l_one.Await<from_server::LoginReply>();
    const auto l_secondReply = l_two.Await<from_server::LoginReply>();
    ASSERT_TRUE(l_firstReply && l_secondReply);
    EXPECT_NE(l_firstReply->accepted, l_secondReply->accepted);
    EXPECT_EQ((l_firstReply->accepted ? l_secondReply : l_firstReply)->reason, "INVALIDPASS");
}

TEST(ServerLogin, MessagesBehindTheLoginWaitForIt) {
    const ServerProcess l_server;
    ScriptedClient l_client(l_server.Port());
    l_client.Send(to_server::EnterRoom{"too early"});
    l_client.SendLogin("anna", "secret");
    l_client.Send(to_server::EnterRoom{"harbour"});
    const auto l_joined = l_client.Await<from_server::RoomJoined>();
    ASSERT_TRUE(l_joined);
    EXPECT_EQ(l_joined->room, "harbour");
}

TEST(ServerLogin, AFloodOfLoginsDoesNotHoldUpTheChat) {
    const ServerProcess l_server;
    ScriptedClient l_talker(l_server.Port(), "anna");
    std::deque<ScriptedClient> l_flood;
    for (int l_count = 0; l_count < 30; ++l_count) {
        l_flood.emplace_back(l_server.Port());
    }
    for (ScriptedClient& l_client : l_flood) {
        l_client.SendLogin("anna", "guess");
    }
    for (int l_count = 0; l_count < 3; ++l_count) {
        l_talker.Settle();
    }
    // Were the hashes made between the messages, all guesses would be answered by now.
    EXPECT_FALSE(l_flood.back().Socket().waitForReadyRead(0));
    for (ScriptedClient& l_client : l_flood) {
        const auto l_reply = l_client.Await<from_server::LoginReply>();
        ASSERT_TRUE(l_reply);
        EXPECT_EQ(l_reply->reason, "INVALIDPASS");
    }
}
