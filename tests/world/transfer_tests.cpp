// Files moved between two real clients that know each other through the real server only.
#include "world/client_process.h"
#include "world/conditions.h"
#include "world/sample_file.h"
#include "world/scripted_peer.h"

#include <QDir>
#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <csignal>

namespace {

constexpr qint64 g_mebibyte = 1024 * 1024;
constexpr int g_quitMs = 2000 * g_slowness;

class WorldTransfer : public testing::Test {
protected:
    // The source's home offers the file to everyone, the taker's has it in its list of downloads.
    void Offer(qint64 i_size, int i_limitKiB) {
        m_size = i_size;
        WriteSampleFile(m_file, i_size, 4711);
        m_digest = Sha256(m_file);
        m_source.Edit(QStringLiteral("share"), {m_source.Path(QStringLiteral("shared")), QStringLiteral("public")});
        SetLimit(i_limitKiB);
        m_taker.Edit(QStringLiteral("want"), {m_source.User(), m_file, QString::number(i_size)});
    }
    void SetLimit(int i_limitKiB) {
        m_source.Set("upload_speed_limit", QString::number(i_limitKiB));
        m_source.Set("upload_speed_limit_enabled", i_limitKiB > 0 ? QStringLiteral("yes") : QStringLiteral("no"));
    }
    void AwaitPartialFile(qint64 i_size) {
        EXPECT_TRUE(WaitUntil([&] { return SizeOf(m_partial) >= i_size; })) << SizeOf(m_partial);
    }
    // The taker's status of the file as its store file has it; the taker does not run.
    void ExpectWholeFile() {
        EXPECT_TRUE(WaitUntil([&] { return SizeOf(m_complete) == m_size; })) << SizeOf(m_partial);
        EXPECT_EQ(Sha256(m_complete), m_digest);
        EXPECT_TRUE(WaitUntil([&] { return !QDir(m_taker.Downloads("downloading/album")).exists(); }))
            << "the emptied folder";
        EXPECT_EQ(SizeOf(m_partial), -1);
    }
    static void ExpectQuickEnd(ClientProcess& io_client) {
        QElapsedTimer l_time;
        l_time.start();
        EXPECT_EQ(io_client.Stop(SIGTERM), 0);
        EXPECT_LT(l_time.elapsed(), g_quitMs);
    }

    const ServerProcess m_server;
    const ClientHome m_source{QStringLiteral("source"), m_server.Port()};
    const ClientHome m_taker{QStringLiteral("taker"), m_server.Port()};
    const QString m_file = m_source.Path(QStringLiteral("shared/album/Überfahrt.bin"));
    const QString m_partial = m_taker.Downloads("downloading/album/Überfahrt.bin");
    const QString m_complete = m_taker.Downloads("complete/album/Überfahrt.bin");
    qint64 m_size = 0;
    QByteArray m_digest;
};

} // namespace

TEST_F(WorldTransfer, AKilledUploaderIsResumedWhereItEnded) {
    Offer(200 * g_mebibyte, 60 * 1024);
    ClientProcess l_source(m_source);
    const ClientProcess l_taker(m_taker);
    AwaitPartialFile(50 * g_mebibyte);
    l_source.Kill();
    const qint64 l_got = SizeOf(m_partial);
    ASSERT_LT(l_got, m_size);
    // Were anything sent again, the digest would tell.
    SpoilBeginning(m_file, l_got);
    SetLimit(0);
    l_source.Start();
    ExpectWholeFile();
}

TEST_F(WorldTransfer, AKilledDownloaderGoesOnWhereItEnded) {
    Offer(200 * g_mebibyte, 60 * 1024);
    const ClientProcess l_source(m_source);
    ClientProcess l_taker(m_taker);
    AwaitPartialFile(50 * g_mebibyte);
    l_taker.Kill();
    const qint64 l_got = SizeOf(m_partial);
    ASSERT_LT(l_got, m_size);
    SpoilBeginning(m_file, l_got);
    l_taker.Start();
    ExpectWholeFile();

    // And it stays finished over another start.
    EXPECT_EQ(l_taker.Stop(SIGTERM), 0);
    EXPECT_FALSE(m_taker.Dump().filter(QStringLiteral("complete")).isEmpty());
}

