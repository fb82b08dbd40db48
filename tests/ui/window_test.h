// A main window over an empty store, with a home folder of its own.
#pragma once

#include "ui/main_window.h"

#include <QApplication>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <string>

#include <gmock/gmock.h>

class QAction;
class QMessageBox;
class QTreeWidget;

inline constexpr int c_patience = 30'000; // milliseconds; machines under load and sanitizers are slow

std::vector<std::string> ColumnTexts(const QTreeWidget* ip_tree, int i_column);
// The texts of the buttons that the tool bar offers now.
std::vector<std::string> ButtonTexts();
// Clicks the tool bar's button of that text; a missing one fails the test.
void ClickButton(const char* ip_text);
bool WaitFor(const std::function<bool()>& i_condition);

// The dialog of the class that is on show, or null.
template <class Dialog>
Dialog* OpenDialog() {
    for (QWidget* const lp_widget : QApplication::topLevelWidgets()) {
        if (Dialog* const lp_dialog = qobject_cast<Dialog*>(lp_widget); lp_dialog && lp_dialog->isVisible()) {
            return lp_dialog;
        }
    }
    return nullptr;
}
// Closes the information box on show and answers its title; empty if there is none.
std::string CloseBox();

class WindowTest : public testing::Test {
protected:
    WindowTest();
    ~WindowTest() override;

    // Writes the store file that the window will find: i_fill changes a store in which all Types exist.
    void Seed(const std::function<void()>& i_fill);
    // Reads the store file back: i_look sees what was saved.
    void Inspect(const std::function<void()>& i_look);
    // Those of a user who logs in on this machine, with the port chosen by the system.
    void SeedUser(
        int i_serverPort, const std::function<void()>& i_more = [] {});
    void Open();
    // The same, on show and active, so that focus and clicks reach it.
    void OpenAndShow();
    // As the desktop does when a dialog closes.
    void Activate();
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
