#include "server/scripted_client.h"

#include <gtest/gtest.h>

#include <ctime>
#include <set>

TEST(ServerRelay, PassesOnTheRequestToConnectAndItsFailure) {
    const ServerProcess l_server({QStringLiteral("--privileged"), QStringLiteral("anna")});
    ScriptedClient l_anna(l_server.Port(), "anna");
    ScriptedClient l_bert(l_server.Port(), "bert");
    l_anna.Send(to_server::SetWaitPort{4711});
    l_anna.Send(to_server::IndirectConnectionRequest{0xFFFFFFFF, "bert", "F"});
    const auto l_request = l_bert.Await<from_server::PeerConnectionRequest>();
    ASSERT_TRUE(l_request);
    EXPECT_EQ(l_request->user, "anna");
    EXPECT_EQ(l_request->connectionType, "F");
    EXPECT_EQ(l_request->address, TCPAddress(0x7F000001, 4711));
    EXPECT_EQ(l_request->token, 0xFFFFFFFF);
    EXPECT_TRUE(l_request->privileged);

    l_bert.Send(to_server::CantConnectToPeer{0xFFFFFFFF, "anna"});
    const auto l_failure = l_anna.Await<from_server::IndirectConnectionFailure>();
    ASSERT_TRUE(l_failure);
    EXPECT_EQ(l_failure->token, 0xFFFFFFFF);

    // Of one who is not here the server knows the answer itself.
    l_anna.Send(to_server::IndirectConnectionRequest{7, "nobody", "P"});
    const auto l_immediate = l_anna.Await<from_server::IndirectConnectionFailure>();
    ASSERT_TRUE(l_immediate);
    EXPECT_EQ(l_immediate->token, 7U);
    l_bert.Send(to_server::CantConnectToPeer{7, "nobody"});
    l_bert.Settle();
}

TEST(ServerRelay, PrivateChatReachesItsReaderOnly) {
    const ServerProcess l_server;
    ScriptedClient l_anna(l_server.Port(), "anna");
    ScriptedClient l_bert(l_server.Port(), "bert");
    l_anna.Send(to_server::PrivateChat{"bert", "psst \xFF"});
    l_anna.Send(to_server::PrivateChat{"nobody", "lost"});
    const auto l_message = l_bert.Await<from_server::PrivateChat>();
    ASSERT_TRUE(l_message);
    EXPECT_EQ(l_message->user, "anna");
    EXPECT_EQ(l_message->text, "psst \xFF");
    EXPECT_NEAR(l_message->time, static_cast<double>(std::time(nullptr)), 120);
    EXPECT_TRUE(l_message->spontaneous);
    l_anna.Settle();
    EXPECT_EQ(l_anna.TakeAll<from_server::PrivateChat>(), 0);
}

// Neither a reader who is away, nor one who is lost before the acknowledgement, nor a killed server loses a message.
TEST(ServerRelay, KeepsPrivateChatUntilItIsAcknowledged) {
    ServerProcess l_server;
    { ScriptedClient l_bert(l_server.Port(), "bert"); }
    {
        ScriptedClient l_anna(l_server.Port(), "anna");
        for (const char* l_text : {"one", "", "three \xFF"}) {
            l_anna.Send(to_server::PrivateChat{"bert", l_text});
        }
        l_anna.Settle();
    }
    l_server.Kill();
    l_server.Start();

    std::set<int> l_ids;
    {
        ScriptedClient l_bert(l_server.Port(), "bert");
        for (const char* l_text : {"one", "", "three \xFF"}) {
            const auto l_message = l_bert.Await<from_server::PrivateChat>();
            ASSERT_TRUE(l_message);
            EXPECT_EQ(l_message->user, "anna");
            EXPECT_EQ(l_message->text, l_text);
            l_ids.insert(l_message->messageId);
        }
        // Nobody else's acknowledgement counts, and unknown ids do no harm.
        ScriptedClient l_other(l_server.Port(), "carl");
        for (const int l_id : l_ids) {
            l_other.Send(to_server::PrivateChatAcknowledgement{l_id});
        }
        l_other.Settle();
        l_bert.Send(to_server::PrivateChatAcknowledgement{*l_ids.begin()});
        l_bert.Send(to_server::PrivateChatAcknowledgement{-1});
        l_bert.Send(to_server::PrivateChatAcknowledgement{0x7FFFFFFF});
        l_bert.Settle();
    }
    EXPECT_EQ(l_ids.size(), 3U);
    {
        ScriptedClient l_bert(l_server.Port(), "bert");
        l_bert.Settle();
        for (const char* l_text : {"", "three \xFF"}) {
            const auto l_message = l_bert.Await<from_server::PrivateChat>();
            ASSERT_TRUE(l_message);
            EXPECT_EQ(l_message->text, l_text);
            EXPECT_TRUE(l_ids.contains(l_message->messageId)) << "the same message under the same id";
            l_bert.Send(to_server::PrivateChatAcknowledgement{l_message->messageId});
        }
        l_bert.Settle();
        EXPECT_EQ(l_bert.TakeAll<from_server::PrivateChat>(), 0);
    }
    ScriptedClient l_bert(l_server.Port(), "bert");
    ScriptedClient l_anna(l_server.Port(), "anna");
    l_anna.Send(to_server::PrivateChat{"bert", "new"});
    const auto l_message = l_bert.Await<from_server::PrivateChat>();
    ASSERT_TRUE(l_message);
    EXPECT_EQ(l_message->text, "new");
    EXPECT_FALSE(l_ids.contains(l_message->messageId)) << "an id is used once only";
}
