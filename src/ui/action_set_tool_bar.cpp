#include "ui/action_set_tool_bar.h"

#include "app/show_is_over.h"
#include "app/text.h"
#include "ui/action_set_schema.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QTabBar>
#include <QTabWidget>
#include <QTreeWidget>

ActionSetToolBar* actionBar = nullptr;

namespace {

ItemPtr ItemOf(const QObject* ip_widget) {
    return d.GetType("toolbar_action_widget")->HasItem(ip_widget);
}

// A tab widget and a tab bar stand for the page that they show.
QWidget* Descend(QWidget* ip_widget) {
    for (QWidget* lp_widget = ip_widget;;) {
        const QTabWidget* lp_tabs = qobject_cast<QTabWidget*>(lp_widget);
        if (!lp_tabs && qobject_cast<QTabBar*>(lp_widget)) {
            lp_tabs = qobject_cast<QTabWidget*>(lp_widget->parentWidget());
        }
        if (!lp_tabs || !lp_tabs->currentWidget()) {
            return lp_widget;
        }
        lp_widget = lp_tabs->currentWidget();
    }
}

ItemPtr OverridingText(ItemPtr i_widget, ItemPtr i_id) {
    return d.GetItem(i_widget, i_id, "widget_action_text");
}

void Publish(ItemPtr i_key, const std::string& i_value) {
    d.GetType("active_action_key")
        ->GetItem(i_key.AsView())
        ->Connect(d.GetType("active_action_value")->GetItem(i_value));
}

std::string KeyOfCell(const QTreeWidgetItem& i_row, int i_column) {
    const QVariant l_key = i_row.data(i_column, c_actionKeyRole);
    return l_key.isValid() ? l_key.toByteArray().toStdString() : ToUtf8(i_row.text(i_column));
}

void ShowLabel(QAction& io_object, const QString& i_text, ItemPtr i_action) {
    io_object.setText(i_text);
    if (i_action->IsConnected("needs_list_selection")) {
        io_object.setToolTip(ActionSetToolBar::tr("%1 (for the selected row)").arg(i_text));
    }
}

// What only this widget needs goes with it: a new widget at the same address must not be taken for a bound one.
void ForgetWidget(ItemPtr i_widget) {
    i_widget.GetItems("action_key_value_pair").Remove();
    i_widget.GetItems("action_key_column_pair").Remove();
    const ItemSet l_texts = i_widget.GetItems("widget_action_text");
    i_widget.Remove();
    for (Item* const lp_text : l_texts) {
        if (!lp_text->IsConnected("toolbar_action_widget")) {
            lp_text->Remove();
        }
    }
}

} // namespace

ActionSetToolBar::ActionSetToolBar(QWidget* ip_parent) : IconToolBar(tr("Actions"), ip_parent) {
    actionBar = this;
    AddBlank();
    connect(qApp, &QApplication::focusChanged, this, &ActionSetToolBar::OnApplicationFocusChanged);
    CreateActionSetTypes();
}

ActionSetToolBar::~ActionSetToolBar() {
    actionBar = nullptr;
}

void ActionSetToolBar::AddSetAction(std::string i_set, std::string i_id, std::string i_text, std::string i_icon,
                                    bool i_needsListSelection) {
    const ItemPtr l_action = d.GetType("toolbar_action_set")->GetItem(i_set)->NewItem("toolbar_action");
    l_action.Connect(d.GetType("toolbar_action_id")->GetItem(i_id));
    l_action.Connect(d.GetType("toolbar_action_icon")->GetItem(i_icon));
    l_action.Connect(d.GetType("toolbar_action_text")->GetItem(i_text));
    l_action.Connect(d.GetType("toolbar_action_order")->GetItem(m_nextOrder++));
    if (i_needsListSelection) {
        l_action.NewItem("needs_list_selection");
    }
}

void ActionSetToolBar::RegisterWidget(QWidget* ip_widget, QString i_set) {
    d.GetType("toolbar_action_set")
        ->GetItem(ToUtf8(i_set))
        ->Connect(d.GetType("toolbar_action_widget")->GetItem(ip_widget));
    connect(ip_widget, &QObject::destroyed, this, &ActionSetToolBar::OnWidgetDestroyed, Qt::UniqueConnection);
}

