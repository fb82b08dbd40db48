#include "ui/display_text.h"

#include "app/text.h"
#include "net/limits.h"

#include <QTextDocument>

#include <algorithm>
#include <iterator>

namespace {

constexpr char32_t c_ellipsis = 0x2026;

// What is drawn as nothing or turns what stands around it: two names that differ only in such marks would look alike.
// The joiners U+200C and U+200D stay, since scripts and emoji need them.
struct Range {
    char32_t first;
    char32_t last;
};
constexpr Range c_invisible[] = {
    {0x0000, 0x001F},   {0x007F, 0x009F}, // controls, line ends among them
    {0x00AD, 0x00AD},                     // a hyphen that shows at a line break only
    {0x061C, 0x061C},   {0x200E, 0x200F}, // direction
    {0x115F, 0x1160},   {0x3164, 0x3164}, // fillers
    {0xFFA0, 0xFFA0},   {0x180E, 0x180E}, {0x200B, 0x200B}, {0x2028, 0x202E}, // no width; line ends, direction
    {0x2060, 0x2064},   {0x2066, 0x206F},                                     // no width; direction, obsolete controls
    {0xFEFF, 0xFEFF},   {0xFFF9, 0xFFFB},                                     // no width; annotations
    {0xE0000, 0xE007F},                                                       // tags
};

// Marks that pile up on one character; the most that a script needs is fewer. More would be drawn over other rows.
constexpr int c_mostMarksOnOne = 6;

bool IsInvisible(char32_t i_character) {
    if (i_character >= 0x20 && i_character < 0x7F) {
        return false;
    }
    return std::any_of(std::begin(c_invisible), std::end(c_invisible), [i_character](const Range& i_range) {
        return i_character >= i_range.first && i_character <= i_range.last;
    });
}

bool IsPiledMark(char32_t i_character) {
    const QChar::Category l_category = QChar::category(i_character);
    return l_category == QChar::Mark_NonSpacing || l_category == QChar::Mark_Enclosing;
}

QString CodeOf(char32_t i_character) {
    return QStringLiteral("[U+%1]").arg(static_cast<uint>(i_character), 4, 16, QLatin1Char('0')).toUpper();
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
    int l_pile = 0;
    while (l_position < i_text.size()) {
        const char32_t l_character = TakeCharacter(i_text, l_position);
        l_pile = IsPiledMark(l_character) ? l_pile + 1 : 0;
        const bool l_isPlain = l_pile <= c_mostMarksOnOne && !IsInvisible(l_character);
        l_result += l_isPlain ? QString::fromUcs4(&l_character, 1) : CodeOf(l_character);
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
    constexpr qsizetype l_lineLength = 80;
    QString l_text = CellText(i_text);
    for (qsizetype l_end = l_lineLength; l_end < l_text.size(); l_end += l_lineLength) {
        l_text.insert(l_text.at(l_end).isLowSurrogate() ? ++l_end : l_end, QLatin1Char('\n'));
        ++l_end;
    }
    if (!Qt::mightBeRichText(l_text)) {
        return l_text;
    }
    return QStringLiteral("<qt>%1</qt>").arg(l_text.toHtmlEscaped().replace(u'\n', QLatin1String("<br>")));
}
