#include "ui/notice_bar.h"

#include <QAction>
#include <QLabel>
#include <QStyle>

NoticeBar::NoticeBar(QWidget* ip_parent) : QToolBar(tr("Notice"), ip_parent) {
    setMovable(false);
    setContextMenuPolicy(Qt::PreventContextMenu);
    toggleViewAction()->setVisible(false);
    setToolButtonStyle(Qt::ToolButtonTextOnly);

    const int l_iconSize = style()->pixelMetric(QStyle::PM_SmallIconSize);
    QLabel* const lp_icon = new QLabel;
    lp_icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(l_iconSize));
    lp_icon->setContentsMargins(4, 0, 4, 0);
    addWidget(lp_icon);

    mp_label = new QLabel;
    mp_label->setObjectName(QStringLiteral("noticeText"));
    mp_label->setTextFormat(Qt::PlainText);
    mp_label->setWordWrap(true);
    // A wrapping label asks for the height that it would need in a narrow column.
    mp_label->setMaximumHeight(2 * mp_label->fontMetrics().lineSpacing());
    mp_label->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    addWidget(mp_label);

    connect(addAction(tr("Dismiss")), &QAction::triggered, this, &QWidget::hide);
    hide();
}

void NoticeBar::ShowNotice(const QString& i_sentence) {
    mp_label->setText(i_sentence);
    show();
}
