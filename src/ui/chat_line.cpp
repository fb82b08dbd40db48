#include "ui/chat_line.h"

#include "app/text.h"
#include "ui/display_text.h"
#include "ui/row_colour.h"

#include <QPalette>
#include <QTextCursor>

namespace {

constexpr int c_kindProperty = QTextFormat::UserProperty + 1;

void AddWithLinks(ChatLine& io_line, ChatPart::Kind i_kind, const QString& i_text) {
    qsizetype l_done = 0;
    for (const auto& [l_begin, l_length] : FindLinks(i_text)) {
        if (l_begin > l_done) {
            io_line.push_back({i_kind, i_text.mid(l_done, l_begin - l_done)});
        }
        io_line.push_back({ChatPart::Link, i_text.mid(l_begin, l_length)});
        l_done = l_begin + l_length;
    }
    if (l_done < i_text.size()) {
        io_line.push_back({i_kind, i_text.mid(l_done)});
    }
}

QColor PartColour(ChatPart::Kind i_kind, const QPalette& i_palette) {
    switch (i_kind) {
    case ChatPart::Name:
        return RowColour(Qt::blue, i_palette);
    case ChatPart::Status:
        return RowColour(QColor(0, 128, 0), i_palette); // "green" of the web, not Qt::green
    case ChatPart::Link:
        return RowColour(i_palette.color(QPalette::Link), i_palette);
    case ChatPart::Plain:
        break;
    }
    return {};
}

bool IsWordCharacter(QChar i_character) {
    return i_character.isLetterOrNumber() || i_character == QLatin1Char('_');
}

} // namespace

ChatLine SaidLine(std::string_view i_user, std::string_view i_text) {
    ChatLine l_line{{ChatPart::Plain, QStringLiteral("[")}};
    AddWithLinks(l_line, ChatPart::Name, LabelText(i_user));
    l_line.push_back({ChatPart::Plain, QStringLiteral("] ")});
    AddWithLinks(l_line, ChatPart::Plain, ChatLineText(i_text));
    return l_line;
}

ChatLine StatusLine(std::string_view i_text) {
    ChatLine l_line{{ChatPart::Plain, QStringLiteral("* ")}};
    AddWithLinks(l_line, ChatPart::Status, ChatLineText(i_text));
    return l_line;
}

QTextCharFormat ChatPartFormat(ChatPart::Kind i_kind, const QPalette& i_palette) {
    QTextCharFormat l_format;
    if (i_kind != ChatPart::Plain) {
        l_format.setProperty(c_kindProperty, static_cast<int>(i_kind));
        l_format.setForeground(PartColour(i_kind, i_palette));
    }
    if (i_kind == ChatPart::Link) {
        l_format.setAnchor(true);
        l_format.setFontUnderline(true);
    }
    return l_format;
}

ChatPart::Kind ChatPartKind(const QTextFormat& i_format) {
    return static_cast<ChatPart::Kind>(i_format.intProperty(c_kindProperty)); // 0, Plain, without the property
}

void WriteChatLine(QTextCursor& io_cursor, const ChatLine& i_line, const QPalette& i_palette) {
    for (const ChatPart& l_part : i_line) {
        QTextCharFormat l_format = ChatPartFormat(l_part.kind, i_palette);
        if (l_part.kind == ChatPart::Link) {
            l_format.setAnchorHref(l_part.text);
        }
        io_cursor.insertText(l_part.text, l_format);
    }
}

bool Mentions(const QString& i_text, const QString& i_name) {
    if (i_name.isEmpty()) {
        return false;
    }
    for (qsizetype l_begin = i_text.indexOf(i_name, 0, Qt::CaseInsensitive); l_begin >= 0;
         l_begin = i_text.indexOf(i_name, l_begin + 1, Qt::CaseInsensitive)) {
        const qsizetype l_end = l_begin + i_name.size();
        const bool l_beginsWord = l_begin == 0 || !IsWordCharacter(i_text.at(l_begin - 1));
        const bool l_endsWord = l_end == i_text.size() || !IsWordCharacter(i_text.at(l_end));
        if (l_beginsWord && l_endsWord) {
            return true;
        }
    }
    return false;
}
