#include "transfers_host.h"

#include "peer/file_records.h"
#include "ui/share_filter.h"
#include "ui/shares_form.h"

#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QTabBar>

#include <map>
#include <set>

namespace {

FileInfo File(const std::string& i_name, qint64 i_size, std::vector<std::pair<unsigned, unsigned>> i_attributes = {}) {
    FileInfo l_file;
    l_file.name = i_name;
    l_file.size = i_size;
    for (const auto& [l_code, l_value] : i_attributes) {
        l_file.attributes.attributes.emplace_back(l_code, l_value);
    }
    return l_file;
}

class ShareFormTest : public PageTest {
protected:
    ShareFormTest() {
        m_form = new SharesForm;
        m_form->Init();
        dataSaver->EmitDataLoaded();
        ShowPage(m_form);
        m_tabs = m_form->findChild<QTabWidget*>(QStringLiteral("tabControl"));
    }
    // A list as the messenger hands it on, and the tab that it opens.
    QWidget* Receive(const std::string& i_user, FileInfoMap i_folders) {
        const int l_index = m_tabs->count();
        AttributeTranslationTable l_table;
        sharedFoldersManager->OnUserShare(i_user, i_folders, l_table);
        EXPECT_TRUE(QTest::qWaitFor([&] { return m_tabs->count() == l_index + 1; }));
        return m_tabs->widget(l_index);
    }
    static QTreeWidget* Folders(QWidget* ip_tab) {
        return ip_tab->findChild<QTreeWidget*>(QStringLiteral("folderTree"));
    }
    static QTreeWidget* Files(QWidget* ip_tab) { return ip_tab->findChild<QTreeWidget*>(QStringLiteral("fileList")); }
    static QLineEdit* Filter(QWidget* ip_tab) { return ip_tab->findChild<QLineEdit*>(QStringLiteral("filterEdit")); }
    static std::string Shown(QTreeWidget* ip_tree, int i_column = 0) {
        return Tree(ip_tree->invisibleRootItem(), i_column);
    }
    static std::map<std::string, std::string> Levels() {
        std::map<std::string, std::string> l_levels;
        for (const ItemPtr l_entry : g("download_entry")) {
            l_levels[l_entry["remote_folder"].AsString() + "|" + l_entry["file_name"].AsString()] =
                l_entry["subfolder_save_level"].AsString();
        }
        return l_levels;
    }
    static FileInfoMap Music() {
        return {{"m", {File("cover.jpg", 10)}},
                {"m\\jazz", {File("blue.mp3", 3'000, {{0, 192}, {2, 0}, {1, 245}}), File("so what.mp3", 2'000)}},
                {"m\\jazz\\live", {File("one.mp3", 1)}},
                {"m\\rock", {File("jazzy.mp3", 5), File("loud.mp3", 6)}},
                {"m\\talk", {File("news.mp3", 7)}}};
    }

    SharesForm* m_form;
    QTabWidget* m_tabs;
};

using testing::ElementsAre;
using testing::Pair;

} // namespace

