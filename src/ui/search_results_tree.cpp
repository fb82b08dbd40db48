#include "ui/search_results_tree.h"

#include "app/text.h"
#include "store/data.h"
#include "ui/display_text.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <utility>

namespace {

constexpr int c_columnWidths[] = {100, 40, 40, 150, 170, 70}; // the last column takes the rest
constexpr QSize c_markSize(12, 12);
constexpr int c_hintMargin = 16;

// Speeds need all of their narrow column.
class SpeedDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* ip_painter, const QStyleOptionViewItem& i_option, const QModelIndex& i_index) const override {
        QStyledItemDelegate::paint(ip_painter, i_option, i_index);
        const bool l_isSelected = i_option.state & QStyle::State_Selected;
        const QPalette::ColorGroup l_group =
            i_option.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
        ip_painter->setPen(i_option.palette.color(l_group, l_isSelected ? QPalette::HighlightedText : QPalette::Text));
        const QRect l_rect = i_option.rect.adjusted(1, 0, -1, 0);
        const QString l_text = i_index.data().toString();
        ip_painter->drawText(l_rect, Qt::AlignRight | Qt::AlignVCenter,
                             i_option.fontMetrics.elidedText(l_text, Qt::ElideRight, l_rect.width()));
    }

protected:
    void initStyleOption(QStyleOptionViewItem* op_option, const QModelIndex& i_index) const override {
        QStyledItemDelegate::initStyleOption(op_option, i_index);
        op_option->text.clear();
    }
};

bool IsFilteredOut(const QTreeWidgetItem* ip_row) {
    for (; ip_row; ip_row = ip_row->parent()) {
        if (static_cast<const SearchResultListItem*>(ip_row)->m_isFilteredOut) {
            return true;
        }
    }
    return false;
}

// What the row stands for, byte for byte.
std::string NameOf(const SearchResultListItem* ip_row, bool i_asPath) {
    switch (ip_row->type()) {
    case SearchResultListItem::UserRow:
        return d.GetType("search_results_user_node")->HasItem(ip_row)["user"].AsString();
    case SearchResultListItem::FolderRow:
        return d.GetType("search_results_folder_node")->HasItem(ip_row)["search_result_file_folder"].AsString();
    default:
        break;
    }
    const ItemPtr l_result = d.GetType("search_result_node")->HasItem(ip_row)["search_result"];
    const std::string l_name = l_result["search_result_file_name"].AsString();
    return i_asPath ? l_result["search_result_file_folder"].AsString() + "\\" + l_name : l_name;
}

} // namespace

SearchResultsTree::SearchResultsTree(QWidget* ip_parent) : QTreeWidget(ip_parent) {
    setObjectName(QStringLiteral("searchResultsTreeWidget"));
    setAccessibleName(tr("Search results"));
    setSelectionMode(ExtendedSelection);
    setUniformRowHeights(true); // else every row would be measured
    setAllColumnsShowFocus(true);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setIconSize(c_markSize);
    setItemDelegateForColumn(SearchResultListItem::Speed, new SpeedDelegate(this));

    setColumnCount(SearchResultListItem::ColumnCount);
    header()->setStretchLastSection(false);
    for (int l_column = 0; l_column < SearchResultListItem::Attributes; ++l_column) {
        setColumnWidth(l_column, c_columnWidths[l_column]);
    }
    header()->setSectionsMovable(false);
    header()->setSectionsClickable(false);
    setHeaderLabels({tr("User"), tr("Free"), tr("K/s"), tr("Folder"), tr("File"), tr("Size"), tr("Attributes")});
    header()->setStretchLastSection(true);
}

SearchUserRow* SearchResultsTree::UserRowAt(int i_index) const {
    return static_cast<SearchUserRow*>(topLevelItem(i_index));
}

void SearchResultsTree::StartBulkChange() {
    scheduleDelayedItemsLayout();
}

