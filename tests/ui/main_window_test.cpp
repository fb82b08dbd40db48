#include "window_test.h"

#include "app/settings.h"
#include "app/timers.h"
#include "net/port_forwarder.h"
#include "net/server.h"
#include "ui/change_username_password_dialog.h"
#include "ui/notice_bar.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTcpServer>
#include <QTest>
#include <QTreeWidget>

#include <filesystem>

namespace {

void SetUserCount(const char* i_room, int i_count) {
    d.GetType("room")->GetItem(i_room)->Connect(d.GetType("user_count")->GetItem(i_count));
}

bool Shows(const QIcon& i_icon, const char* i_resource) {
    const QImage l_image = QIcon(QLatin1String(i_resource)).pixmap(32).toImage();
    EXPECT_FALSE(l_image.isNull()) << "no picture " << i_resource;
    return i_icon.pixmap(32).toImage() == l_image;
}

class MainWindowTest : public WindowTest {
protected:
    // A server that lets anyone connect and never answers.
    void SeedUser(const std::function<void()>& i_more = [] {}) {
        ASSERT_TRUE(m_server.listen(QHostAddress::LocalHost));
        WindowTest::SeedUser(m_server.serverPort(), i_more);
    }
    QAction* Action(const char* i_name) { return Find<QAction>(i_name); }

    QTcpServer m_server;
};

} // namespace

TEST_F(MainWindowTest, FirstStartAsksForAUserNameAndConnectsNowhere) {
    OpenAndShow();
    EXPECT_EQ(mainWindow, m_window.get());
    EXPECT_TRUE(timerManager->HalfMinuteTimer()->isActive());

    ASSERT_TRUE(WaitFor([] { return OpenDialog<QMessageBox>() != nullptr; }));
    QMessageBox* const lp_box = OpenDialog<QMessageBox>();
    EXPECT_EQ(lp_box->windowTitle().toStdString(), "No Username");
    EXPECT_EQ(lp_box->text().toStdString(),
              "You do not yet have a username set. Please set one from the Options tab and use "
              "the Connect menu option to connect.");
    EXPECT_FALSE(gp_server->IsConnected());
    EXPECT_EQ(Text<QLabel>("connectionStatus"), "Not connected");
    EXPECT_TRUE(Action("action_Connect")->isEnabled());
    EXPECT_FALSE(Action("action_Disconnect")->isEnabled());
    EXPECT_TRUE(Shows(m_window->windowIcon(), ":/icons/offline_icon"));
    EXPECT_FALSE(Shows(m_window->windowIcon(), ":/icons/online_icon"));
    EXPECT_TRUE(Find<QCheckBox>("uPnPCheckBox")->isChecked()) << "on unless someone turns it off";
    EXPECT_EQ(Text<QLineEdit>("downloadFolderEdit"), HomePath("Tidewell Downloads"));

    lp_box->accept();
    EXPECT_FALSE(OpenDialog<QMessageBox>());
    EXPECT_EQ(Find<QTabWidget>("tabControl")->currentIndex(), 6);
    EXPECT_TRUE(Find<QWidget>("loginPage")->isVisibleTo(m_window.get()));
    EXPECT_TRUE(OpenDialog<ChangeUsernamePasswordDialog>());
    Action("action_Connect")->trigger();
    EXPECT_FALSE(gp_server->IsConnected());
    EXPECT_EQ(Text<QLabel>("connectionStatus"), "Not connected");
}

