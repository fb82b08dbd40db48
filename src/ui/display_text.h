// Foreign text made safe to show. Names, chat and paths come from strangers: they may reverse the reading direction,
// carry line ends into one-line places, or be 131,072 characters long, which takes seconds to lay out. The store and
// the wire keep the bytes; only what is drawn goes through here. The results are plain text, never markup: whoever
// shows them turns rich text off.
#pragma once

#include <QString>

#include <string_view>

// Control characters, line and paragraph separators, direction marks, what is invisible and marks piled up beyond need
// become "[U+202E]" and the like; the result is at most i_limit characters, the last being "…" if something was cut.
// Costs i_limit steps, however long the text is.
QString DisplayText(const QString& i_text, int i_limit);

// The usual places, with their limits from net/limits.h.
QString LabelText(std::string_view i_text);
QString CellText(std::string_view i_text);
QString ChatLineText(std::string_view i_text);
// Titles of tabs, menus and tool bar buttons: LabelText with "&" doubled, so that it shows and marks no shortcut.
QString TitleText(std::string_view i_text);
// Tool tips: CellText in lines of bearable length, escaped where Qt would take it for markup. Markup in a tip may name
// a file, which Qt reads.
QString ToolTipText(std::string_view i_text);
