#include "ui/event_tool_bar.h"

#include "app/text.h"
#include "store_test.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMainWindow>
#include <QTabWidget>
#include <QTest>

namespace {

using testing::ElementsAre;

class EventToolBarTest : public StoreTest {
protected:
    EventToolBarTest() {
        m_window = std::make_unique<QMainWindow>();
        new EventToolBar(m_window.get());
        m_window->addToolBar(eventToolBar);
        m_tabs = new QTabWidget;
        m_window->setCentralWidget(m_tabs);
        m_shown = AddPage();
        m_waiting = AddPage();
        m_other = AddPage();
    }

    // As the main window announces its end.
    ~EventToolBarTest() override { g_showIsOver = true; }

    void SetUp() override {
        m_window->show();
        m_window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
    }

    QLineEdit* AddPage() {
        QLineEdit* const lp_edit = new QLineEdit;
        m_tabs->addTab(lp_edit, QStringLiteral("page"));
        return lp_edit;
    }

    static std::vector<std::string> Labels() {
        std::vector<std::string> l_labels;
        for (const QAction* const lp_action : eventToolBar->actions()) {
            l_labels.push_back(ToUtf8(lp_action->text()));
        }
        return l_labels;
    }

    static void Add(const char* i_text, QWidget* ip_widget) {
        eventToolBar->AddEvent(ToQString(i_text), QStringLiteral(":/icons/chat_icon"), ip_widget);
    }

    std::unique_ptr<QMainWindow> m_window;
    QTabWidget* m_tabs = nullptr;
    QLineEdit* m_shown = nullptr;
    QLineEdit* m_waiting = nullptr;
    QLineEdit* m_other = nullptr;
};

} // namespace

TEST_F(EventToolBarTest, HasOneButtonForEachWaitingWidget) {
    EXPECT_THAT(Labels(), ElementsAre(""));
    const int l_height = eventToolBar->sizeHint().height();
    Add("shown", m_shown);
    EXPECT_THAT(Labels(), ElementsAre(""));
    Add("waiting", m_waiting);
    Add("again", m_waiting);
    Add("other", m_other);
    EXPECT_THAT(Labels(), ElementsAre("waiting", "other"));

    QTest::mouseClick(eventToolBar->widgetForAction(eventToolBar->actions().constFirst()), Qt::LeftButton);
    EXPECT_THAT(Labels(), ElementsAre("other"));
    EXPECT_EQ(m_tabs->currentWidget(), m_waiting);
    EXPECT_TRUE(m_waiting->hasFocus());

    delete m_other;
    EXPECT_THAT(Labels(), ElementsAre(""));
    EXPECT_EQ(eventToolBar->sizeHint().height(), l_height);
    EXPECT_EQ(d.GetType("event_toolbar_widget")->CountItems(), 0);
    EXPECT_EQ(d.GetType("event_toolbar_action")->CountItems(), 0);

    Add("back again", m_shown);
    eventToolBar->RemoveEvent(m_shown);
    eventToolBar->RemoveEvent(m_shown);
    EXPECT_THAT(Labels(), ElementsAre(""));
}

TEST_F(EventToolBarTest, ForeignTextIsShownAndNothingElse) {
    Add("<img src='file:a'> & \u202Eevil", m_waiting);
    EXPECT_THAT(Labels(), ElementsAre("<img src='file:a'> && [U+202E]evil"));
    EXPECT_EQ(ToUtf8(eventToolBar->actions().constFirst()->toolTip()),
              "<qt>&lt;img src='file:a'&gt; &amp; [U+202E]evil</qt>");
}
