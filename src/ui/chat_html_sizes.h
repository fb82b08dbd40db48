// Counts how long a chat's text is as HTML without ever making the whole of it: toHtml() of a full room takes tens of
// milliseconds, and the limit of a room's text is told in characters of HTML.
#pragma once

#include "ui/chat_line.h"

#include <QPalette>
#include <QTextDocument>

#include <deque>

class ChatHtmlSizes {
public:
    ChatHtmlSizes();

    // What QTextDocument::toHtml() of the lines would be long, in characters.
    qsizetype Total() const { return m_frame + m_sum; }
    // Once its text has reached this, it is to be cut before the next line.
    static constexpr qsizetype c_limit = 250001;

    void Add(const ChatLine& i_line);
    void RemoveFirst(int i_lines);
    // For a text that was made anew of that many paragraphs.
    void Restart(qsizetype i_total, int i_lines);

    // How many lines lie before the cut, which falls on the first line end at or behind that many characters; -1 if no
    // line begins behind it.
    static constexpr qsizetype c_cut = 50000;
    int LinesBeforeCut() const;

private:
    qsizetype Measure(const ChatLine& i_line);

    QTextDocument m_scratch;
    QPalette m_palette;
    qsizetype m_head;  // before the first line
    qsizetype m_frame; // before and behind the lines
    std::deque<qsizetype> m_lines;
    qsizetype m_sum = 0; // of the lines
};
