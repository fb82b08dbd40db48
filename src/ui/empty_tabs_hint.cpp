#include "ui/empty_tabs_hint.h"

#include <QEvent>
#include <QTabWidget>

namespace {

constexpr int c_margin = 12;

} // namespace

EmptyTabsHint::EmptyTabsHint(QTabWidget* ip_tabs, const QString& i_sentence)
    : QLabel(i_sentence, ip_tabs), mp_tabs(ip_tabs) {
    setTextFormat(Qt::PlainText);
    setAlignment(Qt::AlignCenter);
    setWordWrap(true);
    setForegroundRole(QPalette::PlaceholderText);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    ip_tabs->installEventFilter(this);
    // Also told of the first tab and of the last one's end.
    connect(ip_tabs, &QTabWidget::currentChanged, this, &EmptyTabsHint::Update);
    Update();
}

bool EmptyTabsHint::eventFilter(QObject* ip_watched, QEvent* ip_event) {
    if (ip_watched == mp_tabs && ip_event->type() == QEvent::Resize) {
        Update();
    }
    return QLabel::eventFilter(ip_watched, ip_event);
}

void EmptyTabsHint::Update() {
    setGeometry(mp_tabs->rect().adjusted(c_margin, c_margin, -c_margin, -c_margin));
    setVisible(mp_tabs->count() == 0);
}
