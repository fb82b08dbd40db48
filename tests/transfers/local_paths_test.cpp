#include "transfers/local_files.h"
#include "transfers/local_paths.h"

#include "app/text.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string Clean(std::string_view i_name) {
    return ToUtf8(CleanComponent(i_name));
}

std::string Folder(std::string_view i_remote, long long i_levels) {
    return ToUtf8(LocalFolder(QStringLiteral("/d l"), false, i_remote, i_levels));
}

TEST(CleanComponent, NeutralisesWhatIsNoName) {
    EXPECT_EQ(Clean("Song 1.mp3"), "Song 1.mp3");
    EXPECT_EQ(Clean(""), "_");
    EXPECT_EQ(Clean("."), "_");
    EXPECT_EQ(Clean(".."), "__");
    EXPECT_EQ(Clean("..."), "...");
    EXPECT_EQ(Clean("../../etc/passwd"), ".._.._etc_passwd");
    EXPECT_EQ(Clean("a\\b"), "a_b");
    EXPECT_EQ(Clean(std::string_view("a\0b\n\x7f\x1b[2J", 9)), "a_b___[2J");
    EXPECT_EQ(Clean("\xC2\x85"), "_");          // a control character of two bytes
    EXPECT_EQ(Clean("a\xFF"), "a\xEF\xBF\xBD"); // not UTF-8
}

TEST(CleanComponent, CutsBetweenCharacters) {
    EXPECT_EQ(Clean(std::string(255, 'a')), std::string(255, 'a'));
    EXPECT_EQ(Clean(std::string(256, 'a')), std::string(255, 'a'));
    std::string l_umlauts;
    for (int l_count = 0; l_count < 200; ++l_count) {
        l_umlauts += "\xC3\xA4";
    }
    EXPECT_EQ(Clean(l_umlauts), l_umlauts.substr(0, 254));
    EXPECT_EQ(Clean("a" + l_umlauts), ("a" + l_umlauts).substr(0, 255));
    EXPECT_LE(Clean(std::string(300, '\xFF')).size(), 255u); // grows to three bytes each
}

TEST(LocalFolder, KeepsAsManyRemoteFoldersAsAsked) {
    EXPECT_EQ(Folder("a\\b\\c", 0), "\\d l\\downloading\\c");
    EXPECT_EQ(Folder("a\\b\\c", 1), "\\d l\\downloading\\b\\c");
    EXPECT_EQ(Folder("a/b\\c\\", 1), "\\d l\\downloading\\b\\c");
    EXPECT_EQ(Folder("", 1), "\\d l\\downloading");
    EXPECT_EQ(ToUtf8(LocalFolder(QStringLiteral("/d l"), true, "a\\b", 0)), "\\d l\\complete\\b");
}

TEST(LocalFolder, StaysBelowTheDownloadFolder) {
    for (const char* lp_remote : {"..\\..\\..", "a\\..", "..", ".", "\\", "\\\\\\", "/etc", "a\\.\\..", "\n\\.."}) {
        for (const long long l_levels : {0LL, 1LL, 5LL, -7LL, 9223372036854775807LL}) {
            const QString l_folder = ToFileSystemForm(LocalFolder(QStringLiteral("/d"), false, lp_remote, l_levels));
            EXPECT_EQ(QDir::cleanPath(l_folder), l_folder) << lp_remote;
            EXPECT_TRUE(l_folder.startsWith(QStringLiteral("/d/downloading"))) << lp_remote;
        }
    }
}

class OnDisk : public testing::Test {
protected:
    QString Path(const char* ip_name) const { return m_folder.filePath(QString::fromUtf8(ip_name)); }
    void Write(const char* ip_name, const char* ip_text) const {
        QFile l_file(Path(ip_name));
        ASSERT_TRUE(l_file.open(QIODevice::WriteOnly));
        l_file.write(ip_text);
    }
    std::string Read(const char* ip_name) const {
        QFile l_file(Path(ip_name));
        return l_file.open(QIODevice::ReadOnly) ? l_file.readAll().toStdString() : "(none)";
    }
    void Link(const char* ip_target, const char* ip_name) const {
        ASSERT_EQ(symlink(ip_target, ToUtf8(Path(ip_name)).c_str()), 0);
    }

    QTemporaryDir m_folder;
};

TEST_F(OnDisk, LinksLeadNowhereOutside) {
    QDir(m_folder.path()).mkpath(QStringLiteral("base/real"));
    QDir(m_folder.path()).mkpath(QStringLiteral("base2"));
    Link("/tmp", "base/out");
    Link("../base2", "base/sibling");
    Link("real", "base/in");
    Link("/nonexistent/x", "base/dangling");
    Link("base", "alias");
    const auto Inside = [&](const char* ip_base, const char* ip_path) {
        return IsInsideFolder(Path(ip_base), Path(ip_base) + u'/' + QString::fromUtf8(ip_path));
    };
    EXPECT_TRUE(Inside("base", "downloading/x/y"));
    EXPECT_TRUE(Inside("base", "in/x"));
    EXPECT_TRUE(Inside("alias", "real/x")); // the user's own choice of folder may be a link
    EXPECT_TRUE(Inside("nothing/yet", "x"));
    EXPECT_FALSE(Inside("base", "out/x/y"));
    EXPECT_FALSE(Inside("base", "out"));
    EXPECT_FALSE(Inside("base", "sibling/x"));
    EXPECT_FALSE(Inside("base", "dangling"));
    EXPECT_FALSE(Inside("base", "dangling/x"));
}

TEST_F(OnDisk, OpensRegularFilesOnlyAndNeverBlocks) {
    Write("plain", "abc");
    ASSERT_EQ(mkfifo(ToUtf8(Path("fifo")).c_str(), 0600), 0);
    Link("elsewhere", "link");
    EXPECT_NE(OpenToSend(ToUtf8(Path("plain"))), nullptr);
    EXPECT_EQ(OpenToSend(ToUtf8(Path("fifo"))), nullptr);
    EXPECT_EQ(OpenToSend(ToUtf8(m_folder.path())), nullptr);
    EXPECT_EQ(OpenToSend(ToUtf8(Path("missing"))), nullptr);
    EXPECT_EQ(OpenToSend("/"), nullptr);

    EXPECT_EQ(OpenToAppend(Path("fifo")), nullptr);
    EXPECT_EQ(OpenToAppend(Path("link")), nullptr);
    EXPECT_FALSE(QFile::exists(Path("elsewhere")));
    EXPECT_EQ(OpenToAppend(Path("no/folder")), nullptr);
    const auto lp_first = OpenToAppend(Path("plain"));
    ASSERT_NE(lp_first, nullptr);
    EXPECT_EQ(lp_first->pos(), 3);
    EXPECT_EQ(OpenToAppend(Path("plain")), nullptr); // one writer at a time
    EXPECT_NE(OpenToAppend(Path("new")), nullptr);
}

TEST_F(OnDisk, RenamesOverNothing) {
    Write("from", "new");
    Write("taken", "old");
    Link("nowhere", "link");
    EXPECT_FALSE(RenameWithoutOverwriting(Path("from"), Path("taken")));
    EXPECT_FALSE(RenameWithoutOverwriting(Path("from"), Path("link")));
    EXPECT_FALSE(RenameWithoutOverwriting(Path("missing"), Path("free")));
    EXPECT_EQ(Read("taken") + Read("from"), "oldnew");
    EXPECT_TRUE(RenameWithoutOverwriting(Path("from"), Path("free")));
    EXPECT_EQ(Read("free") + Read("from"), "new(none)");
}

} // namespace
