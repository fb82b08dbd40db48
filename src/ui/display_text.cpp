#include "ui/display_text.h"

#include "app/text.h"
#include "net/limits.h"

#include <QTextDocument>

#include <algorithm>

namespace {

constexpr char32_t c_ellipsis = 0x2026;

bool IsInvisibleMark(char32_t i_character) {
    const bool l_control = i_character < 0x20 || (i_character >= 0x7F && i_character < 0xA0);
    const bool l_direction = i_character == 0x061C || i_character == 0x200E || i_character == 0x200F ||
                             (i_character >= 0x202A && i_character <= 0x202E) ||
                             (i_character >= 0x2066 && i_character <= 0x2069);
    const bool l_lineEnd = i_character == 0x2028 || i_character == 0x2029;
    const bool l_zeroWidth = i_character == 0x200B || i_character == 0x2060 || i_character == 0xFEFF;
    return l_control || l_direction || l_lineEnd || l_zeroWidth;
}

QString Shown(char32_t i_character) {
    if (IsInvisibleMark(i_character)) {
        return QStringLiteral("[U+%1]").arg(static_cast<uint>(i_character), 4, 16, QLatin1Char('0')).toUpper();
    }
    return QString::fromUcs4(&i_character, 1);
}

// The character at the position, which moves behind it. Half of a surrogate pair is no character.
char32_t TakeCharacter(const QString& i_text, qsizetype& io_position) {
    const QChar l_first = i_text.at(io_position++);
    if (!l_first.isSurrogate()) {
        return l_first.unicode();
    }
    if (l_first.isHighSurrogate() && io_position < i_text.size() && i_text.at(io_position).isLowSurrogate()) {
        return QChar::surrogateToUcs4(l_first, i_text.at(io_position++));
    }
    return QChar::ReplacementCharacter;
}

// Only so many bytes can matter; converting the rest would cost what the cut is there to save. The end may fall inside
// a character, which then lies behind the cut.
QString Beginning(std::string_view i_text, int i_limit) {
    constexpr std::size_t l_longestCharacter = 4;
    return ToQString(i_text.substr(0, (static_cast<std::size_t>(i_limit) + 2) * l_longestCharacter));
}

} // namespace

QString DisplayText(const QString& i_text, int i_limit) {
    QString l_result;
    l_result.reserve(std::min<qsizetype>(i_text.size(), i_limit));
    qsizetype l_fitting = 0; // length up to which an ellipsis still has room behind it
    qsizetype l_position = 0;
    while (l_position < i_text.size()) {
        l_result += Shown(TakeCharacter(i_text, l_position));
        if (l_result.size() > i_limit) {
            l_result.truncate(l_fitting);
            return l_result + QChar(c_ellipsis);
        }
        if (l_result.size() < i_limit) {
            l_fitting = l_result.size();
        }
    }
    return l_result;
}

QString LabelText(std::string_view i_text) {
    return DisplayText(Beginning(i_text, limits::labelText), limits::labelText);
}

QString CellText(std::string_view i_text) {
    return DisplayText(Beginning(i_text, limits::cellText), limits::cellText);
}

QString ChatLineText(std::string_view i_text) {
    return DisplayText(Beginning(i_text, limits::chatLineText), limits::chatLineText);
}

QString TitleText(std::string_view i_text) {
    return LabelText(i_text).replace(QLatin1Char('&'), QLatin1String("&&"));
}

QString ToolTipText(std::string_view i_text) {
    const QString l_text = CellText(i_text);
    return Qt::mightBeRichText(l_text) ? QStringLiteral("<qt>%1</qt>").arg(l_text.toHtmlEscaped()) : l_text;
}
