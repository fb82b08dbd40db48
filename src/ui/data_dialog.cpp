// The lists of Types and items, and the buttons.
#include "ui/data_dialog.h"

#include "app/text.h"
#include "ui/data_item_text.h"
#include "ui/display_text.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QTreeWidget>

#include <system_error>

namespace {

enum TypeColumn { NameColumn, KindColumn, CountColumn };

// Rows that come at a time: far more than fit on a screen, and made in a few milliseconds.
constexpr std::size_t c_slice = 1000;
// Of holding items against the filter, between two turns of the event loop.
constexpr std::chrono::milliseconds c_readTime(15);

// CommafyNumber leaves nothing of a zero.
QString Count(std::size_t i_count) {
    return i_count == 0 ? QStringLiteral("0") : CommafyNumber(static_cast<long long>(i_count));
}

} // namespace

DataDialog::DataDialog(Data* ip_data, QWidget* ip_parent) : QDialog(ip_parent), mp_data(ip_data) {
    BuildLayout();
    std::map<std::string, Type*> l_types;
    mp_data->GetTypes(l_types);
    for (const auto& [l_name, lp_type] : l_types) {
        AddTypeRow(lp_type);
    }
    mp_typeList->sortItems(NameColumn, Qt::AscendingOrder);
    for (const TypeColumn l_column : {NameColumn, KindColumn, CountColumn}) {
        mp_typeList->resizeColumnToContents(l_column);
    }
    ShowItemCount();
    WatchStore();
}

void DataDialog::WatchStore() {
    mp_data->m_typeAdded.AddHandler(MakeHandler(this, &DataDialog::OnTypeAdded));
    mp_data->m_itemAdded.AddHandler(MakeHandler(this, &DataDialog::OnItemAdded));
    mp_data->m_itemRemoved.AddHandler(MakeHandler(this, &DataDialog::OnItemRemoved));
    if (Type* const lp_value = mp_data->FindType("global_value")) {
        lp_value->m_connected.AddHandler(MakeHandler(this, &DataDialog::OnSettingValueChanged));
        lp_value->m_disconnected.AddHandler(MakeHandler(this, &DataDialog::OnSettingValueChanged));
    }
}

void DataDialog::SetSave(Save i_save) {
    m_save = std::move(i_save);
    mp_saveButton->setEnabled(static_cast<bool>(m_save));
}

// --- Types ----------------------------------------------------------------------------------------------------------

void DataDialog::AddTypeRow(Type* ip_type) {
    QTreeWidgetItem* const lp_row = new QTreeWidgetItem(mp_typeList);
    lp_row->setText(NameColumn, CellText(ip_type->GetName()));
    lp_row->setText(KindColumn, ip_type->IsNull() ? tr("null   ") : tr("value   "));
    m_typeRows[lp_row] = ip_type->GetName();
    m_typeNames[ip_type->GetName()] = lp_row;
    ShowCount(ip_type, ip_type->CountItems());
    ApplyTypeFilter(lp_row);
}

void DataDialog::ShowCount(Type* ip_type, std::size_t i_count) {
    m_typeCounts[ip_type] = i_count;
    m_typeNames[ip_type->GetName()]->setText(CountColumn, QString::number(i_count));
}

void DataDialog::OnTypeAdded(Type* ip_type) {
    AddTypeRow(ip_type);
    mp_typeList->sortItems(NameColumn, Qt::AscendingOrder);
}

void DataDialog::OnTypeFilterChanged() {
    for (const auto& [lp_row, l_name] : m_typeRows) {
        ApplyTypeFilter(lp_row);
    }
}

void DataDialog::ApplyTypeFilter(QTreeWidgetItem* ip_row) {
    ip_row->setHidden(!ip_row->text(NameColumn).contains(mp_typeFilter->text(), Qt::CaseInsensitive));
}

void DataDialog::OnTypeItemSelectionChanged() {
    const QList<QTreeWidgetItem*> l_rows = mp_typeList->selectedItems();
    mp_selectedType = l_rows.isEmpty() ? nullptr : mp_data->GetType(m_typeRows[l_rows.first()]);
    ClearTree();
    FillItems();
}

// --- Items ----------------------------------------------------------------------------------------------------------

void DataDialog::FillItems() {
    m_filterPause.stop();
    m_listItems.clear();
    m_itemListItems.clear();
    mp_itemList->clear();
    m_entryLimit = 0;
    m_feed.Start(mp_selectedType, mp_itemFilter->text());
    AddSlice();
    m_readTimer.start();
}

void DataDialog::AddSlice() {
    m_entryLimit += c_slice;
    for (Item* lp_item : m_feed.Take(m_entryLimit - m_listItems.size())) {
        AddEntry(lp_item, mp_itemList->count());
    }
    ShowItemCount();
}

void DataDialog::AddSliceAtEnd(int i_scrollPosition) {
    if (i_scrollPosition == mp_itemList->verticalScrollBar()->maximum() && m_feed.WaitingCount() > 0) {
        AddSlice();
    }
}

