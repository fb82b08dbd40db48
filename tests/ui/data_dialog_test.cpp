#include "ui/data_dialog.h"

#include "app/settings.h"
#include "store_test.h"
#include "window_test.h"

#include <QAction>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QSplitter>
#include <QTest>
#include <QTreeWidget>

#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace {

class DataDialogTest : public StoreTest {
protected:
    // Two rooms with users; a user knows its rooms, and so round and round.
    DataDialogTest() {
        CreateSettingsTypes();
        Type* const lp_room = d.NewType("room", true, false, true);
        Type* const lp_user = d.NewType("user", false, false, true);
        Type* const lp_online = d.NewType("is_online", false, true, true);
        lp_room->RelateToType(lp_user, Many, Many, false);
        lp_user->RelateToType(lp_online, Many, One, false);
        for (const char* lp_name : {"ann", "bob"}) {
            lp_room->GetItem("lobby")->Connect(lp_user->GetItem(lp_name));
        }
        lp_room->GetItem("cellar")->Connect(lp_user->GetItem("ann"));
        lp_user->GetItem("ann")->NewItem("is_online");
    }

    void Open() {
        mp_dialog = new DataDialog(&d, nullptr);
        mp_dialog->show();
    }
    ~DataDialogTest() override { delete mp_dialog; }

    template <class Widget>
    Widget* Find(const char* i_name) {
        Widget* const lp_widget = mp_dialog->findChild<Widget*>(QLatin1String(i_name));
        if (!lp_widget) {
            ADD_FAILURE() << "no " << i_name;
            std::abort();
        }
        return lp_widget;
    }
    QListWidget* Items() { return Find<QListWidget>("itemList"); }
    QTreeWidget* Tree() { return Find<QTreeWidget>("itemDataTree"); }
    std::string CountText() { return Find<QLabel>("itemCount")->text().toStdString(); }

    QTreeWidgetItem* TypeRow(const char* i_name) {
        const auto l_rows = Find<QTreeWidget>("typeList")->findItems(QLatin1String(i_name), Qt::MatchExactly);
        return l_rows.isEmpty() ? nullptr : l_rows.first();
    }
    std::string Count(const char* i_type) { return TypeRow(i_type)->text(2).toStdString(); }
    void Select(const char* i_type) { Find<QTreeWidget>("typeList")->setCurrentItem(TypeRow(i_type)); }
    std::vector<std::string> Entries() {
        std::vector<std::string> l_entries;
        for (int l_row = 0; l_row < Items()->count(); ++l_row) {
            l_entries.push_back(Items()->item(l_row)->text().toStdString());
        }
        return l_entries;
    }
    void Click(const char* i_value) {
        QListWidgetItem* const lp_entry = Items()->findItems(QLatin1String(i_value), Qt::MatchExactly).first();
        QTest::mouseClick(Items()->viewport(), Qt::LeftButton, {}, Items()->visualItemRect(lp_entry).center());
    }
    static std::vector<std::string> Children(const QTreeWidgetItem* ip_node) {
        std::vector<std::string> l_texts;
        for (int l_child = 0; l_child < ip_node->childCount(); ++l_child) {
            l_texts.push_back(ip_node->child(l_child)->text(0).toStdString());
        }
        return l_texts;
    }
    static QTreeWidgetItem* Child(QTreeWidgetItem* ip_node, const char* i_text) {
        for (int l_child = 0; l_child < ip_node->childCount(); ++l_child) {
            if (ip_node->child(l_child)->text(0) == QLatin1String(i_text)) {
                return ip_node->child(l_child);
            }
        }
        ADD_FAILURE() << "no " << i_text;
        std::abort();
    }
    void Filter(const char* i_text) { Find<QLineEdit>("itemFilter")->setText(QString::fromUtf8(i_text)); }

    QPointer<DataDialog> mp_dialog;
};

} // namespace

TEST_F(DataDialogTest, ListsTypesAndTheItemsOfTheSelectedOneAsTheyComeAndGo) {
    Open();
    EXPECT_EQ(Find<QSplitter>("typeSplitter")->sizes().first(), 300);
    EXPECT_EQ(TypeRow("room")->text(1).toStdString(), "value   ");
    EXPECT_EQ(TypeRow("is_online")->text(1).toStdString(), "null   ");
    EXPECT_EQ(Count("user"), "2");
    EXPECT_EQ(CountText(), "Select a Type to see its items");

    Select("is_online");
    EXPECT_THAT(Entries(), ElementsAre(""));
    Select("user");
    EXPECT_THAT(Entries(), UnorderedElementsAre("ann", "bob"));
    d.GetType("user")->GetItem("new\u202E");
    EXPECT_EQ(Entries().front(), "new[U+202E]");
    EXPECT_EQ(Count("user"), "3");
    d.GetType("room")->GetItem("attic");
    EXPECT_EQ(Count("room"), "3");
    EXPECT_EQ(Entries().size(), 3U) << "of another Type";
    d.GetType("user")->GetItem("bob")->Remove();
    EXPECT_THAT(Entries(), ElementsAre("new[U+202E]", "ann"));
    EXPECT_EQ(Count("user"), "2");
    EXPECT_TRUE(WaitFor([this] { return CountText() == "2 shown, no more"; }));

    d.NewType("zeta", true, false, true);
    ASSERT_TRUE(TypeRow("zeta"));
    Select("zeta");
    EXPECT_TRUE(WaitFor([this] { return CountText() == "No items"; }));

    mp_dialog->close();
    EXPECT_TRUE(WaitFor([this] { return mp_dialog.isNull(); }));
    d.GetType("user")->GetItem("unseen");
}

