#include "net/scripted_server.h"
#include "sharing/sharing_fixture.h"

namespace {

class ServerReport : public SharingTest {
protected:
    ServerReport() {
        SetSetting("server_host", "127.0.0.1");
        SetSetting("server_port", m_server.Port());
        SetSetting("username", "alice");
        SetSetting("password", "secret");
    }
    ~ServerReport() override { gp_server->Disconnect(); }

    void LogIn() {
        gp_server->Connect();
        ASSERT_TRUE(m_server.Accept());
        ASSERT_TRUE(m_server.Next<to_server::Login>());
        from_server::LoginReply l_reply;
        l_reply.accepted = true;
        m_server.Say(l_reply);
    }

    void SayStats(const std::string& i_user, int i_speed) {
        from_server::ReceivedUserStats l_message;
        l_message.user = i_user;
        l_message.stats.averageSpeed = i_speed;
        QSignalSpy l_spy(gp_server, &Server::ReceivedUserStats);
        m_server.Say(l_message);
        ASSERT_TRUE(QTest::qWaitFor([&] { return !l_spy.isEmpty(); }, deadlineMilliseconds));
    }

    ScriptedServer m_server;
    TempTree m_tree;
};

TEST_F(ServerReport, TellsTheCountsAtLoginAndKeepsTheOwnSpeed) {
    m_tree.File("a");
    m_tree.File("sub/b");
    m_tree.File("sub/c");
    Share(m_tree.Path());
    ASSERT_NO_FATAL_FAILURE(LogIn());
    ASSERT_TRUE(m_server.Next<to_server::SetWaitPort>()); // the messenger's, which was connected first
    const auto l_counts = m_server.Next<to_server::FilesFolders>();
    ASSERT_TRUE(l_counts);
    EXPECT_EQ(l_counts->folderCount, 2);
    EXPECT_EQ(l_counts->fileCount, 3);
    const auto l_request = m_server.Next<to_server::GetUserStats>();
    ASSERT_TRUE(l_request);
    EXPECT_EQ(l_request->user, "alice");

    SayStats("bob", 1);
    EXPECT_FALSE(HasSetting("upload_speed"));
    SayStats("alice", 12345);
    SayStats("bob", 2);
    EXPECT_EQ(SettingText("upload_speed"), "12345");
    SayStats("alice", 7);
    EXPECT_EQ(SettingText("upload_speed"), "7");
}

} // namespace
