// The road of a person in the window, from the search line to the last byte, between three real clients.
#include "world/client_process.h"
#include "world/conditions.h"
#include "world/sample_file.h"

#include "app/text.h"
#include "server/server_process.h"

#include <QDir>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <map>

namespace {

constexpr qint64 g_mebibyte = 1024 * 1024;
constexpr char g_searchRows[] = "searchResultsTreeWidget";
const QString g_away = QStringLiteral(" [offline]");
constexpr char g_active[] = "#0000ff";
constexpr char g_queued[] = "#3366ff";
constexpr char g_failed[] = "#ff0a47";
constexpr char g_complete[] = "#006400";

// A file that is shared, and where it lies with whoever takes it.
struct Sample {
    QString folder;
    QString name;
    qint64 size;
};
const Sample g_january{QStringLiteral("tide tables"), QStringLiteral("january.csv"), 48 * g_mebibyte};
const Sample g_february{QStringLiteral("tide tables"), QStringLiteral("february.csv"), 100'000};
const Sample g_march{QStringLiteral("tide tables"), QStringLiteral("march.csv"), 1};
const Sample g_picture{QStringLiteral("pictures"), QStringLiteral("high tide.svg"), 70'000};

class WorldRoad : public testing::Test {
protected:
    WorldRoad() {
        for (const Sample* lp_sample : {&g_january, &g_february, &g_march})
            Share(m_annaHome, *lp_sample);
        Share(m_bertHome, g_picture);
        LimitAnna(512);
    }
    static QString SharedPath(const ClientHome& i_home, const Sample& i_sample) {
        return i_home.Path(QStringLiteral("shared/%1/%2").arg(i_sample.folder, i_sample.name));
    }
    void Share(const ClientHome& i_home, const Sample& i_sample) {
        const QString l_path = SharedPath(i_home, i_sample);
        WriteSampleFile(l_path, i_sample.size, 1 + m_digests.size());
        m_digests[i_sample.name] = Sha256(l_path);
        i_home.Edit(QStringLiteral("share"), {i_home.Path(QStringLiteral("shared")), QStringLiteral("public")});
    }
    // KiB a second; 0 for no limit.
    void LimitAnna(int i_limit) const {
        m_annaHome.Set("upload_speed_limit", QString::number(i_limit));
        m_annaHome.Set("upload_speed_limit_enabled", i_limit > 0 ? QStringLiteral("yes") : QStringLiteral("no"));
    }

    // As the trees show it.
    static QString FolderText(const ClientHome& i_home, const Sample& i_sample) {
        QString l_path = i_home.Path(QStringLiteral("shared/") + i_sample.folder);
        return ToQString(ReversePathname(l_path.replace(QLatin1Char('/'), QLatin1Char('\\')).toStdString()));
    }
    static void Do(DrivenClient& io_client, const QStringList& i_words) {
        EXPECT_TRUE(io_client.Do(i_words).toBool()) << i_words.join(QLatin1Char(' ')).toStdString();
    }
    static QJsonValue Row(DrivenClient& io_client, const char* ip_tree, const QStringList& i_path) {
        return io_client.Do(QStringList{QStringLiteral("row"), QString::fromUtf8(ip_tree)} + i_path);
    }
    QJsonValue Result(const ClientHome& i_home, const Sample& i_sample) {
        return Row(m_carla, g_searchRows, {i_home.User(), FolderText(i_home, i_sample), i_sample.name});
    }
    // The row of the user in the list of downloads, and of a file below it, whether the user is there or not.
    QJsonValue Download(const ClientHome& i_home, const QStringList& i_below = {}) {
        const QJsonValue l_row = Row(m_carla, "downloadsList", QStringList{i_home.User()} + i_below);
        return l_row.isObject() ? l_row : Row(m_carla, "downloadsList", QStringList{i_home.User() + g_away} + i_below);
    }
    QJsonValue Download(const ClientHome& i_home, const Sample& i_sample) {
        return Download(i_home, QStringList{FolderText(i_home, i_sample), i_sample.name});
    }
    static std::string Cell(const QJsonValue& i_row, int i_column) {
        return i_row[QStringLiteral("cells")][i_column].toString().toStdString();
    }
    static std::string Colour(const QJsonValue& i_row) {
        return i_row[QStringLiteral("colour")].toString().toStdString();
    }
    static std::string Spoken(const QJsonValue& i_row) {
        return i_row[QStringLiteral("spoken")][0].toString().toStdString();
    }
    // Whether the row that i_look fetches has status and colour in the end.
    template <class Look>
    static testing::AssertionResult Comes(Look i_look, const char* ip_status, const char* ip_colour) {
        QJsonValue l_row;
        if (WaitUntil([&] {
                l_row = i_look();
                return Cell(l_row, 3) == ip_status && Colour(l_row) == ip_colour;
            }))
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << "not " << ip_status << ": " << QJsonDocument(l_row.toObject()).toJson().toStdString();
    }
    // Whoever has come only just now may miss a search: then it is closed and made again, and waited for longer.
    bool SearchUntilBothAnswer() {
        Do(m_carla, {QStringLiteral("turn"), QStringLiteral("searchForm")});
        const auto l_isFound = [&](const ClientHome& i_home, const Sample& i_sample) {
            return Result(i_home, i_sample).isObject();
        };
        for (int l_waitMs = 3000; l_waitMs < g_patienceMs; l_waitMs *= 2) {
            Do(m_carla, {QStringLiteral("type"), QStringLiteral("searchEdit"), QStringLiteral("tide")});
            if (WaitUntil(
                    [&] {
                        return l_isFound(m_annaHome, g_january) && l_isFound(m_annaHome, g_february) &&
                               l_isFound(m_annaHome, g_march) && l_isFound(m_bertHome, g_picture);
                    },
                    l_waitMs))
                return true;
            Do(m_carla, {QStringLiteral("press"), QStringLiteral("Ctrl+W")});
        }
        return false;
    }
    void ExpectResult(const ClientHome& i_home, const Sample& i_sample) {
        const QJsonValue l_row = Result(i_home, i_sample);
        EXPECT_EQ(Cell(l_row, 5), CommafyNumber(i_sample.size).toStdString()) << i_sample.name.toStdString();
        EXPECT_EQ(Spoken(l_row), "") << "a mark on a file that is not here";
    }
    QString Downloaded(const char* ip_tree, const Sample& i_sample) const {
        return QStringLiteral("%1/%2/%3").arg(m_carlaHome.Downloads(ip_tree), i_sample.folder, i_sample.name);
    }
    void ExpectEqualFile(const Sample& i_sample) {
        EXPECT_EQ(Sha256(Downloaded("complete", i_sample)), m_digests.at(i_sample.name)) << i_sample.name.toStdString();
    }

    const ServerProcess m_server;
    const ClientHome m_annaHome{QStringLiteral("anna"), m_server.Port()};
    const ClientHome m_bertHome{QStringLiteral("bert"), m_server.Port()};
    const ClientHome m_carlaHome{QStringLiteral("carla"), m_server.Port()};
    std::map<QString, QByteArray> m_digests;
    DrivenClient m_carla{m_carlaHome};
};

} // namespace

TEST_F(WorldRoad, AFolderIsSearchedAndDownloadedThoughItsOwnerDiesMeanwhile) {
    const QString l_anna = QStringLiteral("anna");
    const QString l_bert = QStringLiteral("bert");
    DrivenClient l_annaClient(m_annaHome);
    const ClientProcess l_bertClient(m_bertHome);
    m_carla.AwaitConnected();
    l_annaClient.AwaitConnected();

    ASSERT_TRUE(SearchUntilBothAnswer());
    EXPECT_EQ(Cell(Row(m_carla, g_searchRows, {l_anna}), 1), "Y");
    for (const Sample* lp_sample : {&g_january, &g_february, &g_march})
        ExpectResult(m_annaHome, *lp_sample);
    ExpectResult(m_bertHome, g_picture);

    // The folder by the tool bar, a file by its key.
    const QString l_tree = QString::fromUtf8(g_searchRows);
    const QString l_tables = FolderText(m_annaHome, g_january);
    Do(m_carla, {QStringLiteral("click"), l_tree, l_anna, l_tables});
    Do(m_carla, {QStringLiteral("button"), QStringLiteral("Download Folder")});
    Do(m_carla, {QStringLiteral("click"), l_tree, l_bert, FolderText(m_bertHome, g_picture), g_picture.name});
    Do(m_carla, {QStringLiteral("press"), QStringLiteral("Return")});
    const auto l_mark = [&] { return Spoken(Result(m_annaHome, g_january)); };
    EXPECT_EQ(l_mark().substr(0, 17), "In your downloads");

    // Files come in the order of their names: the first is small, the second takes a minute and a half.
    Do(m_carla, {QStringLiteral("turn"), QStringLiteral("downloadsList")});
    const auto l_look = [&](const Sample& i_sample) { return [&] { return Download(m_annaHome, i_sample); }; };
    ASSERT_TRUE(Comes([&] { return Download(m_bertHome, g_picture); }, "complete", g_complete));
    ExpectEqualFile(g_picture);
    ASSERT_TRUE(Comes(l_look(g_february), "complete", g_complete));
    ASSERT_TRUE(Comes(l_look(g_january), "downloading", g_active));
    ASSERT_TRUE(Comes(l_look(g_march), "queued", g_queued));
    EXPECT_TRUE(WaitUntil([&] { return Spoken(l_look(g_january)()).find('%') != std::string::npos; }));
    EXPECT_EQ(Colour(Download(m_annaHome)), g_active) << "all files of a user together";
    EXPECT_EQ(Cell(Row(l_annaClient, "uploadsList", {QStringLiteral("carla"), l_tables, g_january.name}), 3),
              "uploading");
    EXPECT_TRUE(WaitUntil([&] { return SizeOf(Downloaded("downloading", g_january)) >= g_mebibyte; }));

    l_annaClient.Kill();
    ASSERT_TRUE(Comes(l_look(g_january), "aborted", g_failed));
    EXPECT_TRUE(WaitUntil([&] { return Cell(Download(m_annaHome), 0) == "anna [offline]"; }));
    EXPECT_EQ(Colour(Download(m_annaHome)), g_queued);
    const qint64 l_got = SizeOf(Downloaded("downloading", g_january));
    ASSERT_LT(l_got, g_january.size);

    // Were anything sent again, the digest would tell.
    SpoilBeginning(SharedPath(m_annaHome, g_january), l_got);
    LimitAnna(0);
    l_annaClient.Start();
    for (const Sample* lp_sample : {&g_january, &g_february, &g_march}) {
        ASSERT_TRUE(Comes(l_look(*lp_sample), "complete", g_complete));
        EXPECT_EQ(Spoken(l_look(*lp_sample)()), "") << "progress of what is complete";
        ExpectEqualFile(*lp_sample);
    }
    EXPECT_EQ(Cell(Download(m_annaHome), 0), "anna");
    EXPECT_EQ(Colour(Download(m_annaHome)), g_complete);
    EXPECT_FALSE(QDir(m_carlaHome.Downloads("downloading")).exists(g_january.folder)) << "the emptied folder";
    EXPECT_EQ(l_mark(), "You have downloaded this file");
}
