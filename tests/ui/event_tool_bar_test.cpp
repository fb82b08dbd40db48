#include "ui/event_tool_bar.h"

#include "app/text.h"
#include "store_test.h"
#include "window_test.h"

#include <QAction>
#include <QApplication>
#include <QImage>
#include <QLineEdit>
#include <QMainWindow>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

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

bool IsApplicationIcon(const char* i_name) {
    const auto l_picture = [](const QIcon& i_icon) { return i_icon.pixmap(QSize(32, 32), 1.0).toImage(); };
    return l_picture(QApplication::windowIcon()) == l_picture(QIcon(QLatin1String(i_name)));
}

bool Becomes(const char* i_icon) {
    return QTest::qWaitFor([i_icon] { return IsApplicationIcon(i_icon); });
}

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
    Add(std::string(10'000, 'W').c_str(), m_other);
    EXPECT_LT(eventToolBar->widgetForAction(eventToolBar->actions().constLast())->sizeHint().width(), 250);
}

class BlinkingIcon : public WindowTest {};

TEST_F(BlinkingIcon, GoesThroughTheAlertsUntilTheUserIsBack) {
    SeedUser(1); // nobody listens there, and no box asks for a name
    Open();
    if (!eventToolBar) {
        new EventToolBar(m_window.get());
    }
    m_window->show();
    QTimer* const lp_timer = eventToolBar->findChild<QTimer*>();
    QWidget* const lp_visible = Find<QTabWidget>("tabControl");
    m_window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
    eventToolBar->AddEvent(QStringLiteral("seen"), QStringLiteral(":/icons/chat_icon"), lp_visible);
    EXPECT_FALSE(lp_timer->isActive());

    QLineEdit l_elsewhere;
    l_elsewhere.show();
    l_elsewhere.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&l_elsewhere));
    eventToolBar->AddEvent(QStringLiteral("list"), QStringLiteral(":/icons/browse_icon"), lp_visible);
    eventToolBar->AddEvent(QStringLiteral("talk"), QStringLiteral(":/icons/chat_icon"), lp_visible);
    EXPECT_EQ(eventToolBar->actions().size(), 1) << "no button for what is on the screen, but the blank";
    ASSERT_TRUE(lp_timer->isActive());
    EXPECT_EQ(lp_timer->interval(), 2000);
    lp_timer->setInterval(20);
    for (int l_round = 0; l_round < 2; ++l_round) {
        EXPECT_TRUE(Becomes(":/icons/browse_icon"));
        EXPECT_TRUE(Becomes(":/icons/chat_icon"));
        EXPECT_TRUE(Becomes(":/icons/offline_icon"));
    }
    EXPECT_TRUE(Becomes(":/icons/chat_icon"));
    m_window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
    EXPECT_FALSE(lp_timer->isActive());
    EXPECT_TRUE(IsApplicationIcon(":/icons/offline_icon"));
}
