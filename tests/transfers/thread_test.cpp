// The workers on real sockets and files, with a plain descriptor for the other end of the connection.
#include "transfers/download_thread.h"
#include "transfers/local_files.h"
#include "transfers/upload_thread.h"

#include "app/text.h"
#include "transfers/waiting.h"

#include <QFile>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <limits>
#include <random>
#include <sys/resource.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

std::string RandomBytes(std::size_t i_count) {
    std::mt19937 l_random(7);
    std::string l_bytes(i_count, '\0');
    for (char& l_byte : l_bytes) {
        l_byte = static_cast<char>(l_random());
    }
    return l_bytes;
}

template <class Number>
std::string Bytes(Number i_number) {
    return std::string(reinterpret_cast<const char*>(&i_number), sizeof i_number);
}

class ThreadTest : public testing::Test {
protected:
    void SetUp() override {
        QTcpServer l_server;
        ASSERT_TRUE(l_server.listen(QHostAddress::LocalHost));
        mp_socket = std::make_unique<QTcpSocket>();
        mp_socket->connectToHost(QHostAddress::LocalHost, l_server.serverPort());
        ASSERT_TRUE(mp_socket->waitForConnected() && l_server.waitForNewConnection(5000));
        const std::unique_ptr<QTcpSocket> lp_accepted(l_server.nextPendingConnection());
        m_peer = dup(static_cast<int>(lp_accepted->socketDescriptor()));
        // The duplicate shares the file status flags, and stays open when the Qt object goes.
    }
    void TearDown() override {
        if (mp_thread) {
            mp_thread->SignalExit();
            mp_thread->wait();
        }
        HangUp();
    }

    void HangUp() {
        if (m_peer != -1) {
            shutdown(m_peer, SHUT_RDWR);
            close(m_peer);
            m_peer = -1;
        }
    }
    void Say(const std::string& i_bytes) {
        std::size_t l_sent = 0;
        ASSERT_TRUE(Until([&] {
            const ssize_t l_count = send(m_peer, i_bytes.data() + l_sent, i_bytes.size() - l_sent, MSG_NOSIGNAL);
            l_sent += l_count > 0 ? static_cast<std::size_t>(l_count) : 0;
            return l_sent == i_bytes.size() || (l_count == -1 && errno != EAGAIN);
        }));
    }
    // Up to that many bytes; fewer when the connection ends.
    std::string Hear(std::size_t i_count) {
        std::string l_heard(i_count, '\0');
        std::size_t l_have = 0;
        Until([&] {
            const ssize_t l_count = recv(m_peer, l_heard.data() + l_have, i_count - l_have, 0);
            l_have += l_count > 0 ? static_cast<std::size_t>(l_count) : 0;
            return l_have == i_count || l_count == 0 || (l_count == -1 && errno != EAGAIN);
        });
        l_heard.resize(l_have);
        return l_heard;
    }

    QString FilePath() const { return m_folder.filePath(QStringLiteral("file")); }
    std::string FileBytes() const {
        QFile l_file(FilePath());
        return l_file.open(QIODevice::ReadOnly) ? l_file.readAll().toStdString() : "(none)";
    }
    void WriteFile(const std::string& i_bytes) {
        QFile l_file(FilePath());
        ASSERT_TRUE(l_file.open(QIODevice::WriteOnly));
        l_file.write(i_bytes.data(), static_cast<qint64>(i_bytes.size()));
    }

