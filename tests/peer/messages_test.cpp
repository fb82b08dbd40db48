// Messages on an open connection: each reaches its signal with all it says, and what is broken ends the connection.
#include "peer_network.h"

#include "app/settings.h"
#include "peer/search_reply.h"
#include "peer/share_list.h"

namespace {

FileInfo MakeFile(const std::string& i_name, long long i_size) {
    FileInfo l_file;
    l_file.name = i_name;
    l_file.size = i_size;
    return l_file;
}

class MessagesTest : public PeerNetworkTest {
protected:
    // Notes every signal as one line of text.
    void SetUp() override {
        PeerNetworkTest::SetUp();
        m_peer = ScriptedPeer::Introduced("anna");
        using std::to_string;
        using Text = const std::string&;
        const auto Note = [this](auto... i_words) { (m_notes.emplace_back(), ..., (m_notes.back() += i_words + " ")); };
        const auto* lp_from = peerMessenger;
        QObject::connect(lp_from, &PeerMessenger::SharedFilesInFolderRequested, &m_context,
                         [=](Text i_user, quint32 i_req, Text i_folder) {
                             Note("folder" + ("," + i_user), to_string(i_req), i_folder);
                         });
        QObject::connect(lp_from, &PeerMessenger::FileTransferRequested, &m_context,
                         [=](Text i_user, int i_direction, uint i_req, Text i_file, qint64 i_size) {
                             Note("request," + i_user, to_string(i_direction), to_string(i_req), i_file,
                                  to_string(i_size));
                         });
        QObject::connect(lp_from, &PeerMessenger::FileTransferResponse, &m_context,
                         [=](Text i_user, uint i_req, bool i_accepted, bool i_hasSize, qint64 i_size, Text i_reason) {
                             Note("response," + i_user, to_string(i_req), to_string(i_accepted), to_string(i_hasSize),
                                  to_string(i_size), i_reason);
                         });
        QObject::connect(lp_from, &PeerMessenger::QueueUploadRequested, &m_context,
                         [=](Text i_user, Text i_file) { Note("queue," + i_user, i_file); });
        QObject::connect(lp_from, &PeerMessenger::UploadFailed, &m_context,
                         [=](Text i_user, Text i_file) { Note("failed," + i_user, i_file); });
        QObject::connect(lp_from, &PeerMessenger::UploadDenied, &m_context,
                         [=](Text i_user, Text i_file, Text i_reason) { Note("denied," + i_user, i_file, i_reason); });
        QObject::connect(
            lp_from, &PeerMessenger::DownloadPlaceInLine, &m_context,
            [=](Text i_user, Text i_file, int i_place) { Note("place," + i_user, i_file, to_string(i_place)); });
    }

    // The connection is whole: the next message is handled.
    void ExpectAlive() {
        m_peer->Send(QueueUpload{"alive"});
        EXPECT_TRUE(WaitFor([&] { return !m_notes.empty() && m_notes.back() == "queue,anna alive "; }));
        m_notes.pop_back();
    }
    void ExpectClosed() {
        EXPECT_TRUE(WaitFor([&] { return m_peer->IsClosed(); }));
        EXPECT_TRUE(m_peer->Frames().empty());
        EXPECT_TRUE(WaitFor([] { return PeerSockets("anna").empty(); }));
    }

