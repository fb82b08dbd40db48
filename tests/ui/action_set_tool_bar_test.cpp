#include "ui/action_set_tool_bar.h"

#include "app/text.h"
#include "store_test.h"

#include <QAction>
#include <QLineEdit>
#include <QMainWindow>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

using testing::ElementsAre;

// A window like ours: a page with a list of users that is bound, a page that is bound as a whole with a list inside,
// and a field that is not bound.
class ActionSetToolBarTest : public StoreTest {
protected:
    ActionSetToolBarTest() {
        m_window = std::make_unique<QMainWindow>();
        new ActionSetToolBar(m_window.get());
        m_window->addToolBar(actionBar);
        QObject::connect(actionBar, &ActionSetToolBar::ActionTriggered, actionBar,
                         [this](const std::string& i_id) { m_triggered.push_back(i_id); });
        actionBar->AddSetAction("users", "message", "Message User", ":/icons/chat_icon", true);
        actionBar->AddSetAction("files", "get", "Download File", ":/icons/transfer_icon", true);
        actionBar->AddSetAction("users", "add", "Add User", ":/icons/add_user_icon", false);
        actionBar->AddSetAction("files", "message", "Ask Owner", ":/icons/chat_icon", false);

        m_users =
            MakeTree({{QStringLiteral("ann"), QStringLiteral("3")}, {QStringLiteral("bob"), QStringLiteral("4")}});
        m_files = MakeTree({{QStringLiteral("song.mp3"), QStringLiteral("900")}});
        m_filesPage = new QWidget;
        (new QVBoxLayout(m_filesPage))->addWidget(m_files);
        m_tabs = new QTabWidget;
        m_tabs->addTab(m_users, QStringLiteral("Users"));
        m_tabs->addTab(m_filesPage, QStringLiteral("Files"));
        m_field = new QLineEdit;
        QWidget* const lp_centre = new QWidget;
        QVBoxLayout* const lp_layout = new QVBoxLayout(lp_centre);
        lp_layout->addWidget(m_tabs);
        lp_layout->addWidget(m_field);
        m_window->setCentralWidget(lp_centre);

        actionBar->RegisterWidget(m_users, QStringLiteral("users"));
        actionBar->AddWidgetColumnKey(m_users, QStringLiteral("user"), 0);
        actionBar->RegisterWidget(m_filesPage, QStringLiteral("files"));
        actionBar->AddWidgetKey(m_filesPage, QStringLiteral("user"), QStringLiteral("carl"));
        actionBar->AddWidgetColumnKey(m_filesPage, QStringLiteral("file"), 0);
    }

    // As the main window announces its end.
    ~ActionSetToolBarTest() override { g_showIsOver = true; }

    void SetUp() override {
        m_window->show();
        m_window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
    }

    static QTreeWidget* MakeTree(const QList<QStringList>& i_rows) {
        QTreeWidget* const lp_tree = new QTreeWidget;
        lp_tree->setColumnCount(2);
        lp_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
        for (const QStringList& l_row : i_rows) {
            new QTreeWidgetItem(lp_tree, l_row);
        }
        return lp_tree;
    }

    static std::vector<std::string> Labels() {
        std::vector<std::string> l_labels;
        for (const QAction* const lp_action : actionBar->actions()) {
            l_labels.push_back(ToUtf8(lp_action->text()));
        }
        return l_labels;
    }

    static void Click(const char* i_label) {
        for (QAction* const lp_action : actionBar->actions()) {
            if (lp_action->text() == QLatin1String(i_label)) {
                QTest::mouseClick(actionBar->widgetForAction(lp_action), Qt::LeftButton);
                return;
            }
        }
        ADD_FAILURE() << "no button " << i_label;
    }

    static std::string Key(const char* i_key) { return ToUtf8(actionBar->GetKey(QLatin1String(i_key))); }

    std::unique_ptr<QMainWindow> m_window;
    QTabWidget* m_tabs = nullptr;
    QTreeWidget* m_users = nullptr;
    QTreeWidget* m_files = nullptr;
    QWidget* m_filesPage = nullptr;
    QLineEdit* m_field = nullptr;
    std::vector<std::string> m_triggered;
};

} // namespace

TEST_F(ActionSetToolBarTest, ShowsTheSetOfTheWidgetInFocus) {
    m_users->setFocus();
    EXPECT_THAT(Labels(), ElementsAre("Message User", "Add User"));
    const int l_height = actionBar->sizeHint().height();
    m_field->setFocus();
    EXPECT_THAT(Labels(), ElementsAre(""));
    EXPECT_EQ(actionBar->sizeHint().height(), l_height) << "nothing below it moves";

    m_tabs->tabBar()->setFocus();
    EXPECT_THAT(Labels(), ElementsAre("Message User", "Add User"));
    m_field->setFocus();
    m_tabs->setCurrentIndex(1);
    m_tabs->tabBar()->setFocus();
    EXPECT_THAT(Labels(), ElementsAre("Download File", "Ask Owner"));
    m_field->setFocus();
    m_files->setFocus();
    EXPECT_THAT(Labels(), ElementsAre("Download File", "Ask Owner")) << "through the page it lies on";

    // Of all the buttons that came and went, only those on show are left.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(actionBar->findChildren<QAction*>().size(), 3) << "two and that of the bar itself";
    EXPECT_EQ(d.GetType("toolbar_action_object")->CountItems(), 2);
}