    // The events of the worker in order: positions, then "complete" or "error".
    void Upload(
        const std::string& i_file, UploadThread::SpeedLimit i_limit = [] { return 0; },
        std::chrono::milliseconds i_stall = TransferThread::kStallLimit) {
        WriteFile(i_file);
        mp_file = OpenToSend(ToUtf8(FilePath()));
        auto lp_thread = std::make_unique<UploadThread>(mp_socket.get(), mp_file.get(), 0x01020304, i_limit, i_stall);
        QObject::connect(lp_thread.get(), &UploadThread::UploadProgress, [this](qint64 i_position, int i_rate) {
            m_events.push_back(std::to_string(i_position));
            m_lastRate = i_rate;
        });
        QObject::connect(lp_thread.get(), &UploadThread::UploadComplete, [this] { m_events.push_back("complete"); });
        QObject::connect(lp_thread.get(), &UploadThread::UploadError, [this] { m_events.push_back("error"); });
        mp_thread = std::move(lp_thread);
        mp_thread->Begin();
    }
    void Download(const std::string& i_present, long long i_size,
                  std::chrono::milliseconds i_stall = TransferThread::kStallLimit) {
        WriteFile(i_present);
        mp_file = OpenToAppend(FilePath());
        Download(i_size, static_cast<long long>(i_present.size()), i_stall);
    }
    void Download(long long i_size, long long i_position, std::chrono::milliseconds i_stall) {
        auto lp_thread = std::make_unique<DownloadThread>(mp_socket.get(), mp_file.get(), i_size, i_position, i_stall);
        QObject::connect(lp_thread.get(), &DownloadThread::DownloadProgress, [this](qint64 i_at, int i_rate) {
            m_events.push_back(std::to_string(i_at));
            m_lastRate = i_rate;
        });
        QObject::connect(lp_thread.get(), &DownloadThread::DownloadComplete,
                         [this] { m_events.push_back("complete"); });
        QObject::connect(lp_thread.get(), &DownloadThread::DownloadError, [this] { m_events.push_back("error"); });
        mp_thread = std::move(lp_thread);
        mp_thread->Begin();
    }
    // How it ended; the socket is back by then.
    std::string End() {
        EXPECT_TRUE(Until(
            [this] { return !m_events.empty() && (m_events.back() == "complete" || m_events.back() == "error"); }));
        EXPECT_TRUE(mp_thread->wait(5000));
        EXPECT_EQ(mp_socket->thread(), QThread::currentThread());
        return m_events.empty() ? "(no end)" : m_events.back();
    }
    // Whether the worker, which waits for the peer, ends on request long before the wait would.
    bool StopsAtOnce() {
        mp_thread->SignalExit();
        return mp_thread->wait(5000);
    }

    QTemporaryDir m_folder;
    std::unique_ptr<QTcpSocket> mp_socket;
    std::unique_ptr<QFile> mp_file;
    std::unique_ptr<TransferThread> mp_thread;
    int m_peer = -1;
    std::vector<std::string> m_events;
    int m_lastRate = -1;
};

const std::string c_token = Bytes(0x01020304);

TEST_F(ThreadTest, UploadSendsTheWholeFileBehindWhatTheSocketHadPending) {
    const std::string l_file = RandomBytes(3'000'001);
    mp_socket->write("init frame");
    Upload(l_file);
    EXPECT_EQ(Hear(14), "init frame" + c_token);
    Say(Bytes(std::int64_t{0}));
    EXPECT_EQ(Hear(l_file.size()), l_file);
    EXPECT_TRUE(m_events.empty() || m_events.back() != "complete"); // not before the peer closes
    HangUp();
    EXPECT_EQ(End(), "complete");
    ASSERT_GE(m_events.size(), 2u);
    EXPECT_EQ(m_events[m_events.size() - 2], "3000001");
}