void ActionSetToolBar::AddWidgetKey(QWidget* ip_widget, QString i_key, QString i_value) {
    const ItemPtr l_widget = ItemOf(ip_widget);
    TIDEWELL_CONTRACT(l_widget);
    const ItemPtr l_pair = d.GetType("action_key_value_pair")->NewItem();
    l_pair.Connect(d.GetType("action_key")->GetItem(ToUtf8(i_key)));
    l_pair.Connect(d.GetType("action_value")->GetItem(ToUtf8(i_value)));
    l_pair.Connect(l_widget);
}

void ActionSetToolBar::AddWidgetColumnKey(QWidget* ip_widget, QString i_key, int i_column) {
    const ItemPtr l_widget = ItemOf(ip_widget);
    TIDEWELL_CONTRACT(l_widget);
    const ItemPtr l_pair = d.GetType("action_key_column_pair")->NewItem();
    l_pair.Connect(d.GetType("action_key")->GetItem(ToUtf8(i_key)));
    l_pair.Connect(d.GetType("action_column")->GetItem(i_column));
    l_pair.Connect(l_widget);
}

void ActionSetToolBar::SetWidgetActionText(QWidget* ip_widget, QString i_id, QString i_text) {
    const ItemPtr l_widget = ItemOf(ip_widget);
    const ItemPtr l_id = d.GetType("toolbar_action_id")->HasItem(ToUtf8(i_id));
    if (!l_widget || !l_id) {
        return;
    }
    if (const ItemPtr l_old = OverridingText(l_widget, l_id)) {
        l_old.Disconnect(l_widget);
    }
    const ItemPtr l_text = d.GetType("widget_action_text")->GetItem(ToUtf8(i_text));
    l_text.Connect(l_widget);
    l_text.Connect(l_id);
    if (ip_widget != m_currentWidget) {
        return;
    }
    for (const Item* const lp_object : g("toolbar_action_object")) {
        const ItemPtr l_action = lp_object->HasItem("toolbar_action");
        if (l_action.HasItem("toolbar_action_id") == l_id) {
            ShowLabel(*lp_object->AsPointer<QAction>(), i_text, l_action);
        }
    }
}

QString ActionSetToolBar::GetKey(QString i_key) const {
    return ToQString(GetKeyBytes(ToUtf8(i_key)));
}

std::string ActionSetToolBar::GetKeyBytes(const std::string& i_key) const {
    return d.GetType("active_action_key")->HasItem(i_key).HasItem("active_action_value").AsString();
}

void ActionSetToolBar::Clear() {
    m_currentSet.clear();
    m_currentWidgetItem = nullptr;
    m_treeWidget = nullptr;
    m_currentWidget = nullptr;
    DropActions();
    g("toolbar_action_object").Remove();
    AddBlank();
}

void ActionSetToolBar::AutoFocusTabWidget(QTabWidget* ip_tabs) {
    connect(ip_tabs, &QTabWidget::currentChanged, this, &ActionSetToolBar::OnAutoFocusedTabWidgetCurrentChanged,
            Qt::UniqueConnection);
}

void ActionSetToolBar::OnAutoFocusedTabWidgetCurrentChanged(int i_index) {
    const QTabWidget* const lp_tabs = qobject_cast<QTabWidget*>(sender());
    if (QWidget* const lp_page = lp_tabs->widget(i_index)) {
        lp_page->setFocus();
    }
}