TEST_F(WorldTransfer, BothSidesEndQuicklyWhileTheBytesFlow) {
    Offer(20 * g_mebibyte, 2 * 1024);
    ClientProcess l_source(m_source);
    ClientProcess l_taker(m_taker);
    AwaitPartialFile(g_mebibyte);
    ExpectQuickEnd(l_taker);
    const qint64 l_got = SizeOf(m_partial);
    ASSERT_LT(l_got, m_size);
    l_taker.Start();
    AwaitPartialFile(l_got + g_mebibyte);
    ExpectQuickEnd(l_source);
    SetLimit(0);
    l_source.Start();
    ExpectWholeFile();
}

// A worker that waits for a silent peer must not hold up the end.
TEST_F(WorldTransfer, AnUploaderWaitingForTheOffsetEndsQuickly) {
    Offer(g_mebibyte, 0);
    ClientProcess l_source(m_source);
    ScriptedPeer l_peer("silent", m_server.Port());
    const std::string l_path = m_file.toStdString();
    EXPECT_TRUE(WaitUntil([&] {
        l_peer.Server().Send(to_server::GetUserAddress{"source"});
        return l_peer.Server().Await<from_server::UserAddress>()->address.second == m_source.Port();
    }));
    PeerLink l_messages = l_peer.ConnectTo(m_source.Port(), "P");
    l_messages.Send(QueueUpload{l_path});
    const auto l_offer = l_messages.Await<TransferRequest>();
    ASSERT_TRUE(l_offer);
    EXPECT_EQ(l_offer->direction, 1);
    EXPECT_EQ(l_offer->file, l_path);
    EXPECT_EQ(l_offer->size, m_size);
    TransferResponse l_answer;
    l_answer.token = l_offer->token;
    l_answer.accepted = true;
    l_messages.Send(l_answer);

    InitFrame l_init;
    PeerLink l_bytes = l_peer.Accept(l_init);
    ASSERT_TRUE(std::holds_alternative<DirectInit>(l_init));
    EXPECT_EQ(std::get<DirectInit>(l_init).type, "F");
    EXPECT_EQ(l_bytes.ReadRaw(4).size(), 4);
    ExpectQuickEnd(l_source);
}

TEST_F(WorldTransfer, ADownloaderWaitingForBytesEndsQuickly) {
    ScriptedPeer l_peer("silent", m_server.Port());
    m_taker.Edit(QStringLiteral("want"),
                 {QStringLiteral("silent"), QStringLiteral("album\\Überfahrt.bin"), QStringLiteral("1000000")});
    ClientProcess l_taker(m_taker);
    InitFrame l_init;
    PeerLink l_messages = l_peer.Accept(l_init);
    const auto l_wish = l_messages.Await<QueueUpload>();
    ASSERT_TRUE(l_wish);
    EXPECT_EQ(l_wish->file, "album\\Überfahrt.bin");
    TransferRequest l_offer;
    l_offer.direction = TransferRequest::offersUpload;
    l_offer.token = 0xC0FFEE;
    l_offer.file = l_wish->file;
    l_offer.size = 1000000;
    l_messages.Send(l_offer);
    const auto l_answer = l_messages.Await<TransferResponse>();
    ASSERT_TRUE(l_answer);
    EXPECT_TRUE(l_answer->accepted);
    EXPECT_EQ(l_answer->token, 0xC0FFEEU);

    PeerLink l_bytes = l_peer.ConnectTo(m_taker.Port(), "F");
    l_bytes.SendBytes(std::string_view(reinterpret_cast<const char*>(&l_offer.token), 4));
    EXPECT_EQ(l_bytes.ReadRaw(8), QByteArray(8, '\0')) << "nothing of the file is here yet";
    l_bytes.SendBytes(std::string(5000, 'b'));
    AwaitPartialFile(5000);
    ExpectQuickEnd(l_taker);
    EXPECT_EQ(SizeOf(m_partial), 5000);
}

TEST_F(WorldTransfer, AFileThatIsNotSharedIsDenied) {
    Offer(g_mebibyte, 0);
    m_source.Edit(QStringLiteral("share"), {m_source.Path(QStringLiteral("shared")), QStringLiteral("userlist")});
    const ClientProcess l_source(m_source);
    DrivenClient l_taker(m_taker);
    l_taker.AwaitStatus("download_entry", QStringLiteral("denied"));
    EXPECT_EQ(Neighbour(l_taker.Items("download_entry")[0].toObject(), "denial_reason"),
              QStringLiteral("File not shared."));
    EXPECT_EQ(SizeOf(m_partial), -1);
}
