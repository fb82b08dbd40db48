// The program itself, in a process of its own.
#include "window_test.h"

#include "app/settings.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <csignal>

namespace {

int FreePort() {
    QTcpServer l_server;
    l_server.listen(QHostAddress::LocalHost);
    return l_server.serverPort();
}

// The program listens once the store is loaded, a moment before its event loop runs.
bool WaitUntilListening(int i_port) {
    return QTest::qWaitFor(
        [i_port] {
            QTcpSocket l_socket;
            l_socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(i_port));
            return l_socket.waitForConnected(100);
        },
        c_patience);
}

class ProgramTest : public WindowTest {
protected:
    static void Start(QProcess& o_program) {
        o_program.setProcessChannelMode(QProcess::ForwardedChannels);
        o_program.start(QStringLiteral(TIDEWELL_PROGRAM), QStringList());
        ASSERT_TRUE(o_program.waitForStarted(c_patience));
    }
    void ExpectQuietEnd(int i_signal, int i_port) {
        QProcess l_program;
        Start(l_program);
        ASSERT_TRUE(WaitUntilListening(i_port));
        ::kill(static_cast<pid_t>(l_program.processId()), i_signal);
        ASSERT_TRUE(l_program.waitForFinished(c_patience));
        EXPECT_EQ(l_program.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(l_program.exitCode(), 0);
        Inspect([] { EXPECT_TRUE(HasSetting("transfer_order_counter")) << "nothing of this run was saved"; });
    }
};

} // namespace

TEST_F(ProgramTest, EndsInOrderOnEachSignal) {
    QTcpServer l_server; // takes the connection and never answers
    ASSERT_TRUE(l_server.listen(QHostAddress::LocalHost));
    for (const int l_signal : {SIGTERM, SIGINT, SIGHUP}) {
        SCOPED_TRACE(l_signal);
        const int l_port = FreePort();
        Seed([&] {
            SetSetting("username", "Ada");
            SetSetting("password", "secret");
            SetSetting("server_host", "127.0.0.1");
            SetSetting("server_port", static_cast<int>(l_server.serverPort()));
            SetSetting("listening_port", l_port);
            SetSetting("use_upnp", "no");
        });
        ExpectQuietEnd(l_signal, l_port);
    }
}

TEST_F(ProgramTest, EndsInOrderWhileItsFirstQuestionIsOpen) {
    const int l_port = FreePort();
    Seed([&] { SetSetting("listening_port", l_port); });
    ExpectQuietEnd(SIGTERM, l_port);
}

TEST_F(ProgramTest, ASecondStartInOneHomeEndsAtOnceAndADeadOneLeavesNoLock) {
    const int l_port = FreePort();
    Seed([&] { SetSetting("listening_port", l_port); });
    QProcess l_first;
    Start(l_first);
    ASSERT_TRUE(WaitUntilListening(l_port));

    QProcess l_second;
    Start(l_second);
    ASSERT_TRUE(l_second.waitForFinished(c_patience));
    EXPECT_EQ(l_second.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(l_second.exitCode(), 0);
    EXPECT_EQ(l_first.state(), QProcess::Running);

    l_first.kill();
    ASSERT_TRUE(l_first.waitForFinished(c_patience));
    ExpectQuietEnd(SIGTERM, l_port);
}
