#include "transfers/queue_fixture.h"

#include <QSignalSpy>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const std::string c_path = "music\\live\\song";

class DownloadQueue : public QueueTest {
protected:
    DownloadQueue() : m_dora("dora") {
        m_dora.Connect();
        m_dora.ComeOnline();
    }

    ItemPtr Add(const std::string& i_name = "song", long long i_size = 10) {
        m_queue.AddDownload("dora", i_name, "music\\live", i_size, 0);
        return Download(m_dora, i_name);
    }
    // The peer offers the file and the client accepts.
    void Offer(std::uint32_t i_token, const std::string& i_path = c_path) {
        m_dora.Say(TransferRequest{TransferRequest::offersUpload, i_token, i_path, 10});
        const auto l_answer = m_dora.Expect<TransferResponse>();
        EXPECT_TRUE(l_answer.accepted && !l_answer.hasSize && l_answer.token == i_token);
    }
    std::string Refusal(const std::string& i_path) {
        m_dora.Say(TransferRequest{TransferRequest::offersUpload, 9, i_path, 10});
        const auto l_answer = m_dora.Expect<TransferResponse>();
        return l_answer.accepted ? "accepted" : l_answer.reason;
    }

    ScriptedPeer m_dora;
};

TEST_F(DownloadQueue, AddingAsksOnceAndAddingAgainDoesNothing) {
    const ItemPtr l_entry = Add();
    EXPECT_EQ(m_dora.Expect<QueueUpload>().file, c_path);
    EXPECT_EQ(m_dora.Expect<PlaceInLineRequest>().file, c_path);
    EXPECT_EQ(Status(l_entry), "queued");
    EXPECT_TRUE(m_dora.User().IsConnected("is_tracked"));

    m_queue.SetDownloadEntryStatus(l_entry, "denied");
    Add();
    EXPECT_EQ(g("download_entry").size(), 1u);
    EXPECT_EQ(Status(l_entry), "denied");
    EXPECT_EQ(m_dora.Count<QueueUpload>(), 0u);

    const long long l_order = l_entry["download_order"].AsInt64();
    EXPECT_EQ(Add("other")["download_order"].AsInt64(), l_order + 1);
}

TEST_F(DownloadQueue, FinishedFileNeedsNoPeer) {
    Write("dl/complete/live/song", "of any size");
    EXPECT_EQ(Status(Add()), "complete");
    EXPECT_EQ(m_dora.Count<QueueUpload>(), 0u);
    EXPECT_EQ(Refusal(c_path), "Complete");
}

TEST_F(DownloadQueue, OfflineUserIsAskedOnComingOnline) {
    m_dora.User().Disconnect("is_online");
    const char* const l_statuses[] = {"queued", "aborted", "local error", "denied", "complete"};
    for (const char* lp_status : l_statuses) {
        m_queue.SetDownloadEntryStatus(Add(lp_status), lp_status);
    }
    Write("dl/complete/live/queued", "came by another way");
    EXPECT_EQ(m_dora.Count<QueueUpload>(), 0u);
    m_dora.ComeOnline();
    EXPECT_EQ(m_dora.Expect<QueueUpload>().file, "music\\live\\aborted"); // in the order of adding
    EXPECT_EQ(m_dora.Expect<QueueUpload>().file, "music\\live\\local error");
    EXPECT_EQ(m_dora.Count<QueueUpload>(), 0u);
    EXPECT_EQ(Status(Download(m_dora, "queued")), "complete");
}

TEST_F(DownloadQueue, FileResumesArrivesAndLeavesNoEmptyFolder) {
    const ItemPtr l_entry = Add();
    Write("dl/downloading/live/song", "012");
    Offer(77);
    auto l_connection = m_dora.OpenFileConnection(77);
    EXPECT_EQ(l_connection.HearNumber<std::int64_t>(), 3);
    EXPECT_TRUE(Becomes(l_entry, "downloading"));
    l_connection.Say("3456");
    EXPECT_TRUE(Until([&] { return *l_entry["write_position"].AsPointer<long long>() == 7; }));
    l_connection.Say("789");
    EXPECT_TRUE(Becomes(l_entry, "complete"));
    EXPECT_EQ(Read("dl/complete/live/song"), "0123456789");
    EXPECT_FALSE(Exists("dl/downloading/live"));
    EXPECT_TRUE(Exists("dl/downloading"));
    for (const char* lp_type : {"download_thread", "download_file", "download_socket", "write_position"}) {
        EXPECT_TRUE(g(lp_type).empty()) << lp_type;
    }
    EXPECT_TRUE(Until([&] { return l_connection.IsOver(); }));
}

