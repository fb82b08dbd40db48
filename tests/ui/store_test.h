// An empty store and a saver of its own for tests of what stands on them without the main window.
#pragma once

#include "app/show_is_over.h"
#include "store/data.h"
#include "store/data_saver.h"

#include <memory>

#include <gmock/gmock.h>

class StoreTest : public testing::Test {
protected:
    StoreTest() { RenewStore(); }
    ~StoreTest() override { RenewStore(); }

    // The program makes its Types once in a process; each test wants to be the first.
    static void RenewStore() {
        std::destroy_at(&d);
        std::construct_at(&d);
        g_showIsOver = false;
    }

    DataSaver m_saver;
};