TEST_F(DataDialogTest, TheTreeOpensLazilyAndReentersNoType) {
    Open();
    Select("room");
    Click("lobby");
    QTreeWidgetItem* const lp_top = Tree()->topLevelItem(0);
    EXPECT_EQ(lp_top->text(0).toStdString(), "lobby");
    EXPECT_TRUE(lp_top->isExpanded());
    EXPECT_THAT(Children(lp_top), UnorderedElementsAre("[user] ann", "[user] bob"));

    QTreeWidgetItem* const lp_ann = Child(lp_top, "[user] ann");
    EXPECT_THAT(Children(lp_ann), ElementsAre("~~unloaded~~"));
    for (int l_time = 0; l_time < 2; ++l_time) {
        lp_ann->setExpanded(true);
        EXPECT_THAT(Children(lp_ann), ElementsAre("[is_online, null]")) << "no room: one lies on the way down";
        lp_ann->setExpanded(false);
    }
    QTreeWidgetItem* const lp_bob = Child(lp_top, "[user] bob");
    lp_bob->setExpanded(true);
    EXPECT_THAT(Children(lp_bob), IsEmpty());
}

TEST_F(DataDialogTest, TheRemovalOfAnItemOnShowEmptiesTheTree) {
    Open();
    Select("room");
    Click("lobby");
    d.GetType("room")->GetItem("cellar")->Remove();
    EXPECT_EQ(Tree()->topLevelItemCount(), 1) << "not on show";
    d.GetType("user")->GetItem("bob")->Remove();
    EXPECT_EQ(Tree()->topLevelItemCount(), 0);
    EXPECT_THAT(Entries(), ElementsAre("lobby"));
    Click("lobby");
    EXPECT_THAT(Children(Tree()->topLevelItem(0)), ElementsAre("[user] ann"));
    Select("user");
    EXPECT_EQ(Tree()->topLevelItemCount(), 0);
}

TEST_F(DataDialogTest, RowsComeInSlicesAndTheNewestPushTheOldestOut) {
    Type* const lp_user = d.GetType("user");
    for (int l_number = 0; l_number < 2500; ++l_number) {
        d.GetType("room")->GetItem("lobby")->Connect(lp_user->GetItem(l_number));
    }
    Open();
    Select("user");
    EXPECT_EQ(Items()->count(), 1000);
    EXPECT_EQ(CountText(), "1,000 shown, 1,502 more: scroll down");
    Items()->scrollToBottom();
    EXPECT_EQ(Items()->count(), 2000);

    for (int l_number = 0; l_number < 10; ++l_number) {
        lp_user->GetItem("late" + std::to_string(l_number));
    }
    EXPECT_EQ(Entries().front(), "late9");
    EXPECT_EQ(Items()->count(), 2000);
    EXPECT_TRUE(WaitFor([this] { return CountText() == "2,000 shown, 512 more: scroll down"; }));
    Items()->scrollToBottom();
    Items()->scrollToBottom();
    EXPECT_EQ(Items()->count(), 2512);
    const std::vector<std::string> l_entries = Entries();
    EXPECT_EQ(std::set<std::string>(l_entries.begin(), l_entries.end()).size(), 2512U);

    // The sweep takes them all at once, the waiting ones too.
    Select("room");
    Select("user");
    d.GetType("room")->GetItem("lobby")->Remove();
    Find<QPushButton>("sweepButton")->click();
    EXPECT_TRUE(WaitFor([this] { return Entries() == std::vector<std::string>{"ann"}; }));
    EXPECT_EQ(Count("user"), "1");
    EXPECT_EQ(Find<QLabel>("resultLabel")->text().toStdString(), "Items removed by the sweep: 2,511");
}

