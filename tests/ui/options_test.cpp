// The Options page, as a person goes through it.
#include "window_test.h"

#include "app/settings.h"
#include "peer/peer_messenger.h"
#include "ui/add_shared_folder_dialog.h"
#include "ui/change_listening_port_dialog.h"
#include "ui/change_server_dialog.h"
#include "ui/change_username_password_dialog.h"
#include "ui/shared_files_rescanned_dialog.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTcpServer>
#include <QTest>
#include <QTreeWidget>

#include <filesystem>
#include <fstream>

namespace {

class OptionsTest : public WindowTest {
protected:
    OptionsTest() { EXPECT_TRUE(m_silentServer.listen(QHostAddress::LocalHost)); }

    void OpenOptions(const char* ip_page) {
        OpenAndShow();
        Find<QTabWidget>("tabControl")->setCurrentIndex(6);
        QTabWidget* const lp_options = Find<QTabWidget>("optionsTabControl");
        for (int l_index = 0; l_index < lp_options->count(); ++l_index) {
            if (lp_options->tabText(l_index) == QLatin1String(ip_page)) {
                QTest::mouseClick(lp_options->tabBar(), Qt::LeftButton, {},
                                  lp_options->tabBar()->tabRect(l_index).center());
            }
        }
    }
    static QLineEdit* Edit(QWidget* ip_dialog, const char* ip_name) {
        return ip_dialog->findChild<QLineEdit*>(QLatin1String(ip_name));
    }
    QTreeWidget* Shares() { return Find<QTreeWidget>("sharedFoldersList"); }

    QTcpServer m_silentServer;
};

int FreePort() {
    QTcpServer l_server;
    l_server.listen(QHostAddress::Any);
    return l_server.serverPort();
}

} // namespace

TEST_F(OptionsTest, NameAndPasswordAreTakenAsTheyAre) {
    SeedUser(m_silentServer.serverPort());
    OpenOptions("Login");
    EXPECT_THAT(ButtonTexts(),
                testing::ElementsAre("Change Username/Password", "Change Listening Port", "Change Server"));
    ClickButton("Change Username/Password");
    auto* lp_dialog = OpenDialog<ChangeUsernamePasswordDialog>();
    ASSERT_TRUE(lp_dialog);
    EXPECT_EQ(Edit(lp_dialog, "usernameEdit")->text().toStdString(), "Ada");
    EXPECT_EQ(Edit(lp_dialog, "passwordEdit")->text().toStdString(), "secret");
    EXPECT_EQ(Edit(lp_dialog, "passwordEdit")->displayText(),
              QString(6, Edit(lp_dialog, "passwordEdit")->displayText().at(0)));
    Edit(lp_dialog, "usernameEdit")->clear();
    QTest::keyClicks(Edit(lp_dialog, "usernameEdit"), QStringLiteral("Eve"));
    Edit(lp_dialog, "passwordEdit")->clear();
    QTest::keyClick(lp_dialog, Qt::Key_Return);
    EXPECT_FALSE(OpenDialog<ChangeUsernamePasswordDialog>());
    EXPECT_EQ(Text<QLineEdit>("usernameEdit"), "Eve");
    EXPECT_TRUE(HasSetting("password"));
    EXPECT_EQ(SettingText("password"), "");

    ClickButton("Change Username/Password");
    lp_dialog = OpenDialog<ChangeUsernamePasswordDialog>();
    ASSERT_TRUE(lp_dialog);
    Edit(lp_dialog, "usernameEdit")->setText(QStringLiteral("Mallory"));
    QTest::keyClick(lp_dialog, Qt::Key_Escape);
    EXPECT_EQ(SettingText("username"), "Eve");
}