TEST_F(ThreadTest, UploadResumesFromAnOffsetThatCameEarlyAndInPieces) {
    const std::string l_file = RandomBytes(100'000);
    const std::string l_offset = Bytes(std::int64_t{99'990});
    Say(l_offset.substr(0, 3));
    ASSERT_TRUE(Until([this] { return mp_socket->bytesAvailable() == 3; })); // taken in on the main thread
    Upload(l_file);
    EXPECT_EQ(Hear(4), c_token);
    Say(l_offset.substr(3, 1));
    Say(l_offset.substr(4));
    EXPECT_EQ(Hear(10), l_file.substr(99'990));
    HangUp();
    EXPECT_EQ(End(), "complete");
}

TEST_F(ThreadTest, UploadUnderALimitSendsTheSameBytes) {
    const std::string l_file = RandomBytes(50'000);
    Upload(l_file, [] { return std::numeric_limits<int>::max(); });
    EXPECT_EQ(Hear(4), c_token);
    Say(Bytes(std::int64_t{1}));
    EXPECT_EQ(Hear(l_file.size() - 1), l_file.substr(1));
    HangUp();
    EXPECT_EQ(End(), "complete");
}

TEST_F(ThreadTest, NewLimitTakesEffectDuringAPause) {
    const std::string l_file = RandomBytes(1 << 20); // a quarter of an hour at the first limit
    std::atomic<int> l_limit = 1;
    Upload(l_file, [&l_limit] { return l_limit.load(); });
    EXPECT_EQ(Hear(4), c_token);
    Say(Bytes(std::int64_t{0}));
    const std::string l_start = Hear(8192);
    l_limit = 0;
    EXPECT_EQ(l_start + Hear(l_file.size() - 8192), l_file);
    HangUp();
    EXPECT_EQ(End(), "complete");
}

class BadOffset : public ThreadTest, public testing::WithParamInterface<std::int64_t> {};

TEST_P(BadOffset, FailsTheUploadBeforeAnyByte) {
    Upload(std::string(1000, 'x'));
    EXPECT_EQ(Hear(4), c_token);
    Say(Bytes(GetParam()));
    EXPECT_EQ(End(), "error");
    mp_socket->close();
    EXPECT_EQ(Hear(1), "");
}

INSTANTIATE_TEST_SUITE_P(Offsets, BadOffset,
                         testing::Values(-1, 1000, 1001, std::numeric_limits<std::int64_t>::min(),
                                         std::numeric_limits<std::int64_t>::max()));

TEST_F(ThreadTest, UploadFailsWhenThePeerLeavesOrStalls) {
    Upload(
        "abc", [] { return 0; }, 50ms); // never sends the offset
    EXPECT_EQ(End(), "error");
}

TEST_F(ThreadTest, UploadFailsWhenThePeerStopsReading) {
    Upload(
        std::string(64 << 20, 'x'), [] { return 0; }, 100ms);
    Hear(4);
    Say(Bytes(std::int64_t{0}));
    EXPECT_EQ(End(), "error");
}

TEST_F(ThreadTest, UploadFailsWhenThePeerHangsUpInTheMiddle) {
    Upload(std::string(64 << 20, 'x')); // and lives: a broken pipe raises a signal
    Hear(4);
    Say(Bytes(std::int64_t{0}));
    Hear(100'000);
    HangUp();
    EXPECT_EQ(End(), "error");
}

TEST_F(ThreadTest, UploadFailsWhenTheFileShrinks) {
    Upload(std::string(64 << 20, 'x'));
    Hear(4);
    Say(Bytes(std::int64_t{0}));
    Hear(1000);
    ASSERT_TRUE(QFile::resize(FilePath(), 0));
    // What the kernel had taken before; the end of the file follows.
    EXPECT_TRUE(Until([this] {
        char l_ignored[1 << 16];
        return recv(m_peer, l_ignored, sizeof l_ignored, 0) == -1 && !m_events.empty() && m_events.back() == "error";
    }));
}

TEST_F(ThreadTest, UploadStopsAtOnceWhereverItWaits) {
    Upload("abc"); // for the offset
    Hear(4);
    EXPECT_TRUE(StopsAtOnce());
}

TEST_F(ThreadTest, UploadStopsAtOnceWhenThePeerDoesNotRead) {
    Upload(std::string(64 << 20, 'x'));
    Hear(4);
    Say(Bytes(std::int64_t{0}));
    Hear(1);
    EXPECT_TRUE(StopsAtOnce());
    EXPECT_EQ(End(), "error");
}

TEST_F(ThreadTest, UploadStopsAtOnceInAPauseAndAtTheEnd) {
    Upload(std::string(1 << 20, 'x'), [] { return 1; });
    Hear(4);
    Say(Bytes(std::int64_t{(1 << 20) - 1}));
    Hear(1); // all is out; the worker waits for the peer to close
    EXPECT_TRUE(StopsAtOnce());
    EXPECT_EQ(End(), "complete");
}

TEST_F(ThreadTest, StoppedBeforeItStartsItNeverRuns) {
    Upload("abc");
    mp_thread->SignalExit();
    Settle();
    EXPECT_FALSE(mp_thread->isRunning());
    EXPECT_EQ(mp_socket->thread(), QThread::currentThread());
}

TEST_F(ThreadTest, WithoutDescriptorsItFailsAndTheProcessLives) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizers open a pipe to check an object's type, and take its failure for a bad object";
#endif
    WriteFile("");
    mp_file = OpenToAppend(FilePath());
    rlimit l_limit = {};
    getrlimit(RLIMIT_NOFILE, &l_limit);
    const int l_free = dup(m_peer); // the lowest number that is free, and from now on beyond the limit
    close(l_free);
    const rlimit l_none = {static_cast<rlim_t>(l_free), l_limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &l_none);
    Download(10, 0, TransferThread::kStallLimit);
    EXPECT_EQ(End(), "error");
    setrlimit(RLIMIT_NOFILE, &l_limit);
    EXPECT_EQ(mp_socket->state(), QAbstractSocket::ConnectedState);
}

TEST_F(ThreadTest, DownloadTakesWhatTheSocketHoldsAndWhatComes) {
    const std::string l_file = RandomBytes(2'000'000);
    Say(l_file.substr(10, 5000));
    ASSERT_TRUE(Until([this] { return mp_socket->bytesAvailable() == 5000; }));
    Download(l_file.substr(0, 10), 2'000'000);
    Say(l_file.substr(5010) + "more than was agreed");
    EXPECT_EQ(End(), "complete");
    EXPECT_EQ(FileBytes(), l_file);
    EXPECT_EQ(m_events[m_events.size() - 2], "2000000");
    EXPECT_EQ(mp_socket->state(), QAbstractSocket::UnconnectedState);
}

TEST_F(ThreadTest, DownloadOfAWholeFileFinishesAtOnce) {
    Download("whole", 5);
    EXPECT_EQ(End(), "complete");
    EXPECT_EQ(Hear(1), ""); // closed
    EXPECT_EQ(FileBytes(), "whole");
}

TEST_F(ThreadTest, DownloadOfAFileThatIsTooLongFails) {
    Download("too long", 5);
    EXPECT_EQ(End(), "error");
    EXPECT_EQ(FileBytes(), "too long");
}

TEST_F(ThreadTest, DownloadOfNegativeSizeFails) {
    Download("", -1);
    EXPECT_EQ(End(), "error");
}

TEST_F(ThreadTest, BrokenDownloadKeepsEveryByte) {
    Download("", std::numeric_limits<long long>::max());
    Say(std::string(12'345, 'x'));
    HangUp();
    EXPECT_EQ(End(), "error");
    EXPECT_EQ(FileBytes(), std::string(12'345, 'x'));
}

TEST_F(ThreadTest, DownloadFailsWhenItCannotWriteOrNothingComes) {
    WriteFile("");
    mp_file = OpenToSend(ToUtf8(FilePath())); // not for writing
    Download(10, 0, TransferThread::kStallLimit);
    Say("0123456789");
    EXPECT_EQ(End(), "error");
}

TEST_F(ThreadTest, DownloadFailsAfterAStall) {
    Download("", 10, 50ms);
    Say("01234");
    EXPECT_EQ(End(), "error");
    EXPECT_EQ(FileBytes(), "01234");
}

TEST_F(ThreadTest, DownloadStopsAtOnce) {
    Download("", 10);
    Say("01234");
    EXPECT_TRUE(Until([this] { return FileBytes().size() == 5; }));
    EXPECT_TRUE(StopsAtOnce());
    EXPECT_EQ(End(), "error");
}

TEST_F(ThreadTest, LastFiguresArriveBeforeTheEnd) {
    Download("", 10);
    Say("01234");
    ASSERT_TRUE(Until([this] { return m_events == std::vector<std::string>{"5"}; }));
    Say("56789"); // too soon for a notice of its own
    EXPECT_EQ(End(), "complete");
    EXPECT_EQ(m_events, (std::vector<std::string>{"5", "10", "complete"}));
}

TEST_F(ThreadTest, NoticesNeverPileUp) {
    constexpr std::size_t l_size = 64 << 20;
    Download("", l_size);
    Settle();
    std::thread l_sender([this] { // a busy main thread: not a single event is handled while it all arrives
        const std::string l_piece(1 << 16, 'x');
        for (std::size_t l_sent = 0; l_sent < l_size;) {
            const ssize_t l_count = send(m_peer, l_piece.data(), l_piece.size(), MSG_NOSIGNAL);
            l_sent += l_count > 0 ? static_cast<std::size_t>(l_count) : 0;
        }
    });
    l_sender.join();
    ASSERT_TRUE(mp_thread->wait(60000));
    EXPECT_LE(m_events.size(), 1u);
    const std::size_t l_before = m_events.size();
    EXPECT_EQ(End(), "complete");
    EXPECT_EQ(m_events.size(), l_before + 2);
    EXPECT_EQ(m_events[m_events.size() - 2], std::to_string(l_size));
    EXPECT_GT(m_lastRate, 0);
}

} // namespace
