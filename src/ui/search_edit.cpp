#include "ui/search_edit.h"

#include "app/text.h"
#include "search/search_history.h"
#include "ui/icon.h"

#include <QAbstractItemView>
#include <QAction>
#include <QCompleter>
#include <QMenu>
#include <QStringListModel>
#include <QToolButton>

SearchEdit::SearchEdit(QWidget* ip_parent) : QLineEdit(ip_parent) {
    setPlaceholderText(tr("Words to search for on the network"));
    mp_history = new QStringListModel(this);
    QCompleter* const lp_completer = new QCompleter(mp_history, this);
    lp_completer->setCaseSensitivity(Qt::CaseInsensitive);
    lp_completer->setFilterMode(Qt::MatchContains);
    lp_completer->popup()->setAccessibleName(tr("Earlier searches"));
    setCompleter(lp_completer);
    AddHistoryMenu();
}

void SearchEdit::AddHistoryMenu() {
    QMenu* const lp_menu = new QMenu(this);
    mp_remember = lp_menu->addAction(tr("&Remember searches"));
    mp_remember->setCheckable(true);
    mp_forget = lp_menu->addAction(tr("&Forget the last searches"));
    connect(mp_remember, &QAction::triggered, this, &SearchEdit::OnRememberToggled);
    connect(mp_forget, &QAction::triggered, this, [this] {
        ForgetSearches();
        ReloadHistory();
    });

    QAction* const lp_button = addAction(LoadIcon(QStringLiteral(":/icons/history_icon")), QLineEdit::TrailingPosition);
    lp_button->setText(tr("Earlier searches"));
    lp_button->setToolTip(tr("Earlier searches (Alt+Down)"));
    lp_button->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Down));
    lp_button->setShortcutContext(Qt::WidgetShortcut);
    connect(lp_button, &QAction::triggered, this,
            [this, lp_menu] { lp_menu->popup(mapToGlobal(QPoint(width() - lp_menu->sizeHint().width(), height()))); });
    for (QToolButton* const lp_tool : findChildren<QToolButton*>()) {
        lp_tool->setAccessibleName(lp_button->text());
    }
}

void SearchEdit::OnRememberToggled(bool i_isOn) {
    SetSearchesRemembered(i_isOn);
    ReloadHistory();
}

void SearchEdit::ReloadHistory() {
    QStringList l_texts;
    for (const std::string& l_text : RememberedSearches()) {
        l_texts.append(ToQString(l_text));
    }
    mp_history->setStringList(l_texts);
    mp_remember->setChecked(AreSearchesRemembered());
    mp_forget->setEnabled(!l_texts.isEmpty());
}

void SearchEdit::ClearAfterSearch() {
    const bool l_isCompleting = completer()->popup()->isVisible();
    clear();
    if (l_isCompleting) {
        completer()->popup()->hide();
        QMetaObject::invokeMethod(this, &QLineEdit::clear, Qt::QueuedConnection);
    }
}
