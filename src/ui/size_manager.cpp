#include "ui/size_manager.h"

#include "app/text.h"
#include "ui/resizable_window.h"
#include "ui/size_schema.h"
#include "ui/window_place.h"

#include <QHeaderView>
#include <QScopedValueRollback>
#include <QSplitter>
#include <QTreeWidget>

#include <algorithm>
#include <optional>

SizeManager* sizeManager = nullptr;

namespace {

// No column or pane is larger; a stored size beyond it is damage.
constexpr int c_largestSize = 16'384;

// The Types of a thing with numbered parts.
struct PartTypes {
    const char* owner;
    const char* part;
    const char* number;
};
constexpr PartTypes c_columns{"sizer_tree", "sizer_tree_column", "sizer_tree_column_number"};
constexpr PartTypes c_panes{"sizer_splitter", "sizer_splitter_index", "sizer_splitter_index_number"};

// Nothing where there is no number or one outside the bounds.
std::optional<int> StoredNumber(ItemPtr i_owner, const char* i_type, int i_least, int i_most) {
    const std::optional<long long> l_number = i_owner.HasItem(i_type).ToInt64();
    if (!l_number || *l_number < i_least || *l_number > i_most) {
        return std::nullopt;
    }
    return static_cast<int>(*l_number);
}

// Puts the new number in the place of the old one. Dragging would heap up the old ones until the next sweep, so one
// that nothing else shares goes at once.
void StoreNumber(ItemPtr i_owner, const char* i_type, int i_number) {
    const ItemPtr l_old = i_owner.HasItem(i_type);
    const ItemPtr l_new = d.GetType(i_type)->GetItem(i_number);
    if (l_old == l_new) {
        return;
    }
    i_owner.Connect(l_new);
    if (l_old && l_old->IsDisconnectedFromAll()) {
        l_old.Remove();
    }
}

// A damaged file may hold a part twice: one of them stays.
ItemPtr FindOrMakePart(const PartTypes& i_types, ItemPtr i_owner, int i_number) {
    const ItemPtr l_number = d.GetType(i_types.number)->GetItem(i_number);
    ItemPtr l_found;
    for (Item* const lp_part : d.GetItems(i_owner, l_number, i_types.part)) {
        if (l_found) {
            lp_part->Remove();
        } else {
            l_found = lp_part;
        }
    }
    if (!l_found) {
        l_found = i_owner.NewItem(i_types.part);
        l_found.Connect(l_number);
    }
    return l_found;
}

void StoreParts(const PartTypes& i_types, ItemPtr i_owner, const QList<int>& i_sizes) {
    for (int l_number = 0; l_number < i_sizes.size(); ++l_number) {
        StoreNumber(FindOrMakePart(i_types, i_owner, l_number), "sizer_size", i_sizes.at(l_number));
    }
}

// Without the last column if it takes what the others leave.
QList<int> ColumnSizes(const QHeaderView& i_header) {
    QList<int> l_sizes;
    const int l_count = i_header.count() - (i_header.stretchLastSection() ? 1 : 0);
    for (int l_column = 0; l_column < l_count; ++l_column) {
        l_sizes.append(i_header.sectionSize(l_column));
    }
    return l_sizes;
}

void ApplyColumns(ItemPtr i_owner, QHeaderView& io_header) {
    for (Item* const lp_column : i_owner.GetItems(c_columns.part).SortNumericBy(c_columns.number, true)) {
        const std::optional<int> l_number = StoredNumber(lp_column, c_columns.number, 0, io_header.count() - 1);
        const std::optional<int> l_size = StoredNumber(lp_column, "sizer_size", 1, c_largestSize);
        if (l_number && l_size) {
            io_header.resizeSection(*l_number, *l_size);
        }
    }
}

// Sizes go by pane, so that one bad number spoils them all.
void ApplyPanes(ItemPtr i_owner, QSplitter& io_splitter) {
    QList<int> l_sizes;
    for (Item* const lp_pane : i_owner.GetItems(c_panes.part).SortNumericBy(c_panes.number, true)) {
        const std::optional<int> l_size = StoredNumber(lp_pane, "sizer_size", 0, c_largestSize);
        if (!l_size) {
            return;
        }
        l_sizes.append(*l_size);
    }
    if (std::any_of(l_sizes.cbegin(), l_sizes.cend(), [](int i_size) { return i_size > 0; })) {
        io_splitter.setSizes(l_sizes);
    }
}

void ApplyGeometry(ItemPtr i_owner, ResizableWindow& io_window) {
    constexpr int l_far = 1'000'000; // no desktop reaches as far; keeps sums in range
    const std::optional<int> l_x = StoredNumber(i_owner, "sizer_x", -l_far, l_far);
    const std::optional<int> l_y = StoredNumber(i_owner, "sizer_y", -l_far, l_far);
    const std::optional<int> l_width = StoredNumber(i_owner, "sizer_width", 1, l_far);
    const std::optional<int> l_height = StoredNumber(i_owner, "sizer_height", 1, l_far);
    const bool l_isSized = l_width && l_height;
    const QSize l_size =
        l_isSized ? BearableSize(QSize(*l_width, *l_height)) : QSize(io_window.GetWidth(), io_window.GetHeight());
    if (l_x && l_y) {
        const QPoint l_place = VisiblePlace(QRect(QPoint(*l_x, *l_y), l_size));
        io_window.SetPosition(l_place.x(), l_place.y());
    }
    if (l_isSized) {
        io_window.SetSize(l_size.width(), l_size.height());
    }
}

void RemoveWidgetItem(const char* i_type, QObject* ip_object) {
    if (const ItemPtr l_item = d.GetType(i_type)->HasItem(ip_object)) {
        l_item.Remove();
    }
}

} // namespace

