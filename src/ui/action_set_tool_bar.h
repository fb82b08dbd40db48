// The tool bar whose buttons follow the keyboard focus. The program defines named sets of actions and binds widgets to
// them; when the focus comes to a bound widget, or into one, the bar shows its set.
//
// An action carries no argument. A widget publishes keys ("user", "room"), each with a fixed value or with that of a
// column of its selected row, and whoever listens to ActionTriggered asks for the key by name.
//
// Texts of actions are ours; foreign parts of them have gone through TitleText.
#pragma once

#include "store/data.h"
#include "ui/icon_tool_bar.h"

#include <QPointer>

#include <cstdint>
#include <string>

class QTabWidget;
class QTreeWidget;
class QTreeWidgetItem;

// Under this role a cell of a key column may hold, as a QByteArray, what the key is to be; without it the key is the
// cell's text. For names that cannot be shown as they are.
inline constexpr int c_actionKeyRole = 0x0100 + 0x71; // among the roles that Qt leaves to the user

class ActionSetToolBar : public IconToolBar {
    Q_OBJECT

public:
    // Becomes the global actionBar, creates its Types and listens to the application's focus.
    explicit ActionSetToolBar(QWidget* ip_parent);
    ~ActionSetToolBar() override;

    // Appends an action to a set. With i_needsListSelection a click without a selected row does nothing, if the
    // focus lies in a tree.
    void AddSetAction(std::string i_set, std::string i_id, std::string i_text, std::string i_icon,
                      bool i_needsListSelection);

    // Binds the widget, and what lies in it unless bound itself, to a set. Not owned; it may die at any time.
    void RegisterWidget(QWidget* ip_widget, QString i_set);
    // A fixed key, a key read from a column of the selected row. Only for bound widgets (contract fault).
    void AddWidgetKey(QWidget* ip_widget, QString i_key, QString i_value);
    void AddWidgetColumnKey(QWidget* ip_widget, QString i_key, int i_column);
    // The action's label while that widget is on show. Nothing happens if there is no such widget or action.
    void SetWidgetActionText(QWidget* ip_widget, QString i_id, QString i_text);

    // The value of the key as last published; empty if it never was. The second answers the bytes, for names that
    // are no UTF-8.
    QString GetKey(QString i_key) const;
    std::string GetKeyBytes(const std::string& i_key) const;

    // Nothing on show but the blank.
    void Clear();

    // From now on the focus goes to the page of each tab that is turned to.
    void AutoFocusTabWidget(QTabWidget* ip_tabs);

Q_SIGNALS:
    void ActionTriggered(std::string i_id);

protected:
    // Escape leads back to where the focus came from.
    void keyPressEvent(QKeyEvent* ip_event) override;

private:
    void OnApplicationFocusChanged(QWidget* ip_old, QWidget* ip_now);
    void OnActionTriggered(bool i_checked);
    void OnAutoFocusedTabWidgetCurrentChanged(int i_index);
    void OnWidgetDestroyed(QObject* ip_widget);

    void ChangeSet(QWidget* ip_widget, const std::string& i_set);
    void ShowAction(ItemPtr i_action);
    void PublishRow(QTreeWidgetItem* ip_row) const;
    void ReturnFocus();

    std::string m_currentSet;           // empty when none is on show
    ItemPtr m_currentWidgetItem;        // null when none is on show
    QPointer<QTreeWidget> m_treeWidget; // the nearest one on the way from the focus up to the bound widget
    QPointer<QWidget> m_currentWidget;  // the bound widget on show
    QPointer<QWidget> m_focusBeforeUs;  // the one that had the focus last, outside the bar
    std::uint64_t m_nextOrder = 0;
};

extern ActionSetToolBar* actionBar;
