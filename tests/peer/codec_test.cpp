// The pure decoders of the peer protocol: what they take, what they refuse, and how far they come with short input.
#include <gtest/gtest.h>

#include "bytes.h"
#include "peer/init_frame.h"
#include "peer/peer_messages.h"
#include "peer/search_reply.h"
#include "peer/share_list.h"

namespace {

constexpr std::uint32_t longest = limits::textLengthOrCount;

// Every message that is cut anywhere fails to decode; with all its bytes, and with more, it comes back as it was.
template <class Message>
void ExpectSoundCodec(const Message& i_message, std::size_t i_shortestSound = 0) {
    const std::string l_bytes = BytesOf(Encode(i_message));
    EXPECT_EQ(l_bytes.substr(0, 4), Int32(Message::code));
    for (std::size_t l_length = 4; l_length < l_bytes.size(); ++l_length) {
        MemStream l_cut = StreamOf(std::string_view(l_bytes).substr(4, l_length - 4));
        Message l_read;
        EXPECT_EQ(Decode(l_cut, l_read), i_shortestSound > 0 && l_length >= i_shortestSound) << "cut at " << l_length;
    }
    MemStream l_whole = StreamOf(l_bytes.substr(4) + "more");
    Message l_read;
    ASSERT_TRUE(Decode(l_whole, l_read));
    EXPECT_EQ(BytesOf(Encode(l_read)), l_bytes);
    EXPECT_EQ(l_whole.GetPending(), "more");
}

FileInfo MakeFile(const std::string& i_name, long long i_size) {
    FileInfo l_file;
    l_file.name = i_name;
    l_file.size = i_size;
    l_file.attributes.extension = "mp3";
    l_file.attributes.attributes = {{FileAttributeBitRate, 192}, {FileAttributeVariableBitRate, 1}, {77, -1}};
    return l_file;
}

TEST(PeerMessages, SurviveTheWireAndNotTheKnife) {
    ExpectSoundCodec(ShareListRequest());
    ExpectSoundCodec(FolderRequest{0xFFFFFFFF, "music\\new"});
    ExpectSoundCodec(TransferRequest{TransferRequest::offersUpload, 7, "a\\b.mp3", -1});
    ExpectSoundCodec(TransferRequest{0, 7, "a\\b.mp3", 0});
    ExpectSoundCodec(TransferResponse{9, false, false, 0, "Cancelled"});
    // An acceptance may end behind its flag.
    ExpectSoundCodec(TransferResponse{9, true, true, 0x7FFFFFFFFFFFFFFF, {}}, 9);
    ExpectSoundCodec(QueueUpload{"a\\b.mp3"});
    ExpectSoundCodec(PlaceInLine{"a\\b.mp3", -5});
    ExpectSoundCodec(UploadFailure{""});
    ExpectSoundCodec(UploadDenial{"a\\b.mp3", "File not shared."});
    ExpectSoundCodec(PlaceInLineRequest{"a\\b.mp3"});
}

TEST(PeerMessages, FieldsStandInWireOrder) {
    EXPECT_EQ(BytesOf(Encode(TransferRequest{1, 2, "f", 3})),
              Int32(40) + Int32(1) + Int32(2) + Text("f") + Int32(3) + Int32(0));
    EXPECT_EQ(BytesOf(Encode(TransferRequest{0, 2, "f", 3})), Int32(40) + Int32(0) + Int32(2) + Text("f"));
    EXPECT_EQ(BytesOf(Encode(TransferResponse{2, true, false, 3, "no"})), Int32(41) + Int32(2) + '\1');
    EXPECT_EQ(BytesOf(Encode(TransferResponse{2, false, true, 3, "no"})), Int32(41) + Int32(2) + '\0' + Text("no"));
    EXPECT_EQ(BytesOf(Encode(UploadDenial{"f", "r"})), Int32(50) + Text("f") + Text("r"));
}

TEST(PeerMessages, OverlongTextFails) {
    for (const std::uint32_t l_length : lyingNumbers) {
        MemStream l_stream = StreamOf(Int32(l_length) + std::string(0x20002, 'x'));
        QueueUpload l_message;
        EXPECT_FALSE(Decode(l_stream, l_message)) << l_length;
    }
    MemStream l_stream = StreamOf(Text(std::string(longest, 'x')));
    QueueUpload l_message;
    ASSERT_TRUE(Decode(l_stream, l_message));
    EXPECT_EQ(l_message.file.size(), longest);
}

TEST(PeerMessages, CodesHaveNamesAndLimits) {
    EXPECT_EQ(MessageCodeToString(5), "PM_SHARED_FILE_LIST");
    EXPECT_EQ(MessageCodeToString(51), "PM_UPLOAD_PLACE_IN_LINE_REQUEST");
    EXPECT_EQ(MessageCodeToString(6), "6 (unknown)");
    EXPECT_EQ(MessageCodeToString(-1), "-1 (unknown)");
    EXPECT_EQ(LongestPeerFrame(5), 64U << 20);
    EXPECT_EQ(LongestPeerFrame(37), 64U << 20);
    EXPECT_EQ(LongestPeerFrame(9), 4U << 20);
    EXPECT_EQ(LongestPeerFrame(43), 512U << 10);
    EXPECT_EQ(LongestPeerFrame(-1), 512U << 10);
    EXPECT_FALSE(PeekMessageCode(StreamOf("\5\0")));
    EXPECT_EQ(PeekMessageCode(StreamOf(Int32(43) + "x")), 43);
}

TEST(InitFrames, SayWhoAndWhat) {
    MemStream l_direct = EncodeInitFrame(DirectInit{"anna", "P"});
    EXPECT_EQ(BytesOf(l_direct), '\1' + Text("anna") + Text("P") + Int32(0));
    const InitFrame l_read = DecodeInitFrame(l_direct);
    ASSERT_TRUE(std::holds_alternative<DirectInit>(l_read));
    EXPECT_EQ(std::get<DirectInit>(l_read).user, "anna");
    EXPECT_EQ(std::get<DirectInit>(l_read).type, "P");

    MemStream l_answer = EncodeInitFrame(IndirectAnswer{0x80000001});
    EXPECT_EQ(BytesOf(l_answer), '\0' + Int32(0x80000001));
    EXPECT_EQ(std::get<IndirectAnswer>(DecodeInitFrame(l_answer)).token, 0x80000001);

    // Any first byte but zero is a direct init.
    MemStream l_other = StreamOf("\xFF" + Text("") + Text("X") + Int32(9));
    EXPECT_EQ(std::get<DirectInit>(DecodeInitFrame(l_other)).type, "X");
}

TEST(InitFrames, CutAnywhereTheyFailByWhatIsMissing) {
    const auto FaultOf = [](std::string_view i_bytes) {
        MemStream l_stream = StreamOf(i_bytes);
        return std::get<InitFault>(DecodeInitFrame(l_stream));
    };
    EXPECT_EQ(FaultOf(""), InitFault::NoDirection);
    const std::string l_answer = BytesOf(EncodeInitFrame(IndirectAnswer{5}));
    for (std::size_t l_length = 1; l_length < l_answer.size(); ++l_length)
        EXPECT_EQ(FaultOf(l_answer.substr(0, l_length)), InitFault::NoToken);
    const std::string l_direct = BytesOf(EncodeInitFrame(DirectInit{"anna", "F"}));
    for (std::size_t l_length = 1; l_length < l_direct.size(); ++l_length)
        EXPECT_EQ(FaultOf(l_direct.substr(0, l_length)), InitFault::NoIdentity);
    for (const std::uint32_t l_length : lyingNumbers)
        EXPECT_EQ(FaultOf('\1' + Int32(l_length) + std::string(0x20002, 'x')), InitFault::NoIdentity);
    // The largest that can be valid is as long as the frame may be.
    const std::string l_text(longest, 'x');
    EXPECT_EQ(BytesOf(EncodeInitFrame(DirectInit{l_text, l_text})).size(), limits::initFrame);
}

TEST(FileRecords, OrderIsByNameThenSize) {
    EXPECT_LT(MakeFile("a", 2), MakeFile("ab", 1));
    EXPECT_LT(MakeFile("ab", 1), MakeFile("b", 0));
    EXPECT_LT(MakeFile("a", 1), MakeFile("a", 2));
    EXPECT_LT(MakeFile("z", 1), MakeFile("\xC3\xA4", 1)); // bytewise, not by sign
    EXPECT_EQ((std::set<FileInfo>{MakeFile("a", 1), MakeFile("a", 1), MakeFile("a", 2)}.size()), 2U);
}

TEST(FileRecords, AnAbsentRecordIsAnEmptyOne) {
    FileInfo l_file = MakeFile("old", 1);
    MemStream l_stream = StreamOf(std::string("\0rest", 5));
    ASSERT_TRUE(l_file.Read(l_stream));
    EXPECT_EQ(l_file, FileInfo());
    EXPECT_EQ(l_stream.GetPending(), "rest");
}

TEST(FileRecords, ANameEndsAtItsFirstZeroByte) {
    MemStream l_stream = StreamOf('\1' + Text(std::string("a\0b", 3)) + Int32(1) + Int32(0) + Text("") + Int32(0));
    FileInfo l_file;
    ASSERT_TRUE(l_file.Read(l_stream));
    EXPECT_EQ(l_file.name, "a");
    EXPECT_EQ(l_file.size, 1);
}

TEST(ShareLists, ComeBackWholeOrNotAtAll) {
    FileInfoMap l_folders;
    l_folders["music"] = {MakeFile("a.mp3", 1), MakeFile("a.mp3", 2), MakeFile("b.mp3", -1)};
    l_folders["music\\empty"] = {};
    const std::string l_bytes = BytesOf(EncodeShareList(l_folders));
    for (std::size_t l_length = 0; l_length < l_bytes.size() - 4; ++l_length) {
        MemStream l_cut = StreamOf(l_bytes.substr(0, l_length));
        EXPECT_FALSE(DecodeShareList(l_cut)) << "cut at " << l_length;
    }
    // Only the names behind the folders may be missing.
    for (const std::size_t l_missing : {4, 1, 0}) {
        MemStream l_stream = StreamOf(l_bytes.substr(0, l_bytes.size() - l_missing));
        const auto l_list = DecodeShareList(l_stream);
        ASSERT_TRUE(l_list);
        EXPECT_EQ(l_list->folders, l_folders);
        EXPECT_TRUE(l_list->attributeNames.empty());
    }
    MemStream l_named = StreamOf(l_bytes.substr(0, l_bytes.size() - 4) + Int32(2) + Int32(0) + Text("rate") + Int32(1) +
                                 Text("length"));
    EXPECT_EQ(DecodeShareList(l_named)->attributeNames.at(1), "length");
    MemStream l_halfNamed =
        StreamOf(l_bytes.substr(0, l_bytes.size() - 4) + Int32(2) + Int32(0) + Text("rate") + Int32(1));
    EXPECT_TRUE(DecodeShareList(l_halfNamed)->attributeNames.empty());
}

TEST(ShareLists, LyingCountsFail) {
    const std::string l_filler(1 << 16, '\0');
    for (const std::uint32_t l_number : lyingNumbers) {
        for (const std::string& l_bytes :
             {Int32(l_number), Int32(1) + Text("f") + Int32(l_number), Int32(1) + Int32(l_number),
              Int32(1) + Text("f") + Int32(1) + '\1' + Text("n") + Int32(0) + Int32(0) + Text("") + Int32(l_number)}) {
            MemStream l_stream = StreamOf(l_bytes + l_filler);
            EXPECT_FALSE(DecodeShareList(l_stream)) << l_number;
        }
    }
    // Exactly as many as are allowed, all of one name.
    MemStream l_full = StreamOf(Int32(1) + Text("f") + Int32(longest) + std::string(longest, '\0') + Int32(0));
    const auto l_list = DecodeShareList(l_full);
    ASSERT_TRUE(l_list);
    EXPECT_EQ(l_list->folders.at("f").size(), 1U);
}

TEST(ShareLists, AFolderReplyCutAnywhereFails) {
    FolderReply l_reply{0xFFFFFFFF, "music\\new", {}};
    l_reply.files.files = {MakeFile("a.mp3", 1)};
    const std::string l_bytes = BytesOf(EncodeFolderReply(l_reply));
    for (std::size_t l_length = 0; l_length < l_bytes.size(); ++l_length) {
        MemStream l_cut = StreamOf(l_bytes.substr(0, l_length));
        EXPECT_FALSE(DecodeFolderReply(l_cut)) << "cut at " << l_length;
    }
    MemStream l_whole = StreamOf(l_bytes);
    const auto l_read = DecodeFolderReply(l_whole);
    ASSERT_TRUE(l_read);
    EXPECT_EQ(l_read->request, 0xFFFFFFFF);
    EXPECT_EQ(l_read->folder, "music\\new");
    EXPECT_EQ(l_read->files.files, l_reply.files.files);
}

TEST(SearchReplies, NeedTheirFilesAndNothingBehind) {
    const SearchReply l_reply{"anna", 5, {MakeFile("m\\a.mp3", 1), MakeFile("m\\b.mp3", 2)}, true, 7, 8, {{1, "n"}}};
    const std::string l_bytes = BytesOf(EncodeSearchReply(l_reply));
    MemStream l_files;
    l_files.Write(l_reply.files);
    const std::size_t l_headEnd = Text("anna").size() + 4;
    const std::size_t l_filesEnd = l_headEnd + BytesOf(l_files).size();
    for (std::size_t l_length = 0; l_length <= l_bytes.size(); ++l_length) {
        MemStream l_cut = StreamOf(l_bytes.substr(0, l_length));
        SearchReply l_read;
        ASSERT_EQ(DecodeSearchReplyHead(l_cut, l_read), l_length >= l_headEnd) << "cut at " << l_length;
        if (l_length < l_headEnd)
            continue;
        ASSERT_EQ(DecodeSearchReplyRest(l_cut, l_read), l_length >= l_filesEnd) << "cut at " << l_length;
        if (l_length < l_filesEnd)
            continue;
        EXPECT_EQ(l_read.files, l_reply.files);
        EXPECT_EQ(l_read.isFree, l_length >= l_filesEnd + 1);
        EXPECT_EQ(l_read.speed, l_length >= l_filesEnd + 5 ? 7U : 0U);
        EXPECT_EQ(l_read.uploadsInQueue, l_length >= l_filesEnd + 9 ? 8U : 0U);
        EXPECT_EQ(l_read.attributeNames.size(), l_length == l_bytes.size() ? 1U : 0U);
    }
}

} // namespace
