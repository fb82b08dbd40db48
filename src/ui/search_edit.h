// The line in which searches are typed. It completes from the last ones, and its button clears those or switches the
// remembering off.
#pragma once

#include <QLineEdit>

class QAction;
class QStringListModel;

class SearchEdit : public QLineEdit {
    Q_OBJECT

public:
    explicit SearchEdit(QWidget* ip_parent);

    // After the store has been loaded, and after a search.
    void ReloadHistory();
    // Empties the line for good: a completion that the Return key has just taken would fill it again.
    void ClearAfterSearch();

private:
    void AddHistoryMenu();
    void OnRememberToggled(bool i_isOn);

    QStringListModel* mp_history;
    QAction* mp_remember;
    QAction* mp_forget;
};
