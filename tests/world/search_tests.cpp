// Searches, share lists and folders between real clients, and what a scripted one reads in the answers.
#include "world/client_process.h"
#include "world/conditions.h"
#include "world/sample_file.h"
#include "world/scripted_peer.h"

#include "peer/inflate.h"
#include "peer/search_reply.h"
#include "peer/share_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

template <PeerMessageCode Code>
struct Packed {
    static constexpr PeerMessageCode code = Code;
    std::string bytes;
    [[nodiscard]] bool Read(InputStream& io_body) {
        for (char l_byte = 0; io_body.ReadBuffer(&l_byte, 1);)
            bytes.push_back(l_byte);
        return true;
    }
};

// One who asks for everything there is, on a connection of its own to the client that shares.
class Asker {
public:
    Asker(const std::string& i_user, const ServerProcess& i_server, DrivenClient& io_source)
        : m_source(io_source), m_peer(i_user, i_server.Port()), m_link(m_peer.ConnectTo(io_source.Home().Port(), "P")) {
        EXPECT_TRUE(WaitUntil(
            [&] { return HasNeighbour(io_source.ItemOf("user", QString::fromStdString(i_user)), "peer_socket"); }));
    }

    // The records of the answer; none if there is no answer.
    std::vector<FileInfo> Search(const std::string& i_text) {
        m_peer.Server().Send(to_server::FileSearch{++m_token, i_text});
        m_source.AwaitEvent(
            {QStringLiteral("heard"), QString::fromStdString(m_peer.User()), QString::fromStdString(i_text)});
        ShareList(); // comes behind the answer
        if (m_link.Count<Packed<PM_FILE_SEARCH_RESULT>>() == 0)
            return {};
        const auto l_packed = m_link.Await<Packed<PM_FILE_SEARCH_RESULT>>();
        InflateStream l_body(l_packed->bytes, limits::inflatedSearchReply);
        SearchReply l_reply;
        EXPECT_TRUE(DecodeSearchReplyHead(l_body, l_reply) && DecodeSearchReplyRest(l_body, l_reply));
        EXPECT_EQ(l_reply.user, m_source.Home().User().toStdString());
        EXPECT_EQ(l_reply.token, m_token);
        return l_reply.files;
    }
    FileInfoMap ShareList() {
        m_link.Send(ShareListRequest());
        const auto l_packed = m_link.Await<Packed<PM_SHARED_FILE_LIST>>();
        EXPECT_TRUE(l_packed);
        const auto l_list = UnpackShareList(l_packed ? l_packed->bytes : std::string());
        EXPECT_TRUE(l_list);
        return l_list ? l_list->folders : FileInfoMap();
    }
    // The number of files; nothing without an answer.
    std::optional<std::size_t> Folder(const std::string& i_folder) {
        m_link.Send(FolderRequest{7, i_folder});
        ShareList();
        if (m_link.Count<Packed<PM_SHARED_FILES_IN_FOLDER>>() == 0)
            return std::nullopt;
        const auto l_packed = m_link.Await<Packed<PM_SHARED_FILES_IN_FOLDER>>();
        InflateStream l_body(l_packed->bytes, limits::inflatedShare);
        const auto l_reply = DecodeFolderReply(l_body);
        EXPECT_TRUE(l_reply && l_reply->request == 7 && l_reply->folder == i_folder);
        return l_reply ? l_reply->files.files.size() : 0;
    }

private:
    DrivenClient& m_source;
    ScriptedPeer m_peer;
    PeerLink m_link;
    std::uint32_t m_token = 0;
};

std::string RemoteName(const ClientHome& i_home, const char* ip_name) {
    return i_home.Path(QString::fromUtf8(ip_name)).replace(QLatin1Char('/'), QLatin1Char('\\')).toStdString();
}

QStringList Heard(DrivenClient& io_client) {
    QStringList l_texts;
    for (const QJsonValue& l_event : io_client.Do({QStringLiteral("events")}).toArray()) {
        if (l_event[0] == QStringLiteral("heard"))
            l_texts.append(l_event[2].toString());
    }
    return l_texts;
}

} // namespace

