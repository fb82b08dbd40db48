// Floods: what strangers may cost, counted while they come, and what is left when they have gone.
#include "peer_network.h"

#include <sys/resource.h>

#include <fstream>

#include "app/settings.h"

namespace {

using FloodTest = PeerNetworkTest;
using limits::mebibyte;

std::size_t ResidentBytes() {
    std::ifstream l_file("/proc/self/statm");
    std::size_t l_all = 0;
    std::size_t l_resident = 0;
    l_file >> l_all >> l_resident;
    return l_resident * 4096;
}

// A peer that nobody has heard of before is served: connects, introduces itself, and is heard.
void ExpectServed(const std::string& i_user) {
    QObject l_context;
    bool l_isHeard = false;
    QObject::connect(peerMessenger, &PeerMessenger::UploadFailed, &l_context, [&] { l_isHeard = true; });
    const auto l_peer = ScriptedPeer::Introduced(i_user);
    l_peer->Send(UploadFailure{"f"});
    EXPECT_TRUE(WaitFor([&] { return l_isHeard; }));
}

TEST_F(FloodTest, TwoHundredSilentCallersKeepNobodyOut) {
    const auto l_known = ScriptedPeer::Introduced("known");
    std::vector<std::unique_ptr<ScriptedPeer>> l_silent;
    for (int l_index = 0; l_index < 200; ++l_index) {
        l_silent.push_back(std::make_unique<ScriptedPeer>());
        // Half of a frame that promises to be as long as may be.
        l_silent.back()->SendRaw(Int32(limits::initFrame) + "\1");
        QCoreApplication::processEvents();
    }
    const auto l_countOpen = [&] {
        return std::ranges::count_if(l_silent, [](const auto& i_peer) { return !i_peer->IsClosed(); });
    };
    ASSERT_TRUE(WaitFor([&] { return l_countOpen() == limits::unknownSocketsOfAddress; }));
    EXPECT_EQ(g("uninitialized_socket").size(), std::size_t{limits::unknownSocketsOfAddress});
    ExpectServed("honest");
    EXPECT_FALSE(l_known->IsClosed());
}

TEST_F(FloodTest, SoDoFileCallersWithoutAToken) {
    std::vector<std::unique_ptr<ScriptedPeer>> l_callers;
    for (int l_index = 0; l_index < 2 * limits::unknownSocketsOfAddress; ++l_index) {
        l_callers.push_back(ScriptedPeer::Introduced("tokenless" + std::to_string(l_index), "F"));
        QCoreApplication::processEvents();
    }
    ASSERT_TRUE(WaitFor([&] {
        return std::ranges::count_if(l_callers, [](const auto& i_peer) { return !i_peer->IsClosed(); }) ==
               limits::unknownSocketsOfAddress;
    }));
    ExpectServed("honest2");
}

TEST_F(FloodTest, AnnouncedLengthsTakeNoMemory) {
    std::vector<std::unique_ptr<ScriptedPeer>> l_peers;
    for (int l_index = 0; l_index < 30; ++l_index)
        l_peers.push_back(ScriptedPeer::Introduced("boaster" + std::to_string(l_index)));
    const std::size_t l_before = ResidentBytes();
    for (const auto& l_peer : l_peers)
        l_peer->SendRaw(Int32(limits::shareFrame) + Int32(5) + "x");
    LetThingsSettle();
    // 30 times 64 MiB were announced; 64 KiB each may be kept ready.
    EXPECT_LT(ResidentBytes(), l_before + 30 * 128 * limits::kibibyte + mebibyte);
    ExpectServed("modest");
}

TEST_F(FloodTest, PackedBombsLeaveNothingBehind) {
    const auto l_peer = ScriptedPeer::Introduced("bomber");
    int l_lists = 0;
    QObject::connect(peerMessenger, &PeerMessenger::UserShare, &m_context, [&] { ++l_lists; });
    std::string l_files = Int32(1) + Text("f") + Int32(limits::textLengthOrCount);
    for (std::uint32_t l_index = 0; l_index < limits::textLengthOrCount; ++l_index)
        l_files += '\1' + Text("a name of its own, too long to be kept in place " + std::to_string(l_index)) +
                   std::string(16, '\0');
    // The first is sound. Then absent records, a byte each, and a count that lies.
    const std::string l_absent = Int32(2) + Text("f") + Int32(limits::textLengthOrCount) +
                                 std::string(limits::textLengthOrCount, '\0') + Text("g") + Int32(0x20001);
    const std::string l_bombs[] = {PackedBomb(l_files, 4), PackedBomb(l_absent, 1 << 24),
                                   PackedBomb("", limits::inflatedShare + 1)};
    [[maybe_unused]] const std::size_t l_before = ResidentBytes();
    for (const std::string& l_bomb : l_bombs)
        l_peer->SendFrame(Int32(5) + l_bomb);
    ExpectServed("after the bombs");
    // Behind them, since lists are unpacked one after the other.
    l_peer->SendFrame(Int32(5) + Packed(Int32(0) + Int32(0)));
    ASSERT_TRUE(WaitFor([&] { return l_lists > 1; }));
    EXPECT_EQ(l_lists, 2);
#ifndef __SANITIZE_ADDRESS__ // which keeps what is freed
    EXPECT_TRUE(WaitFor([&] { return ResidentBytes() < l_before + 5 * mebibyte; }));
#endif
}

class LargeShare : public SharedFilesSource {
public:
    void GetSharedFilesMessage(const std::string&, Answer i_answer) override {
        ++asked;
        MemStream l_message = StreamOf(Int32(5));
        const std::string l_bytes(4 * mebibyte, 'x');
        l_message.WriteBuffer(l_bytes.data(), l_bytes.size());
        i_answer(l_message);
    }
    int asked = 0;
};

TEST_F(FloodTest, OneShareListAtATimeForWhoDoesNotRead) {
    LargeShare l_share;
    peerMessenger->SetSharedFilesSource(&l_share);
    const auto l_greedy = ScriptedPeer::Introduced("greedy");
    l_greedy->StopReading();
    const std::size_t l_before = ResidentBytes();
    for (int l_index = 0; l_index < 100; ++l_index)
        l_greedy->Send(ShareListRequest());
    LetThingsSettle();
    // Kernel buffers may have swallowed one list or two.
    EXPECT_LE(l_share.asked, 4);
    EXPECT_LT(ResidentBytes(), l_before + 32 * mebibyte);
    EXPECT_EQ(PeerSockets("greedy").size(), 1U);
    EXPECT_LE(ItemPtr(*PeerSockets("greedy").begin()).AsPointer<QTcpSocket>()->bytesToWrite(), qint64{5 * mebibyte});

    // One who reads gets every list that is asked for in turn.
    const auto l_reader = ScriptedPeer::Introduced("reader");
    for (std::size_t l_count = 1; l_count <= 3; ++l_count) {
        l_reader->Send(ShareListRequest());
        ASSERT_TRUE(WaitFor([&] { return l_reader->Frames().size() == l_count; }));
    }
}

TEST_F(FloodTest, WhoLeavesTooMuchUnreadLosesTheConnection) {
    const auto l_peer = ScriptedPeer::Introduced("unread");
    l_peer->StopReading();
    auto* lp_socket = ItemPtr(*PeerSockets("unread").begin()).AsPointer<QTcpSocket>();
    const std::string l_message = Int32(43) + std::string(limits::kibibyte * 256, 'x');
    qint64 l_most = 0;
    for (int l_index = 0; l_index < 200 && !PeerSockets("unread").empty(); ++l_index) {
        peerMessenger->SendMessage("unread", StreamOf(l_message));
        l_most = std::max(l_most, lp_socket->bytesToWrite());
        QCoreApplication::processEvents();
    }
    EXPECT_TRUE(PeerSockets("unread").empty());
    EXPECT_LE(l_most, qint64{limits::queuedToSocket});
    EXPECT_GT(l_most, static_cast<qint64>(limits::queuedToSocket - 2 * l_message.size()));
}

TEST_F(FloodTest, OfTooManyWaitingMessagesTheOldestGo) {
    for (std::size_t l_index = 0; l_index <= limits::waitingMessages; ++l_index)
        peerMessenger->QueueDownload("unreachable", std::to_string(l_index));
    EXPECT_EQ(g("unsent_message").size(), limits::waitingMessages);
    EXPECT_EQ(
        std::ranges::count(m_log.lines, "1 Too many messages are waiting, dropping the oldest, to user unreachable"),
        1);
    const auto l_peer = ScriptedPeer::Introduced("unreachable");
    ASSERT_TRUE(WaitFor([&] { return l_peer->Frames().size() == limits::waitingMessages; }));
    EXPECT_EQ(l_peer->Frames().front(), BytesOf(Encode(QueueUpload{"1"})));

    // By bytes: 64 of a MiB less a little fit, the 65th pushes out the first.
    const MemStream l_large = StreamOf(Int32(43) + std::string(mebibyte - 4, 'x'));
    for (int l_index = 0; l_index < 64; ++l_index)
        peerMessenger->SendMessage("unreachable2", l_large);
    EXPECT_EQ(g("unsent_message").size(), 64U);
    peerMessenger->QueueDownload("unreachable2", "one byte more");
    EXPECT_EQ(g("unsent_message").size(), 64U);
}

// Sets the limit so that i_more descriptors can be opened beside those there are.
class FewDescriptors {
public:
    explicit FewDescriptors(int i_more) {
        getrlimit(RLIMIT_NOFILE, &m_before);
        const int l_next = dup(0);
        close(l_next);
        rlimit l_few = m_before;
        l_few.rlim_cur = static_cast<rlim_t>(l_next + i_more);
        setrlimit(RLIMIT_NOFILE, &l_few);
    }
    ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &m_before); }