TEST_F(DownloadQueue, ExistingNameIsNotOverwritten) {
    const ItemPtr l_entry = Add();
    Offer(1);
    Write("dl/complete/live/song", "mine");
    auto l_connection = m_dora.OpenFileConnection(1);
    l_connection.Say("0123456789");
    EXPECT_TRUE(Becomes(l_entry, "complete"));
    EXPECT_EQ(Read("dl/complete/live/song"), "mine");
    EXPECT_EQ(Read("dl/downloading/live/song"), "0123456789");
}

TEST_F(DownloadQueue, FolderStaysWhileOthersWantIt) {
    m_queue.AddDownload("dora", "song", "x\\music\\live", 1, 1);
    m_queue.AddDownload("dora", "other", "x\\music\\live", 1, 1);
    for (const char* lp_name : {"song", "other"}) {
        const ItemPtr l_entry = m_queue.GetDownloadEntry("dora", lp_name, "x\\music\\live");
        Offer(5, std::string("x\\music\\live\\") + lp_name);
        auto l_connection = m_dora.OpenFileConnection(5);
        l_connection.Say("!");
        EXPECT_TRUE(Becomes(l_entry, "complete"));
        EXPECT_EQ(Exists("dl/downloading/music/live"), lp_name == std::string("song"));
    }
    EXPECT_FALSE(Exists("dl/downloading/music"));
    EXPECT_EQ(Read("dl/complete/music/live/other"), "!");
}

TEST_F(DownloadQueue, NewOfferEndsTheRunningTransfer) {
    const ItemPtr l_entry = Add();
    Offer(1);
    auto l_first = m_dora.OpenFileConnection(1);
    EXPECT_EQ(l_first.HearNumber<std::int64_t>(), 0);
    l_first.Say("01234");
    EXPECT_TRUE(Until([&] { return Read("dl/downloading/live/song").size() == 5; }));

    auto l_intruder = m_dora.OpenFileConnection(1); // a second connection for a running download
    EXPECT_TRUE(Until([&] { return l_intruder.IsOver(); }));
    EXPECT_EQ(Status(l_entry), "downloading");

    Offer(2);
    EXPECT_EQ(Status(l_entry), "aborted");
    EXPECT_TRUE(Until([&] { return l_first.IsOver(); }));
    auto l_second = m_dora.OpenFileConnection(2);
    EXPECT_EQ(l_second.HearNumber<std::int64_t>(), 5);
    l_second.Say("56789");
    EXPECT_TRUE(Becomes(l_entry, "complete"));
    EXPECT_EQ(Read("dl/complete/live/song"), "0123456789");
    auto l_third = m_dora.OpenFileConnection(2); // for a finished one
    EXPECT_TRUE(Until([&] { return l_third.IsOver(); }));
    EXPECT_EQ(Status(l_entry), "complete");
}

TEST_F(DownloadQueue, RemovalInTheMiddleKeepsThePartialFile) {
    const ItemPtr l_entry = Add();
    QSignalSpy l_progress(&m_queue, &TransferQueueManager::DownloadProgressed);
    Offer(1);
    auto l_connection = m_dora.OpenFileConnection(1);
    l_connection.Say("01234");
    EXPECT_TRUE(Until([&] { return !l_progress.isEmpty(); }));
    QElapsedTimer l_clock;
    l_clock.start();
    m_queue.RemoveDownload(l_entry);
    EXPECT_LT(l_clock.elapsed(), 5000); // not the 30 seconds that the worker would wait for more
    EXPECT_TRUE(g("download_entry").empty());
    EXPECT_TRUE(Until([&] { return l_connection.IsOver(); }));
    EXPECT_EQ(Read("dl/downloading/live/song"), "01234");
    EXPECT_EQ(Refusal(c_path), "Cancelled");
}