SizeManager::SizeManager(QObject* ip_parent) : QObject(ip_parent) {
    sizeManager = this;
    CreateSizeTypes();
}

SizeManager::~SizeManager() {
    sizeManager = nullptr;
}

void SizeManager::RegisterResizableWindow(QString i_name, ResizableWindow* ip_window) {
    const std::string l_name = ToUtf8(i_name);
    ItemPtr l_item = d.GetType("sizer_window")->HasItem(l_name);
    if (l_item) {
        ApplyGeometry(l_item, *ip_window);
    } else {
        l_item = d.GetType("sizer_window")->GetItem(l_name);
        StoreNumber(l_item, "sizer_x", ip_window->GetX());
        StoreNumber(l_item, "sizer_y", ip_window->GetY());
        StoreNumber(l_item, "sizer_width", ip_window->GetWidth());
        StoreNumber(l_item, "sizer_height", ip_window->GetHeight());
    }
    l_item.Connect(d.GetType("sizer_window_widget")->GetItem(ip_window));
    connect(ip_window, &ResizableWindow::WindowMoved, this, &SizeManager::OnWindowMoved);
    connect(ip_window, &ResizableWindow::WindowResized, this, &SizeManager::OnWindowResized);
    connect(ip_window, &QObject::destroyed, this, &SizeManager::OnWindowDestroyed);
}

// Null once another window has taken the name over.
ItemPtr SizeManager::SenderWindow() const {
    return d.GetType("sizer_window_widget")->HasItem(sender()).HasItem("sizer_window");
}

void SizeManager::OnWindowResized(int i_width, int i_height) {
    if (const ItemPtr l_window = SenderWindow()) {
        StoreNumber(l_window, "sizer_width", i_width);
        StoreNumber(l_window, "sizer_height", i_height);
    }
}

void SizeManager::OnWindowMoved(int i_x, int i_y) {
    if (const ItemPtr l_window = SenderWindow()) {
        StoreNumber(l_window, "sizer_x", i_x);
        StoreNumber(l_window, "sizer_y", i_y);
    }
}

void SizeManager::OnWindowDestroyed(QObject* ip_window) {
    RemoveWidgetItem("sizer_window_widget", ip_window);
}