void SearchResultsTree::HideRow(int i_row, const QModelIndex& i_parent, SearchResultListItem& io_item, bool i_hide) {
    if (io_item.m_isFilteredOut != i_hide) {
        io_item.m_isFilteredOut = i_hide;
        setRowHidden(i_row, i_parent, i_hide);
    }
}

void SearchResultsTree::ExpandRow(const SearchResultListItem* ip_row, bool i_expand) {
    setExpanded(indexFromItem(ip_row), i_expand);
}

// By ranges: the list of selected cells, which Qt offers, is seven times as long as that of rows.
std::vector<SearchResultListItem*> SearchResultsTree::SelectedRows() const {
    using Place = std::array<int, 3>; // of user, folder and file; -1 where the row has none
    std::vector<std::pair<Place, SearchResultListItem*>> l_found;
    for (const QItemSelectionRange& l_range : selectionModel()->selection()) {
        const QModelIndex l_parent = l_range.parent();
        Place l_place{-1, -1, -1};
        std::size_t l_level = 0;
        if (l_parent.parent().isValid()) {
            l_place[l_level++] = l_parent.parent().row();
        }
        if (l_parent.isValid()) {
            l_place[l_level++] = l_parent.row();
        }
        for (int l_row = l_range.top(); l_row <= l_range.bottom(); ++l_row) {
            auto* const lp_item = static_cast<SearchResultListItem*>(itemFromIndex(model()->index(l_row, 0, l_parent)));
            if (lp_item && !IsFilteredOut(lp_item)) {
                l_place[l_level] = l_row;
                l_found.emplace_back(l_place, lp_item);
            }
        }
    }
    std::sort(l_found.begin(), l_found.end());
    std::vector<SearchResultListItem*> l_rows;
    l_rows.reserve(l_found.size());
    for (const auto& [l_place, lp_item] : l_found) {
        l_rows.push_back(lp_item);
    }
    return l_rows;
}

void SearchResultsTree::SetHint(const QString& i_sentence) {
    if (m_hint != i_sentence) {
        m_hint = i_sentence;
        setAccessibleDescription(i_sentence);
        viewport()->update();
    }
}

bool SearchResultsTree::ShowsNothing() const {
    for (int l_row = 0; l_row < topLevelItemCount(); ++l_row) {
        if (!UserRowAt(l_row)->m_isFilteredOut) {
            return false;
        }
    }
    return true;
}

void SearchResultsTree::paintEvent(QPaintEvent* ip_event) {
    QTreeWidget::paintEvent(ip_event);
    if (m_hint.isEmpty() || !ShowsNothing()) {
        return;
    }
    QPainter l_painter(viewport());
    l_painter.setPen(palette().color(QPalette::PlaceholderText));
    l_painter.drawText(viewport()->rect().adjusted(c_hintMargin, c_hintMargin, -c_hintMargin, -c_hintMargin),
                       Qt::AlignCenter | Qt::TextWordWrap, m_hint);
}

// What strangers named may hold line ends, which a terminal that it is pasted into would take for commands.
void SearchResultsTree::CopySelected(bool i_paths) const {
    QStringList l_lines;
    for (const SearchResultListItem* lp_row : SelectedRows()) {
        l_lines.append(DisplayText(ToQString(NameOf(lp_row, i_paths)), std::numeric_limits<int>::max()));
    }
    if (!l_lines.isEmpty()) {
        QApplication::clipboard()->setText(l_lines.join(QLatin1Char('\n')));
    }
}

void SearchResultsTree::keyPressEvent(QKeyEvent* ip_event) {
    if (ip_event->matches(QKeySequence::Copy)) {
        CopySelected(false);
    } else if (ip_event->modifiers() == (Qt::ControlModifier | Qt::ShiftModifier) && ip_event->key() == Qt::Key_C) {
        CopySelected(true);
    } else if (ip_event->key() == Qt::Key_Return || ip_event->key() == Qt::Key_Enter) {
        Q_EMIT DownloadRequested();
    } else {
        QTreeWidget::keyPressEvent(ip_event);
    }
}