private:
    rlimit m_before{};
};

TEST_F(FloodTest, AcceptingPausesAtTheLimitAndResumesBelowIt) {
    const auto l_countOpen = [] { return g("peer_socket").size() + g("uninitialized_socket").size(); };
    std::vector<std::unique_ptr<ScriptedPeer>> l_peers;
    for (int l_index = 0; l_index < 15; ++l_index)
        l_peers.push_back(std::make_unique<ScriptedPeer>());
    {
        const FewDescriptors l_few(limits::descriptorsKeptForFiles + 10);
        FireHalfMinute();
        ASSERT_TRUE(WaitFor([&] { return m_log.Has("1 No room for more connections, accepting none for now"); }));
        LetThingsSettle();
        const std::size_t l_accepted = l_countOpen();
        EXPECT_LE(l_accepted, 10U);
        EXPECT_GE(l_accepted, 5U);
        // Descriptors are left for files.
        const int l_file = dup(0);
        EXPECT_GE(l_file, 0);
        close(l_file);
        LetThingsSettle();
        EXPECT_EQ(l_countOpen(), l_accepted);
    }
    FireHalfMinute();
    EXPECT_TRUE(WaitFor([&] { return l_countOpen() == l_peers.size(); }));
    ExpectServed("after");
}

TEST_F(FloodTest, WithoutAnyDescriptorTheListenerNeitherSpinsNorGoesDeaf) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizers open a pipe to check an object's type, and take its failure for a bad object";
#endif
    std::vector<std::unique_ptr<ScriptedPeer>> l_peers;
    for (int l_index = 0; l_index < 3; ++l_index)
        l_peers.push_back(std::make_unique<ScriptedPeer>());
    {
        const FewDescriptors l_few(0); // unknown to the messenger: its accept fails
        rusage l_before{};
        getrusage(RUSAGE_SELF, &l_before);
        QElapsedTimer l_time;
        l_time.start();
        while (l_time.elapsed() < 500)
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
        rusage l_after{};
        getrusage(RUSAGE_SELF, &l_after);
        const auto l_used = (l_after.ru_utime.tv_sec - l_before.ru_utime.tv_sec) * 1'000'000 +
                            (l_after.ru_utime.tv_usec - l_before.ru_utime.tv_usec);
        EXPECT_LT(l_used, 250'000);
        EXPECT_TRUE(g("uninitialized_socket").empty());
    }
    EXPECT_TRUE(WaitFor([] { return g("uninitialized_socket").size() == 3; }));
}

} // namespace
