// The rows of the wish list on the search page: each is one wish, with a box in front.
#include "ui/search_form.h"

#include "ui/action_set_tool_bar.h"
#include "ui/display_text.h"
#include "ui/wish_list_tree.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>

#include <optional>

namespace {

constexpr int c_boxColumn = 0;
constexpr int c_textColumn = 1;
constexpr int c_boxColumnWidth = 20;

bool IsEnabled(const Item* ip_wish) {
    return ip_wish->IsConnected("wish_list_item_enabled");
}

QTreeWidgetItem* RowOf(const Item* ip_wish) {
    return ip_wish->HasItem("wish_list_node").AsPointer<QTreeWidgetItem>();
}

QCheckBox* BoxOf(const Item* ip_wish) {
    return ip_wish->HasItem("wish_list_node")["wish_list_node_checkbox"].AsPointer<QCheckBox>();
}

void ShowEnabled(QTreeWidgetItem& io_row, bool i_isEnabled) {
    io_row.setText(c_boxColumn, i_isEnabled ? QStringLiteral("Y") : QString());
}

} // namespace

void SearchForm::SetUpWishList() {
    mp_wishList->setHeaderLabels({QString(), tr("Wish List Search")});
    mp_wishList->header()->setSectionResizeMode(c_boxColumn, QHeaderView::Fixed);
    mp_wishList->setColumnWidth(c_boxColumn, c_boxColumnWidth);
    mp_wishList->sortByColumn(c_textColumn, Qt::AscendingOrder);
    actionBar->RegisterWidget(mp_wishList, QStringLiteral("wish_list"));
    connect(mp_wishList, &WishListTree::RemoveRequested, this, &SearchForm::RemoveSelectedWishes);
    connect(mp_wishList, &WishListTree::ToggleRequested, this, &SearchForm::ToggleSelectedWishes);
    for (Item* const lp_wish : g("wish_list_item")) {
        OnWishListItemAdded(lp_wish);
    }
    d.GetType("wish_list_item")->m_itemRemoved.AddHandler(MakeHandler(this, &SearchForm::OnWishListItemRemoved));
}

void SearchForm::OnWishListItemAdded(Item* ip_wish) {
    QTreeWidgetItem* const lp_row = new QTreeWidgetItem;
    lp_row->setText(c_textColumn, CellText(ip_wish->AsView()));
    lp_row->setToolTip(c_textColumn, ToolTipText(ip_wish->AsView()));
    ShowEnabled(*lp_row, IsEnabled(ip_wish));
    mp_wishList->addTopLevelItem(lp_row);

    QCheckBox* const lp_box = new QCheckBox;
    lp_box->setAccessibleName(tr("Repeat the search %1").arg(LabelText(ip_wish->AsView())));
    lp_box->setFocusPolicy(Qt::NoFocus); // the keyboard has the space bar on the row
    lp_box->setChecked(IsEnabled(ip_wish));
    QWidget* const lp_cell = new QWidget;
    QHBoxLayout* const lp_layout = new QHBoxLayout(lp_cell);
    lp_layout->setContentsMargins(0, 0, 0, 0);
    lp_layout->addWidget(lp_box, 0, Qt::AlignCenter);
    mp_wishList->setItemWidget(lp_row, c_boxColumn, lp_cell);

    const ItemPtr l_node = d.GetType("wish_list_node")->GetItem(lp_row);
    l_node.Connect(ip_wish);
    l_node.Connect(d.GetType("wish_list_node_checkbox")->GetItem(lp_box));
    connect(lp_box, &QCheckBox::stateChanged, this, &SearchForm::OnWishListItemCheckStateChanged);
}

void SearchForm::OnWishListItemRemoved(Item* ip_wish) {
    const ItemPtr l_node = ip_wish->HasItem("wish_list_node");
    if (!l_node) {
        return;
    }
    delete RowOf(ip_wish);
    if (const ItemPtr l_box = l_node["wish_list_node_checkbox"]) {
        l_box.Remove();
    }
    l_node.Remove();
}

void SearchForm::OnWishListItemCheckStateChanged(int i_state) {
    const ItemPtr l_node = d.GetType("wish_list_node_checkbox")->HasItem(sender())["wish_list_node"];
    const ItemPtr l_wish = l_node["wish_list_item"];
    if (!l_wish) {
        return;
    }
    if (i_state == Qt::Checked) {
        l_wish.Connect(d.GetType("wish_list_item_enabled")->GetGlobalNullItem());
    } else if (i_state == Qt::Unchecked) {
        l_wish.Disconnect("wish_list_item_enabled");
    }
    ShowEnabled(*l_node.AsPointer<QTreeWidgetItem>(), i_state == Qt::Checked);
}

void SearchForm::RemoveSelectedWishes() {
    ItemSet l_wishes;
    for (const QTreeWidgetItem* const lp_row : mp_wishList->selectedItems()) {
        if (const ItemPtr l_wish = d.GetType("wish_list_node")->HasItem(lp_row)["wish_list_item"]) {
            l_wishes.insert(l_wish);
        }
    }
    l_wishes.Remove();
}

// The box's own signal does the work.
void SearchForm::CheckAllWishes(bool i_isChecked) {
    for (const Item* const lp_wish : g("wish_list_item")) {
        if (QCheckBox* const lp_box = BoxOf(lp_wish)) {
            lp_box->setChecked(i_isChecked);
        }
    }
}

// All one way: the first of them turns round, the others follow.
void SearchForm::ToggleSelectedWishes() {
    const QList<QTreeWidgetItem*> l_rows = mp_wishList->selectedItems();
    std::optional<bool> l_isChecked;
    for (const QTreeWidgetItem* const lp_row : l_rows) {
        const ItemPtr l_node = d.GetType("wish_list_node")->HasItem(lp_row);
        if (QCheckBox* const lp_box = l_node["wish_list_node_checkbox"].AsPointer<QCheckBox>()) {
            l_isChecked = l_isChecked.value_or(!lp_box->isChecked());
            lp_box->setChecked(*l_isChecked);
        }
    }
}