void SizeManager::RegisterSplitter(QString i_name, QSplitter* ip_splitter, QList<int> i_defaultSizes) {
    const std::string l_name = ToUtf8(i_name);
    ItemPtr l_item = d.GetType("sizer_splitter")->HasItem(l_name);
    if (l_item) {
        ApplyPanes(l_item, *ip_splitter);
    } else {
        l_item = d.GetType("sizer_splitter")->GetItem(l_name);
        StoreParts(c_panes, l_item, i_defaultSizes.isEmpty() ? ip_splitter->sizes() : i_defaultSizes);
    }
    l_item.Connect(d.GetType("sizer_splitter_widget")->GetItem(ip_splitter));
    connect(ip_splitter, &QSplitter::splitterMoved, this, &SizeManager::OnSplitterMoved);
    connect(ip_splitter, &QObject::destroyed, this, &SizeManager::OnSplitterDestroyed);
}

void SizeManager::OnSplitterMoved(int, int) {
    if (m_updating) {
        return;
    }
    const QScopedValueRollback<bool> l_updating(m_updating, true);
    const ItemPtr l_widget = d.GetType("sizer_splitter_widget")->HasItem(sender());
    const ItemPtr l_splitter = l_widget.HasItem("sizer_splitter");
    if (!l_splitter) {
        return;
    }
    const QList<int> l_sizes = l_widget.AsPointer<QSplitter>()->sizes();
    StoreParts(c_panes, l_splitter, l_sizes);
    for (const Item* const lp_other : l_splitter.GetItems("sizer_splitter_widget")) {
        if (lp_other != l_widget.Get()) {
            lp_other->AsPointer<QSplitter>()->setSizes(l_sizes);
        }
    }
}

void SizeManager::OnSplitterDestroyed(QObject* ip_splitter) {
    RemoveWidgetItem("sizer_splitter_widget", ip_splitter);
}

void SizeManager::RegisterTreeWidget(QString i_name, QTreeWidget* ip_tree) {
    const std::string l_name = ToUtf8(i_name);
    ItemPtr l_item = d.GetType("sizer_tree")->HasItem(l_name);
    if (l_item) {
        ApplyColumns(l_item, *ip_tree->header());
    } else {
        l_item = d.GetType("sizer_tree")->GetItem(l_name);
        StoreParts(c_columns, l_item, ColumnSizes(*ip_tree->header()));
    }
    l_item.Connect(d.GetType("sizer_tree_widget")->GetItem(ip_tree));
    connect(ip_tree->header(), &QHeaderView::sectionResized, this, &SizeManager::OnTreeColumnResizedMoved);
    connect(ip_tree, &QObject::destroyed, this, &SizeManager::OnTreeDestroyed);
}

void SizeManager::OnTreeColumnResizedMoved(int, int, int) {
    if (m_updating) {
        return;
    }
    const QScopedValueRollback<bool> l_updating(m_updating, true);
    const ItemPtr l_widget = d.GetType("sizer_tree_widget")->HasItem(sender()->parent());
    const ItemPtr l_tree = l_widget.HasItem("sizer_tree");
    if (!l_tree) {
        return;
    }
    const QList<int> l_sizes = ColumnSizes(*l_widget.AsPointer<QTreeWidget>()->header());
    StoreParts(c_columns, l_tree, l_sizes);
    for (const Item* const lp_other : l_tree.GetItems("sizer_tree_widget")) {
        if (lp_other == l_widget.Get()) {
            continue;
        }
        QHeaderView* const lp_header = lp_other->AsPointer<QTreeWidget>()->header();
        for (int l_column = 0; l_column < l_sizes.size(); ++l_column) {
            lp_header->resizeSection(l_column, l_sizes.at(l_column));
        }
    }
}

void SizeManager::OnTreeDestroyed(QObject* ip_tree) {
    RemoveWidgetItem("sizer_tree_widget", ip_tree);
}
