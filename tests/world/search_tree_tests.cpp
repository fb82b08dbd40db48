// Real clients, the tree that they form, and what is left of it when one of its parents dies.
#include "world/client_process.h"
#include "world/conditions.h"
#include "world/sample_file.h"

#include "server/scripted_client.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <map>
#include <vector>

namespace {

class WorldSearchTree : public testing::Test {
protected:
    // All processes start at once, and then log in one after the other, so that each finds those before it. Each has
    // one file to share, and may have so many children.
    void Grow(int i_clients, std::int32_t i_children) {
        const std::int32_t l_speed = i_children * 10 * 1024; // the ratio below asks for ten kilobytes a second a child
        for (int l_index = 0; l_index < i_clients; ++l_index) {
            const QString l_user = QStringLiteral("client %1").arg(l_index, 2, 10, QLatin1Char('0'));
            ReportSpeed(l_user, l_speed);
            const ClientHome& l_home = m_homes.emplace_back(l_user, m_server.Port());
            l_home.Set("username", {});
            WriteSampleFile(l_home.Path(QStringLiteral("shared/high tide.txt")), 10, 1);
            l_home.Edit(QStringLiteral("share"), {l_home.Path(QStringLiteral("shared")), QStringLiteral("public")});
            m_clients[l_user] = std::make_unique<DrivenClient>(l_home);
        }
        for (const auto& [l_user, lp_client] : m_clients) {
            lp_client->Do({QStringLiteral("set"), QStringLiteral("username"), l_user});
            lp_client->Do({QStringLiteral("connect")});
            lp_client->AwaitConnected();
            EXPECT_TRUE(WaitUntil([&] {
                return Neighbour(lp_client->ItemOf("global", QStringLiteral("upload_speed")), "global_value") ==
                       QString::number(l_speed);
            }));
        }
    }

    void ReportSpeed(const QString& i_user, std::int32_t i_speed) {
        ScriptedClient l_client(m_server.Port(), i_user.toStdString());
        l_client.Send(to_server::UploadSpeed{i_speed});
        l_client.Settle();
    }

    // Empty if it has none.
    QString ParentOf(DrivenClient& io_client) {
        return Neighbour(io_client.ItemOf("dnet_global", QStringLiteral("dnet_parent_user")), "dnet_value");
    }
    std::map<QString, QString> Parents() {
        std::map<QString, QString> l_parents;
        for (const auto& [l_user, lp_client] : m_clients)
            l_parents[l_user] = ParentOf(*lp_client);
        return l_parents;
    }
    // Steps from the root; more than there are clients in a ring.
    static std::size_t DepthOf(const std::map<QString, QString>& i_parents, const QString& i_user) {
        std::size_t l_depth = 0;
        for (QString l_at = i_parents.at(i_user); !l_at.isEmpty() && l_depth <= i_parents.size();
             l_at = i_parents.at(l_at))
            ++l_depth;
        return l_depth;
    }
    static std::size_t Depth(const std::map<QString, QString>& i_parents) {
        std::size_t l_depth = 0;
        for (const auto& [l_user, l_parent] : i_parents)
            l_depth = std::max(l_depth, DepthOf(i_parents, l_user));
        return l_depth;
    }

    // Searches until one client alone has no parent: the first searches make parents of those who bring them.
    std::map<QString, QString> AwaitOneRoot(const QString& i_asker) {
        std::map<QString, QString> l_parents;
        EXPECT_TRUE(WaitUntil([&] {
            m_clients.at(i_asker)->Do({QStringLiteral("search"), QStringLiteral("nothing")});
            l_parents = Parents();
            return std::ranges::count(l_parents, QString(), [](const auto& i_entry) { return i_entry.second; }) == 1;
        }));
        return l_parents;
    }

    void Kill(const QString& i_user) {
        m_clients.at(i_user)->Kill();
        m_clients.erase(i_user);
    }

