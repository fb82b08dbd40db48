// Results in their tree: where they are placed, in which order, and what the filter leaves of them.
#include "hostile_texts.h"
#include "search_fixture.h"

#include "net/limits.h"

#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class SearchResultsTest : public SearchTest {
protected:
    void Choose(const char* ip_choice, const char* ip_text) {
        QComboBox* const lp_choice = m_page.Tab()->findChild<QComboBox*>(QLatin1String(ip_choice));
        ASSERT_TRUE(lp_choice) << ip_choice;
        EXPECT_EQ(lp_choice->itemText(0).toStdString(), "any");
        const int l_index = lp_choice->findText(QString::fromUtf8(ip_text));
        ASSERT_GE(l_index, 0) << ip_text;
        lp_choice->setCurrentIndex(l_index);
    }
    void Filter(const char* ip_text) { m_page.Tab()->FilterEdit()->setText(QLatin1String(ip_text)); }
};

} // namespace

TEST_F(SearchResultsTest, AnswersStandByUserFolderAndFile) {
    const unsigned int l_token = m_page.Search("x");
    Reply(l_token, "anna", {SearchPage::File("m\\old\\b.mp3", 1234567, 192), SearchPage::File("m\\old\\a.mp3", 0)},
          {false, 1536, 3});
    Reply(l_token, "bert", {SearchPage::File("m\\old\\a.mp3", -1)}, {true, 0, 9});
    Reply(l_token, "anna", {SearchPage::File("m\\old\\c.mp3"), SearchPage::File("m\\new\\d.mp3")}, {true, 1, 0});
    // Known files of a user are not shown twice.
    Reply(l_token, "anna", {SearchPage::File("m\\old\\a.mp3"), SearchPage::File("m\\new\\e.mp3")});
    m_page.Tab()->Sort();
    EXPECT_THAT(Rows(m_page.Tree()),
                ElementsAre("bert Y", "  old/m", "    a.mp3", "anna 3 1.5", "  old/m", "    a.mp3",
                            "    b.mp3 1,234,567 192, 3m20s", "    c.mp3 1", "  new/m", "    d.mp3 1", "    e.mp3 1"));
    EXPECT_EQ(m_page.Tree()->topLevelItem(1)->data(1, Qt::TextAlignmentRole).toInt() & Qt::AlignHorizontal_Mask,
              Qt::AlignHCenter);
    for (QTreeWidgetItem* lp_row : {Row(m_page.Tree(), "anna"), Row(m_page.Tree(), "new/m")}) {
        EXPECT_TRUE(lp_row->isExpanded());
    }
    // From any row to that of its user.
    for (const char* lp_text : {"anna", "new/m", "e.mp3"}) {
        EXPECT_EQ(m_page.mp_form->GetNodeUserNode(Row(m_page.Tree(), lp_text)), Row(m_page.Tree(), "anna")) << lp_text;
    }
    EXPECT_EQ(m_page.mp_form->GetNodeUserNode(nullptr), nullptr);
    ASSERT_TRUE(QTest::qWaitFor([this] { return Counts().contains(QStringLiteral("6 files of 2 users")); }));
}