TEST_F(MainWindowTest, HasItsPagesAndLists) {
    Open();
    m_window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(m_window.get()));
    EXPECT_EQ(m_window->windowTitle().toStdString(), "TidewellQt nightly build 9/21/2011");
    EXPECT_EQ(m_window->size(), QSize(1000, 600));

    QTabWidget* const lp_tabs = Find<QTabWidget>("tabControl");
    EXPECT_EQ(m_window->centralWidget(), lp_tabs);
    const char* const l_titles[] = {"Transfers", "Rooms",  "Chat",    "Search",
                                    "Users",     "Shares", "Options", "Diagnostics"};
    ASSERT_EQ(lp_tabs->count(), 8);
    for (int l_index = 0; l_index < 8; ++l_index) {
        EXPECT_EQ(lp_tabs->tabText(l_index).toStdString(), l_titles[l_index]);
    }
    EXPECT_EQ(lp_tabs->currentIndex(), 1);
    const std::pair<int, const char*> l_forms[] = {
        {0, "transfersForm"}, {3, "searchForm"}, {4, "userListForm"}, {5, "sharesForm"}, {7, "diagnosticsForm"}};
    for (const auto& [l_index, l_name] : l_forms) {
        EXPECT_EQ(lp_tabs->widget(l_index), Find<QWidget>(l_name));
    }

    QTreeWidget* const lp_rooms = Find<QTreeWidget>("roomList");
    EXPECT_EQ(lp_rooms->width(), 220);
    EXPECT_EQ(lp_rooms->columnWidth(0), 150);
    m_window->resize(1400, 700);
    EXPECT_TRUE(QTest::qWaitFor([&] { return Find<QTabWidget>("roomsTabControl")->width() > 1000; }));
    EXPECT_EQ(lp_rooms->width(), 220);
}

TEST_F(MainWindowTest, LoadedSettingsAndSharesFillTheOptions) {
    std::filesystem::create_directory(HomePath("open"));
    std::filesystem::create_directory(HomePath("listed"));
    std::filesystem::create_directory(HomePath("grouped"));
    SeedUser([&] {
        SetSetting("download_folder", "/somewhere/else");
        Type* const lp_folders = d.GetType("shared_folder");
        lp_folders->GetItem(HomePath("open"))->NewItem("shared_public");
        lp_folders->GetItem(HomePath("listed"))->NewItem("shared_userlist");
        lp_folders->GetItem(HomePath("grouped"))->Connect(d.GetType("user_list_group")->GetItem("work"));
        lp_folders->GetItem(HomePath("grouped"))->Connect(d.GetType("user_list_group")->GetItem("choir"));
        lp_folders->GetItem(HomePath("missing"));
    });
    Open();
    EXPECT_FALSE(OpenDialog<QMessageBox>());
    EXPECT_EQ(Text<QLineEdit>("usernameEdit"), "Ada");
    EXPECT_EQ(Text<QLineEdit>("downloadFolderEdit"), "/somewhere/else");
    EXPECT_EQ(Text<QLineEdit>("listeningPortEdit"), "0");
    EXPECT_FALSE(Find<QCheckBox>("uPnPCheckBox")->isChecked());

    QTreeWidget* const lp_shares = Find<QTreeWidget>("sharedFoldersList");
    std::map<std::string, std::string> l_access;
    for (int l_row = 0; l_row < lp_shares->topLevelItemCount(); ++l_row) {
        const QTreeWidgetItem* const lp_row = lp_shares->topLevelItem(l_row);
        l_access[lp_row->text(0).toStdString()] = lp_row->text(1).toStdString();
    }
    const std::map<std::string, std::string> l_expected = {{HomePath("open"), "Everyone"},
                                                           {HomePath("listed"), "User List"},
                                                           {HomePath("grouped"), "choir, work"},
                                                           {HomePath("missing"), ""}};
    EXPECT_EQ(l_access, l_expected);

    // Later changes show too.
    SetSetting("username", "Eve");
    SetSetting("new_listening_port", 4711);
    EXPECT_EQ(Text<QLineEdit>("usernameEdit"), "Eve");
    EXPECT_EQ(Text<QLineEdit>("listeningPortEdit"), "4711");
    const ItemPtr l_grouped = d.GetType("shared_folder")->GetItem(HomePath("grouped"));
    l_grouped.Disconnect(d.GetType("user_list_group")->GetItem("work"));
    EXPECT_THAT(ColumnTexts(lp_shares, 1), testing::Contains("choir"));
    l_grouped.Remove();
    EXPECT_THAT(ColumnTexts(lp_shares, 0), testing::Not(testing::Contains(HomePath("grouped"))));
    EXPECT_EQ(lp_shares->topLevelItemCount(), 3);
}

