#include "transfers/queue_fixture.h"

#include "transfers/upload_order.h"

#include <sys/stat.h>

namespace {

class UploadQueue : public QueueTest {
protected:
    UploadQueue() : m_dora("dora"), m_emil("emil") {
        for (const char* lp_name : {"one", "two", "three"}) {
            Write(std::string("share/") + lp_name, lp_name + std::string(" bytes"));
        }
        const ItemPtr l_root = d.GetType("shared_folder")->GetItem(ToUtf8(Path("share")));
        l_root.NewItem("shared_public");
        sharedFoldersManager->RescanShares();
        for (ScriptedPeer* lp_peer : {&m_dora, &m_emil}) {
            lp_peer->Connect();
            lp_peer->ComeOnline();
        }
    }

    // As a peer writes it: backslashes, and any case.
    std::string Remote(const std::string& i_name) const {
        std::string l_path = ToUtf8(Path("share/" + i_name));
        std::replace(l_path.begin(), l_path.end(), '/', '\\');
        return l_path;
    }
    ItemPtr Upload(const ScriptedPeer& i_peer, const std::string& i_name) const {
        return d.GetItem(i_peer.User(), sharedFoldersManager->GetSharedFileItem(ToUtf8(Path("share/" + i_name))),
                         "upload_entry");
    }
    // The peer asks for the file; answers the entry once the queue has settled.
    ItemPtr Ask(ScriptedPeer& i_peer, const std::string& i_name) {
        i_peer.Say(QueueUpload{Remote(i_name)});
        EXPECT_TRUE(Until([&] { return Upload(i_peer, i_name) && Status(Upload(i_peer, i_name)) != "complete"; }));
        Settle();
        return Upload(i_peer, i_name);
    }
    std::string Denial(ScriptedPeer& i_peer, const std::string& i_path) {
        i_peer.Say(QueueUpload{i_path});
        const auto l_denial = i_peer.Expect<UploadDenial>();
        EXPECT_EQ(l_denial.file, i_path);
        return l_denial.reason;
    }
    // From the offer to the open file connection, with its token read.
    PeerFileConnection Accept(ScriptedPeer& i_peer) {
        const auto l_offer = i_peer.Expect<TransferRequest>();
        EXPECT_EQ(l_offer.direction, TransferRequest::offersUpload);
        i_peer.Say(TransferResponse{l_offer.token, true, false, 0, {}});
        PeerFileConnection l_connection = i_peer.AcceptFileConnection();
        EXPECT_EQ(l_connection.HearNumber<std::int32_t>(), static_cast<std::int32_t>(l_offer.token));
        return l_connection;
    }
    void Finish(ScriptedPeer& i_peer, const std::string& i_name) {
        const ItemPtr l_entry = Upload(i_peer, i_name);
        PeerFileConnection l_connection = Accept(i_peer);
        l_connection.Say(Bytes(std::int64_t{0}));
        EXPECT_EQ(l_connection.Hear(static_cast<qint64>(i_name.size()) + 6), i_name + " bytes");
        l_connection.Close();
        EXPECT_TRUE(Becomes(l_entry, "complete"));
    }