TEST_F(OptionsTest, ThePortIsCheckedAndChangesWithTheNextStart) {
    const int l_present = FreePort();
    SeedUser(m_silentServer.serverPort(), [&] { SetSetting("listening_port", l_present); });
    OpenOptions("Login");
    ClickButton("Change Listening Port");
    auto* const lp_dialog = OpenDialog<ChangeListeningPortDialog>();
    ASSERT_TRUE(lp_dialog);
    const auto l_try = [&](const QString& i_port) {
        Edit(lp_dialog, "portEdit")->setText(i_port);
        lp_dialog->accept();
        EXPECT_TRUE(lp_dialog->isVisible());
        return CloseBox();
    };
    EXPECT_EQ(l_try(QStringLiteral("0")), "Invalid Port Number");
    EXPECT_EQ(l_try(QStringLiteral("65536")), "Invalid Port Number");
    EXPECT_EQ(l_try(QString()), "Invalid Port Number");
    EXPECT_EQ(l_try(QString::number(l_present)), "Port Number Not Changed");
    EXPECT_NE(SettingText("new_listening_port"), "65536");

    const int l_wanted = FreePort();
    Edit(lp_dialog, "portEdit")->setText(QString::number(l_wanted));
    lp_dialog->accept();
    EXPECT_EQ(CloseBox(), "Change to Listening Port Pending");
    EXPECT_EQ(Text<QLineEdit>("listeningPortEdit"), std::to_string(l_wanted));
    EXPECT_EQ(peerMessenger->ListeningPort(), l_present);
    Close();
    Open();
    EXPECT_EQ(peerMessenger->ListeningPort(), l_wanted);
    EXPECT_EQ(Text<QLineEdit>("listeningPortEdit"), std::to_string(l_wanted));
}

TEST_F(OptionsTest, TheServerIsCheckedAndShown) {
    SeedUser(m_silentServer.serverPort());
    OpenOptions("Login");
    EXPECT_EQ(Text<QLineEdit>("serverHostEdit"), "127.0.0.1");
    ClickButton("Change Server");
    auto* const lp_dialog = OpenDialog<ChangeServerDialog>();
    ASSERT_TRUE(lp_dialog);
    const auto l_enter = [&](const char* ip_host, const char* ip_port) {
        Edit(lp_dialog, "hostEdit")->setText(QLatin1String(ip_host));
        Edit(lp_dialog, "portEdit")->setText(QLatin1String(ip_port));
        lp_dialog->accept();
        return CloseBox();
    };
    EXPECT_EQ(l_enter("  ", "2242"), "Host Missing");
    EXPECT_EQ(l_enter("tide.example", "0"), "Invalid Port Number");
    EXPECT_EQ(SettingText("server_host"), "127.0.0.1");
    EXPECT_EQ(l_enter("tide.example", "65535"), "");
    EXPECT_FALSE(OpenDialog<ChangeServerDialog>());
    EXPECT_EQ(Text<QLineEdit>("serverHostEdit"), "tide.example");
    EXPECT_EQ(Text<QLineEdit>("serverPortEdit"), "65535");
}

