#include "world/window_commands.h"

#include "app/text.h"
#include "hands/hands.h"
#include "ui/action_set_tool_bar.h"
#include "ui/main_window.h"
#include "ui/user_menu_options.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QJsonArray>
#include <QJsonObject>
#include <QKeySequence>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QSpinBox>
#include <QTreeWidget>

#include <algorithm>
#include <iterator>

namespace {

template <class Widget>
Widget* Find(const std::string& i_name) {
    const QList<Widget*> l_found = mainWindow->findChildren<Widget*>(ToQString(i_name));
    if (l_found.isEmpty())
        qFatal("no widget %s", i_name.c_str());
    return l_found.last();
}

QListWidgetItem* Row(const Arguments& i_words) {
    const QList<QListWidgetItem*> l_rows =
        Find<QListWidget>(i_words.at(1))->findItems(ToQString(i_words.at(2)), Qt::MatchExactly);
    if (l_rows.isEmpty())
        qFatal("no row %s in %s", i_words.at(2).c_str(), i_words.at(1).c_str());
    return l_rows.first();
}

QJsonArray Rows(const QTreeWidget* ip_tree) {
    QJsonArray l_rows;
    for (int l_row = 0; l_row < ip_tree->topLevelItemCount(); ++l_row) {
        QJsonArray l_cells;
        for (int l_column = 0; l_column < ip_tree->columnCount(); ++l_column)
            l_cells.append(ip_tree->topLevelItem(l_row)->text(l_column));
        l_rows.append(l_cells);
    }
    return l_rows;
}

QStringList Path(const Arguments& i_words) {
    QStringList l_path;
    std::transform(i_words.begin() + 2, i_words.end(), std::back_inserter(l_path), ToQString);
    return l_path;
}

QTreeWidgetItem* TreeRow(const Arguments& i_words) {
    return hands::FindRow(Find<QTreeWidget>(i_words.at(1)), Path(i_words));
}

QJsonValue Describe(const QTreeWidgetItem* ip_row) {
    if (!ip_row)
        return {};
    QJsonArray l_cells;
    QJsonArray l_spoken;
    for (int l_column = 0; l_column < ip_row->treeWidget()->columnCount(); ++l_column) {
        l_cells.append(ip_row->text(l_column));
        for (const int l_role : {Qt::AccessibleTextRole, Qt::AccessibleDescriptionRole}) {
            if (const QString l_text = ip_row->data(l_column, l_role).toString(); !l_text.isEmpty())
                l_spoken.append(l_text);
        }
    }
    return QJsonObject{{QStringLiteral("cells"), l_cells},
                       {QStringLiteral("colour"), ip_row->foreground(0).color().name()},
                       {QStringLiteral("spoken"), l_spoken}};
}

bool ChooseFromUserMenu(const std::string& i_user, const QString& i_entry) {
    QMenu l_menu;
    const UserMenuOptions l_options(&l_menu, i_user, nullptr);
    for (QAction* lp_action : l_menu.actions()) {
        if (lp_action->text() == i_entry) {
            lp_action->trigger();
            return true;
        }
    }
    return false;
}

} // namespace

void AddWindowCommands(Commands& io_commands) {
    const auto l_add = [&io_commands](const char* ip_name, const std::function<void(const Arguments&)>& i_action) {
        io_commands[ip_name] = [i_action](const Arguments& i_words) {
            i_action(i_words);
            return true;
        };
    };
    l_add("action", [](const Arguments& i_words) { Q_EMIT actionBar->ActionTriggered(i_words.at(1)); });
    io_commands["userMenu"] = [](const Arguments& i_words) {
        return ChooseFromUserMenu(i_words.at(1), ToQString(i_words.at(2)));
    };
    io_commands["rows"] = [](const Arguments& i_words) { return Rows(Find<QTreeWidget>(i_words.at(1))); };
    io_commands["text"] = [](const Arguments& i_words) { return Find<QLineEdit>(i_words.at(1))->text(); };
    io_commands["type"] = [](const Arguments& i_words) {
        QLineEdit* const lp_edit = Find<QLineEdit>(i_words.at(1));
        if (!hands::Activate(lp_edit))
            return false;
        hands::Type(lp_edit, ToQString(i_words.at(2)));
        hands::Press(Qt::Key_Return, lp_edit);
        return true;
    };
    l_add("turn", [](const Arguments& i_words) { hands::TurnTo(Find<QWidget>(i_words.at(1))); });
    l_add("press", [](const Arguments& i_words) { hands::Press(QKeySequence(ToQString(i_words.at(1)))); });
    io_commands["button"] = [](const Arguments& i_words) {
        return hands::ClickButton(actionBar, ToQString(i_words.at(1)));
    };
    io_commands["row"] = [](const Arguments& i_words) { return Describe(TreeRow(i_words)); };
    io_commands["click"] = [](const Arguments& i_words) {
        QTreeWidgetItem* const lp_row = TreeRow(i_words);
        if (lp_row)
            hands::ClickRow(lp_row);
        return lp_row != nullptr;
    };
    l_add("check", [](const Arguments& i_words) { Row(i_words)->setCheckState(Qt::Checked); });
    l_add("choose", [](const Arguments& i_words) { Find<QListWidget>(i_words.at(1))->setCurrentItem(Row(i_words)); });
    l_add("spin", [](const Arguments& i_words) { Find<QSpinBox>(i_words.at(1))->setValue(std::stoi(i_words.at(2))); });
    l_add("closeDialogs", [](const Arguments&) {
        for (QDialog* lp_dialog : mainWindow->findChildren<QDialog*>())
            delete lp_dialog;
    });
}
