// The search page: its tabs and their life, what is downloaded, the toggles, the wish list, the keys.
#include "search_fixture.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QCompleter>
#include <QHeaderView>
#include <QTabBar>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

ItemPtr Wish(const std::string& i_text) {
    return d.GetType("wish_list_item")->HasItem(i_text);
}

void MakeWish(const std::string& i_text) {
    d.GetType("wish_list_item")->GetItem(i_text)->Connect(d.GetType("wish_list_item_enabled")->GetGlobalNullItem());
}

class SearchFormTest : public SearchTest {
protected:
    void Type(const char* ip_text) {
        m_page.Edit()->setFocus();
        QTest::keyClicks(m_page.Edit(), QLatin1String(ip_text));
        QTest::keyClick(m_page.Edit(), Qt::Key_Return);
    }
    std::vector<std::string> TabTexts() {
        std::vector<std::string> l_texts;
        for (int l_tab = 0; l_tab < m_page.Tabs()->count(); ++l_tab) {
            l_texts.push_back(m_page.Tabs()->tabText(l_tab).toStdString());
        }
        return l_texts;
    }
    // The alerts that wait on their tool bar.
    static std::vector<std::string> Alerts() {
        std::vector<std::string> l_texts;
        for (const QAction* lp_action : eventToolBar->actions()) {
            if (lp_action->isEnabled()) {
                l_texts.push_back(lp_action->text().toStdString());
            }
        }
        return l_texts;
    }
};

// A form that is made when the store holds wishes already.
class SavedWishesTest : public SearchFormTest {
protected:
    void SetUp() override {
        MakeWish("zebra");
        MakeWish("ant & bee");
        d.GetType("wish_list_item")->GetItem("monkey");
        MakeWish(std::string(131072, 'w'));
        SearchFormTest::SetUp();
    }
    QTreeWidget* Wishes() { return m_page.Wishes(); }
    QCheckBox* Box(const char* ip_wish) {
        return Wish(ip_wish)["wish_list_node"]["wish_list_node_checkbox"].AsPointer<QCheckBox>();
    }
    // "Y text" or " text" from top to bottom.
    std::vector<std::string> Lines() {
        std::vector<std::string> l_lines;
        for (int l_row = 0; l_row < Wishes()->topLevelItemCount(); ++l_row) {
            const QTreeWidgetItem* const lp_row = Wishes()->topLevelItem(l_row);
            l_lines.push_back((lp_row->text(0) + QLatin1Char(' ') + lp_row->text(1).left(9)).toStdString());
        }
        return l_lines;
    }
};

} // namespace

TEST_F(SearchFormTest, ASearchOpensATabThatWaitsForAnswers) {
    Type(" Some & Words ");
    EXPECT_EQ(m_page.Edit()->text(), QString());
    ASSERT_THAT(TabTexts(), ElementsAre(" Some && Words "));
    EXPECT_TRUE(ItemPtr(*g("search_request_text").begin()).AsView() == " Some & Words ") << "as it was typed";
    EXPECT_EQ(QApplication::focusWidget(), m_page.Tree());
    EXPECT_THAT(m_page.Tree()->accessibleDescription().toStdString(), testing::HasSubstr("Not connected"));
    EXPECT_EQ(actionBar->GetKey(QStringLiteral("widget")),
              QString::number(reinterpret_cast<quintptr>(static_cast<QWidget*>(m_page.Tab()))));
    Type("");
    EXPECT_EQ(m_page.Tabs()->count(), 2) << "an empty text is a search too";
    EXPECT_EQ(m_page.Tabs()->currentIndex(), 1);
}

