// What the window as a whole does: sizes, keys, the foot, and what a screen reader finds.
#include "window_test.h"

#include "app/settings.h"
#include "app/timers.h"
#include "net/message.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "sharing/shared_folders_manager.h"
#include "ui/action_set_tool_bar.h"
#include "ui/add_shared_folder_dialog.h"
#include "ui/add_user_dialog.h"
#include "ui/change_listening_port_dialog.h"
#include "ui/change_server_dialog.h"
#include "ui/change_username_password_dialog.h"
#include "ui/create_room_dialog.h"
#include "ui/data_dialog.h"
#include "ui/shared_files_rescanned_dialog.h"
#include "ui/status_watch.h"
#include "ui/user_group_config_dialog.h"
#include "ui/user_groups_dialog.h"
#include "ui/user_list_ignore_dialog.h"

#include <QAccessible>
#include <QHeaderView>
#include <QLabel>
#include <QSplitter>
#include <QTabBar>
#include <QTabWidget>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTreeWidget>

namespace {

class WindowBehaviourTest : public WindowTest {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_server.listen(QHostAddress::LocalHost));
        SeedUser(m_server.serverPort());
        OpenAndShow();
    }
    QTabWidget* Pages() { return Find<QTabWidget>("tabControl"); }
    // A person is slower than the layout.
    void Press(Qt::Key i_key, Qt::KeyboardModifiers i_modifiers = Qt::NoModifier) {
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : m_window.get(), i_key, i_modifiers);
        QCoreApplication::processEvents();
    }

    void FocusRoomList() {
        Find<QTreeWidget>("roomList")->setFocus();
        QCoreApplication::processEvents();
    }
    // Where the keyboard is.
    std::string Place() {
        const std::pair<const QWidget*, const char*> l_panes[] = {
            {actionBar, "tool bar"}, {Pages()->tabBar(), "pages"}, {Find<QTreeWidget>("roomList"), "room list"}};
        for (const auto& [lp_pane, l_name] : l_panes) {
            if (lp_pane == QApplication::focusWidget() || lp_pane->isAncestorOf(QApplication::focusWidget())) {
                return l_name;
            }
        }
        return "elsewhere";
    }

    QTcpServer m_server;
};

long long Stored(const char* ip_type) {
    return d.GetType("sizer_window")->HasItem("main_window")[ip_type].ToInt64().value_or(-1);
}

bool IsControl(QAccessible::Role i_role) {
    switch (i_role) {
    case QAccessible::PushButton:
    case QAccessible::CheckBox:
    case QAccessible::RadioButton:
    case QAccessible::ComboBox:
    case QAccessible::SpinBox:
    case QAccessible::Slider:
    case QAccessible::EditableText:
    case QAccessible::List:
    case QAccessible::Table:
    case QAccessible::Tree:
    case QAccessible::PageTab:
    case QAccessible::MenuItem:
    case QAccessible::ToolBar:
    case QAccessible::StatusBar:
    case QAccessible::Dialog:
        return true;
    default:
        return false;
    }
}

// Where the nameless controls below it are.
void FindUnnamed(QAccessibleInterface* ip_interface, const QString& i_path, QStringList& o_unnamed) {
    if (!ip_interface || !ip_interface->isValid() || ip_interface->state().invisible) {
        return;
    }
    const QObject* const lp_object = ip_interface->object();
    const QString l_path =
        QStringLiteral("%1/%2%3").arg(i_path, QLatin1String(lp_object ? lp_object->metaObject()->className() : "?"),
                                      lp_object ? QLatin1Char(':') + lp_object->objectName() : QString());
    if (IsControl(ip_interface->role()) && ip_interface->text(QAccessible::Name).trimmed().isEmpty()) {
        o_unnamed.append(l_path);
    }
    if (ip_interface->tableInterface()) {
        return; // cells have their texts
    }
    for (int l_child = 0; l_child < ip_interface->childCount(); ++l_child) {
        FindUnnamed(ip_interface->child(l_child), l_path, o_unnamed);
    }
}

std::string Unnamed(QWidget* ip_window) {
    QStringList l_unnamed;
    FindUnnamed(QAccessible::queryAccessibleInterface(ip_window), QString(), l_unnamed);
    return l_unnamed.join(QLatin1Char('\n')).toStdString();
}

} // namespace

