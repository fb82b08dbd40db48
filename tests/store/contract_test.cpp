// Mistakes of our own code stop the process and say where and why.
#include <gmock/gmock.h>

#include "store/store_fixture.h"

namespace {

class ContractTest : public testing::Test {
protected:
    ContractTest() {
        testing::GTEST_FLAG(death_test_style) = "threadsafe";
        m_user->RelateToType(m_room, Many, Many, false);
        m_user->RelateToType(m_status, Many, One, false);
        m_user->RelateToType(m_flag, Many, One, false);
    }

    Data m_data;
    Type* m_user = m_data.NewType("user", true, false, true);
    Type* m_room = m_data.NewType("room", true, false, true);
    Type* m_status = m_data.NewType("status", false, false, true);
    Type* m_flag = m_data.NewType("flag", false, true, true);
};

#define EXPECT_FAULT(i_statement, i_function, i_condition)                                                             \
    EXPECT_DEATH(i_statement, "Data:[0-9]+: " i_function ": Assertion `" i_condition "' failed")

using ContractDeathTest = ContractTest;

TEST_F(ContractDeathTest, TypesAndRelations) {
    EXPECT_FAULT(m_data.GetType("usr"), "GetType", "false");
    EXPECT_FAULT(m_data.NewType("user", false, false, false), "NewType", "false");
    EXPECT_FAULT(m_room->RelateToType(m_user, One, One, false), "RelateToType", "false");
    EXPECT_FAULT(m_room->GetRelation(m_status), ".*", "false");
    EXPECT_FAULT(m_room->GetItem("x")->Connect(m_status->GetItem("y")), ".*", "false");
    EXPECT_FAULT(m_flag->GetItem("x"), "GetItem", "false");
    EXPECT_FAULT(m_flag->HasItem("x"), "HasItem", "false");
    EXPECT_FAULT(m_flag->NewItem("x"), "NewItem", "false");
    EXPECT_FAULT(m_user->NewItem(), "NewItem", "false");
    EXPECT_FAULT(m_user->GetGlobalNullItem(), "GetGlobalNullItem", "false");
    EXPECT_FAULT(m_data.AddConnectionEventHandler(m_room, m_status, Reaction([](ConnectionInfo) {}).ForPair()), ".*",
                 "false");
}

TEST_F(ContractDeathTest, Items) {
    const ItemPtr l_user = m_user->GetItem("bob");
    EXPECT_FAULT(l_user.NewItem("status"), "NewItem", "false");
    EXPECT_FAULT(l_user.GetItem("room"), "GetItem", "false");
    EXPECT_FAULT(l_user.HasItem("room"), "HasItem", "l_relation.m_typeTo == One");
    EXPECT_FAULT(l_user.AsInt(), "AsInt", "l_result");
    EXPECT_FAULT(m_user->GetItem("-1")->AsUInt(), "AsUInt", "l_result");
    EXPECT_FAULT(m_user->GetItem("2147483648")->AsInt(), "AsInt", "l_result");
    EXPECT_FAULT(m_user->GetItem("")->AsInt64(), "AsInt64", "l_result");
    EXPECT_FAULT(m_flag->NewItem()->AsInt(), "AsInt", "! mp_type->IsNull..");
    EXPECT_FAULT(m_flag->NewItem()->AsUInt(), "AsUInt", "! mp_type->IsNull..");
    EXPECT_FAULT(m_flag->NewItem()->AsInt64(), "AsInt64", "! mp_type->IsNull..");
    EXPECT_FAULT(ItemPtr().GetItem("user"), ".*", "mp_item != 0");
    EXPECT_FAULT(ItemPtr().Remove(), ".*", "mp_item != 0");
    EXPECT_FAULT(l_user.Connect(nullptr), ".*", "mp_item != 0");
}

TEST_F(ContractDeathTest, MoreThanOneWhereOneIsMeant) {
    m_room->GetItem("den")->Connect(m_user->GetItem("a"));
    m_room->GetItem("den")->Connect(m_user->GetItem("b"));
    m_status->GetItem("away")->Connect(m_user->GetItem("a"));
    m_status->GetItem("away")->Connect(m_user->GetItem("b"));
    EXPECT_FAULT(m_data.GetItem(m_room->GetItem("den"), m_status->GetItem("away"), "user"), ".*",
                 "l_items.size.. <= 1");
    EXPECT_FAULT(m_data.GetItem(ItemSet{m_room->GetItem("den")}, "user"), "GetItem", "l_items.size.. <= 1");
    EXPECT_FAULT(static_cast<void>(ItemPtr(m_user->GetItems())), ".*", "size.. == 1");
}

TEST_F(ContractDeathTest, Paths) {
    EventLog l_log;
    const auto l_child = [this](PathNodeRelation i_first, PathNodeRelation i_second) {
        auto* lp_root = new PathNode(m_data, "user");
        new PathNode(lp_root, "status", i_first);
        new PathNode(lp_root, "flag", i_second);
        return lp_root;
    };
    EXPECT_FAULT(l_log.ListenTo(new PathNode(new PathNode(m_data, "user"), "room", Connected), m_data),
                 "AddPathEventHandler", "ip_node->m_parentInfo.first == 0");
    EXPECT_FAULT(
        {
            auto* lp_root = l_child(Connected, Connected);
            new PathNode(lp_root, "status", ConnectedCondition);
            l_log.ListenTo(lp_root, m_data);
        },
        "GetPathNodePairs", "o_pairMap.find .l_typePair. == o_pairMap.end ..");
    // A path that fires on an edge and would have to walk through a `Newly` edge.
    const auto l_fire = [this] {
        m_user->GetItem("bob")->Connect(m_flag->GetGlobalNullItem());
        m_user->GetItem("bob")->Connect(m_status->GetItem("away"));
    };
    EXPECT_FAULT(
        {
            l_log.ListenTo(l_child(Connected, NewlyConnected), m_data);
            l_fire();
        },
        "VerifyPathNodeSubNodeConnections", "l_nodeInfo.second != NewlyConnected");
    EXPECT_FAULT(
        {
            l_log.ListenTo(l_child(Connected, NewlyDisconnected), m_data);
            l_fire();
        },
        "VerifyPathNodeSubNodeConnections", "l_nodeInfo.second != NewlyDisconnected");
    for (const PathNodeRelation l_relation : {NewlyConnected, NewlyDisconnected}) {
        EXPECT_FAULT(
            {
                auto* lp_root = new PathNode(m_data, "room");
                new PathNode(new PathNode(lp_root, "user", l_relation), "status", Connected);
                l_log.ListenTo(lp_root, m_data);
                l_fire();
            },
            "VerifyPathNodeParentNodeConnections", "l_parentRelation != Newly.*");
    }
}

} // namespace