void DataDialog::AddEntry(Item* ip_item, int i_row) {
    QListWidgetItem* const lp_entry = new QListWidgetItem(ItemText(*ip_item));
    m_listItems[lp_entry] = ip_item;
    m_itemListItems[ip_item] = lp_entry;
    mp_itemList->insertItem(i_row, lp_entry);
}

Item* DataDialog::TakeEntry(QListWidgetItem* ip_entry) {
    const auto l_place = m_listItems.find(ip_entry);
    Item* const lp_item = l_place->second;
    m_itemListItems.erase(lp_item);
    m_listItems.erase(l_place);
    delete ip_entry;
    return lp_item;
}

void DataDialog::ShowItemCount() {
    const std::size_t l_shown = m_listItems.size();
    const std::size_t l_more = m_feed.WaitingCount();
    if (!mp_selectedType) {
        mp_itemCount->setText(tr("Select a Type to see its items"));
    } else if (!m_feed.IsRead()) {
        mp_itemCount->setText(tr("%1 shown, %2 more, searching…").arg(Count(l_shown), Count(l_more)));
    } else if (l_more > 0) {
        mp_itemCount->setText(tr("%1 shown, %2 more: scroll down").arg(Count(l_shown), Count(l_more)));
    } else if (l_shown > 0) {
        mp_itemCount->setText(tr("%1 shown, no more").arg(Count(l_shown)));
    } else {
        mp_itemCount->setText(mp_itemFilter->text().isEmpty() ? tr("No items") : tr("No item passes the filter"));
    }
}

void DataDialog::OnFilterPause() {
    FillItems();
}

// Also once when there is nothing to read, for the count.
void DataDialog::OnReadMore() {
    m_feed.Read(c_readTime);
    for (Item* lp_item : m_feed.Take(m_entryLimit - std::min(m_entryLimit, m_listItems.size()))) {
        AddEntry(lp_item, mp_itemList->count());
    }
    ShowItemCount();
    if (m_feed.IsRead()) {
        m_readTimer.stop();
    }
}

void DataDialog::OnItemAdded(Item* ip_item) {
    ShowCount(ip_item->GetType(), ip_item->GetType()->CountItems());
    if (ip_item->GetType() != mp_selectedType || m_itemListItems.contains(ip_item)) {
        return;
    }
    m_feed.Forget(ip_item); // another handler may have selected the Type just now
    if (!m_feed.Passes(*ip_item)) {
        return;
    }
    AddEntry(ip_item, 0);
    if (m_listItems.size() > m_entryLimit) {
        m_feed.PutBack(TakeEntry(mp_itemList->item(mp_itemList->count() - 1)));
    }
    // The count follows at the end of the event loop's turn: thousands may come in one.
    m_readTimer.start();
}

// The item still counts among those of its Type, and so do others whose removal this one lies within.
void DataDialog::OnItemRemoved(Item* ip_item) {
    ShowCount(ip_item->GetType(), m_typeCounts[ip_item->GetType()] - 1);
    if (m_itemNodes.contains(ip_item)) {
        ClearTree();
    }
    if (ip_item->GetType() != mp_selectedType) {
        return;
    }
    m_feed.Forget(ip_item);
    if (const auto l_place = m_itemListItems.find(ip_item); l_place != m_itemListItems.end()) {
        TakeEntry(l_place->second);
    }
    m_readTimer.start();
}

// A value is new before any setting has it, and may become the password or cease to be it.
void DataDialog::OnSettingValueChanged(ConnectionInfo i_info) {
    if (const auto l_place = m_itemListItems.find(i_info.m_itemFrom); l_place != m_itemListItems.end()) {
        l_place->second->setText(ItemText(*i_info.m_itemFrom));
    }
    if (const auto l_place = m_itemNodes.find(i_info.m_itemFrom); l_place != m_itemNodes.end()) {
        for (QTreeWidgetItem* lp_node : l_place->second) {
            lp_node->setText(0,
                             lp_node->parent() ? LabelledItemText(*i_info.m_itemFrom) : ItemText(*i_info.m_itemFrom));
        }
    }
}

// --- Buttons --------------------------------------------------------------------------------------------------------

void DataDialog::OnSweepClicked() {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const int l_removed = mp_data->RemoveDisconnectedItems();
    QApplication::restoreOverrideCursor();
    mp_result->setText(tr("Items removed by the sweep: %1").arg(Count(static_cast<std::size_t>(l_removed))));
}

void DataDialog::OnSaveClicked() {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const SaveResult l_result = m_save();
    QApplication::restoreOverrideCursor();
    mp_result->setText(l_result.isSaved
                           ? tr("Items saved: %1").arg(Count(l_result.itemCount))
                           : tr("Not saved: %1").arg(LabelText(std::generic_category().message(l_result.error))));
}
