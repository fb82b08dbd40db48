#include "ui/empty_list_hint.h"

#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QEvent>

namespace {

constexpr int c_margin = 12;

} // namespace

EmptyListHint::EmptyListHint(QAbstractItemView* ip_view, const QString& i_sentence)
    : QLabel(i_sentence, ip_view->viewport()), mp_view(ip_view) {
    setTextFormat(Qt::PlainText);
    setAlignment(Qt::AlignCenter);
    setWordWrap(true);
    setForegroundRole(QPalette::PlaceholderText);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    ip_view->viewport()->installEventFilter(this);
    const QAbstractItemModel* const lp_model = ip_view->model();
    connect(lp_model, &QAbstractItemModel::rowsInserted, this, &EmptyListHint::Update);
    connect(lp_model, &QAbstractItemModel::rowsRemoved, this, &EmptyListHint::Update);
    connect(lp_model, &QAbstractItemModel::modelReset, this, &EmptyListHint::Update);
    Update();
}

bool EmptyListHint::eventFilter(QObject* ip_watched, QEvent* ip_event) {
    if (ip_event->type() == QEvent::Resize) {
        Update();
    }
    return QLabel::eventFilter(ip_watched, ip_event);
}

void EmptyListHint::Update() {
    const bool l_isEmpty = mp_view->model()->rowCount() == 0;
    // The place first: something that has none is measured when it is to be seen.
    setGeometry(mp_view->viewport()->rect().adjusted(c_margin, c_margin, -c_margin, -c_margin));
    setVisible(l_isEmpty);
    mp_view->setAccessibleDescription(l_isEmpty ? text() : QString());
}