TEST_F(ActionSetToolBarTest, PublishesTheKeysOfTheSelectedRow) {
    m_users->setFocus();
    Click("Message User");
    EXPECT_TRUE(m_triggered.empty()) << "there is no row to be about";
    Click("Add User");
    EXPECT_THAT(m_triggered, ElementsAre("add"));
    EXPECT_EQ(Key("user"), "");

    m_users->topLevelItem(1)->setSelected(true);
    Click("Message User");
    EXPECT_EQ(Key("user"), "bob");
    EXPECT_THAT(m_triggered, ElementsAre("add", "message"));

    m_tabs->setCurrentIndex(1);
    m_files->setFocus();
    EXPECT_EQ(Key("user"), "carl");
    Click("Ask Owner");
    EXPECT_EQ(Key("file"), "");
    m_files->topLevelItem(0)->setSelected(true);
    m_users->topLevelItem(1)->setSelected(false);
    Click("Download File");
    EXPECT_EQ(Key("file"), "song.mp3") << "from the list inside the bound page";

    m_tabs->setCurrentIndex(0);
    m_users->setFocus();
    Click("Add User");
    EXPECT_EQ(Key("user"), "carl") << "as left by an earlier widget";
    EXPECT_EQ(Key("no such key"), "");
}

TEST_F(ActionSetToolBarTest, ANameThatCannotBeShownIsPublishedAsItIs) {
    const QByteArray l_name("\xFFname\n", 6);
    m_users->topLevelItem(0)->setData(0, c_actionKeyRole, l_name);
    m_users->topLevelItem(0)->setSelected(true);
    m_users->setFocus();
    Click("Message User");
    EXPECT_EQ(actionBar->GetKeyBytes("user"), l_name.toStdString());
}

TEST_F(ActionSetToolBarTest, AWidgetMayHaveLabelsOfItsOwn) {
    const QString l_id = QStringLiteral("message");
    m_users->setFocus();
    actionBar->SetWidgetActionText(m_users, l_id, QStringLiteral("Talk"));
    EXPECT_THAT(Labels(), ElementsAre("Talk", "Add User"));
    actionBar->SetWidgetActionText(m_filesPage, l_id, QStringLiteral("Talk"));
    actionBar->SetWidgetActionText(m_users, l_id, QStringLiteral("Whisper"));
    EXPECT_THAT(Labels(), ElementsAre("Whisper", "Add User"));
    m_tabs->setCurrentIndex(1);
    m_filesPage->setFocus();
    EXPECT_THAT(Labels(), ElementsAre("Download File", "Talk")) << "the same id in another set";
    m_tabs->setCurrentIndex(0);
    m_users->setFocus();
    EXPECT_THAT(Labels(), ElementsAre("Whisper", "Add User"));
    actionBar->SetWidgetActionText(m_field, l_id, QStringLiteral("of no bound widget"));
}

TEST_F(ActionSetToolBarTest, WhatIsBoundToADeadWidgetIsForgotten) {
    m_tabs->setCurrentIndex(1);
    m_files->setFocus();
    actionBar->SetWidgetActionText(m_filesPage, QStringLiteral("get"), QStringLiteral("Fetch"));
    EXPECT_THAT(Labels(), ElementsAre("Fetch", "Ask Owner"));
    delete m_filesPage;
    EXPECT_EQ(d.GetType("toolbar_action_widget")->CountItems(), 1);
    EXPECT_EQ(d.GetType("action_key_value_pair")->CountItems(), 0);
    EXPECT_EQ(d.GetType("action_key_column_pair")->CountItems(), 1);
    EXPECT_EQ(d.GetType("widget_action_text")->CountItems(), 0);
    EXPECT_THAT(Labels(), testing::Not(testing::Contains("Fetch")));
}

TEST_F(ActionSetToolBarTest, TheKeyboardReachesTheButtonsAndComesBack) {
    m_users->topLevelItem(0)->setSelected(true);
    m_users->setFocus();
    const auto l_toBar = [] {
        QWidget* const lp_button = actionBar->widgetForAction(actionBar->actions().constFirst());
        ASSERT_TRUE(QTest::qWaitFor([&] { return lp_button->isVisible(); })) << "it is laid out";
        actionBar->setFocus();
        ASSERT_TRUE(lp_button->hasFocus());
    };
    l_toBar();
    ASSERT_THAT(Labels(), ElementsAre("Message User", "Add User"));
    QWidget* const lp_first = actionBar->widgetForAction(actionBar->actions().constFirst());
    EXPECT_FALSE(lp_first->toolTip().isEmpty());
    QTest::keyClick(lp_first, Qt::Key_Space);
    EXPECT_THAT(m_triggered, ElementsAre("message"));
    EXPECT_EQ(Key("user"), "ann");
    EXPECT_TRUE(m_users->hasFocus());

    l_toBar();
    QTest::keyClick(m_window->focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(m_window->focusWidget(), actionBar->widgetForAction(actionBar->actions().constLast()));
    QTest::keyClick(m_window->focusWidget(), Qt::Key_Escape);
    EXPECT_TRUE(m_users->hasFocus());
}

TEST_F(ActionSetToolBarTest, TurningToATabFocusesItsPage) {
    actionBar->AutoFocusTabWidget(m_tabs);
    actionBar->AutoFocusTabWidget(m_tabs);
    m_field->setFocus();
    m_tabs->setCurrentIndex(1);
    EXPECT_THAT(Labels(), ElementsAre("Download File", "Ask Owner"));
    m_tabs->clear();
    EXPECT_EQ(m_tabs->currentIndex(), -1);
}
