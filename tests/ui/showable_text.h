// What must hold of a text that shows something foreign.
#pragma once

#include <QString>

#include <algorithm>

inline bool IsShowable(const QString& i_text, int i_limit) {
    return i_text.size() <= i_limit && std::none_of(i_text.begin(), i_text.end(), [](QChar i_character) {
               return i_character.category() == QChar::Other_Control || i_character.category() == QChar::Other_Format ||
                      i_character.category() == QChar::Separator_Line;
           });
}