TEST_F(SearchResultsTest, FreeUsersComeFirstThenShortQueuesThenFastOnes) {
    const unsigned int l_token = m_page.Search("x");
    const auto l_answer = [&](const char* ip_user, SearchPage::Answer i_answer) {
        Reply(l_token, ip_user, {SearchPage::File("f\\x")}, i_answer);
    };
    l_answer("queue10", {false, 900'000, 10});
    l_answer("queue9", {false, 10'000, 9});
    l_answer("slow", {true, 0, 0});
    l_answer("quick", {true, 100'000, 50});
    l_answer("medium", {true, 9'000, 50});
    l_answer("queue9quick", {false, 20'000, 9});
    const auto l_users = [this] {
        std::vector<std::string> l_names;
        for (int l_row = 0; l_row < m_page.Tree()->topLevelItemCount(); ++l_row) {
            l_names.push_back(m_page.Tree()->topLevelItem(l_row)->text(0).toStdString());
        }
        return l_names;
    };
    // One sorting, a second after the first of a burst.
    ASSERT_TRUE(QTest::qWaitFor([&] { return l_users().front() == "quick"; }));
    EXPECT_THAT(l_users(), ElementsAre("quick", "medium", "slow", "queue9quick", "queue9", "queue10"));
    Press("Order by Fastest");
    EXPECT_THAT(l_users(), ElementsAre("queue10", "quick", "queue9quick", "queue9", "medium", "slow"));
    Press("Order by Available");
    EXPECT_EQ(l_users().front(), "quick");
}

TEST_F(SearchResultsTest, EachPieceOfTheFilterIsInTheFolderOrTheFile) {
    const unsigned int l_token = m_page.Search("x");
    Reply(l_token, "anna",
          {SearchPage::File("Live\\Tokyo\\one.mp3"), SearchPage::File("Live\\Tokyo\\two.mp3"),
           SearchPage::File("Studio\\one.mp3")});
    Reply(l_token, "bert", {SearchPage::File("other\\three.mp3")});
    m_page.Tab()->Sort();
    const std::vector<std::string> l_all = Rows(m_page.Tree());
    Filter("  TOKYO one ");
    EXPECT_THAT(Rows(m_page.Tree()), ElementsAre("anna Y", "  Tokyo/Live", "    one.mp3 1"));
    EXPECT_TRUE(Counts().contains(QStringLiteral("3 hidden"))) << Counts().toStdString();

    // What comes in now meets the same filter, file by file.
    Reply(l_token, "carl", {SearchPage::File("tokyo\\no.mp3")});
    EXPECT_TRUE(Row(m_page.Tree(), "carl")->isHidden());
    Reply(l_token, "carl", {SearchPage::File("tokyo\\ONE.mp3"), SearchPage::File("elsewhere\\one.mp3")});
    Reply(l_token, "anna", {SearchPage::File("Live\\Tokyo\\four.mp3")});
    EXPECT_THAT(Rows(m_page.Tree()),
                ElementsAre("anna Y", "  Tokyo/Live", "    one.mp3 1", "carl Y", "  tokyo", "    ONE.mp3 1"));
    Filter("nothing");
    EXPECT_THAT(Rows(m_page.Tree()), IsEmpty());
    Filter("");
    EXPECT_THAT(Rows(m_page.Tree()), SizeIs(l_all.size() + 7));
}

TEST_F(SearchResultsTest, FourChoicesNarrowFurther) {
    const unsigned int l_token = m_page.Search("x");
    Reply(l_token, "anna",
          {SearchPage::File("f\\a.MP3", 2 << 20, 128), SearchPage::File("f\\b.flac", 60 << 20, 900),
           SearchPage::File("f\\c.mkv", 700 << 20), SearchPage::File("f\\d.zip", 10)});
    Reply(l_token, "bert", {SearchPage::File("f\\e.mp3", 9 << 20, 320)}, {false, 1, 4});
    m_page.Tab()->Sort();
    const auto l_files = [this] {
        std::string l_names;
        for (const std::string& l_row : Rows(m_page.Tree())) {
            l_names += l_row.starts_with("    ") ? l_row.substr(4, 1) : "";
        }
        return l_names;
    };
    EXPECT_EQ(l_files(), "abcde");
    Choose("filterSize", "≥ 5 MB");
    EXPECT_EQ(l_files(), "bce");
    Choose("filterKind", "Audio");
    EXPECT_EQ(l_files(), "be");
    Choose("filterSlot", "Free");
    EXPECT_EQ(l_files(), "b");
    Choose("filterSize", "any");
    EXPECT_EQ(l_files(), "ab");
    Choose("filterBitRate", "≥ 192");
    EXPECT_EQ(l_files(), "b");
    Choose("filterKind", "Archives");
    EXPECT_EQ(l_files(), "");
    m_page.Tab()->FilterEdit()->setFocus();
    QTest::keyClick(m_page.Tab()->FilterEdit(), Qt::Key_Escape);
    EXPECT_EQ(l_files(), "abcde");
}

TEST_F(SearchResultsTest, RowsOfFilesThatAreHereBearAMark) {
    const unsigned int l_token = m_page.Search("x");
    Reply(l_token, "anna",
          {SearchPage::File("f\\plain", 5), SearchPage::File("f\\queued", 5), SearchPage::File("f\\complete", 5),
           SearchPage::File("f\\shared", 5), SearchPage::File("f\\shared too", 6)});
    const auto l_tip = [this](const char* ip_row) {
        return Row(m_page.Tree(), ip_row)->toolTip(SearchResultListItem::File).toStdString();
    };
    const auto l_hasMark = [this](const char* ip_row) {
        return !Row(m_page.Tree(), ip_row)->icon(SearchResultListItem::File).isNull();
    };
    EXPECT_FALSE(l_hasMark("queued"));
    transferQueueManager->AddDownload("anna", "queued", "f", 5, 0);
    transferQueueManager->AddDownload("anna", "complete", "f", 5, 0);
    transferQueueManager->SetDownloadEntryStatus(transferQueueManager->GetDownloadEntry("anna", "complete", "f"),
                                                 "complete");
    for (const char* lp_name : {"shared", "shared too"}) {
        const ItemPtr l_file = d.GetType("shared_file")->NewItem();
        l_file.Connect(d.GetType("shared_file_name")->GetItem(lp_name));
        l_file.Connect(d.GetType("shared_file_size")->GetItem("5"));
    }
    for (const char* lp_marked : {"queued", "complete", "shared"}) {
        EXPECT_TRUE(l_hasMark(lp_marked)) << lp_marked;
    }
    EXPECT_FALSE(l_hasMark("plain"));
    EXPECT_FALSE(l_hasMark("shared too")) << "of another size";
    EXPECT_THAT(l_tip("queued"), testing::HasSubstr("In your downloads: queued"));
    EXPECT_THAT(l_tip("complete"), testing::HasSubstr("You have downloaded this file"));
    EXPECT_THAT(l_tip("shared"), testing::HasSubstr("You share a file of this name"));
}

TEST_F(SearchResultsTest, HostileNamesAreShownHarmlessly) {
    for (const std::string& l_text : HostileTexts()) {
        const unsigned int l_token = m_page.Search(l_text);
        Reply(l_token, l_text,
              {SearchPage::File(l_text + "\\" + l_text + ".mp3"), SearchPage::File(l_text), SearchPage::File("\\"),
               SearchPage::File("")});
        const int l_tab = m_page.Tabs()->count() - 1;
        QTreeWidget* const lp_tree = m_page.Tree(l_tab);
        ASSERT_EQ(lp_tree->topLevelItemCount(), 1);
        for (QTreeWidgetItemIterator l_row(lp_tree); *l_row; ++l_row) {
            for (int l_column = 0; l_column < SearchResultListItem::ColumnCount; ++l_column) {
                const QString l_shown = (*l_row)->text(l_column);
                EXPECT_LE(l_shown.size(), limits::cellText);
                EXPECT_FALSE(l_shown.contains(QChar(0x202E)) || l_shown.contains(QLatin1Char('\n')));
                const QString l_tip = (*l_row)->toolTip(l_column);
                EXPECT_FALSE(l_tip.contains(QLatin1String("<img")) || l_tip.contains(QLatin1String("<a ")))
                    << l_tip.toStdString();
            }
        }
        EXPECT_LE(m_page.Tabs()->tabText(l_tab).size(), 2 * limits::labelText);
        m_page.Tab(l_tab)->grab();
        // What goes to the clipboard has no line ends but ours.
        lp_tree->selectAll();
        m_page.Tree(l_tab)->CopySelected(true);
        EXPECT_EQ(QGuiApplication::clipboard()->text().count(QLatin1Char('\n')),
                  static_cast<int>(m_page.Tree(l_tab)->SelectedRows().size()) - 1);
    }
}

// One answer may hold a great many files: the window draws and listens while they are placed.
TEST_F(SearchResultsTest, AHugeAnswerIsPlacedInSlices) {
    const unsigned int l_token = m_page.Search("x");
    std::vector<FileInfo> l_files;
    for (int l_file = 0; l_file < 20'000; ++l_file) {
        l_files.push_back(SearchPage::File("f" + std::to_string(l_file % 7) + "\\n" + std::to_string(l_file)));
    }
    m_page.Reply(l_token, "anna", std::move(l_files), {});
    const auto l_placed = [this] {
        const QTreeWidgetItem* const lp_user = m_page.Tree()->topLevelItem(0);
        int l_rows = 0;
        for (int l_folder = 0; l_folder < lp_user->childCount(); ++l_folder) {
            l_rows += lp_user->child(l_folder)->childCount();
        }
        return l_rows;
    };
    EXPECT_GT(l_placed(), 0);
    EXPECT_LT(l_placed(), 20'000);
    m_page.Reply(m_page.Search("y"), "bert", {SearchPage::File("f\\z")}, {}); // waits its turn
    ASSERT_TRUE(QTest::qWaitFor([&] { return l_placed() == 20'000; }, 60'000));
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_page.Tree(1)->topLevelItemCount() == 1; }));
    // A tab that closes takes what waits for it along.
    l_files.assign(20'000, SearchPage::File("g\\h"));
    m_page.Reply(l_token, "carl", std::move(l_files), {});
    m_page.mp_form->OnTabCloseRequested(0);
    EXPECT_TRUE(m_page.IsPlaced());
    EXPECT_EQ(d.GetType("search_result_node")->CountItems(), 1u);
}
