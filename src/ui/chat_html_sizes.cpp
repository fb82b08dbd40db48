#include "ui/chat_html_sizes.h"

#include <QTextCursor>

// Each line is a paragraph that begins with its line end and costs the same wherever it stands.
ChatHtmlSizes::ChatHtmlSizes() {
    QTextCursor l_cursor(&m_scratch);
    m_scratch.setUndoRedoEnabled(false);
    l_cursor.insertText(QStringLiteral("x"));
    const QString l_one = m_scratch.toHtml();
    l_cursor.insertBlock();
    l_cursor.insertText(QStringLiteral("x"));
    m_frame = 2 * l_one.size() - m_scratch.toHtml().size();
    m_head = l_one.indexOf(QStringLiteral("\n<p "));
}

void ChatHtmlSizes::Add(const ChatLine& i_line) {
    m_lines.push_back(Measure(i_line));
    m_sum += m_lines.back();
}

void ChatHtmlSizes::RemoveFirst(int i_lines) {
    for (int l_line = 0; l_line < i_lines; ++l_line) {
        m_sum -= m_lines.front();
        m_lines.pop_front();
    }
}

void ChatHtmlSizes::Restart(qsizetype i_total, int i_lines) {
    m_lines.assign(static_cast<std::size_t>(i_lines), 0);
    m_lines.front() = i_total;
    m_sum = i_total;
}

int ChatHtmlSizes::LinesBeforeCut() const {
    qsizetype l_begin = m_head;
    for (std::size_t l_line = 0; l_line < m_lines.size(); ++l_line) {
        if (l_begin >= c_cut) {
            return static_cast<int>(l_line);
        }
        l_begin += m_lines[l_line];
    }
    return -1;
}

qsizetype ChatHtmlSizes::Measure(const ChatLine& i_line) {
    m_scratch.clear();
    QTextCursor l_cursor(&m_scratch);
    WriteChatLine(l_cursor, i_line, m_palette);
    return m_scratch.toHtml().size() - m_frame;
}
