#include "server/names.h"

#include "app/text.h"

#include <QList>
#include <QString>

#include <algorithm>

namespace {

bool IsVisible(char32_t i_character) {
    switch (QChar::category(i_character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

} // namespace

bool IsPlainName(std::string_view i_name, std::size_t i_limit) {
    if (i_name.empty() || i_name.size() > i_limit) {
        return false;
    }
    const QString l_text = ToQString(i_name);
    const QList<uint> l_characters = l_text.toUcs4();
    return ToUtf8(l_text) == i_name && l_text.trimmed().size() == l_text.size() &&
           std::all_of(l_characters.begin(), l_characters.end(), IsVisible);
}