TEST_F(DownloadQueue, BrokenConnectionAborts) {
    const ItemPtr l_entry = Add();
    m_dora.Expect<QueueUpload>();
    Offer(1);
    auto l_connection = m_dora.OpenFileConnection(1);
    l_connection.Say("01234");
    l_connection.Close();
    EXPECT_TRUE(Becomes(l_entry, "aborted"));
    m_dora.Say(UploadFailure{c_path});
    EXPECT_EQ(m_dora.Expect<QueueUpload>().file, c_path);
    EXPECT_EQ(Status(l_entry), "aborted"); // until a transfer begins
    m_queue.SetDownloadEntryStatus(l_entry, "local error");
    m_dora.Say(UploadFailure{c_path});
    m_dora.Say(UploadFailure{"music\\live\\unknown"});
    EXPECT_EQ(m_dora.Count<QueueUpload>(), 0u);
}

TEST_F(DownloadQueue, SizesThatLieEndInAborted) {
    for (const char* lp_size : {"-1", "nonsense", ""}) {
        const ItemPtr l_entry = Add();
        l_entry.Connect(d.GetType("file_size")->GetItem(lp_size));
        Offer(1);
        auto l_connection = m_dora.OpenFileConnection(1);
        EXPECT_TRUE(Becomes(l_entry, "aborted")) << lp_size;
        m_queue.RemoveDownload(l_entry);
    }
    const ItemPtr l_entry = Add("endless", std::numeric_limits<long long>::max());
    Offer(2, "music\\live\\endless");
    auto l_connection = m_dora.OpenFileConnection(2);
    l_connection.Say("abc");
    l_connection.Close();
    EXPECT_TRUE(Becomes(l_entry, "aborted"));
    EXPECT_EQ(Read("dl/downloading/live/endless"), "abc");
}

TEST_F(DownloadQueue, HostileNamesStayInside) {
    m_queue.AddDownload("dora", "../../out", "..\\..", 3, 1);
    const ItemPtr l_entry = m_queue.GetDownloadEntry("dora", "../../out", "..\\..");
    l_entry.Connect(d.GetType("remote_transfer_req")->GetItem(8));
    auto l_connection = m_dora.OpenFileConnection(8);
    l_connection.Say("abc");
    EXPECT_TRUE(Becomes(l_entry, "complete"));
    EXPECT_EQ(Read("dl/complete/__/__/.._.._out"), "abc");
}

TEST_F(DownloadQueue, FolderThatLeadsOutIsALocalError) {
    QDir().mkpath(Path("outside"));
    QDir().mkpath(Path("dl/downloading"));
    ASSERT_EQ(symlink("../../outside", ToUtf8(Path("dl/downloading/live")).c_str()), 0);
    const ItemPtr l_entry = Add();
    Offer(1);
    auto l_connection = m_dora.OpenFileConnection(1);
    EXPECT_TRUE(Becomes(l_entry, "local error"));
    EXPECT_TRUE(Until([&] { return l_connection.IsOver(); }));
    EXPECT_FALSE(Exists("outside/song"));
}

TEST_F(DownloadQueue, MessagesAboutUnknownFilesLeaveNoTrace) {
    const std::size_t l_names = d.GetType("file_name")->CountItems();
    m_dora.Say(PlaceInLine{"music\\live\\unknown", 3});
    m_dora.Say(UploadDenial{"music\\live\\unknown", "no"});
    m_dora.Say(TransferRequest{0, 1, c_path, 0}); // the other direction gets no answer
    EXPECT_EQ(m_dora.Count<TransferResponse>(), 0u);
    EXPECT_EQ(Refusal("unknown"), "Cancelled");
    auto l_connection = m_dora.OpenFileConnection(123);
    EXPECT_TRUE(Until([&] { return l_connection.IsOver(); }));
    EXPECT_TRUE(Logged("Download not found, aborting"));
    EXPECT_TRUE(g("download_entry").empty());
    EXPECT_EQ(d.GetType("file_name")->CountItems(), l_names);
}

TEST_F(DownloadQueue, DenialAndPlaceAreNoted) {
    const ItemPtr l_entry = Add();
    m_dora.Say(PlaceInLine{c_path, 12});
    EXPECT_TRUE(Until([&] { return l_entry["place_in_line"].AsView() == "12"; }));
    m_dora.Say(UploadDenial{c_path, "%1 & <b>"});
    EXPECT_TRUE(Becomes(l_entry, "denied"));
    EXPECT_EQ(l_entry["denial_reason"].AsString(), "%1 & <b>");
    EXPECT_TRUE(
        Logged("Received peer notification from dora that upload of " + c_path + " was denied, reason: %1 & <b>"));
    Offer(1); // the peer may still change its mind
}

