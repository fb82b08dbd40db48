#include "server/accounts.h"
#include "server/database.h"
#include "server/mailbox.h"

#include <QSqlQuery>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class ServerDataFile : public testing::Test {
protected:
    void SetUp() override {
        QString l_error;
        ASSERT_TRUE(m_database.Open(m_folder.filePath(QStringLiteral("data")), l_error));
        Accounts l_accounts(m_database);
        for (const char* l_user : {"anna", "bert", "carl"}) {
            ASSERT_EQ(l_accounts.Add(l_user, "hash"), Accounts::AddResult::Added);
        }
    }

    QTemporaryDir m_folder;
    Database m_database;
};

} // namespace

TEST_F(ServerDataFile, AnAccountIsAddedOnce) {
    Accounts l_accounts(m_database);
    EXPECT_EQ(l_accounts.Add("anna", "other"), Accounts::AddResult::Exists);
    EXPECT_EQ(l_accounts.Find("anna")->passwordHash, "hash");
    EXPECT_FALSE(l_accounts.Find("ANNA"));
    EXPECT_EQ(l_accounts.Add("x' OR 1=1; --", "hash"), Accounts::AddResult::Added);
    EXPECT_FALSE(l_accounts.Find("' OR 1=1; --"));
}

TEST_F(ServerDataFile, TheAverageSpeedFollowsAChange) {
    Accounts l_accounts(m_database);
    for (int l_report = 0; l_report < 1000; ++l_report) {
        l_accounts.RecordSpeed("anna", 100);
    }
    for (int l_report = 0; l_report < 100; ++l_report) {
        l_accounts.RecordSpeed("anna", 10000);
    }
    EXPECT_GT(l_accounts.Find("anna")->averageSpeed, 9000);
    EXPECT_EQ(l_accounts.Find("anna")->speedReports, 1100);
    l_accounts.RecordSpeed("nobody", 100);
}

TEST_F(ServerDataFile, AFullMailboxTakesNothingMoreAndLosesNothing) {
    Limits l_limits;
    l_limits.keptMessages = 5;
    l_limits.keptMessagesOfSender = 3;
    l_limits.keptBytes = 100;
    Mailbox l_mailbox(m_database, l_limits);
    EXPECT_FALSE(l_mailbox.Keep("nobody", "bert", "text"));
    for (const char* l_text : {"1", "2", "3"}) {
        EXPECT_TRUE(l_mailbox.Keep("anna", "bert", l_text));
    }
    EXPECT_FALSE(l_mailbox.Keep("anna", "bert", "4")) << "of one sender";
    EXPECT_FALSE(l_mailbox.Keep("anna", "carl", std::string(98, 'x'))) << "in bytes";
    EXPECT_TRUE(l_mailbox.Keep("anna", "carl", std::string(90, 'x')));
    EXPECT_TRUE(l_mailbox.Keep("anna", "anna", "5"));
    EXPECT_FALSE(l_mailbox.Keep("anna", "carl", "6")) << "in all";
    EXPECT_TRUE(l_mailbox.Keep("carl", "bert", "another's mailbox"));

    const auto l_waiting = l_mailbox.Waiting("anna");
    ASSERT_EQ(l_waiting.size(), 5U);
    EXPECT_EQ(l_waiting.front().text, "1");
    l_mailbox.Acknowledge("anna", l_waiting.front().id);
    EXPECT_TRUE(l_mailbox.Keep("anna", "bert", "4"));
    EXPECT_EQ(l_mailbox.Waiting("anna").back().text, "4");
}

// After two thousand million messages the ids outgrow what the wire has room for.
TEST_F(ServerDataFile, AnIdBeyondTheWireIsCutAndStillAcknowledged) {
    Mailbox l_mailbox(m_database, Limits());
    QSqlQuery l_query(m_database.Connection());
    ASSERT_TRUE(l_query.exec(QStringLiteral("INSERT INTO message VALUES (2147483647, 'anna', 'bert', 0, 'last')")));
    const auto l_kept = l_mailbox.Keep("anna", "bert", "first of the next round");
    ASSERT_TRUE(l_kept);
    EXPECT_GE(l_kept->id, 0);
    l_mailbox.Acknowledge("anna", l_kept->id);
    ASSERT_EQ(l_mailbox.Waiting("anna").size(), 1U);
    EXPECT_EQ(l_mailbox.Waiting("anna").front().text, "last");
    l_mailbox.Acknowledge("anna", 0x7FFFFFFF);
    EXPECT_TRUE(l_mailbox.Waiting("anna").empty());
}

TEST_F(ServerDataFile, AFileOfANewerServerIsLeftAlone) {
    QSqlQuery l_query(m_database.Connection());
    ASSERT_TRUE(l_query.exec(QStringLiteral("PRAGMA user_version = 99")));
    Database l_older;
    QString l_error;
    EXPECT_FALSE(l_older.Open(m_folder.filePath(QStringLiteral("data")), l_error));
    EXPECT_TRUE(l_error.contains(QStringLiteral("newer")));
}