void ActionSetToolBar::OnApplicationFocusChanged(QWidget*, QWidget* ip_now) {
    if (g_showIsOver) {
        return;
    }
    // The keyboard comes to press one of the buttons: they stay those of the widget it comes from.
    if (ip_now && isAncestorOf(ip_now)) {
        return;
    }
    m_focusBeforeUs = ip_now;
    m_treeWidget = nullptr;
    for (QWidget* lp_widget = Descend(ip_now); lp_widget; lp_widget = lp_widget->parentWidget()) {
        if (!m_treeWidget) {
            m_treeWidget = qobject_cast<QTreeWidget*>(lp_widget);
        }
        if (const ItemPtr l_item = ItemOf(lp_widget)) {
            m_currentWidgetItem = l_item;
            ChangeSet(lp_widget, l_item.HasItem("toolbar_action_set").AsString());
            for (const Item* const lp_pair : l_item.GetItems("action_key_value_pair")) {
                Publish(lp_pair->HasItem("action_key"), lp_pair->HasItem("action_value").AsString());
            }
            return;
        }
    }
    Clear();
}

void ActionSetToolBar::ChangeSet(QWidget* ip_widget, const std::string& i_set) {
    m_currentSet = i_set;
    m_currentWidget = ip_widget;
    DropActions();
    g("toolbar_action_object").Remove();
    const ItemPtr l_set = d.GetType("toolbar_action_set")->GetItem(i_set);
    for (Item* const lp_action : l_set.GetItems("toolbar_action").SortNumericBy("toolbar_action_order", true)) {
        ShowAction(lp_action);
    }
    if (actions().isEmpty()) {
        AddBlank();
    }
}

void ActionSetToolBar::ShowAction(ItemPtr i_action) {
    const ItemPtr l_override = OverridingText(m_currentWidgetItem, i_action.HasItem("toolbar_action_id"));
    const QString l_text = ToQString((l_override ? l_override : i_action.HasItem("toolbar_action_text")).AsView());
    QAction* const lp_object = AddButton(ToQString(i_action.HasItem("toolbar_action_icon").AsView()), l_text);
    ShowLabel(*lp_object, l_text, i_action);
    connect(lp_object, &QAction::triggered, this, &ActionSetToolBar::OnActionTriggered);
    i_action.Connect(d.GetType("toolbar_action_object")->GetItem(lp_object));
}

void ActionSetToolBar::OnActionTriggered(bool) {
    const ItemPtr l_action = d.GetType("toolbar_action_object")->HasItem(sender()).HasItem("toolbar_action");
    if (!l_action) {
        return;
    }
    const std::string l_id = l_action.HasItem("toolbar_action_id").AsString();
    const bool l_needsSelection = l_action->IsConnected("needs_list_selection");
    ReturnFocus();
    if (m_treeWidget) {
        const QList<QTreeWidgetItem*> l_rows = m_treeWidget->selectedItems();
        if (!l_rows.isEmpty()) {
            PublishRow(l_rows.constFirst());
        } else if (l_needsSelection) {
            return;
        }
    }
    Q_EMIT ActionTriggered(l_id);
}

void ActionSetToolBar::PublishRow(QTreeWidgetItem* ip_row) const {
    for (const Item* const lp_pair : m_currentWidgetItem.GetItems("action_key_column_pair")) {
        Publish(lp_pair->HasItem("action_key"), KeyOfCell(*ip_row, lp_pair->HasItem("action_column").AsInt()));
    }
}

// A button that was pressed by key gives the focus back before anything comes of it. It would lose it anyway, and to
// nobody, as soon as a dialog opens and the buttons change.
void ActionSetToolBar::ReturnFocus() {
    if (m_focusBeforeUs && QApplication::focusWidget() && isAncestorOf(QApplication::focusWidget())) {
        m_focusBeforeUs->setFocus();
    }
}

void ActionSetToolBar::keyPressEvent(QKeyEvent* ip_event) {
    if (ip_event->key() == Qt::Key_Escape) {
        ReturnFocus();
    } else {
        QToolBar::keyPressEvent(ip_event);
    }
}

void ActionSetToolBar::OnWidgetDestroyed(QObject* ip_widget) {
    if (g_showIsOver) {
        return;
    }
    const ItemPtr l_item = ItemOf(ip_widget);
    if (!l_item) {
        return;
    }
    const bool l_isOnShow = l_item == m_currentWidgetItem;
    ForgetWidget(l_item);
    if (l_isOnShow) {
        Clear();
    }
}
