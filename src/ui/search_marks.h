// Whether a file that a search found is one that the user has or has asked for. Looked up when a row is drawn.
#pragma once

#include "store/data.h"

#include <QIcon>
#include <QString>

enum class FileMark {
    None,
    Queued,   // in the downloads, whatever its state
    Complete, // downloaded
    Shared,   // a file of this name and size is shared here
};

// Of a search_result; a null one has none.
FileMark MarkOf(ItemPtr i_result);
QIcon MarkIcon(FileMark i_mark); // null for none
// What the mark says, in words; empty for none.
QString MarkText(ItemPtr i_result);
// Those words, below the file's name.
QString MarkedToolTip(ItemPtr i_result);