TEST_F(MainWindowTest, ConnectionShowsInMenuIconAndWords) {
    SeedUser();
    Open();
    EXPECT_FALSE(Action("action_Connect")->isEnabled()) << "it logs in by itself";
    EXPECT_FALSE(Action("action_Disconnect")->isEnabled());
    EXPECT_EQ(Text<QLabel>("connectionStatus"), "Connecting…");

    Q_EMIT gp_server->Connected();
    EXPECT_TRUE(Action("action_Disconnect")->isEnabled());
    EXPECT_EQ(Text<QLabel>("connectionStatus"), "Connected as Ada");

    Q_EMIT gp_server->Disconnected();
    EXPECT_TRUE(Action("action_Connect")->isEnabled());
    EXPECT_FALSE(Action("action_Disconnect")->isEnabled());
    EXPECT_EQ(Text<QLabel>("connectionStatus"), "Connection lost; next try in 30 s");
    timerManager->HalfMinuteTimer()->start(12'345);
    const QRegularExpression l_counting(QStringLiteral("^Connection lost; next try in 1[0-2] s$"));
    EXPECT_TRUE(WaitFor([&] { return l_counting.match(Find<QLabel>("connectionStatus")->text()).hasMatch(); }));
    EXPECT_EQ(Find<QLabel>("connectionStatus")->accessibleName().toStdString(), "Connection: Connection lost");
    EXPECT_TRUE(Shows(m_window->windowIcon(), ":/icons/offline_icon"));
}

TEST_F(MainWindowTest, RefusedLoginOpensABoxAndMayBeTriedAgain) {
    SeedUser();
    Open();
    Q_EMIT gp_server->ConnectionFailed("Too many of you\u202E");
    EXPECT_FALSE(OpenDialog<QMessageBox>()) << "only the wrong password has a box";
    EXPECT_EQ(Text<QLabel>("connectionStatus"), "Login refused: Too many of you[U+202E]");

    Q_EMIT gp_server->ConnectionFailed("INVALIDPASS");
    QMessageBox* const lp_box = OpenDialog<QMessageBox>();
    ASSERT_TRUE(lp_box);
    EXPECT_EQ(lp_box->windowTitle().toStdString(), "Login Failure: Wrong Password");
    EXPECT_EQ(lp_box->text().toStdString(), "Login failed. The password you supplied does not match your username. "
                                            "Please change your login settings in the "
                                            "Options tab and try reconnecting.");
    EXPECT_TRUE(Action("action_Connect")->isEnabled());
}

TEST_F(MainWindowTest, RoomListFollowsTheStore) {
    Open();
    QTreeWidget* const lp_rooms = Find<QTreeWidget>("roomList");
    SetUserCount("beta", 10);
    SetUserCount("Alpha", 9);
    SetUserCount("gamma", 100);
    using testing::ElementsAre;
    EXPECT_TRUE(WaitFor([&] { return lp_rooms->topLevelItemCount() == 3; }));
    EXPECT_THAT(ColumnTexts(lp_rooms, 0), ElementsAre("Alpha", "beta", "gamma"));
    EXPECT_THAT(ColumnTexts(lp_rooms, 1), ElementsAre("9", "10", "100"));

    SetUserCount("beta", 200);
    EXPECT_TRUE(WaitFor([&] { return lp_rooms->topLevelItem(1)->text(1).toInt() == 200; }));
    EXPECT_THAT(ColumnTexts(lp_rooms, 0), ElementsAre("Alpha", "beta", "gamma"));
    lp_rooms->sortByColumn(1, Qt::DescendingOrder);
    EXPECT_THAT(ColumnTexts(lp_rooms, 0), ElementsAre("beta", "gamma", "Alpha"));

    // Names that only look alike are rooms of their own.
    const std::string l_long(600, 'x');
    SetUserCount((l_long + "1").c_str(), 1);
    SetUserCount((l_long + "2").c_str(), 2);
    SetUserCount("be\nta", 3);
    EXPECT_TRUE(WaitFor([&] { return lp_rooms->topLevelItemCount() == 6; }));
    EXPECT_THAT(ColumnTexts(lp_rooms, 0), testing::Contains("be[U+000A]ta"));
}

TEST_F(MainWindowTest, FailedSavesShowOneNoticeUntilOneSucceeds) {
    Open();
    m_window->show();
    NoticeBar* const lp_notice = Find<NoticeBar>("noticeBar");
    m_window->SaveStore();
    EXPECT_FALSE(lp_notice->isVisible());

    // A folder in the place of the file cannot be replaced by a file.
    std::filesystem::remove(HomePath(".Tidewell"));
    std::filesystem::create_directory(HomePath(".Tidewell"));
    m_window->SaveStore();
    EXPECT_TRUE(lp_notice->isVisible());
    EXPECT_THAT(Text<QLabel>("noticeText"), testing::HasSubstr(HomePath(".Tidewell")));
    for (QAction* lp_action : lp_notice->actions()) {
        if (lp_action->text() == QStringLiteral("Dismiss")) {
            lp_action->trigger();
        }
    }
    m_window->SaveStore();
    EXPECT_FALSE(lp_notice->isVisible()) << "read and dismissed";

    std::filesystem::remove(HomePath(".Tidewell"));
    m_window->SaveStore();
    EXPECT_TRUE(std::filesystem::is_regular_file(HomePath(".Tidewell")));
    std::filesystem::remove(HomePath(".Tidewell"));
    std::filesystem::create_directory(HomePath(".Tidewell"));
    m_window->SaveStore();
    EXPECT_TRUE(lp_notice->isVisible());
    std::filesystem::remove(HomePath(".Tidewell"));
    m_window->SaveStore();
    EXPECT_FALSE(lp_notice->isVisible());
}

TEST_F(MainWindowTest, ClosingSavesWhatTheUserChose) {
    Open();
    Find<QCheckBox>("uPnPCheckBox")->setChecked(false);
    Close();
    EXPECT_EQ(std::filesystem::status(HomePath(".Tidewell")).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    Open();
    EXPECT_FALSE(Find<QCheckBox>("uPnPCheckBox")->isChecked());
    portForwarder->SetSearchInterface(QStringLiteral("127.0.0.1"));
    Find<QCheckBox>("uPnPCheckBox")->setChecked(true);
    EXPECT_FALSE(portForwarder->IsIdle()) << "it looks for a router at once";
    EXPECT_TRUE(IsSettingYes("use_upnp"));
}

TEST_F(MainWindowTest, SweepsAndSavesEveryFiveMinutes) {
    Open();
    Type* const lp_values = d.GetType("global_value");
    lp_values->GetItem("nobody's");
    EXPECT_FALSE(std::filesystem::exists(HomePath(".Tidewell")));
    EXPECT_EQ(timerManager->FiveMinuteTimer()->interval(), 300'000);
    timerManager->FiveMinuteTimer()->start(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return std::filesystem::exists(HomePath(".Tidewell")); }));
    EXPECT_FALSE(lp_values->HasItem("nobody's"));
}

TEST_F(MainWindowTest, DamagedStoreFileIsToldAndLoadedAsFarAsItGoes) {
    SeedUser();
    std::filesystem::resize_file(HomePath(".Tidewell"), std::filesystem::file_size(HomePath(".Tidewell")) - 1);
    Open();
    EXPECT_THAT(Text<QLabel>("noticeText"), testing::HasSubstr("damaged"));
    m_window->show();
    EXPECT_TRUE(Find<NoticeBar>("noticeBar")->isVisible());
}
