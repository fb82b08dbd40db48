#include "window_test.h"

#include "app/settings.h"
#include "app/show_is_over.h"
#include "app/text.h"
#include "net/server_schema.h"
#include "peer/peer_schema.h"
#include "search/wish_list_schema.h"
#include "sharing/shares_schema.h"
#include "store/data_saver.h"
#include "transfers/transfer_schema.h"

#include <memory>

WindowTest::WindowTest() {
    qputenv("HOME", m_home.path().toUtf8());
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

void WindowTest::Open() {
    m_window = std::make_unique<MainWindow>();
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