TEST(WorldSearch, RightsHoldInSearchListAndFolder) {
    const ServerProcess l_server;
    const ClientHome l_home(QStringLiteral("source"), l_server.Port());
    const std::pair<const char*, QStringList> l_folders[] = {
        {"open", {QStringLiteral("public")}},
        {"listed", {QStringLiteral("userlist")}},
        {"club", {QStringLiteral("group"), QStringLiteral("friends")}},
        {"closed", {QStringLiteral("nobody")}}};
    for (const auto& [lp_folder, l_rights] : l_folders) {
        WriteSampleFile(l_home.Path(QString::fromUtf8(lp_folder) + QStringLiteral("/the tide.txt")), 10, 1);
        l_home.Edit(QStringLiteral("share"), QStringList{l_home.Path(QString::fromUtf8(lp_folder))} + l_rights);
    }
    l_home.Edit(QStringLiteral("friend"), {QStringLiteral("listed")});
    l_home.Edit(QStringLiteral("friend"), {QStringLiteral("grouped"), QStringLiteral("friends")});
    l_home.Edit(QStringLiteral("friend"), {QStringLiteral("unshared"), QStringLiteral("friends")});
    DrivenClient l_source(l_home);
    l_source.AwaitConnected();
    l_source.Do({QStringLiteral("unshare"), QStringLiteral("unshared")});

    const std::pair<const char*, std::vector<std::string>> l_views[] = {{"stranger", {"open"}},
                                                                        {"listed", {"listed", "open"}},
                                                                        {"grouped", {"club", "listed", "open"}},
                                                                        {"unshared", {}}};
    for (const auto& [lp_user, l_visible] : l_views) {
        SCOPED_TRACE(lp_user);
        Asker l_asker(lp_user, l_server, l_source);
        std::vector<std::string> l_paths;
        std::vector<std::string> l_found;
        for (const std::string& l_folder : l_visible) {
            l_paths.push_back(RemoteName(l_home, l_folder.c_str()));
            l_found.push_back(l_paths.back() + "\\the tide.txt");
        }
        std::vector<std::string> l_names;
        for (const FileInfo& l_file : l_asker.Search("tide -ebb"))
            l_names.push_back(l_file.name);
        EXPECT_EQ(l_names, l_found);
        std::vector<std::string> l_listed;
        for (const auto& [l_path, l_files] : l_asker.ShareList())
            l_listed.push_back(l_path);
        EXPECT_EQ(l_listed, l_paths);
        for (const auto& [lp_folder, l_rights] : l_folders) {
            const bool l_isVisible = std::ranges::count(l_visible, lp_folder) > 0;
            EXPECT_EQ(l_asker.Folder(RemoteName(l_home, lp_folder)), l_isVisible ? std::optional(1U) : std::nullopt)
                << lp_folder;
        }
    }
}

TEST(WorldSearch, TwoHundredMatchesAreAnsweredAndOneMoreIsNot) {
    const ServerProcess l_server;
    const ClientHome l_home(QStringLiteral("source"), l_server.Port());
    for (int l_index = 0; l_index < 201; ++l_index) {
        const QString l_name = QStringLiteral("many/odd %1.txt").arg(l_index);
        WriteSampleFile(l_home.Path(l_index < 200 ? l_name + QStringLiteral(".even") : l_name), 1, 1);
    }
    l_home.Edit(QStringLiteral("share"), {l_home.Path(QStringLiteral("many")), QStringLiteral("public")});
    DrivenClient l_source(l_home);
    l_source.AwaitConnected();
    Asker l_asker("anna", l_server, l_source);
    EXPECT_EQ(l_asker.Search("odd even").size(), 200U);
    EXPECT_EQ(l_asker.Search("odd").size(), 0U);
}

