// Rooms and private chats, as a person at the window has them: with the real server, and a scripted user at the other
// end.
#include "window_test.h"

#include "server/scripted_client.h"

#include "net/server.h"
#include "ui/action_set_tool_bar.h"
#include "ui/chat_form.h"
#include "ui/create_room_dialog.h"
#include "ui/event_tool_bar.h"
#include "ui/room_form.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QSplitter>
#include <QTabBar>
#include <QTabWidget>
#include <QTcpSocket>
#include <QTest>
#include <QTreeWidget>

namespace {

class RoomsAndChatsTest : public WindowTest {
protected:
    RoomsAndChatsTest() : m_eve(m_server.Port(), "Eve") {
        m_eve.Enter("harbour");
        SeedUser(m_server.Port());
        OpenAndShow();
        EXPECT_TRUE(WaitFor([] { return gp_server->IsConnected(); }));
    }

    QTabWidget* Rooms() { return Find<QTabWidget>("roomsTabControl"); }
    QTabWidget* Chats() { return Find<QTabWidget>("chatTabControl"); }
    QTreeWidget* RoomList() { return Find<QTreeWidget>("roomList"); }

    void SelectRoom(const QString& i_room) {
        ASSERT_TRUE(WaitFor([&] { return !RoomList()->findItems(i_room, Qt::MatchExactly).isEmpty(); }));
        const QRect l_place = RoomList()->visualItemRect(RoomList()->findItems(i_room, Qt::MatchExactly).first());
        QTest::mouseClick(RoomList()->viewport(), Qt::LeftButton, {}, l_place.center());
    }
    void Say(QWidget* ip_form, const char* ip_text) {
        QLineEdit* const lp_edit = ip_form->findChild<QLineEdit*>(QStringLiteral("chatEdit"));
        QTest::keyClicks(lp_edit, QLatin1String(ip_text));
        QTest::keyClick(lp_edit, Qt::Key_Return);
        // The other end waits without our event loop.
        EXPECT_TRUE(WaitFor([] { return gp_server->findChild<QTcpSocket*>()->bytesToWrite() == 0; }));
    }
    void SendToAda(const char* ip_text) {
        m_eve.Send(to_server::PrivateChat{"Ada", ip_text});
        m_eve.Flush();
    }

    ServerProcess m_server;
    ScriptedClient m_eve;
};

} // namespace

TEST_F(RoomsAndChatsTest, AListedRoomIsEnteredOnceSpokenInAndLeft) {
    SelectRoom(QStringLiteral("harbour"));
    EXPECT_THAT(ButtonTexts(), testing::ElementsAre("Enter Room", "Create Room", "Refresh Room List"));
    ClickButton("Enter Room");
    ASSERT_TRUE(WaitFor([&] { return Rooms()->count() == 1; }));
    EXPECT_EQ(Rooms()->tabText(0).toStdString(), "harbour");
    RoomForm* const lp_form = qobject_cast<RoomForm*>(Rooms()->widget(0));
    EXPECT_TRUE(lp_form->isAncestorOf(QApplication::focusWidget()));

    const QRect l_row = RoomList()->visualItemRect(RoomList()->topLevelItem(0));
    QTest::mouseDClick(RoomList()->viewport(), Qt::LeftButton, {}, l_row.center());
    EXPECT_TRUE(lp_form->isAncestorOf(QApplication::focusWidget())) << "a room that one is in comes to the front";
    Say(lp_form, "high tide at noon");
    const auto l_line = m_eve.Await<from_server::RoomChat>([](const auto& i_chat) { return i_chat.user == "Ada"; });
    ASSERT_TRUE(l_line);
    EXPECT_EQ(l_line->text, "high tide at noon");
    EXPECT_EQ(Rooms()->count(), 1);

    const ItemPtr l_room = d.GetType("room")->GetItem("harbour");
    EXPECT_FALSE(l_room.IsConnected("room_autojoin"));
    const auto l_toggle = [] { actionBar->actions().at(1)->trigger(); };
    l_toggle();
    EXPECT_TRUE(l_room.IsConnected("room_autojoin"));
    l_toggle();
    EXPECT_FALSE(l_room.IsConnected("room_autojoin"));
    ClickButton("Leave Room");
    EXPECT_TRUE(WaitFor([&] { return Rooms()->count() == 0; }));
    EXPECT_FALSE(l_room["room_form"]);
}

