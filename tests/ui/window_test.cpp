#include "window_test.h"

#include "app/settings.h"
#include "app/show_is_over.h"
#include "app/text.h"
#include "net/port_helper.h"
#include "net/server_schema.h"
#include "peer/peer_schema.h"
#include "search/wish_list_schema.h"
#include "sharing/shares_schema.h"
#include "store/data_saver.h"
#include "transfers/transfer_schema.h"

#include "ui/action_set_tool_bar.h"

#include <QAction>
#include <QMessageBox>
#include <QTest>
#include <QTreeWidget>

#include <memory>

std::vector<std::string> ColumnTexts(const QTreeWidget* ip_tree, int i_column) {
    std::vector<std::string> l_texts;
    for (int l_row = 0; l_row < ip_tree->topLevelItemCount(); ++l_row) {
        l_texts.push_back(ip_tree->topLevelItem(l_row)->text(i_column).toStdString());
    }
    return l_texts;
}

std::vector<std::string> ButtonTexts() {
    std::vector<std::string> l_texts;
    for (const QAction* const lp_action : actionBar->actions()) {
        l_texts.push_back(lp_action->text().toStdString());
    }
    return l_texts;
}

void ClickButton(const char* ip_text) {
    for (QAction* const lp_action : actionBar->actions()) {
        if (lp_action->text() == QLatin1String(ip_text)) {
            QTest::mouseClick(actionBar->widgetForAction(lp_action), Qt::LeftButton);
            return;
        }
    }
    FAIL() << "no button " << ip_text;
}

bool WaitFor(const std::function<bool()>& i_condition) {
    return QTest::qWaitFor(i_condition, c_patience);
}

std::string CloseBox() {
    QMessageBox* const lp_box = OpenDialog<QMessageBox>();
    if (!lp_box) {
        return {};
    }
    const std::string l_title = lp_box->windowTitle().toStdString();
    lp_box->accept();
    return l_title;
}

WindowTest::WindowTest() {
    qputenv("HOME", m_home.path().toUtf8());
    PortHelper::SetProgram({}); // nothing is asked of the real network
    RenewStore();
}

WindowTest::~WindowTest() {
    Close();
}

void WindowTest::Seed(const std::function<void()>& i_fill) {
    {
        DataSaver l_saver;
        CreateTypes();
        i_fill();
        ASSERT_TRUE(l_saver.Save(&d, HomePath(".Tidewell").c_str()));
    }
    RenewStore();
}

void WindowTest::Inspect(const std::function<void()>& i_look) {
    {
        DataSaver l_saver;
        CreateTypes();
        ASSERT_EQ(l_saver.Load(&d, HomePath(".Tidewell").c_str()).state, LoadResult::Whole);
        i_look();
    }
    RenewStore();
}

void WindowTest::SeedUser(int i_serverPort, const std::function<void()>& i_more) {
    Seed([&] {
        SetSetting("username", "Ada");
        SetSetting("password", "secret");
        SetSetting("server_host", "127.0.0.1");
        SetSetting("server_port", i_serverPort);
        SetSetting("use_upnp", "no");
        SetSetting("listening_port", 0); // any that is free: other tests run beside this one
        i_more();
    });
}

void WindowTest::Open() {
    m_window = std::make_unique<MainWindow>();
}

void WindowTest::OpenAndShow() {
    Open();
    m_window->show();
    Activate();
}

void WindowTest::Activate() {
    m_window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window.get(), c_patience));
}

void WindowTest::Close() {
    if (m_window) {
        m_window.reset();
        RenewStore();
    }
}

std::string WindowTest::HomePath(const std::string& i_name) const {
    return ToUtf8(m_home.filePath(ToQString(i_name)));
}

// The program makes its Types once in a process; each test wants to be the first.
void WindowTest::RenewStore() {
    std::destroy_at(&d);
    std::construct_at(&d);
    g_showIsOver = false;
}

void WindowTest::CreateTypes() {
    CreateServerTypes();
    CreatePeerTypes();
    CreateSettingsTypes();
    CreateWishListTypes();
    CreateSharesTypes();
    CreateTransferTypes();
}