TEST(WorldSearch, AudioAttributesComeAlsoAfterARestartWithoutANewScan) {
    const ServerProcess l_server;
    const ClientHome l_home(QStringLiteral("source"), l_server.Port());
    const QString l_song = l_home.Path(QStringLiteral("music/low tide.mp3"));
    ASSERT_TRUE(QDir().mkpath(l_home.Path(QStringLiteral("music"))));
    ASSERT_TRUE(QFile::copy(QStringLiteral(TIDEWELL_AUDIO_FIXTURES "/vbr_stereo_48000.mp3"), l_song));
    l_home.Edit(QStringLiteral("share"), {l_home.Path(QStringLiteral("music")), QStringLiteral("public")});
    DrivenClient l_source(l_home);
    const auto l_expectAttributes = [&] {
        l_source.AwaitConnected();
        EXPECT_TRUE(WaitUntil([&] { return !l_source.Items("is_scanned").isEmpty(); }));
        const auto l_files = Asker("anna", l_server, l_source).Search("tide");
        ASSERT_EQ(l_files.size(), 1U);
        EXPECT_EQ(l_files[0].attributes.extension, "mp3");
        EXPECT_THAT(l_files[0].attributes.attributes, ElementsAre(Pair(0, 137), Pair(2, 1)));
    };
    l_expectAttributes();
    EXPECT_EQ(l_source.Stop(SIGTERM), 0);
    // A new scan would find nothing in it.
    SpoilBeginning(l_song, SizeOf(l_song));
    l_source.Start();
    l_expectAttributes();
}

TEST(WorldSearch, WishesRepeatInTurnAndListsArriveWhole) {
    const ServerProcess l_server({QStringLiteral("--wish-interval"), QStringLiteral("1")});
    const ClientHome l_sourceHome(QStringLiteral("source"), l_server.Port());
    const ClientHome l_askerHome(QStringLiteral("asker"), l_server.Port());
    WriteSampleFile(l_sourceHome.Path(QStringLiteral("shared/deep/low tide.txt")), 1234, 1);
    l_sourceHome.Edit(QStringLiteral("share"), {l_sourceHome.Path(QStringLiteral("shared")), QStringLiteral("public")});
    DrivenClient l_source(l_sourceHome);
    DrivenClient l_asker(l_askerHome);
    l_source.AwaitConnected();
    l_asker.AwaitConnected();
    // A tick may fall between two of these: then the first searches do not go in turn yet.
    for (const char* lp_wish : {"tide", "b", "a"})
        l_asker.Do({QStringLiteral("wish"), QString::fromUtf8(lp_wish)});
    QStringList l_heard;
    EXPECT_TRUE(WaitUntil([&] {
        l_heard = Heard(l_source);
        return l_heard.join(QLatin1Char(' ')).contains(QStringLiteral("a b tide a"));
    })) << l_heard.join(QLatin1Char(' ')).toStdString();
    QJsonArray l_answers;
    EXPECT_TRUE(WaitUntil([&] {
        l_answers = l_asker.Do({QStringLiteral("answers"), QStringLiteral("tide")}).toArray();
        return !l_answers.isEmpty();
    }));
    ASSERT_EQ(l_answers.size(), 1) << "repeated answers show a file once";
    EXPECT_EQ(l_answers[0][QStringLiteral("user")], QStringLiteral("source"));
    EXPECT_EQ(l_answers[0][QStringLiteral("name")], QStringLiteral("low tide.txt"));
    EXPECT_EQ(l_answers[0][QStringLiteral("size")], QStringLiteral("1234"));
    for (const QJsonValue& l_request : l_asker.Items("search_request"))
        EXPECT_TRUE(HasNeighbour(l_request.toObject(), "wishlist_search"));

    l_asker.Do({QStringLiteral("askList"), QStringLiteral("source")});
    EXPECT_TRUE(WaitUntil([&] {
        const QJsonArray l_lists = l_asker.Items("user_share");
        return l_lists.size() == 1 && HasNeighbour(l_lists[0].toObject(), "user_share_loaded");
    }));
    EXPECT_EQ(Neighbour(l_asker.Items("user_share_file").at(0).toObject(), "user_share_file_name"),
              QStringLiteral("low tide.txt"));
}