TEST_F(RoomsAndChatsTest, ARoomIsCreatedUnlessItsNameIsNone) {
    RoomList()->setFocus();
    ClickButton("Create Room");
    CreateRoomDialog* const lp_dialog = OpenDialog<CreateRoomDialog>();
    ASSERT_TRUE(lp_dialog);
    QLineEdit* const lp_edit = lp_dialog->findChild<QLineEdit*>();
    lp_dialog->activateWindow();
    ASSERT_TRUE(WaitFor([&] { return QApplication::focusWidget() == lp_edit; }));
    const QLabel* const lp_fault = lp_dialog->findChild<QLabel*>(QStringLiteral("faultLabel"));
    for (const QString& l_name : {QString(), QStringLiteral("   "), QString(65, QLatin1Char('x')),
                                  QString(33, QChar(0xE9))}) { // bytes count: an é has two
        lp_edit->setText(l_name);
        lp_dialog->accept();
        EXPECT_TRUE(lp_dialog->isVisible()) << l_name.toStdString();
        EXPECT_FALSE(lp_fault->text().isEmpty()) << l_name.toStdString();
    }
    const QString l_longest = QString(32, QChar(0xE9));
    lp_edit->setText(QStringLiteral(" %1 ").arg(l_longest));
    QTest::keyClick(lp_edit, Qt::Key_Return);
    EXPECT_FALSE(OpenDialog<CreateRoomDialog>());
    ASSERT_TRUE(WaitFor([&] { return Rooms()->count() == 1; }));
    EXPECT_EQ(Rooms()->tabText(0), l_longest);
}

TEST_F(RoomsAndChatsTest, APrivateMessageWaitsAsAButtonAndAClosedChatComesBack) {
    SendToAda("are you there?");
    ASSERT_TRUE(WaitFor([&] { return Chats()->count() == 1; }));
    EXPECT_FALSE(Chats()->isVisible());
    QAction* const lp_event = eventToolBar->actions().first();
    EXPECT_EQ(lp_event->text().toStdString(), "Eve");
    QTest::mouseClick(eventToolBar->widgetForAction(lp_event), Qt::LeftButton);
    EXPECT_TRUE(Chats()->isVisible());
    EXPECT_TRUE(eventToolBar->actions().first()->text().isEmpty());
    Say(Chats()->widget(0), "always");
    const auto l_line = m_eve.Await<from_server::PrivateChat>();
    ASSERT_TRUE(l_line);
    EXPECT_EQ(l_line->text, "always");

    const ItemPtr l_eve = d.GetType("user")->GetItem("Eve");
    QTest::mouseClick(Chats()->tabBar()->tabButton(0, QTabBar::RightSide), Qt::LeftButton);
    EXPECT_EQ(Chats()->count(), 0);
    EXPECT_FALSE(l_eve["user_chat_widget"]);
    EXPECT_TRUE(d.GetType("user")->HasItem("Eve"));
    SendToAda("still?");
    EXPECT_TRUE(WaitFor([&] { return Chats()->count() == 1; }));
    EXPECT_TRUE(l_eve["user_chat_widget"]);
    mainWindow->OpenChatForm("Eve");
    EXPECT_EQ(Chats()->count(), 1);
}

// Two users whose names look alike have a chat each, and closing one leaves the other.
TEST_F(RoomsAndChatsTest, NamesThatLookAlikeAreNotMistakenForEachOther) {
    const std::string l_long(100, 'x');
    ChatForm* const lp_first = mainWindow->GetChatForm(l_long + "1");
    ChatForm* const lp_second = mainWindow->GetChatForm(l_long + "2");
    EXPECT_NE(lp_first, lp_second);
    ASSERT_EQ(Chats()->count(), 2);
    EXPECT_EQ(Chats()->tabText(0), Chats()->tabText(1));
    Q_EMIT Chats()->tabCloseRequested(0);
    EXPECT_EQ(mainWindow->GetChatForm(l_long + "2"), lp_second);
    EXPECT_EQ(Chats()->count(), 1);

    // The same for rooms: the row tells which is meant.
    d.GetType("room")->GetItem(l_long + l_long + "\n")->Connect(d.GetType("user_count")->GetItem(1));
    const QString l_shown = QString::fromStdString(l_long + l_long + "[U+000A]");
    SelectRoom(l_shown);
    ClickButton("Enter Room");
    EXPECT_EQ(actionBar->GetKeyBytes("room"), l_long + l_long + "\n");
}
