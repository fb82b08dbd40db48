// A main window over an empty store, with a home folder of its own.
#pragma once

#include "ui/main_window.h"

#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <string>

#include <gmock/gmock.h>

class WindowTest : public testing::Test {
protected:
    WindowTest();
    ~WindowTest() override;

    // Writes the store file that the window will find: i_fill changes a store in which all Types exist.
    void Seed(const std::function<void()>& i_fill);
    // Reads the store file back: i_look sees what was saved.
    void Inspect(const std::function<void()>& i_look);
    void Open();
    void Close();

    std::string HomePath(const std::string& i_name) const;

    // The widget of that name; a missing one fails the test.
    template <typename Widget>
    Widget* Find(const char* i_name) {
        Widget* const lp_widget = m_window->findChild<Widget*>(QLatin1String(i_name));
        if (!lp_widget) {
            ADD_FAILURE() << "no " << i_name;
            std::abort();
        }
        return lp_widget;
    }
    // The text of a label or edit.
    template <typename Widget>
    std::string Text(const char* i_name) {
        return Find<Widget>(i_name)->text().toStdString();
    }

    std::unique_ptr<MainWindow> m_window;

private:
    static void RenewStore();
    static void CreateTypes();

    QTemporaryDir m_home;
};
