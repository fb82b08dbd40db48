// Twelve real clients, the tree that they form, and what is left of it when one of its parents dies.
#include "world/client_process.h"
#include "world/conditions.h"
#include "world/sample_file.h"

#include "server/scripted_client.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <map>

namespace {

constexpr int g_clients = 12;

class WorldSearchTree : public testing::Test {
protected:
    // All processes start at once, and then log in one after the other, so that each finds those before it. Each has
    // one file to share.
    WorldSearchTree() {
        for (int l_index = 0; l_index < g_clients; ++l_index) {
            const QString l_user = QStringLiteral("client %1").arg(l_index, 2, 10, QLatin1Char('0'));
            ReportSpeed(l_user);
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
                       QStringLiteral("20480");
            }));
        }
    }

    // Enough for two children.
    void ReportSpeed(const QString& i_user) {
        ScriptedClient l_client(m_server.Port(), i_user.toStdString());
        l_client.Send(to_server::UploadSpeed{20 * 1024});
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
    static int DepthOf(const std::map<QString, QString>& i_parents, const QString& i_user) {
        int l_depth = 0;
        for (QString l_at = i_parents.at(i_user); !l_at.isEmpty() && l_depth <= g_clients; l_at = i_parents.at(l_at))
            ++l_depth;
        return l_depth;
    }

    // Everyone but the asker hears it once and answers it. Each asker can ask once: a file is shown only under the
    // first search that brings it.
    void ExpectOneAnswerOfEach(const QString& i_asker, const QString& i_text) {
        DrivenClient& l_asker = *m_clients.at(i_asker);
        l_asker.Do({QStringLiteral("search"), i_text});
        EXPECT_TRUE(WaitUntil([&] { return AnswersTo(l_asker, i_text) == m_clients.size() - 1; }))
            << AnswersTo(l_asker, i_text);
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

TEST_F(WorldSearchTree, ASearchReachesEveryoneOnceAndTheTreeHeals) {
    // The first searches make parents of those who bring them.
    const QString l_root = m_clients.begin()->first;
    DrivenClient& l_last = *m_clients.rbegin()->second;
    std::map<QString, QString> l_parents;
    EXPECT_TRUE(WaitUntil([&] {
        l_last.Do({QStringLiteral("search"), QStringLiteral("nothing")});
        l_parents = Parents();
        return std::ranges::count(l_parents, QString(), [](const auto& i_entry) { return i_entry.second; }) == 1;
    }));
    ASSERT_EQ(l_parents.at(l_root), QString());
    int l_depth = 0;
    for (const auto& [l_user, l_parent] : l_parents)
        l_depth = std::max(l_depth, DepthOf(l_parents, l_user));
    EXPECT_GE(l_depth, 3);
    EXPECT_LE(l_depth, g_clients) << "a ring";
    ExpectOneAnswerOfEach(m_clients.rbegin()->first, QStringLiteral("tide"));
    ExpectOneAnswerOfEach(l_root, QStringLiteral("high"));

    // One in the middle dies: it has a parent, and children.
    const auto l_middle = std::ranges::find_if(l_parents, [&](const auto& i_entry) {
        return !i_entry.second.isEmpty() &&
               std::ranges::any_of(l_parents, [&](const auto& i_child) { return i_child.second == i_entry.first; });
    });
    ASSERT_NE(l_middle, l_parents.end());
    m_clients.at(l_middle->first)->Kill();
    m_clients.erase(l_middle->first);
    const auto l_isOrphan = [&](const QString& i_user) { return l_parents.at(i_user) == l_middle->first; };

    // Each search finds everyone meanwhile: whoever lost the parent hears it from the server.
    bool l_isHealed = false;
    EXPECT_TRUE(WaitUntil([&] {
        m_clients.at(l_root)->Do({QStringLiteral("search"), QStringLiteral("nothing")});
        for (const auto& [l_user, lp_client] : m_clients) {
            const QString l_parent = ParentOf(*lp_client);
            if (l_parent == l_middle->first)
                return false;
            l_isHealed = l_isHealed || (l_isOrphan(l_user) && !l_parent.isEmpty());
        }
        return l_isHealed;
    }));
    const std::map<QString, QString> l_healed = Parents();
    for (const auto& [l_user, l_parent] : l_healed)
        EXPECT_LE(DepthOf(l_healed, l_user), g_clients) << "a ring";
    ExpectOneAnswerOfEach(std::next(m_clients.rbegin())->first, QStringLiteral("txt"));
}
