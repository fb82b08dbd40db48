#include "ui/chat_edit.h"

#include "app/text.h"
#include "ui/display_text.h"

#include <QKeyEvent>

#include <utility>

ChatEdit::ChatEdit(std::function<std::vector<std::string_view>()> i_names, QWidget* ip_parent)
    : QLineEdit(ip_parent), m_names(std::move(i_names)) {
    setObjectName(QStringLiteral("chatEdit"));
}

std::string ChatEdit::TakeLine() {
    const QString l_line = text();
    m_recall.Add(l_line);
    clear();
    return ToUtf8(l_line);
}

// Tab never comes to keyPressEvent while there is another widget to give the focus to.
bool ChatEdit::event(QEvent* ip_event) {
    if (ip_event->type() == QEvent::KeyPress) {
        const QKeyEvent* const lp_key = static_cast<QKeyEvent*>(ip_event);
        const bool l_isBackwards = lp_key->key() == Qt::Key_Backtab;
        const bool l_isTab = lp_key->key() == Qt::Key_Tab && lp_key->modifiers() == Qt::NoModifier;
        if ((l_isTab || l_isBackwards) && Complete(l_isBackwards)) {
            return true;
        }
    }
    return QLineEdit::event(ip_event);
}

void ChatEdit::keyPressEvent(QKeyEvent* ip_event) {
    std::optional<QString> l_recalled;
    switch (ip_event->key()) {
    case Qt::Key_Up:
        l_recalled = m_recall.Older(text());
        break;
    case Qt::Key_Down:
        l_recalled = m_recall.Newer();
        break;
    case Qt::Key_PageUp:
        Q_EMIT PageWanted(-1);
        return;
    case Qt::Key_PageDown:
        Q_EMIT PageWanted(1);
        return;
    default:
        QLineEdit::keyPressEvent(ip_event);
        return;
    }
    if (l_recalled) {
        setText(*l_recalled);
    }
}

// Going back is for rounds under way only: else Shift+Tab must lead out of the line.
bool ChatEdit::Complete(bool i_isBackwards) {
    const ChatCompletion::Line l_line{text(), cursorPosition()};
    if (i_isBackwards && !m_completion.IsUnderWay(l_line)) {
        return false;
    }
    const auto l_completed = m_completion.Step(
        l_line, [this] { return OfferedNames(); }, i_isBackwards);
    if (!l_completed) {
        return false;
    }
    setText(l_completed->text);
    setCursorPosition(static_cast<int>(l_completed->cursor));
    return true;
}

QStringList ChatEdit::OfferedNames() const {
    QStringList l_names;
    for (const std::string_view l_name : m_names()) {
        const QString l_shown = LabelText(l_name);
        if (ToUtf8(l_shown) == l_name) {
            l_names.append(l_shown);
        }
    }
    return l_names;
}