TEST_F(DataDialogTest, AnItemWithThousandsOfConnectionsGivesThemInSlices) {
    for (int l_number = 0; l_number < 700; ++l_number) {
        d.GetType("room")->GetItem("cellar")->Connect(d.GetType("user")->GetItem(l_number));
    }
    Open();
    Select("room");
    Click("cellar");
    QTreeWidgetItem* const lp_top = Tree()->topLevelItem(0);
    ASSERT_EQ(lp_top->childCount(), 501);
    QTreeWidgetItem* const lp_rest = lp_top->child(500);
    EXPECT_EQ(lp_rest->text(0).toStdString(), "201 more: click to load");
    Q_EMIT Tree()->itemClicked(lp_rest, 0);
    const std::vector<std::string> l_children = Children(lp_top);
    EXPECT_EQ(std::set<std::string>(l_children.begin(), l_children.end()).size(), 701U);
}

TEST_F(DataDialogTest, FiltersNarrowBothLists) {
    for (int l_number = 0; l_number < 30'000; ++l_number) {
        d.GetType("user")->GetItem("guest " + std::to_string(l_number));
    }
    Open();
    Find<QLineEdit>("typeFilter")->setText(QStringLiteral("US"));
    EXPECT_FALSE(TypeRow("user")->isHidden());
    EXPECT_TRUE(TypeRow("room")->isHidden());

    Select("user");
    Filter("GUEST 777");
    EXPECT_TRUE(WaitFor([this] { return CountText() == "11 shown, no more"; }));
    d.GetType("user")->GetItem("guest 777 again");
    d.GetType("user")->GetItem("somebody");
    EXPECT_EQ(Entries().front(), "guest 777 again");
    EXPECT_EQ(Items()->count(), 12);
    Filter("nobody of that name");
    EXPECT_TRUE(WaitFor([this] { return CountText() == "No item passes the filter"; }));
    Filter("");
    EXPECT_TRUE(WaitFor([this] { return CountText() == "1,000 shown, 29,004 more: scroll down"; }));
}

TEST_F(DataDialogTest, ThePasswordShowsDots) {
    SetSetting("username", "alice");
    SetSetting("password", "s3cret");
    Open();
    Select("global_value");
    const std::string l_dots = "••••••••";
    EXPECT_THAT(Entries(), UnorderedElementsAre("alice", l_dots));

    // A new value is nobody's at first; the old password is nobody's afterwards.
    SetSetting("greeting", "hello");
    SetSetting("password", "n3w");
    EXPECT_THAT(Entries(), UnorderedElementsAre("alice", "hello", l_dots, l_dots));
    Filter("s3c");
    EXPECT_TRUE(WaitFor([this] { return CountText() == "No item passes the filter"; }));

    Select("global");
    Filter("");
    EXPECT_TRUE(WaitFor([this] { return Items()->count() == 3; }));
    Click("password");
    QTreeWidgetItem* const lp_value = Tree()->topLevelItem(0)->child(0);
    EXPECT_EQ(lp_value->text(0).toStdString(), "[global_value] " + l_dots);
    SetSetting("hint", "n3w");
    d.GetType("global")->GetItem("password")->Disconnect("global_value");
    EXPECT_EQ(lp_value->text(0).toStdString(), "[global_value] n3w") << "now it is but a hint";
}

TEST_F(DataDialogTest, SavesAtTheButtonAndTellsHowMuchOrWhyNot) {
    SetSetting("username", "alice");
    Open();
    QPushButton* const lp_button = Find<QPushButton>("saveButton");
    EXPECT_FALSE(lp_button->isEnabled());
    const QTemporaryDir l_folder;
    std::string l_path = l_folder.filePath(QStringLiteral("store")).toStdString();
    mp_dialog->SetSave([&l_path] { return dataSaver->Save(&d, l_path.c_str()); });
    lp_button->click();
    EXPECT_EQ(Find<QLabel>("resultLabel")->text().toStdString(), "Items saved: 2");
    l_path = "/nowhere/at/all";
    lp_button->click();
    EXPECT_EQ(Find<QLabel>("resultLabel")->text().toStdString(), "Not saved: No such file or directory");
}

using DataMenuTest = WindowTest;

TEST_F(DataMenuTest, TheMenuShowsOneBrowserThatSavesTheWindowsStore) {
    Open();
    QAction* const lp_action = Find<QAction>("action_Data");
    lp_action->trigger();
    lp_action->trigger();
    ASSERT_EQ(m_window->findChildren<DataDialog*>().size(), 1);
    QPointer<DataDialog> l_dialog = m_window->findChild<DataDialog*>();
    QFile::remove(QString::fromStdString(HomePath(".Tidewell")));
    Find<QPushButton>("saveButton")->click();
    EXPECT_TRUE(QFile::exists(QString::fromStdString(HomePath(".Tidewell"))));
    EXPECT_THAT(Text<QLabel>("resultLabel"), StartsWith("Items saved: "));

    l_dialog->close();
    ASSERT_TRUE(WaitFor([&l_dialog] { return l_dialog.isNull(); }));
    lp_action->trigger();
    EXPECT_TRUE(m_window->findChild<DataDialog*>());
    Close();
}
