#include "ui/wish_list_tree.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

namespace {

constexpr int c_boxWidth = 20;
constexpr int c_hintMargin = 10;

// The cell of the box has a text for the order's sake; it is not drawn.
class BoxDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* op_option, const QModelIndex& i_index) const override {
        QStyledItemDelegate::initStyleOption(op_option, i_index);
        op_option->text.clear();
    }
};

} // namespace

WishListTree::WishListTree(QWidget* ip_parent) : QTreeWidget(ip_parent) {
    setObjectName(QStringLiteral("wishList"));
    setAccessibleName(tr("Wish list"));
    setColumnCount(2);
    setHeaderLabels({QString(), tr("Wish List Item")});
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(ExtendedSelection);
    setSortingEnabled(true);
    setItemDelegateForColumn(0, new BoxDelegate(this));
    header()->setMinimumSectionSize(c_boxWidth);
}

void WishListTree::keyPressEvent(QKeyEvent* ip_event) {
    if (ip_event->key() == Qt::Key_Delete) {
        Q_EMIT RemoveRequested();
    } else if (ip_event->key() == Qt::Key_Space && ip_event->modifiers() == Qt::NoModifier) {
        Q_EMIT ToggleRequested();
    } else {
        QTreeWidget::keyPressEvent(ip_event);
    }
}

void WishListTree::paintEvent(QPaintEvent* ip_event) {
    QTreeWidget::paintEvent(ip_event);
    if (topLevelItemCount() > 0) {
        return;
    }
    QPainter l_painter(viewport());
    l_painter.setPen(palette().color(QPalette::PlaceholderText));
    l_painter.drawText(viewport()->rect().adjusted(c_hintMargin, c_hintMargin, -c_hintMargin, -c_hintMargin),
                       Qt::AlignCenter | Qt::TextWordWrap,
                       tr("Searches that repeat by themselves. Open a search and choose “Add to Wishlist”."));
}
