#include "server/scripted_client.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

TEST(ServerRooms, MembersSeeEachOtherComeTalkAndGo) {
    const ServerProcess l_server;
    ScriptedClient l_anna(l_server.Port(), "anna");
    ScriptedClient l_bert(l_server.Port(), "bert");
    l_bert.Send(to_server::FilesFolders{3, 700});

    EXPECT_THAT(l_anna.Enter("harbour").users, ElementsAre("anna"));
    const auto l_joined = l_bert.Enter("harbour");
    EXPECT_THAT(l_joined.users, UnorderedElementsAre("anna", "bert"));
    EXPECT_EQ(l_joined.stats.size(), 2U);
    EXPECT_EQ(l_joined.countries.size(), 2U);
    EXPECT_FALSE(l_joined.owner);
    const auto l_news = l_anna.Await<from_server::UserJoinedRoom>();
    ASSERT_TRUE(l_news);
    EXPECT_EQ(l_news->room, "harbour");
    EXPECT_EQ(l_news->user, "bert");
    EXPECT_EQ(l_news->stats.sharedFileCount, 700);

    // A speaker hears themselves; bytes pass as they are.
    l_bert.Send(to_server::RoomChat{"harbour", "ahoy \xFF <b>"});
    for (ScriptedClient* lp_client : {&l_anna, &l_bert}) {
        const auto l_line = lp_client->Await<from_server::RoomChat>();
        ASSERT_TRUE(l_line);
        EXPECT_EQ(l_line->room, "harbour");
        EXPECT_EQ(l_line->user, "bert");
        EXPECT_EQ(l_line->text, "ahoy \xFF <b>");
    }

    l_bert.Send(to_server::LeaveRoom{"harbour"});
    EXPECT_TRUE(l_bert.Await<from_server::RoomLeft>());
    const auto l_farewell = l_anna.Await<from_server::UserLeftRoom>();
    ASSERT_TRUE(l_farewell);
    EXPECT_EQ(l_farewell->user, "bert");

    // Neither who has left nor who was never in is heard, and who is not in hears nothing.
    l_bert.Send(to_server::RoomChat{"harbour", "too late"});
    l_bert.Send(to_server::LeaveRoom{"harbour"});
    l_anna.Send(to_server::RoomChat{"harbour", "alone"});
    l_bert.Settle();
    l_anna.Settle();
    EXPECT_EQ(l_bert.TakeAll<from_server::RoomChat>() + l_bert.TakeAll<from_server::RoomLeft>(), 0);
    EXPECT_EQ(l_anna.TakeAll<from_server::RoomChat>(), 1);
}

TEST(ServerRooms, ALostConnectionLeavesAllRooms) {
    const ServerProcess l_server;
    ScriptedClient l_anna(l_server.Port(), "anna");
    l_anna.Enter("harbour");
    l_anna.Enter("mole");
    {
        ScriptedClient l_bert(l_server.Port(), "bert");
        l_bert.Enter("harbour");
        l_bert.Enter("mole");
        l_bert.Enter("quay");
        l_bert.Send(to_server::RoomChat{"mole", "last words"}); // said right before the end, they still count
        l_bert.Flush();
    }
    for (const char* l_room : {"harbour", "mole"}) {
        EXPECT_TRUE(l_anna.Await<from_server::UserLeftRoom>([&](const auto& i_news) { return i_news.room == l_room; }));
    }
    EXPECT_EQ(l_anna.TakeAll<from_server::RoomChat>(), 1);
    l_anna.Settle();
    l_anna.TakeAll<from_server::RoomList>(); // of the login
    l_anna.Send(to_server::GetRoomList{});
    const auto l_list = l_anna.Await<from_server::RoomList>();
    ASSERT_TRUE(l_list);
    EXPECT_THAT(l_list->open.names, ElementsAre("harbour", "mole")) << "a room without members is gone";
    EXPECT_THAT(l_list->open.userCounts, ElementsAre(1, 1));
    EXPECT_THAT(l_list->owned.names, IsEmpty());
}

TEST(ServerRooms, EnteringAgainDescribesTheRoomAgainAndTellsNobody) {
    const ServerProcess l_server;
    ScriptedClient l_anna(l_server.Port(), "anna");
    ScriptedClient l_bert(l_server.Port(), "bert");
    l_anna.Enter("harbour");
    l_bert.Enter("harbour");
    EXPECT_EQ(l_bert.Enter("harbour").users.size(), 2U);
    l_anna.Settle();
    EXPECT_EQ(l_anna.TakeAll<from_server::UserJoinedRoom>(), 1);

    for (const std::string& l_name :
         {std::string(), std::string(65, 'r'), std::string("two\nlines"), std::string(" ")}) {
        l_anna.Send(to_server::EnterRoom{l_name});
    }
    l_anna.Settle();
    EXPECT_EQ(l_anna.TakeAll<from_server::RoomJoined>(), 0);
}

TEST(ServerRooms, ACrowdHearsEveryLineInOrder) {
    constexpr int l_people = 30;
    constexpr int l_lines = 50;
    const ServerProcess l_server;
    std::deque<ScriptedClient> l_crowd;
    for (int l_person = 0; l_person < l_people; ++l_person) {
        l_crowd.emplace_back(l_server.Port(), "user" + std::to_string(l_person));
        l_crowd.back().Enter("harbour");
    }
    for (int l_line = 0; l_line < l_lines; ++l_line) {
        for (ScriptedClient& l_client : l_crowd) {
            l_client.Send(to_server::RoomChat{"harbour", std::to_string(l_line)});
        }
    }
    for (ScriptedClient& l_client : l_crowd) {
        std::map<std::string, int> l_next;
        for (int l_heard = 0; l_heard < l_people * l_lines; ++l_heard) {
            const auto l_line = l_client.Await<from_server::RoomChat>();
            ASSERT_TRUE(l_line);
            ASSERT_EQ(l_line->text, std::to_string(l_next[l_line->user]++)) << l_line->user;
        }
    }
}