TEST_F(SearchFormTest, AClosedSearchTakesEverythingAlongAndStaysClosed) {
    const unsigned int l_first = m_page.Search("x");
    const unsigned int l_second = m_page.Search("y");
    Reply(l_first, "anna", {SearchPage::File("f\\a"), SearchPage::File("g\\b")});
    Reply(l_second, "anna", {SearchPage::File("f\\a")}); // shown already
    EXPECT_EQ(m_page.Tree(1)->topLevelItemCount(), 0);

    m_page.Tabs()->setCurrentIndex(0);
    QTest::keyClick(m_page.Tree(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_THAT(TabTexts(), ElementsAre("y"));
    for (const char* lp_type : {"search_results", "search_result", "search_result_node", "search_results_folder_node",
                                "search_results_user_node", "search_result_file_name"}) {
        EXPECT_EQ(d.GetType(lp_type)->CountItems(), 0u) << lp_type;
    }
    Reply(l_first, "bert", {SearchPage::File("f\\late")});
    EXPECT_EQ(m_page.Tabs()->count(), 1);
    Reply(l_second, "anna", {SearchPage::File("f\\a")});
    EXPECT_EQ(m_page.Tree()->topLevelItemCount(), 1) << "what was closed can appear again";

    QTabBar* const lp_bar = m_page.Tabs()->tabBar();
    QTest::mouseClick(lp_bar, Qt::MiddleButton, {}, lp_bar->tabRect(0).center());
    EXPECT_EQ(m_page.Tabs()->count(), 0);
    EXPECT_EQ(d.GetType("search_results_widget")->CountItems(), 0u);
    m_page.mp_form->OnTabCloseRequested(0); // there is none
    m_page.mp_form->OnActionBarTriggered("download_search_results_file");
    m_page.mp_form->OnActionBarTriggered("add_remove_wishlist");
    m_page.mp_form->OnActionBarTriggered("expand_folders");
}

TEST_F(SearchFormTest, TogglesHoldForRowsToCome) {
    const unsigned int l_token = m_page.Search("x");
    Reply(l_token, "anna", {SearchPage::File("f\\a")});
    SelectOnly(m_page.Tree(), {});
    Press("Expand Folders [on]");
    EXPECT_FALSE(Row(m_page.Tree(), "f")->isExpanded());
    Press("Expand Users [on]");
    Reply(l_token, "bert", {SearchPage::File("g\\b")});
    EXPECT_FALSE(Row(m_page.Tree(), "anna")->isExpanded());
    EXPECT_FALSE(Row(m_page.Tree(), "bert")->isExpanded());
    EXPECT_FALSE(Row(m_page.Tree(), "g")->isExpanded());
    Press("Expand Users [off]");
    Press("Expand Folders [off]");
    EXPECT_TRUE(Row(m_page.Tree(), "bert")->isExpanded() && Row(m_page.Tree(), "g")->isExpanded());
    // Each tab has its own.
    Reply(m_page.Search("y"), "carl", {SearchPage::File("h\\c")});
    Press("Expand Folders [on]");
    EXPECT_TRUE(Row(m_page.Tree(0), "g")->isExpanded());
    EXPECT_FALSE(Row(m_page.Tree(1), "h")->isExpanded());
}

TEST_F(SearchFormTest, FilesAndFoldersAreDownloaded) {
    const unsigned int l_token = m_page.Search("x");
    Reply(
        l_token, "anna",
        {SearchPage::File("m\\old\\b", 5'000'000'000), SearchPage::File("m\\old\\a", 2), SearchPage::File("n\\c", 3)});
    Reply(l_token, "bert", {SearchPage::File("m\\old\\a", 4)});
    QTreeWidget* const lp_tree = m_page.Tree();
    lp_tree->sortByColumn(1, Qt::DescendingOrder);
    SelectOnly(lp_tree, {Row(lp_tree, "anna"), Row(lp_tree, "old/m")});
    Press("Download File");
    EXPECT_THAT(Downloads(), IsEmpty());
    SelectOnly(lp_tree, {Row(lp_tree, "anna"), Row(lp_tree, "b"), Row(lp_tree, "c")});
    QTest::keyClick(lp_tree, Qt::Key_Return);
    EXPECT_THAT(Downloads(), ElementsAre("anna|m\\old|b|5000000000|0", "anna|n|c|3|0"));
    // A folder by one of its files and by its own row: once, and only what was found of it.
    SelectOnly(lp_tree, {Row(lp_tree, "b"), Row(lp_tree, "old/m")});
    g("download_entry").Remove();
    Press("Download Folder");
    EXPECT_THAT(Downloads(), ElementsAre("anna|m\\old|a|2|0", "anna|m\\old|b|5000000000|0"));
    // What is filtered out is not downloaded, though it was selected.
    g("download_entry").Remove();
    lp_tree->selectAll();
    m_page.Tab()->FilterEdit()->setText(QStringLiteral("c"));
    QTest::keyClick(lp_tree, Qt::Key_D, Qt::ControlModifier);
    EXPECT_THAT(Downloads(), ElementsAre("anna|n|c|3|0"));
    ASSERT_TRUE(QTest::qWaitFor([this] { return Counts().contains(QStringLiteral("1 file selected, 3 bytes")); }));
    SelectOnly(lp_tree, {Row(lp_tree, "bert")});
    Press("Download Folder");
    Q_EMIT lp_tree->itemDoubleClicked(Row(lp_tree, "b"), 4);
    EXPECT_EQ(Downloads().size(), 1u);
}

TEST_F(SearchFormTest, KeysCopyAndLeadToTheFilter) {
    Reply(m_page.Search("x"), "anna", {SearchPage::File("m\\old\\b\nrm *")});
    QTreeWidget* const lp_tree = m_page.Tree();
    lp_tree->selectAll();
    QTest::keyClick(lp_tree, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "anna\nm\\old\nb[U+000A]rm *");
    QTest::keyClick(lp_tree, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "anna\nm\\old\nm\\old\\b[U+000A]rm *");
    QTest::keyClick(lp_tree, Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(QApplication::focusWidget(), m_page.Tab()->FilterEdit());
}

TEST_F(SearchFormTest, TheLastSearchesCompleteUntilTheyAreForgotten) {
    for (int l_search = 0; l_search < 55; ++l_search) {
        Type(("search " + std::to_string(l_search)).c_str());
    }
    Type("search 20");
    Type("  ");
    const std::vector<std::string> l_searches = RememberedSearches();
    ASSERT_EQ(l_searches.size(), c_rememberedSearches);
    EXPECT_THAT(std::vector(l_searches.begin(), l_searches.begin() + 3),
                ElementsAre("search 20", "search 54", "search 53"));
    // A completion that is taken by Return is searched for once, and leaves the line empty.
    m_page.Edit()->setFocus();
    QTest::keyClicks(m_page.Edit(), QStringLiteral("CH 5"));
    QWidget* const lp_popup = m_page.Edit()->completer()->popup();
    ASSERT_TRUE(lp_popup->isVisible());
    QTest::keyClick(lp_popup, Qt::Key_Down);
    const int l_tabs = m_page.Tabs()->count();
    QTest::keyClick(lp_popup, Qt::Key_Return);
    QCoreApplication::processEvents();
    EXPECT_EQ(m_page.Tabs()->count(), l_tabs + 1);
    EXPECT_EQ(TabTexts().back(), "search 54");
    EXPECT_EQ(m_page.Edit()->text(), QString());

    SetSearchesRemembered(false);
    Type("secret");
    EXPECT_THAT(RememberedSearches(), IsEmpty());
    SetSearchesRemembered(true);
    Type("open");
    EXPECT_THAT(RememberedSearches(), ElementsAre("open"));
}

TEST_F(SavedWishesTest, RowsFollowTheWishesAndTheirBoxes) {
    ASSERT_EQ(Lines().size(), 4u);
    EXPECT_THAT(Lines(), ElementsAre("Y ant & bee", " monkey", "Y wwwwwwwww", "Y zebra"));
    EXPECT_LE(Wishes()->topLevelItem(2)->text(1).size(), 512);
    QTest::mouseClick(Box("zebra"), Qt::LeftButton);
    EXPECT_FALSE(Wish("zebra").IsConnected("wish_list_item_enabled"));
    EXPECT_EQ(Lines()[3], " zebra");
    Wishes()->setFocus();
    Press("Enable All Wish List Searches");
    EXPECT_TRUE(Wish("zebra").IsConnected("wish_list_item_enabled") && Box("monkey")->isChecked());
    Press("Disable All Wish List Searches");
    EXPECT_EQ(d.GetType("wish_list_item_enabled")->GetGlobalNullItem()->CountItems("wish_list_item"), 0u);
    SelectOnly(Wishes(), {Wishes()->topLevelItem(1), Wishes()->topLevelItem(3)});
    QTest::keyClick(Wishes(), Qt::Key_Space);
    EXPECT_THAT(Lines(), ElementsAre(" ant & bee", "Y monkey", " wwwwwwwww", "Y zebra"));
    Press("Remove Wish List Search");
    EXPECT_THAT(Lines(), ElementsAre(" ant & bee", " wwwwwwwww"));
    EXPECT_FALSE(Wish("zebra"));
    EXPECT_EQ(d.GetType("wish_list_node")->CountItems(), 2u);
    EXPECT_EQ(d.GetType("wish_list_node_checkbox")->CountItems(), 2u);
}

TEST_F(SavedWishesTest, AWishOpensATabWhenSomethingIsFound) {
    m_page.Edit()->setFocus();
    m_page.Search("other");
    const unsigned int l_first = m_page.Search("zebra", true);
    const unsigned int l_next = m_page.Search("zebra", true);
    EXPECT_EQ(m_page.Tabs()->count(), 1) << "nothing has been found yet";
    Reply(l_first, "anna", {SearchPage::File("f\\a")});
    ASSERT_THAT(TabTexts(), ElementsAre("other", "zebra"));
    EXPECT_EQ(m_page.Tabs()->currentIndex(), 0);
    EXPECT_THAT(Alerts(), ElementsAre("zebra"));
    Reply(l_next, "bert", {SearchPage::File("f\\b")});
    EXPECT_EQ(m_page.Tabs()->count(), 2) << "the same tab serves every turn of a wish";
    EXPECT_EQ(m_page.Tree(1)->topLevelItemCount(), 2);
    m_page.Tabs()->setCurrentIndex(1);
    EXPECT_THAT(Alerts(), IsEmpty());

    // Closed, it comes back with the next answer of a search that is still open to it.
    m_page.mp_form->OnTabCloseRequested(1);
    const unsigned int l_third = m_page.Search("zebra", true);
    Reply(l_first, "carl", {SearchPage::File("f\\c")});
    EXPECT_EQ(m_page.Tabs()->count(), 1);
    Reply(l_third, "anna", {SearchPage::File("f\\a")});
    EXPECT_THAT(TabTexts(), ElementsAre("other", "zebra"));
    EXPECT_THAT(Alerts(), ElementsAre("zebra"));

    // Disabled or gone wishes find nothing any more.
    const unsigned int l_disabled = m_page.Search("ant & bee", true);
    Box("ant & bee")->setChecked(false);
    Reply(l_disabled, "anna", {SearchPage::File("g\\a")});
    const unsigned int l_monkey = m_page.Search("monkey", true);
    Wish("monkey").Remove();
    Reply(l_monkey, "anna", {SearchPage::File("h\\a")});
    EXPECT_EQ(m_page.Tabs()->count(), 2);
}

TEST_F(SavedWishesTest, ASearchBecomesAWishAndAWishIsDropped) {
    m_page.Search("new wish");
    SelectOnly(m_page.Tree(), {});
    Press("Add to Wishlist");
    Press("Add to Wishlist");
    EXPECT_TRUE(Wish("new wish").IsConnected("wish_list_item_enabled"));
    EXPECT_THAT(Lines(), ElementsAre("Y ant & bee", " monkey", "Y new wish", "Y wwwwwwwww", "Y zebra"));
    m_page.Search("zebra");
    SelectOnly(m_page.Tree(1), {});
    Press("Add to Wishlist");
    EXPECT_EQ(Lines().size(), 5u);

    Reply(m_page.Search("zebra", true), "anna", {SearchPage::File("f\\a")});
    m_page.Tabs()->setCurrentIndex(2);
    SelectOnly(m_page.Tree(2), {});
    Press("Remove from Wish List");
    EXPECT_FALSE(Wish("zebra"));
    EXPECT_EQ(m_page.Tabs()->count(), 3) << "what was found stays";
    Press("Remove from Wish List");
    EXPECT_EQ(Lines().size(), 4u);
}

TEST_F(SearchFormTest, SizesAreKeptForAllTrees) {
    m_page.Search("x");
    m_page.Search("y");
    m_page.Tree(0)->header()->resizeSection(SearchResultListItem::File, 333);
    EXPECT_EQ(m_page.Tree(1)->header()->sectionSize(SearchResultListItem::File), 333);
    m_page.Search("z");
    EXPECT_EQ(m_page.Tree(2)->header()->sectionSize(SearchResultListItem::File), 333);
    EXPECT_NEAR(m_page.Wishes()->width(), 200, 10);
    EXPECT_EQ(m_page.Wishes()->header()->sectionSize(0), 20);
}
