#include "ui/chat_completion.h"

#include <algorithm>

namespace {

// As much of the line as can be the beginning of a name that is short enough to be offered.
constexpr qsizetype c_longestBeginning = 64;

QStringList NamesWith(const QString& i_beginning, const QStringList& i_names) {
    QStringList l_names;
    std::copy_if(i_names.begin(), i_names.end(), std::back_inserter(l_names),
                 [&](const QString& i_name) { return i_name.startsWith(i_beginning, Qt::CaseInsensitive); });
    std::sort(l_names.begin(), l_names.end(), [](const QString& i_left, const QString& i_right) {
        const int l_order = i_left.compare(i_right, Qt::CaseInsensitive);
        return l_order != 0 ? l_order < 0 : i_left < i_right;
    });
    return l_names;
}

} // namespace

std::optional<ChatCompletion::Line>
ChatCompletion::Step(const Line& i_line, const std::function<QStringList()>& i_names, bool i_isBackwards) {
    if (IsUnderWay(i_line)) {
        m_index = (m_index + (i_isBackwards ? m_names.size() - 1 : 1)) % m_names.size();
    } else if (Begin(i_line, i_names())) {
        m_index = i_isBackwards ? m_names.size() - 1 : 0;
    } else {
        return std::nullopt;
    }
    const QString l_head =
        m_before + m_names.at(m_index) + (m_before.isEmpty() ? QStringLiteral(": ") : QStringLiteral(" "));
    m_answer = {l_head + m_behind, l_head.size()};
    return m_answer;
}

bool ChatCompletion::Begin(const Line& i_line, const QStringList& i_names) {
    m_names.clear();
    for (qsizetype l_begin = std::max<qsizetype>(0, i_line.cursor - c_longestBeginning); l_begin < i_line.cursor;
         ++l_begin) {
        const bool l_beginsWord = l_begin == 0 || i_line.text.at(l_begin - 1).isSpace();
        if (!l_beginsWord || i_line.text.at(l_begin).isSpace()) {
            continue;
        }
        m_names = NamesWith(i_line.text.mid(l_begin, i_line.cursor - l_begin), i_names);
        if (!m_names.isEmpty()) {
            m_before = i_line.text.left(l_begin);
            m_behind = i_line.text.mid(i_line.cursor);
            return true;
        }
    }
    return false;
}