    // Each asker can ask once: a file is shown only under the first search that brings it.
    void ExpectAnswersOfAll(const QString& i_asker, const QString& i_text) {
        DrivenClient& l_asker = *m_clients.at(i_asker);
        l_asker.Do({QStringLiteral("search"), i_text});
        EXPECT_TRUE(WaitUntil([&] { return AnswersTo(l_asker, i_text) == m_clients.size() - 1; }))
            << AnswersTo(l_asker, i_text);
    }
    // Everyone but the asker hears it once and answers it.
    void ExpectOneAnswerOfEach(const QString& i_asker, const QString& i_text) {
        ExpectAnswersOfAll(i_asker, i_text);
        DrivenClient& l_asker = *m_clients.at(i_asker);
        // What follows the search on the same roads has come when this has: nothing more is on its way.
        const QString l_last = i_text + QStringLiteral(" -x");
        l_asker.Do({QStringLiteral("search"), l_last});
        for (const auto& [l_user, lp_client] : m_clients) {
            if (l_user == i_asker)
                continue;
            lp_client->AwaitEvent({QStringLiteral("heard"), i_asker, l_last});
            EXPECT_EQ(lp_client->CountEvents({QStringLiteral("heard"), i_asker, i_text}), 1) << l_user.toStdString();
        }
        EXPECT_EQ(AnswersTo(l_asker, i_text), m_clients.size() - 1);
    }

    static std::size_t AnswersTo(DrivenClient& io_asker, const QString& i_text) {
        std::set<QString> l_users;
        for (const QJsonValue& l_answer : io_asker.Do({QStringLiteral("answers"), i_text}).toArray())
            l_users.insert(l_answer[QStringLiteral("user")].toString());
        return l_users.size();
    }

    const ServerProcess m_server{{QStringLiteral("--parent-ratio"), QStringLiteral("100")}};
    std::deque<ClientHome> m_homes;
    std::map<QString, std::unique_ptr<DrivenClient>> m_clients;
};

} // namespace

TEST_F(WorldSearchTree, ASearchReachesEveryoneOnceAndAlsoWhenAParentHasDied) {
    Grow(12, 2);
    const QString l_root = m_clients.begin()->first;
    const QString l_last = m_clients.rbegin()->first;
    const std::map<QString, QString> l_parents = AwaitOneRoot(l_last);
    ASSERT_EQ(l_parents.at(l_root), QString());
    EXPECT_GE(Depth(l_parents), 3u);
    EXPECT_LT(Depth(l_parents), m_clients.size()) << "a ring";
    ExpectOneAnswerOfEach(l_last, QStringLiteral("tide"));
    ExpectOneAnswerOfEach(l_root, QStringLiteral("high"));

    // One in the middle dies: it has a parent, and children.
    const auto l_middle = std::ranges::find_if(l_parents, [&](const auto& i_entry) {
        return !i_entry.second.isEmpty() &&
               std::ranges::any_of(l_parents, [&](const auto& i_child) { return i_child.second == i_entry.first; });
    });
    ASSERT_NE(l_middle, l_parents.end());
    Kill(l_middle->first);
    EXPECT_TRUE(WaitUntil([&] {
        return std::ranges::none_of(Parents(), [&](const auto& i_entry) { return i_entry.second == l_middle->first; });
    }));

    // Whoever lost the parent hears searches from the server, until another brings one.
    ExpectAnswersOfAll(std::next(m_clients.rbegin())->first, QStringLiteral("txt"));
    EXPECT_LT(Depth(Parents()), m_clients.size()) << "a ring";
}

// With room for one child each they form a chain, in which nobody has tried any parent but its own.
TEST_F(WorldSearchTree, WhoLostTheParentFindsAnother) {
    Grow(4, 1);
    const std::vector<QString> l_chain{QStringLiteral("client 00"), QStringLiteral("client 01"),
                                       QStringLiteral("client 02"), QStringLiteral("client 03")};
    const std::map<QString, QString> l_parents = AwaitOneRoot(l_chain[3]);
    for (std::size_t l_index = 1; l_index < l_chain.size(); ++l_index)
        ASSERT_EQ(l_parents.at(l_chain[l_index]), l_chain[l_index - 1]);

    Kill(l_chain[1]);
    EXPECT_TRUE(WaitUntil([&] { return ParentOf(*m_clients.at(l_chain[2])).isEmpty(); }));
    const std::map<QString, QString> l_healed = AwaitOneRoot(l_chain[3]);
    EXPECT_EQ(l_healed.at(l_chain[2]), l_chain[0]);
    EXPECT_EQ(l_healed.at(l_chain[3]), l_chain[2]);
    ExpectOneAnswerOfEach(l_chain[3], QStringLiteral("tide"));
}
