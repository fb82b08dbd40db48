#include "ui/chat_recall.h"

void ChatRecall::Add(const QString& i_line) {
    if (m_lines.empty() || m_lines.back() != i_line) {
        m_lines.push_back(i_line);
    }
    if (m_lines.size() > c_lines) {
        m_lines.pop_front();
    }
    m_place = m_lines.size();
    m_draft.clear();
}

std::optional<QString> ChatRecall::Older(const QString& i_shown) {
    if (m_place == 0) {
        return std::nullopt;
    }
    if (m_place == m_lines.size()) {
        m_draft = i_shown;
    }
    return m_lines.at(--m_place);
}

std::optional<QString> ChatRecall::Newer() {
    if (m_place == m_lines.size()) {
        return std::nullopt;
    }
    ++m_place;
    return m_place == m_lines.size() ? m_draft : m_lines.at(m_place);
}