TEST_F(DownloadQueue, IdleClientRepeatsItsWishes) {
    const char* const l_statuses[] = {"aborted", "queued", "denied", "complete", "local error"};
    for (const char* lp_status : l_statuses) {
        m_queue.SetDownloadEntryStatus(Add(lp_status), lp_status);
        m_dora.Expect<QueueUpload>();
    }
    const ItemPtr l_running = Add("running");
    m_dora.Expect<QueueUpload>();
    m_queue.SetDownloadEntryStatus(l_running, "downloading");
    m_queue.PeriodicCheck();
    EXPECT_EQ(m_dora.Count<QueueUpload>(), 0u);
    m_queue.RemoveDownload(l_running);
    m_queue.PeriodicCheck();
    EXPECT_EQ(m_dora.Expect<QueueUpload>().file, "music\\live\\aborted");
    EXPECT_EQ(m_dora.Expect<QueueUpload>().file, "music\\live\\queued");
    EXPECT_EQ(m_dora.Count<QueueUpload>(), 0u);
}

TEST_F(DownloadQueue, PlacesAreAskedForEveryTenMinutes) {
    Add();
    m_dora.Expect<PlaceInLineRequest>();
    m_dora.User().Disconnect("last_place_in_line_request_time");
    m_queue.EveryHalfMinute();
    m_queue.EveryHalfMinute();
    EXPECT_EQ(m_dora.Count<PlaceInLineRequest>(), 1u);
    Age(m_dora.User(), "last_place_in_line_request_time", 590);
    m_queue.EveryHalfMinute();
    EXPECT_EQ(m_dora.Count<PlaceInLineRequest>(), 1u);
    Age(m_dora.User(), "last_place_in_line_request_time", 601);
    const ItemPtr l_running = Add("running");
    m_dora.Expect<PlaceInLineRequest>();
    m_queue.SetDownloadEntryStatus(l_running, "downloading"); // never while a file of this user runs
    m_queue.EveryHalfMinute();
    EXPECT_EQ(m_dora.Count<PlaceInLineRequest>(), 1u);
    m_queue.SetDownloadEntryStatus(l_running, "aborted");
    m_queue.EveryHalfMinute();
    EXPECT_EQ(m_dora.Count<PlaceInLineRequest>(), 2u);
}

TEST_F(DownloadQueue, RestartQueuesAllThatIsNotComplete) {
    const char* const l_statuses[] = {"complete", "downloading", "aborted", "denied", "local error"};
    for (const char* lp_status : l_statuses) {
        const ItemPtr l_entry = Add(lp_status, 123);
        l_entry.Connect(d.GetType("denial_reason")->GetItem("why"));
        m_queue.SetDownloadEntryStatus(l_entry, lp_status);
    }
    d.GetType("download_entry")->NewItem(); // as a damaged file might have it
    const std::string l_file = ToUtf8(Path("store"));
    ASSERT_TRUE(dataSaver->Save(&d, l_file.c_str()));
    for (Item* lp_entry : g("download_entry")) {
        lp_entry->Remove();
    }
    QSignalSpy l_loaded(&m_queue, &TransferQueueManager::TransfersLoaded);
    EXPECT_EQ(dataSaver->Load(&d, l_file.c_str()).state, LoadResult::Whole);
    EXPECT_EQ(l_loaded.size(), 1);
    EXPECT_EQ(g("download_entry").size(), std::size(l_statuses));
    for (const char* lp_status : l_statuses) {
        const ItemPtr l_entry = Download(m_dora, lp_status);
        ASSERT_TRUE(l_entry);
        EXPECT_EQ(Status(l_entry), lp_status == std::string("complete") ? "complete" : "queued");
        EXPECT_EQ(l_entry["file_size"].AsInt64(), 123);
        EXPECT_FALSE(l_entry.IsConnected("denial_reason"));
    }
    EXPECT_GT(Add("late")["download_order"].AsInt64(), Download(m_dora, "local error")["download_order"].AsInt64());
}

} // namespace