    ScriptedPeer m_dora;
    ScriptedPeer m_emil;
};

TEST_F(UploadQueue, ServesOneAtATimeInOrderOfArrival) {
    EXPECT_TRUE(m_queue.IsFreeToUpload());
    const ItemPtr l_first = Ask(m_dora, "one");
    const ItemPtr l_second = Ask(m_emil, "two");
    EXPECT_EQ(Status(l_first), "requesting");
    EXPECT_EQ(Status(l_second), "queued");
    EXPECT_FALSE(m_queue.IsFreeToUpload());
    EXPECT_EQ(m_queue.QueuedUploadCount(), 1);

    auto l_connection = Accept(m_dora);
    EXPECT_TRUE(Becomes(l_first, "uploading"));
    l_connection.Say(Bytes(std::int64_t{4}));
    EXPECT_EQ(l_connection.Hear(5), "bytes");
    l_connection.Close();
    EXPECT_TRUE(Becomes(l_first, "complete"));
    EXPECT_TRUE(std::any_of(TheClient().m_log.begin(), TheClient().m_log.end(), [](const std::string& i_line) {
        return i_line.starts_with("Recording upload speed of ");
    }));
    for (const char* lp_type : {"upload_thread", "upload_file", "upload_socket", "read_position"}) {
        EXPECT_TRUE(g(lp_type).empty()) << lp_type;
    }
    EXPECT_EQ(Status(l_second), "requesting");
    Finish(m_emil, "two");
}

TEST_F(UploadQueue, OfflineUsersAreSkippedUntilTheyCome) {
    m_dora.User().Disconnect("is_online");
    const ItemPtr l_dora = Ask(m_dora, "one");
    EXPECT_EQ(Status(l_dora), "queued");
    EXPECT_TRUE(m_queue.IsFreeToUpload());
    const ItemPtr l_emil = Ask(m_emil, "two");
    EXPECT_EQ(Status(l_emil), "requesting");
    m_queue.RemoveUpload(l_emil);
    EXPECT_EQ(Status(l_dora), "queued"); // a removal starts nothing
    m_dora.ComeOnline();
    EXPECT_EQ(Status(l_dora), "requesting");
}

TEST_F(UploadQueue, OrderIsGroupThenPrivilegeThenArrival) {
    ScriptedPeer l_fay("fay");
    l_fay.Connect();
    l_fay.ComeOnline();
    m_emil.User().NewItem("is_privileged");
    const ItemPtr l_listed = l_fay.User().NewItem("in_user_list");
    for (const char* lp_priority : {"-3", "junk", "1"}) { // the best of the user's groups counts
        const ItemPtr l_group = d.GetType("user_list_group")->GetItem(lp_priority);
        l_group.Connect(d.GetType("group_download_priority")->GetItem(lp_priority));
        l_listed.Connect(l_group);
    }
    EXPECT_EQ(m_queue.GetUserGroupDownloadPriority("fay"), 1);
    EXPECT_EQ(m_queue.GetUserGroupDownloadPriority("emil"), 0);

    const ItemPtr l_running = Ask(m_dora, "one"); // takes the slot
    const ItemPtr l_dora2 = Ask(m_dora, "two");
    const ItemPtr l_dora3 = Ask(m_dora, "three");
    const ItemPtr l_emil = Ask(m_emil, "one");
    const ItemPtr l_fay1 = Ask(l_fay, "one");
    const ItemPtr l_fay2 = Ask(l_fay, "two");
    const std::vector<ItemPtr> l_order = {l_fay1, l_fay2, l_emil, l_running, l_dora2, l_dora3};
    for (std::size_t l_at = 0; l_at < l_order.size(); ++l_at) {
        EXPECT_EQ(l_order[l_at]["effective_upload_order"].AsInt(), static_cast<int>(l_at));
        for (std::size_t l_after = l_at + 1; l_after < l_order.size(); ++l_after) {
            EXPECT_TRUE(m_queue.UploadEntrySortCompare(l_order[l_at], l_order[l_after]));
            EXPECT_FALSE(m_queue.UploadEntrySortCompare(l_order[l_after], l_order[l_at]));
        }
    }

    l_listed.Remove(); // of no effect until a new entry arrives
    Finish(m_dora, "one");
    EXPECT_EQ(Status(l_fay1), "requesting");
    Ask(m_emil, "two");
    EXPECT_EQ(l_emil["effective_upload_order"].AsInt(), 0);
}

TEST_F(UploadQueue, AskingAgainKeepsTheOldRank) {
    const ItemPtr l_entry = Ask(m_dora, "one");
    const std::string l_order = l_entry["upload_order"].AsString();
    m_dora.Say(QueueUpload{ToUtf8(Path("share/ONE"))}); // another spelling of the same file
    EXPECT_TRUE(Until([] { return Logged("Already queued"); }));
    EXPECT_EQ(l_entry["filename_as_requested"].AsString(), Remote("one"));
    Finish(m_dora, "one");
    Ask(m_emil, "two");
    Ask(m_emil, "three");
    Ask(m_dora, "one");
    EXPECT_TRUE(Logged("complete, re-queueing"));
    EXPECT_EQ(l_entry["upload_order"].AsString(), l_order);
    Finish(m_emil, "two");
    EXPECT_EQ(Status(l_entry), "requesting"); // ahead of "three"
}

TEST_F(UploadQueue, DeniesWhatIsNotShared) {
    EXPECT_EQ(Denial(m_dora, "share\\..\\..\\etc\\passwd"), "File not shared.");
    EXPECT_EQ(Denial(m_dora, ""), "File not shared.");
    d.GetType("shared_folder")->GetItem(ToUtf8(Path("share")))->Disconnect("shared_public");
    EXPECT_EQ(Denial(m_dora, Remote("one")), "File not shared.");
    EXPECT_TRUE(g("upload_entry").empty());
}

TEST_F(UploadQueue, DeniesMoreThanSoManyFilesOfOneUser) {
    for (std::size_t l_count = 0; l_count < limits::uploadsOfUser - 1; ++l_count) {
        const ItemPtr l_entry = d.GetType("upload_entry")->NewItem();
        l_entry.Connect(m_dora.User());
        l_entry.Connect(d.GetType("upload_entry_status")->GetItem("complete"));
    }
    Ask(m_dora, "one");
    EXPECT_EQ(Denial(m_dora, Remote("two")), "Too many files.");
    Ask(m_emil, "two");
}

TEST_F(UploadQueue, BurstIsPutInOrderOnce) {
    Ask(m_dora, "one");
    int l_changes = 0;
    class Counter : public DataHandler {
    public:
        explicit Counter(int& o_count) : m_count(o_count) {}
        void OnConnected(ConnectionInfo&) { ++m_count; }
        int& m_count;
    } l_counter(l_changes);
    d.AddConnectionEventHandler(d.GetType("upload_entry"), d.GetType("effective_upload_order"),
                                l_counter.MakeHandler(&l_counter, &Counter::OnConnected));
    m_emil.User().NewItem("is_privileged"); // each of these goes ahead of the first
    m_queue.OnQueueUploadRequested("emil", Remote("one"));
    m_queue.OnQueueUploadRequested("emil", Remote("two"));
    m_queue.OnQueueUploadRequested("emil", Remote("three"));
    EXPECT_EQ(l_changes, 0);
    Settle();
    EXPECT_EQ(l_changes, 4);
}

TEST_F(UploadQueue, PhasesBeforeTheTransferTimeOut) {
    const ItemPtr l_first = Ask(m_dora, "one");
    const ItemPtr l_second = Ask(m_emil, "two");
    m_queue.EveryHalfMinute();
    EXPECT_EQ(Status(l_first), "requesting");
    Age(l_first, "last_status_change_time", 31);
    m_queue.EveryHalfMinute();
    EXPECT_EQ(Status(l_first), "aborted");
    EXPECT_EQ(m_dora.Expect<UploadFailure>().file, Remote("one"));
    EXPECT_TRUE(Logged("Upload of one to dora timed out in requesting phase, aborting"));

    EXPECT_EQ(Status(l_second), "requesting");
    const auto l_offer = m_emil.Expect<TransferRequest>();
    EXPECT_EQ(l_offer.size, 9);
    m_emil.User().Connect(d.GetType("user_port")->GetItem(1)); // out of reach
    m_emil.Say(TransferResponse{l_offer.token, true, false, 0, {}});
    EXPECT_TRUE(Becomes(l_second, "connecting"));
    Age(l_second, "last_status_change_time", 31);
    m_queue.EveryHalfMinute();
    EXPECT_EQ(Status(l_second), "aborted");
    EXPECT_TRUE(g("upload_file").empty());

    const auto l_late = m_dora.Expect<TransferRequest>(); // an answer that comes too late does not take the slot
    m_dora.Say(TransferResponse{l_late.token, true, false, 0, {}});
    m_dora.Count<UploadFailure>();
    EXPECT_EQ(Status(l_first), "aborted");
    peerMessenger->RequestFileConnectionToUser("dora"); // nor does a connection
    auto l_connection = m_dora.AcceptFileConnection();
    EXPECT_TRUE(Until([&] { return l_connection.IsOver(); }));
}

TEST_F(UploadQueue, AnswersAreJudgedByTokenUserAndState) {
    const ItemPtr l_entry = Ask(m_dora, "one");
    const auto l_offer = m_dora.Expect<TransferRequest>();
    m_dora.Say(TransferResponse{l_offer.token + 1000, true, false, 0, {}});
    m_emil.Say(TransferResponse{l_offer.token, false, false, 0, "not mine"});
    m_dora.Count<UploadFailure>();
    m_emil.Count<UploadFailure>();
    EXPECT_TRUE(Logged("req not found"));
    EXPECT_EQ(Status(l_entry), "requesting");

    const ItemPtr l_next = Ask(m_emil, "two");
    m_dora.Say(TransferResponse{l_offer.token, false, false, 0, "Cancelled"});
    EXPECT_TRUE(Becomes(l_entry, "denied"));
    EXPECT_EQ(l_entry["denial_reason"].AsString(), "Cancelled");
    EXPECT_EQ(Status(l_next), "requesting");

    auto l_connection = Accept(m_emil);
    const std::uint32_t l_token = static_cast<std::uint32_t>(l_next["transfer_req"].AsInt64());
    m_emil.Say(TransferResponse{l_token, true, false, 0, {}}); // said twice
    m_emil.Count<UploadFailure>();
    EXPECT_EQ(Status(l_next), "uploading");
    l_connection.Say(Bytes(std::int64_t{9})); // nothing left to send
    EXPECT_TRUE(Becomes(l_next, "aborted"));
    EXPECT_EQ(m_emil.Expect<UploadFailure>().file, Remote("two"));
}

TEST_F(UploadQueue, FileThatCannotBeReadIsALocalError) {
    const ItemPtr l_entry = Ask(m_dora, "one");
    const ItemPtr l_next = Ask(m_emil, "two");
    ASSERT_TRUE(QFile::remove(Path("share/one")));
    ASSERT_EQ(mkfifo(ToUtf8(Path("share/one")).c_str(), 0600), 0);
    const auto l_offer = m_dora.Expect<TransferRequest>();
    m_dora.Say(TransferResponse{l_offer.token, true, false, 0, {}});
    EXPECT_EQ(m_dora.Expect<UploadDenial>().reason, "File read error.");
    EXPECT_EQ(Status(l_entry), "local error");
    EXPECT_EQ(Status(l_next), "requesting");
}

TEST_F(UploadQueue, UnsharingStopsARunningUpload) {
    Ask(m_dora, "one");
    Ask(m_dora, "two");
    auto l_connection = Accept(m_dora);
    m_queue.UnshareUser("dora");
    EXPECT_TRUE(g("upload_entry").empty());
    EXPECT_EQ(m_dora.Expect<UploadDenial>().reason, "File not shared.");
    EXPECT_EQ(m_dora.Expect<UploadDenial>().reason, "File not shared.");
    EXPECT_TRUE(Until([&] { return l_connection.IsOver(); }));
    EXPECT_EQ(Denial(m_dora, Remote("one")), "File not shared.");
    m_queue.ReshareUser("dora");
    Ask(m_dora, "one");
}

TEST_F(UploadQueue, LimitNeedsANumberAndItsSwitch) {
    m_queue.SetUploadSpeedLimit(100);
    EXPECT_EQ(m_queue.GetUploadSpeed(), 0);
    m_queue.EnableUploadSpeedLimit(true);
    EXPECT_EQ(m_queue.GetUploadSpeed(), 100);
    m_queue.SetUploadSpeedLimit(0);
    EXPECT_EQ(m_queue.GetUploadSpeed(), 0);
    SetSetting("upload_speed_limit", "many");
    m_queue.DetermineUploadSpeedLimit();
    EXPECT_EQ(m_queue.GetUploadSpeed(), 0);
    SetSetting("upload_speed_limit", "99999999999");
    m_queue.DetermineUploadSpeedLimit();
    EXPECT_EQ(m_queue.GetUploadSpeed(), std::numeric_limits<int>::max());
    m_queue.EnableUploadSpeedLimit(false);
    EXPECT_EQ(m_queue.GetUploadSpeed(), 0);
}

using UploadQueueDeathTest = UploadQueue;

TEST_F(UploadQueueDeathTest, EndingWaitsForNoPeer) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto RunAndEnd = [this] {
        Ask(m_dora, "one");
        auto l_upload = Accept(m_dora); // whose offset never comes
        m_queue.AddDownload("dora", "song", "music\\live", 10, 0);
        Download(m_dora, "song").Connect(d.GetType("remote_transfer_req")->GetItem(5));
        auto l_download = m_dora.OpenFileConnection(5); // whose bytes never come
        if (!Becomes(Upload(m_dora, "one"), "uploading") || l_download.HearNumber<std::int64_t>() != 0) {
            _exit(1);
        }
        QElapsedTimer l_clock;
        l_clock.start();
        delete transferQueueManager;
        const bool l_isClean = g("upload_thread").empty() && g("write_position").empty() && g("upload_file").empty();
        _exit(l_clock.elapsed() < 2000 && l_isClean ? 0 : 2);
    };
    EXPECT_EXIT(RunAndEnd(), testing::ExitedWithCode(0), "");
}

} // namespace
