#include "ui/chat_find_bar.h"

#include "ui/chat_view.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QShortcut>
#include <QToolButton>

namespace {

QToolButton* MakeButton(Qt::ArrowType i_arrow, const QString& i_tip) {
    QToolButton* const lp_button = new QToolButton;
    lp_button->setArrowType(i_arrow);
    lp_button->setAutoRaise(true);
    lp_button->setToolTip(i_tip);
    lp_button->setAccessibleName(i_tip);
    return lp_button;
}

} // namespace

ChatFindBar::ChatFindBar(ChatView* ip_view, QWidget* ip_home, QWidget* ip_area) : mp_view(ip_view), mp_home(ip_home) {
    setObjectName(QStringLiteral("findBar"));
    mp_edit = new QLineEdit;
    mp_edit->setObjectName(QStringLiteral("findEdit"));
    mp_edit->setClearButtonEnabled(true);
    QLabel* const lp_label = new QLabel(tr("F&ind:"));
    lp_label->setBuddy(mp_edit);
    mp_answer = new QLabel;
    mp_answer->setObjectName(QStringLiteral("findAnswer"));
    mp_answer->setMinimumWidth(fontMetrics().horizontalAdvance(tr("Not found")));
    QToolButton* const lp_up = MakeButton(Qt::UpArrow, tr("Find further up"));
    QToolButton* const lp_down = MakeButton(Qt::DownArrow, tr("Find further down"));
    QToolButton* const lp_close = new QToolButton;
    lp_close->setText(tr("Close"));
    lp_close->setAutoRaise(true);

    QHBoxLayout* const lp_layout = new QHBoxLayout(this);
    lp_layout->setContentsMargins(0, 0, 0, 0);
    lp_layout->addWidget(lp_label);
    lp_layout->addWidget(mp_edit, 1);
    lp_layout->addWidget(lp_up);
    lp_layout->addWidget(lp_down);
    lp_layout->addWidget(mp_answer);
    lp_layout->addWidget(lp_close);
    hide();

    connect(lp_up, &QToolButton::clicked, this, [this] { Find(true); });
    connect(lp_down, &QToolButton::clicked, this, [this] { Find(false); });
    connect(lp_close, &QToolButton::clicked, this, &ChatFindBar::Close);
    connect(mp_edit, &QLineEdit::textChanged, mp_answer, &QLabel::clear);
    QShortcut* const lp_shortcut = new QShortcut(QKeySequence::Find, ip_area);
    lp_shortcut->setContext(Qt::WidgetWithChildrenShortcut);
    connect(lp_shortcut, &QShortcut::activated, this, &ChatFindBar::Open);
}

void ChatFindBar::Open() {
    show();
    mp_edit->setFocus(Qt::ShortcutFocusReason);
    mp_edit->selectAll();
}

void ChatFindBar::keyPressEvent(QKeyEvent* ip_event) {
    const bool l_isReturn = ip_event->key() == Qt::Key_Return || ip_event->key() == Qt::Key_Enter;
    if (ip_event->key() == Qt::Key_Escape) {
        Close();
    } else if (l_isReturn && mp_edit->hasFocus()) {
        Find(!ip_event->modifiers().testFlag(Qt::ShiftModifier));
    } else {
        QWidget::keyPressEvent(ip_event);
    }
}

void ChatFindBar::Find(bool i_isUpwards) {
    const bool l_isFound = mp_edit->text().isEmpty() || mp_view->Find(mp_edit->text(), i_isUpwards);
    mp_answer->setText(l_isFound ? QString() : tr("Not found"));
}

void ChatFindBar::Close() {
    hide();
    mp_home->setFocus(Qt::OtherFocusReason);
}
