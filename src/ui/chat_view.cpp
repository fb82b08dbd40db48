#include "ui/chat_view.h"

#include <QAbstractTextDocumentLayout>
#include <QEvent>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <cmath>
#include <utility>
#include <vector>

ChatView::ChatView(History i_history, QWidget* ip_parent) : QTextBrowser(ip_parent), m_history(i_history) {
    setObjectName(QStringLiteral("chatView"));
    setOpenExternalLinks(true);
    setUndoRedoEnabled(false);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &ChatView::OnScrolled);
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, &ChatView::OnRangeChanged);
}

void ChatView::AddChatLine(const ChatLine& i_line) {
    if (m_history == History::Bounded && HtmlSize() >= ChatHtmlSizes::c_limit) {
        Trim();
    }
    AddLine(i_line);
}

void ChatView::AddStatusLine(const ChatLine& i_line) {
    AddLine(i_line);
}

void ChatView::ShowEnd() {
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

void ChatView::ScrollPage(int i_direction) {
    verticalScrollBar()->triggerAction(i_direction < 0 ? QAbstractSlider::SliderPageStepSub
                                                       : QAbstractSlider::SliderPageStepAdd);
}

bool ChatView::Find(const QString& i_text, bool i_isUpwards) {
    const QTextDocument::FindFlags l_direction = i_isUpwards ? QTextDocument::FindBackward : QTextDocument::FindFlags();
    QTextCursor l_found = document()->find(i_text, textCursor(), l_direction);
    if (l_found.isNull()) {
        QTextCursor l_farEnd(document());
        l_farEnd.movePosition(i_isUpwards ? QTextCursor::End : QTextCursor::Start);
        l_found = document()->find(i_text, l_farEnd, l_direction);
    }
    if (l_found.isNull()) {
        return false;
    }
    setTextCursor(l_found);
    return true;
}

// Nothing that is shown here names a resource. If a line ever came to, it still would not be opened.
QVariant ChatView::loadResource(int, const QUrl&) {
    return {};
}

void ChatView::changeEvent(QEvent* ip_event) {
    QTextBrowser::changeEvent(ip_event);
    if (ip_event->type() == QEvent::PaletteChange) {
        Recolour();
    }
}

void ChatView::OnScrolled(int i_value) {
    m_followsEnd = i_value >= verticalScrollBar()->maximum();
}

// New lines, another width, layout that was put off: whatever moves the end, it is followed.
void ChatView::OnRangeChanged() {
    if (m_followsEnd) {
        ShowEnd();
    }
}

// With a cursor of its own: the reader's selection stays.
void ChatView::AddLine(const ChatLine& i_line) {
    QTextCursor l_cursor(document());
    l_cursor.movePosition(QTextCursor::End);
    l_cursor.beginEditBlock();
    if (!document()->isEmpty()) {
        l_cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
    }
    WriteChatLine(l_cursor, i_line, palette());
    l_cursor.endEditBlock();
    if (m_history == History::Bounded) {
        m_sizes.Add(i_line);
    }
}

void ChatView::Trim() {
    const int l_lines = m_sizes.LinesBeforeCut();
    setUpdatesEnabled(false);
    if (l_lines < 0) {
        CutInside();
    } else {
        RemoveFirst(l_lines);
    }
    setUpdatesEnabled(true);
}

void ChatView::RemoveFirst(int i_lines) {
    const bool l_followedEnd = m_followsEnd;
    const int l_place = verticalScrollBar()->value();
    const QTextBlock l_newFirst = document()->findBlockByNumber(i_lines);
    const QAbstractTextDocumentLayout* const lp_layout = document()->documentLayout();
    const double l_height =
        lp_layout->blockBoundingRect(l_newFirst).top() - lp_layout->blockBoundingRect(document()->firstBlock()).top();

    QTextCursor l_cursor(document());
    l_cursor.setPosition(l_newFirst.position(), QTextCursor::KeepAnchor);
    l_cursor.removeSelectedText();
    m_sizes.RemoveFirst(i_lines);

    m_followsEnd = l_followedEnd;
    if (l_followedEnd) {
        ShowEnd();
    } else {
        verticalScrollBar()->setValue(l_place - static_cast<int>(std::lround(l_height)));
        m_followsEnd = false;
    }
}

// The cut falls into the last line. Cutting off the front of escaped text opens no tag.
void ChatView::CutInside() {
    const QString l_rest = toHtml().mid(ChatHtmlSizes::c_cut);
    clear();
    QTextCursor(document()).insertHtml(l_rest);
    m_sizes.Restart(l_rest.size(), document()->blockCount());
}

void ChatView::Recolour() {
    std::vector<std::pair<QTextCursor, ChatPart::Kind>> l_parts;
    for (QTextBlock l_block = document()->begin(); l_block.isValid(); l_block = l_block.next()) {
        for (QTextBlock::iterator l_place = l_block.begin(); !l_place.atEnd(); ++l_place) {
            const QTextFragment l_fragment = l_place.fragment();
            const ChatPart::Kind l_kind = ChatPartKind(l_fragment.charFormat());
            if (l_kind != ChatPart::Plain) {
                QTextCursor l_cursor(document());
                l_cursor.setPosition(l_fragment.position());
                l_cursor.setPosition(l_fragment.position() + l_fragment.length(), QTextCursor::KeepAnchor);
                l_parts.emplace_back(l_cursor, l_kind);
            }
        }
    }
    for (auto& [l_cursor, l_kind] : l_parts) {
        l_cursor.mergeCharFormat(ChatPartFormat(l_kind, palette()));
    }
}