TEST_F(OptionsTest, FoldersAreSharedWithRightsRescannedAndUnshared) {
    for (const char* lp_folder : {"open", "friends", "choir"}) {
        std::filesystem::create_directory(HomePath(lp_folder));
        std::ofstream(HomePath(lp_folder) + "/tide.txt") << "high";
    }
    SeedUser(m_silentServer.serverPort(), [] {
        d.GetType("user_list_group")->GetItem("choir");
        d.GetType("user_list_group")->GetItem("work");
    });
    OpenOptions("File Sharing");
    EXPECT_THAT(ButtonTexts(),
                testing::ElementsAre("Set Download Folder", "Share Folder", "Unshare Folder", "Rescan Shares"));

    const auto l_share = [&](const char* ip_folder, int i_boxesToClear, const char* ip_group) {
        ClickButton("Share Folder");
        auto* const lp_dialog = OpenDialog<AddSharedFolderDialog>();
        ASSERT_TRUE(lp_dialog);
        lp_dialog->accept();
        EXPECT_TRUE(lp_dialog->isVisible()) << "without a path";
        Edit(lp_dialog, "selectedFolderEdit")->setText(QString::fromStdString(HomePath(ip_folder)));
        auto* const lp_groups = lp_dialog->findChild<QListWidget*>();
        auto* const lp_everyone = lp_dialog->findChild<QCheckBox*>(QStringLiteral("everyoneCheckBox"));
        auto* const lp_friends = lp_dialog->findChild<QCheckBox*>(QStringLiteral("userListCheckBox"));
        EXPECT_TRUE(lp_everyone->isChecked() && lp_friends->isChecked() && !lp_friends->isEnabled());
        EXPECT_FALSE(lp_groups->isEnabled());
        if (i_boxesToClear > 0) {
            lp_everyone->click();
            EXPECT_TRUE(lp_friends->isEnabled());
        }
        if (i_boxesToClear > 1) {
            lp_friends->click();
            EXPECT_TRUE(lp_groups->isEnabled());
            lp_groups->findItems(QLatin1String(ip_group), Qt::MatchExactly).first()->setCheckState(Qt::Checked);
        }
        lp_dialog->accept();
        EXPECT_FALSE(OpenDialog<AddSharedFolderDialog>());
        Activate();
    };
    l_share("open", 0, "");
    l_share("friends", 1, "");
    l_share("choir", 2, "choir");
    EXPECT_THAT(ColumnTexts(Shares(), 0),
                testing::ElementsAre(HomePath("open"), HomePath("friends"), HomePath("choir")));
    EXPECT_THAT(ColumnTexts(Shares(), 1), testing::ElementsAre("Everyone", "User List", "choir"));
    EXPECT_TRUE(WaitFor([&] { return Text<QLabel>("sharesStatus") == "3 files in 3 folders shared"; }));

    std::ofstream(HomePath("open") + "/second.txt") << "low";
    std::filesystem::remove(HomePath("choir") + "/tide.txt");
    ClickButton("Rescan Shares");
    auto* const lp_report = OpenDialog<SharedFilesRescannedDialog>();
    ASSERT_TRUE(lp_report);
    EXPECT_EQ(lp_report->findChild<QPlainTextEdit*>()->toPlainText().toStdString(), "1 files added.\n1 files removed.");
    lp_report->close();

    Activate();
    Shares()->topLevelItem(0)->setSelected(true);
    Shares()->topLevelItem(1)->setSelected(true);
    ClickButton("Unshare Folder");
    EXPECT_THAT(ColumnTexts(Shares(), 0), testing::ElementsAre(HomePath("choir")));
    EXPECT_TRUE(WaitFor([&] { return Text<QLabel>("sharesStatus") == "0 files in 1 folders shared"; }));
}

TEST_F(OptionsTest, ChosenFoldersArriveWhereTheyWereAskedFor) {
    std::filesystem::create_directory(HomePath("chosen"));
    SeedUser(m_silentServer.serverPort());
    OpenOptions("File Sharing");
    const auto l_choose = [&](const char* ip_title) {
        auto* const lp_dialog = OpenDialog<QFileDialog>();
        ASSERT_TRUE(lp_dialog);
        EXPECT_EQ(lp_dialog->windowTitle().toStdString(), ip_title);
        EXPECT_EQ(lp_dialog->fileMode(), QFileDialog::Directory);
        lp_dialog->setDirectory(QString::fromStdString(HomePath("chosen")));
        lp_dialog->selectFile(QString::fromStdString(HomePath("chosen")));
        static_cast<QDialog*>(lp_dialog)->accept();
    };
    ClickButton("Set Download Folder");
    l_choose("Set Download Folder");
    EXPECT_EQ(SettingText("download_folder"), HomePath("chosen"));
    EXPECT_EQ(Text<QLineEdit>("downloadFolderEdit"), HomePath("chosen"));

    ClickButton("Share Folder");
    auto* const lp_dialog = OpenDialog<AddSharedFolderDialog>();
    ASSERT_TRUE(lp_dialog);
    lp_dialog->findChild<QPushButton*>(QStringLiteral("pushButton"))->click();
    l_choose("Select Folder to Share");
    EXPECT_EQ(Edit(lp_dialog, "selectedFolderEdit")->text().toStdString(), HomePath("chosen"));
}
