// The text of a room or of a private chat. Shows lines, never markup; loads nothing, whatever it is given. It follows
// the end as long as the end is on show, and keeps its place once the reader has scrolled up.
#pragma once

#include "ui/chat_html_sizes.h"
#include "ui/chat_line.h"

#include <QTextBrowser>

class ChatView : public QTextBrowser {
    Q_OBJECT

public:
    // Whole: all that was ever said stays. Bounded: the oldest lines go when there is too much.
    enum class History { Whole, Bounded };

    ChatView(History i_history, QWidget* ip_parent);

    // Of a bounded history that has reached its limit the beginning goes first.
    void AddChatLine(const ChatLine& i_line);
    // Lines of our own are few and make no room.
    void AddStatusLine(const ChatLine& i_line);

    // As HTML, in characters; only of a bounded history.
    qsizetype HtmlSize() const { return m_sizes.Total(); }

    void ShowEnd();
    void ScrollPage(int i_direction); // -1 up, 1 down

    // Marks the next place further up or down where the text stands, going round at the ends; false if it is nowhere.
    bool Find(const QString& i_text, bool i_isUpwards);

protected:
    QVariant loadResource(int i_type, const QUrl& i_name) override;
    void changeEvent(QEvent* ip_event) override;

private:
    void OnScrolled(int i_value);
    void OnRangeChanged();

    void AddLine(const ChatLine& i_line);
    void Trim();
    void RemoveFirst(int i_lines);
    void CutInside();
    void Recolour();

    const History m_history;
    ChatHtmlSizes m_sizes;
    bool m_followsEnd = true;
};
