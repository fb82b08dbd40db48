// A line of a chat as data: pieces of text, each with what it is. Names and texts come from strangers, so no markup is
// built from them at any time; a link is only what the link rule of app/text.h finds in the shown text.
#pragma once

#include <QString>
#include <QTextCharFormat>

#include <string_view>
#include <vector>

class QPalette;
class QTextCursor;

struct ChatPart {
    enum Kind { Plain, Name, Status, Link };

    Kind kind;
    QString text; // safe to show; of a link also its address
};
using ChatLine = std::vector<ChatPart>;

// "[user] text", "* text".
ChatLine SaidLine(std::string_view i_user, std::string_view i_text);
ChatLine StatusLine(std::string_view i_text);

// How a part of the kind looks but for its address; the palette decides how light its colour must be.
QTextCharFormat ChatPartFormat(ChatPart::Kind i_kind, const QPalette& i_palette);
// The kind of the part that was written with the format.
ChatPart::Kind ChatPartKind(const QTextFormat& i_format);
void WriteChatLine(QTextCursor& io_cursor, const ChatLine& i_line, const QPalette& i_palette);

// Whether the text says the name as a word of its own, in whatever case.
bool Mentions(const QString& i_text, const QString& i_name);