TEST_F(WindowBehaviourTest, SizesOutliveTheRunAndNoneIsTakenWhileMaximised) {
    m_window->setGeometry(60, 50, 700, 480);
    QSplitter* const lp_splitter = Find<QSplitter>("roomSplitter");
    lp_splitter->setSizes({300, 350});
    Q_EMIT lp_splitter->splitterMoved(300, 1);
    Find<QTreeWidget>("roomList")->header()->resizeSection(0, 123);
    ASSERT_TRUE(WaitFor([] { return Stored("sizer_width") == 700; }));
    const QList<int> l_panes = lp_splitter->sizes();

    m_window->setWindowState(Qt::WindowMaximized);
    ASSERT_TRUE(WaitFor([&] { return m_window->width() != 700; }));
    EXPECT_EQ(Stored("sizer_width"), 700);
    EXPECT_EQ(Stored("sizer_height"), 480);
    Close();

    OpenAndShow();
    EXPECT_EQ(m_window->geometry(), QRect(60, 50, 700, 480));
    EXPECT_EQ(Find<QTreeWidget>("roomList")->columnWidth(0), 123);
    EXPECT_EQ(Find<QSplitter>("roomSplitter")->sizes(), l_panes);
}

TEST_F(WindowBehaviourTest, TheToolBarFollowsThePages) {
    Find<QTreeWidget>("roomList")->setFocus();
    EXPECT_THAT(ButtonTexts(), testing::Contains("Enter Room"));
    Press(Qt::Key_7, Qt::ControlModifier);
    EXPECT_EQ(Pages()->currentIndex(), 6);
    EXPECT_THAT(ButtonTexts(), testing::Contains("Change Server"));
    QTabBar* const lp_tabs = Find<QTabWidget>("optionsTabControl")->tabBar();
    QTest::mouseClick(lp_tabs, Qt::LeftButton, {}, lp_tabs->tabRect(1).center());
    EXPECT_THAT(ButtonTexts(), testing::Contains("Share Folder"));
    lp_tabs->setFocus();
    EXPECT_THAT(ButtonTexts(), testing::Contains("Share Folder")) << "a tab bar stands for its page";
    Press(Qt::Key_8, Qt::ControlModifier);
    EXPECT_EQ(ButtonTexts(), std::vector<std::string>{""});
}

TEST_F(WindowBehaviourTest, KeysReachEveryPaneAndComeBack) {
    Press(Qt::Key_2, Qt::ControlModifier);
    FocusRoomList();
    std::vector<std::string> l_way;
    do {
        Press(Qt::Key_F6);
        l_way.push_back(Place());
    } while (Place() != "room list" && l_way.size() < 12);
    EXPECT_THAT(l_way, testing::ElementsAre("tool bar", "pages", "room list")) << "nothing else takes the focus";
    Press(Qt::Key_F6, Qt::ShiftModifier);
    EXPECT_EQ(Place(), "pages");

    // A button is pressed by key, with the list's own actions still on the bar.
    FocusRoomList();
    Press(Qt::Key_F6);
    EXPECT_THAT(ButtonTexts(), testing::Contains("Create Room"));
    Press(Qt::Key_Tab);
    Press(Qt::Key_Space);
    EXPECT_TRUE(OpenDialog<CreateRoomDialog>());
}

TEST_F(WindowBehaviourTest, AScreenReaderFindsNoNamelessControl) {
    const auto l_walkPages = [this](const char* i_state) {
        for (int l_page = 0; l_page < Pages()->count(); ++l_page) {
            Pages()->setCurrentIndex(l_page);
            EXPECT_EQ(Unnamed(m_window.get()), "") << i_state << Pages()->tabText(l_page).toStdString();
        }
    };
    l_walkPages("empty ");
    const ItemPtr l_bo = d.GetType("user")->GetItem("Bo");
    d.GetType("room")->GetItem("harbour")->NewItem("in_room");
    m_window->OpenChatForm("Bo");
    Q_EMIT gp_server->SearchRequested(7, "tide", false);
    l_bo.NewItem("user_share").NewItem("user_share_loaded");
    l_walkPages("with a tab ");

    Find<QTabWidget>("optionsTabControl")->setCurrentIndex(1);
    Pages()->setCurrentIndex(6);
    EXPECT_EQ(Unnamed(m_window.get()), "") << "File Sharing";
    d.GetType("user_list_group")->GetItem("choir");
    l_bo.NewItem("in_user_list");
    for (QDialog* const lp_dialog : std::initializer_list<QDialog*>{
             new ChangeUsernamePasswordDialog(m_window.get()), new ChangeListeningPortDialog(m_window.get()),
             new ChangeServerDialog(m_window.get()), new CreateRoomDialog(m_window.get()),
             new AddSharedFolderDialog(m_window.get()), new SharedFilesRescannedDialog(m_window.get()),
             new UserGroupsDialog("Bo", m_window.get()), new UserGroupConfigDialog(m_window.get()),
             new AddUserDialog(m_window.get()), new IgnoredUsersDialog(m_window.get()),
             new DataDialog(&d, m_window.get())}) {
        lp_dialog->show();
        EXPECT_EQ(Unnamed(lp_dialog), "");
        lp_dialog->close();
    }
}