    std::vector<std::string> m_notes;
    std::unique_ptr<ScriptedPeer> m_peer;
};

TEST_F(MessagesTest, EachReachesItsSignal) {
    m_peer->Send(FolderRequest{0xFFFFFFFF, "music\\new"});
    m_peer->Send(TransferRequest{1, 5, "f", -1});
    m_peer->Send(TransferRequest{0, 5, "f", 9});
    m_peer->Send(TransferResponse{6, true, true, 77, {}});
    m_peer->Send(TransferResponse{6, true, false, 0, {}});
    m_peer->Send(TransferResponse{6, false, false, 0, "Cancelled"});
    m_peer->Send(QueueUpload{"f"});
    m_peer->Send(PlaceInLine{"f", 3});
    m_peer->Send(UploadFailure{"f"});
    m_peer->Send(UploadDenial{"f", "why"});
    // These mean nothing to this client.
    m_peer->Send(PlaceInLineRequest{"f"});
    m_peer->SendFrame(Int32(6) + "xyz");
    m_peer->SendFrame(Int32(37) + "not even packed");
    m_peer->SendFrame(Int32(9) + "not even packed");
    ExpectAlive();
    const std::vector<std::string> l_expected = {
        "folder,anna 4294967295 music\\new ",
        "request,anna 1 5 f -1 ",
        "request,anna 0 5 f 0 ",
        "response,anna 6 1 1 77  ",
        "response,anna 6 1 0 0  ",
        "response,anna 6 0 0 0 Cancelled ",
        "queue,anna f ",
        "place,anna f 3 ",
        "failed,anna f ",
        "denied,anna f why ",
    };
    EXPECT_EQ(m_notes, l_expected);
    EXPECT_TRUE(m_log.Has("1 Received 6 (unknown) message from user anna"));
    EXPECT_TRUE(m_log.Has("1 Received PM_UPLOAD_PLACE_IN_LINE_REQUEST message from user anna"));
}

TEST_F(MessagesTest, CutMessagesEndTheConnection) {
    const std::string l_whole[] = {
        BytesOf(Encode(FolderRequest{1, "f"})),
        BytesOf(Encode(TransferRequest{1, 5, "f", 1})),
        BytesOf(Encode(TransferResponse{6, false, false, 0, "no"})),
        BytesOf(Encode(QueueUpload{"f"})),
        BytesOf(Encode(PlaceInLine{"f", 3})),
        BytesOf(Encode(UploadFailure{"f"})),
        BytesOf(Encode(UploadDenial{"f", "why"})),
    };
    for (const std::string& l_message : l_whole) {
        for (const std::size_t l_length : {l_message.size() - 1, std::size_t{4}, std::size_t{3}}) {
            m_peer->SendFrame(l_message.substr(0, l_length));
            ExpectClosed();
            m_peer = ScriptedPeer::Introduced("anna");
        }
    }
    EXPECT_TRUE(m_notes.empty());
    EXPECT_TRUE(m_log.Has("1 Could not read message code on connection to user anna, disposing of socket"));
    EXPECT_TRUE(m_log.Has("2 Identified as peer socket"));
}

TEST_F(MessagesTest, TheCodeDecidesHowLongAFrameMayBe) {
    struct Case {
        std::uint32_t code;
        std::size_t longest;
    };
    for (const Case& l_case : {Case{43, limits::peerFrame}, Case{6, limits::peerFrame},
                               Case{9, limits::searchReplyFrame}, Case{5, limits::shareFrame}}) {
        m_peer->SendRaw(Int32(static_cast<std::uint32_t>(l_case.longest)) + Int32(l_case.code));
        LetThingsSettle();
        EXPECT_FALSE(m_peer->IsClosed()) << l_case.code;
        m_peer = ScriptedPeer::Introduced("anna");
        m_log.lines.clear();
        m_peer->SendRaw(Int32(static_cast<std::uint32_t>(l_case.longest) + 1) + Int32(l_case.code));
        ExpectClosed();
        EXPECT_TRUE(m_log.Has("1 A message of " + std::to_string(l_case.longest + 1) +
                              " bytes from user anna is too long, disposing of socket"));
        m_peer = ScriptedPeer::Introduced("anna");
    }
    m_peer->SendRaw(Int32(0xFFFFFFFF));
    ExpectClosed();
}

TEST_F(MessagesTest, AShareListArrivesWholeOrIsDropped) {
    int l_lists = 0;
    FileInfoMap l_folders;
    QObject::connect(peerMessenger, &PeerMessenger::UserShare, &m_context,
                     [&](const std::string& i_user, FileInfoMap& i_share, AttributeTranslationTable& i_names) {
                         EXPECT_EQ(i_user, "anna");
                         EXPECT_TRUE(i_names.empty());
                         l_folders = i_share;
                         ++l_lists;
                     });
    FileInfoMap l_sent;
    for (int l_index = 0; l_index < 300; ++l_index)
        l_sent["music\\" + std::to_string(l_index)] = {MakeFile("a.mp3", l_index), MakeFile("b.mp3", 1LL << 40)};
    l_sent["empty"] = {};
    const std::string l_body = BytesOf(EncodeShareList(l_sent));
    const std::string l_packed = Packed(l_body);
    m_peer->SendFrame(Int32(5) + l_packed);
    ASSERT_TRUE(WaitFor([&] { return l_lists == 1; }));
    EXPECT_EQ(l_folders, l_sent);
    m_peer->SendFrame(Int32(5) + Packed(l_body.substr(0, l_body.size() - 2)));
    ASSERT_TRUE(WaitFor([&] { return l_lists == 2; }));
    EXPECT_EQ(l_folders, l_sent);

    m_peer->SendFrame(Int32(5) + Packed(l_body.substr(0, l_body.size() - 5))); // a folder is cut
    m_peer->SendFrame(Int32(5) + l_packed.substr(0, l_packed.size() - 1));     // so is the stream
    m_peer->SendFrame(Int32(5) + "nonsense");
    m_peer->SendFrame(Int32(5));
    // More than may be inflated, behind a list that is sound by itself.
    m_peer->SendFrame(Int32(5) + PackedBomb(l_body, limits::inflatedShare));
    m_peer->SendFrame(Int32(5) + l_packed);
    ASSERT_TRUE(WaitFor([&] { return l_lists > 2; }));
    EXPECT_EQ(l_lists, 3) << "lists are unpacked in the order in which they came";
}

class FixedShare : public SharedFilesSource {
public:
    void GetSharedFilesMessage(const std::string& i_user, Answer i_answer) override {
        asker = i_user;
        ++asked;
        if (isSlow)
            late = i_answer;
        else
            i_answer(message);
    }
    int asked = 0;
    bool isSlow = false;
    Answer late;
    std::string asker;
    std::optional<MemStream> message;
};

TEST_F(MessagesTest, AskedForTheShareTheSourceAnswersOnThatSocket) {
    m_peer->Send(ShareListRequest()); // nobody to ask yet
    ExpectAlive();
    FixedShare l_share;
    peerMessenger->SetSharedFilesSource(&l_share);
    m_peer->Send(ShareListRequest()); // nothing to say
    ExpectAlive();
    EXPECT_EQ(l_share.asker, "anna");
    EXPECT_TRUE(m_peer->Frames().empty());
    l_share.message = PackMessage(PM_SHARED_FILE_LIST, EncodeShareList({{"music", {MakeFile("a", 1)}}}));
    const auto l_later = ScriptedPeer::Introduced("anna");
    m_peer->Send(ShareListRequest());
    ASSERT_TRUE(WaitFor([&] { return m_peer->Frames().size() == 1; }));
    EXPECT_EQ(m_peer->Frames()[0], BytesOf(*l_share.message));
    EXPECT_TRUE(l_later->Frames().empty());
}

TEST_F(MessagesTest, AShareListThatTakesLongGoesToItsSocketOrNowhere) {
    FixedShare l_share;
    l_share.message = PackMessage(PM_SHARED_FILE_LIST, EncodeShareList({}));
    l_share.isSlow = true;
    peerMessenger->SetSharedFilesSource(&l_share);
    m_peer->Send(ShareListRequest());
    m_peer->Send(ShareListRequest()); // nothing more is asked while the first is being made
    ExpectAlive();
    EXPECT_EQ(l_share.asked, 1);
    l_share.late(l_share.message);
    ASSERT_TRUE(WaitFor([&] { return m_peer->Frames().size() == 1; }));
    m_peer->Send(ShareListRequest());
    ASSERT_TRUE(WaitFor([&] { return l_share.asked == 2; }));

    const ItemSet l_sockets = PeerSockets("anna");
    peerMessenger->DisposeOfSocket(ItemPtr(l_sockets).AsPointer<QTcpSocket>());
    m_peer = ScriptedPeer::Introduced("anna");
    l_share.late(l_share.message);
    ExpectAlive();
    EXPECT_TRUE(m_peer->Frames().empty()) << "the new connection did not ask";
}

class ReplyBox : public SearchReplyReceiver {
public:
    ItemPtr TakeSearchReply(ItemPtr i_request, const SearchReply& i_reply) override {
        replies.push_back(i_request.AsString() + ":" + i_reply.user + ":" + i_reply.files.at(0).name);
        return isNews ? ItemPtr(d.GetType("search_results")->NewItem()) : ItemPtr();
    }
    std::vector<std::string> replies;
    bool isNews = true;
};

TEST_F(MessagesTest, SearchRepliesGoToTheirSearch) {
    ReplyBox l_box;
    peerMessenger->SetSearchReplyReceiver(&l_box);
    int l_results = 0;
    QObject::connect(peerMessenger, &PeerMessenger::SearchResults, &m_context, [&](ItemPtr) { ++l_results; });
    d.GetType("search_request")->NewItem(71);
    const SearchReply l_reply{"anna", 71, {MakeFile("m\\a", 1)}, true, 1, 2, {}};
    const auto PackReply = [](const SearchReply& i_reply) {
        return Int32(9) + Packed(BytesOf(EncodeSearchReply(i_reply)));
    };
    m_peer->SendFrame(PackReply(l_reply));
    ASSERT_TRUE(WaitFor([&] { return l_results == 1; }));
    EXPECT_EQ(l_box.replies, std::vector<std::string>{"71:anna:m\\a"});
    l_box.isNews = false;
    m_peer->SendFrame(PackReply(l_reply));
    SearchReply l_closed = l_reply;
    l_closed.token = 72;
    m_peer->SendFrame(PackReply(l_closed));
    ExpectAlive();
    EXPECT_EQ(l_results, 1);
    EXPECT_EQ(l_box.replies.size(), 2U);

    SearchReply l_other = l_reply;
    l_other.user = "bert";
    const std::string l_plain = BytesOf(EncodeSearchReply(l_reply));
    const std::string l_packed = PackReply(l_reply);
    for (const std::string& l_bad :
         {PackReply(l_other), Int32(9), Int32(9) + Packed(l_plain.substr(0, 25)), Int32(9) + "nonsense",
          l_packed.substr(0, l_packed.size() - 1), Int32(9) + PackedBomb(l_plain, limits::inflatedSearchReply)}) {
        m_peer->SendFrame(l_bad);
        ExpectClosed();
        m_peer = ScriptedPeer::Introduced("anna");
    }
    EXPECT_EQ(l_box.replies.size(), 2U);
    g("search_results").Remove();
}

TEST_F(MessagesTest, AListenerMayEvenDisposeOfTheConnection) {
    QObject::connect(peerMessenger, &PeerMessenger::UploadFailed, &m_context, [](const std::string& i_user) {
        peerMessenger->DisposeOfSocket(ItemPtr(*PeerSockets(i_user).begin()).AsPointer<QTcpSocket>());
        LetThingsSettle(); // even the socket is gone when the handler returns
    });
    const std::string l_body = BytesOf(Encode(UploadFailure{"f"}));
    const std::string l_frame = Int32(static_cast<std::uint32_t>(l_body.size())) + l_body;
    m_peer->SendRaw(l_frame + l_frame);
    ExpectClosed();
    EXPECT_EQ(m_notes, std::vector<std::string>{"failed,anna f "});
}

TEST_F(MessagesTest, SendersSayWhatTheyMean) {
    SetSetting("transfer_req_counter", 41);
    peerMessenger->GetUserSharedFiles("anna");
    EXPECT_EQ(peerMessenger->RequestUpload("anna", "f", 1LL << 40), 41U);
    EXPECT_EQ(SettingText("transfer_req_counter"), "42");
    peerMessenger->AcceptTransferRequest("anna", 7, false, 5);
    peerMessenger->AcceptTransferRequest("anna", 7, true, 5);
    peerMessenger->DenyTransferRequest("anna", 7, "Complete");
    peerMessenger->DenyUpload("anna", "f", "File not shared.");
    const std::vector<std::string> l_expected = {
        Int32(4),
        BytesOf(Encode(TransferRequest{1, 41, "f", 1LL << 40})),
        BytesOf(Encode(TransferResponse{7, true, false, 0, {}})),
        BytesOf(Encode(TransferResponse{7, true, true, 5, {}})),
        BytesOf(Encode(TransferResponse{7, false, false, 0, "Complete"})),
        BytesOf(Encode(UploadDenial{"f", "File not shared."})),
    };
    ASSERT_TRUE(WaitFor([&] { return m_peer->Frames().size() == l_expected.size(); }));
    EXPECT_EQ(m_peer->Frames(), l_expected);
}

} // namespace