TEST_F(ShareFormTest, TreeShowsFoldersAndTheListThoseFiles) {
    FileInfoMap l_folders = Music();
    l_folders["gap\\b\\c"] = {};
    QWidget* const lp_tab = Receive("B&o", l_folders);
    EXPECT_EQ(m_tabs->tabText(0).toStdString(), "B&&o");
    EXPECT_EQ(Shown(Folders(lp_tab)), "c m (jazz (live) rock talk)");
    EXPECT_TRUE(Child(Folders(lp_tab), {1, 0})->isExpanded());
    EXPECT_EQ(Shown(Files(lp_tab)), "") << "no folder is chosen yet";

    Folders(lp_tab)->setCurrentItem(Child(Folders(lp_tab), {1, 0}));
    EXPECT_EQ(Shown(Files(lp_tab)), "blue.mp3 so what.mp3");
    EXPECT_EQ(Shown(Files(lp_tab), 1), "3,000 2,000");
    EXPECT_EQ(Child(Files(lp_tab), {0})->text(2).toStdString(), "192 CBR, 4m5s");
    EXPECT_EQ(d.GetType("user_share_file_node")->CountItems(), 2u);
    QLabel* const lp_counts = lp_tab->findChild<QLabel*>(QStringLiteral("shareCounts"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !lp_counts->text().isEmpty(); }));
    Files(lp_tab)->selectAll();
    EXPECT_EQ(lp_counts->text().toStdString(), "7 files, 5,029 bytes in 6 folders; selected: 2 files, 5,000 bytes");

    Folders(lp_tab)->setFocus();
    QTest::keyClick(Folders(lp_tab), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "m\\jazz");
    QTest::keyClick(Folders(lp_tab), Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(Filter(lp_tab)->hasFocus());
    QTest::keyClick(Filter(lp_tab), Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(m_tabs->count(), 0);
}

TEST_F(ShareFormTest, FilterFollowsFoldersAndFiles) {
    QWidget* const lp_tab = Receive("Bo", Music());
    QTreeWidget* const lp_folders = Folders(lp_tab);
    Filter(lp_tab)->setText(QStringLiteral("JAZZ"));
    EXPECT_EQ(Shown(lp_folders), "m (jazz (live) rock)");
    lp_folders->setCurrentItem(Child(lp_folders, {0, 1}));
    EXPECT_EQ(Shown(Files(lp_tab)), "jazzy.mp3");
    lp_folders->setCurrentItem(Child(lp_folders, {0, 0}));
    EXPECT_EQ(Shown(Files(lp_tab)), "blue.mp3 so what.mp3") << "the folder's name has met it";

    Filter(lp_tab)->setText(QStringLiteral(" jazz  WHAT "));
    EXPECT_EQ(Shown(lp_folders), "m (jazz)") << "one piece by the folder, one by a file in it";
    EXPECT_EQ(Shown(Files(lp_tab)), "blue.mp3 so what.mp3") << "made anew when the folder changes";
    Filter(lp_tab)->setText(QStringLiteral("news"));
    EXPECT_EQ(Shown(lp_folders), "m (talk)");
    EXPECT_EQ(Shown(Files(lp_tab)), "") << "its folder is hidden";
    Filter(lp_tab)->clear();
    EXPECT_EQ(Shown(lp_folders), "m (jazz (live) rock talk)");

    NameList l_names;
    l_names.Add(FoldCase("\xC3\x89t\xC3\xA9 one"));
    l_names.Add(FoldCase("two"));
    EXPECT_TRUE(l_names.HasNameWith(FilterPieces(QStringLiteral("\u00E9T\u00C9 on")).All()));
    EXPECT_FALSE(l_names.HasNameWith(FilterPieces(QStringLiteral("one two")).All())) << "in two names";
}

TEST_F(ShareFormTest, LevelsOpenStepByStep) {
    QWidget* const lp_tab = Receive("Bo", Music());
    QTreeWidget* const lp_folders = Folders(lp_tab);
    lp_folders->setFocus();
    EXPECT_THAT(ActionTexts(), ElementsAre("Download Folder", "Expand Level", "Collapse All", "Expand All"));
    Press("Collapse All");
    EXPECT_FALSE(Child(lp_folders, {0})->isExpanded());
    Press("Expand Level");
    EXPECT_TRUE(Child(lp_folders, {0})->isExpanded());
    EXPECT_FALSE(Child(lp_folders, {0, 0})->isExpanded());
    Press("Expand Level [1]");
    EXPECT_TRUE(Child(lp_folders, {0, 0})->isExpanded());
    Press("Expand Level [2]");
    EXPECT_THAT(ActionTexts(), testing::Contains("Expand Level [2]")) << "there is no deeper one";
    Press("Expand All");
    EXPECT_THAT(ActionTexts(), testing::Contains("Expand Level"));
}

TEST_F(ShareFormTest, DownloadsKeepFoldersBelowTheChosenOne) {
    QWidget* const lp_other = Receive("Al", {{"x", {File("theirs", 1)}}});
    QWidget* const lp_tab = Receive("Bo", Music());
    Folders(lp_other)->setCurrentItem(Child(Folders(lp_other), {0}));
    m_tabs->setCurrentWidget(lp_tab);
    Folders(lp_tab)->setCurrentItem(Child(Folders(lp_tab), {0, 0}));
    Folders(lp_tab)->setFocus();
    Press("Download Folder");
    EXPECT_THAT(Levels(), ElementsAre(Pair("m\\jazz\\live|one.mp3", "1"), Pair("m\\jazz|blue.mp3", "0"),
                                      Pair("m\\jazz|so what.mp3", "0")));
    g("download_entry").Remove();
    Files(lp_tab)->selectAll();
    Files(lp_tab)->setFocus();
    QTest::keyClick(Files(lp_tab), Qt::Key_D, Qt::ControlModifier);
    EXPECT_THAT(Levels(), ElementsAre(Pair("m\\jazz|blue.mp3", "0"), Pair("m\\jazz|so what.mp3", "0")));
    EXPECT_EQ(ItemPtr(transferQueueManager->GetDownloadEntry("Bo", "blue.mp3", "m\\jazz"))["file_size"].AsString(),
              "3000");
}

TEST_F(ShareFormTest, HostileListsAreShownAndEnteredOnce) {
    FileInfoMap l_folders = {{"alone", {File("a\u202E\n", -1)}}, {"", {File("", 9)}}, {"\\", {}}, {"alone\\", {}}};
    std::string l_deep = "deep";
    for (int l_level = 0; l_level < 3'000; ++l_level) {
        l_deep += "\\d";
        l_folders[l_deep] = {};
    }
    QWidget* const lp_tab = Receive("Bo", l_folders);
    QTreeWidget* const lp_tree = Folders(lp_tab);
    lp_tree->setFocus();
    lp_tree->selectAll();
    Press("Download Folder");
    EXPECT_THAT(Levels(), testing::SizeIs(2));
    for (QTreeWidgetItem* const lp_row : lp_tree->findItems(QStringLiteral("alone"), Qt::MatchExactly)) {
        lp_tree->setCurrentItem(lp_row);
        if (Files(lp_tab)->topLevelItemCount() == 1) {
            EXPECT_EQ(Shown(Files(lp_tab)), "a[U+202E][U+000A]");
        }
    }
    Filter(lp_tab)->setText(QStringLiteral("nothing of it"));
    EXPECT_EQ(Shown(lp_tree), "");
}

TEST_F(ShareFormTest, TabsKeepTheirFilesApartAndCloseForGood) {
    QWidget* const lp_bo = Receive("Bo", Music());
    QWidget* const lp_al = Receive("Al", Music());
    Folders(lp_bo)->setCurrentItem(Child(Folders(lp_bo), {0}));
    Folders(lp_al)->setCurrentItem(Child(Folders(lp_al), {0, 0}));
    EXPECT_EQ(d.GetType("user_share_file_node")->CountItems(), 3u);
    m_tabs->setCurrentWidget(lp_bo);
    Files(lp_bo)->selectAll();
    Files(lp_bo)->setFocus();
    Press("Download File");
    EXPECT_THAT(Levels(), ElementsAre(Pair("m|cover.jpg", "0")));

    const QPoint l_place = m_tabs->tabBar()->tabRect(m_tabs->indexOf(lp_bo)).center();
    QTest::mouseClick(m_tabs->tabBar(), Qt::MiddleButton, Qt::NoModifier, l_place);
    EXPECT_EQ(m_tabs->count(), 1);
    EXPECT_EQ(d.GetType("user_share_folder")->CountItems(), 5u) << "of the list that is still open";
    EXPECT_EQ(d.GetType("user_share_folder_node")->CountItems(), 5u);
    EXPECT_FALSE(d.GetType("user")->HasItem("Bo").IsConnected("user_share"));
    Q_EMIT m_tabs->tabCloseRequested(0);
    for (const char* l_type : {"user_share", "user_share_folder", "user_share_file", "user_share_tab",
                               "user_share_folder_node", "user_share_file_node"}) {
        EXPECT_EQ(d.GetType(l_type)->CountItems(), 0u) << l_type;
    }
    QCoreApplication::processEvents();
}

TEST_F(ShareFormTest, NewerListMakesTheOlderTabAClosedBook) {
    QWidget* const lp_old = Receive("Bo", Music());
    Folders(lp_old)->setCurrentItem(Child(Folders(lp_old), {0}));
    QWidget* const lp_new = Receive("Bo", {{"new", {File("n", 1)}}});
    d.RemoveDisconnectedItems();
    EXPECT_EQ(d.GetType("user_share_folder")->CountItems(), 1u) << "the old list is nowhere any more";
    ASSERT_NE(lp_old, lp_new);
    EXPECT_TRUE(lp_old->findChild<QLabel*>(QStringLiteral("replacedNotice"))->isVisible());
    m_tabs->setCurrentWidget(lp_old);
    Folders(lp_old)->selectAll();
    for (const char* l_id : {"download_share_folder", "download_share_file", "expand_level", "expand_all"}) {
        Q_EMIT actionBar->ActionTriggered(l_id);
    }
    EXPECT_EQ(Shown(Files(lp_old)), "cover.jpg") << "as it was on show";
    Folders(lp_old)->setCurrentItem(Child(Folders(lp_old), {0, 1}));
    Filter(lp_old)->setText(QStringLiteral("jazz"));
    EXPECT_TRUE(g("download_entry").empty());
    m_tabs->setCurrentWidget(lp_new);
    Q_EMIT m_tabs->tabCloseRequested(0);
    EXPECT_EQ(m_tabs->count(), 1);
    EXPECT_TRUE(d.GetType("user")->HasItem("Bo").IsConnected("user_share")) << "the new list stands";
    EXPECT_EQ(Shown(Folders(lp_new)), "new");
}

TEST_F(ShareFormTest, ArrivalIsToldUntilTheTabIsSeen) {
    Receive("Al", Music());
    QWidget* const lp_bo = Receive("Bo", Music());
    const auto l_events = [] {
        std::set<std::string> l_texts;
        for (const QAction* const lp_action : eventToolBar->actions()) {
            l_texts.insert(lp_action->text().toStdString());
        }
        return l_texts;
    };
    EXPECT_THAT(l_events(), ElementsAre("Bo"));
    EXPECT_EQ(m_tabs->currentIndex(), 0) << "the user's place stays";
    m_tabs->setCurrentWidget(lp_bo);
    EXPECT_THAT(l_events(), ElementsAre(""));
}