TEST_F(WindowBehaviourTest, TheFootTellsOfCallersWalksAndFailures) {
    const QString l_port = QString::number(peerMessenger->ListeningPort());
    EXPECT_EQ(Find<QLabel>("listeningStatus")->text(), QStringLiteral("○ Port %1").arg(l_port));
    ASSERT_TRUE(WaitFor([&] { return m_server.hasPendingConnections(); }));
    // Logged in, with a server on this machine.
    const MemStream l_welcome = MakeFrame(Encode(from_server::LoginReply{true, {}, "welcome", 0, {}}));
    m_server.nextPendingConnection()->write(l_welcome.GetReadBuffer(), l_welcome.GetPendingReadLength());
    ASSERT_TRUE(WaitFor([] { return gp_server->IsConnected(); }));
    QTcpSocket l_caller;
    l_caller.connectToHost(QHostAddress::LocalHost, peerMessenger->ListeningPort());
    EXPECT_TRUE(WaitFor([&] { return Text<QLabel>("listeningStatus") == "✓ Port " + l_port.toStdString(); }));

    Q_EMIT sharedFoldersManager->WalkProgressed(1'500);
    EXPECT_EQ(Text<QLabel>("connectionStatus"), "Looking through the shared folders: 1,500 files so far");
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
    Q_EMIT sharedFoldersManager->WalkProgressed(100); // the next root
    EXPECT_EQ(Text<QLabel>("connectionStatus"), "Looking through the shared folders: 1,600 files so far");
    EXPECT_TRUE(WaitFor([] { return !QGuiApplication::overrideCursor(); }));
    EXPECT_EQ(Text<QLabel>("connectionStatus"), "Connected as Ada");

    const ItemPtr l_download = d.GetType("download_entry")->NewItem();
    l_download.Connect(d.GetType("bytes_per_second")->NewItem(new int(3 * 1024 * 1024 / 2)));
    EXPECT_TRUE(WaitFor([&] { return Text<QLabel>("speedStatus") == "↓ 1.5 MiB/s  ↑ 0.0 KiB/s"; }));
    l_download["bytes_per_second"].Remove();
    EXPECT_TRUE(WaitFor([&] { return Text<QLabel>("speedStatus") == "↓ 0.0 KiB/s  ↑ 0.0 KiB/s"; }));
}

TEST_F(WindowBehaviourTest, APortThatIsTakenIsWarnedOf) {
    Close();
    QTcpServer l_other;
    ASSERT_TRUE(l_other.listen(QHostAddress::Any));
    SeedUser(m_server.serverPort(), [&] { SetSetting("listening_port", static_cast<int>(l_other.serverPort())); });
    Open();
    EXPECT_EQ(Text<QLabel>("listeningStatus"), "⚠ Not reachable");
    EXPECT_THAT(Find<QLabel>("listeningStatus")->toolTip().toStdString(),
                testing::HasSubstr(std::to_string(l_other.serverPort())));
}

TEST(CallFromOutside, CountsFromAsFarAwayAsTheServerIs) {
    const auto l_counts = [](const char* ip_caller, const char* ip_server) {
        return IsCallFromOutside(QHostAddress(QLatin1String(ip_caller)), QHostAddress(QLatin1String(ip_server)));
    };
    EXPECT_TRUE(l_counts("203.0.113.9", "198.51.100.1"));
    EXPECT_TRUE(l_counts("::ffff:203.0.113.9", "198.51.100.1"));
    EXPECT_FALSE(l_counts("192.168.1.7", "198.51.100.1"));
    EXPECT_FALSE(l_counts("::ffff:10.0.0.7", "198.51.100.1"));
    EXPECT_FALSE(l_counts("fe80::1", "198.51.100.1"));
    EXPECT_FALSE(l_counts("127.0.0.1", "198.51.100.1"));
    EXPECT_TRUE(l_counts("172.16.0.9", "192.168.1.1"));
    EXPECT_FALSE(l_counts("127.0.0.1", "192.168.1.1"));
    EXPECT_TRUE(l_counts("::ffff:127.0.0.1", "127.0.0.1"));
    EXPECT_FALSE(IsCallFromOutside(QHostAddress(), QHostAddress(QHostAddress::LocalHost)));
}
