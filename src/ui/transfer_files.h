// Where the files of downloads lie on the own disk, for the eyes of the user: tool tips and opening.
#pragma once

#include "store/data.h"

#include <QString>

class TransferRow;
struct TransferTypes;

// The file of a complete download, in file system form: in the tree of finished files, or in that of partial ones if
// its name was taken there. Empty if it is in neither place.
QString FinishedFile(ItemPtr i_entry);
// The same if its name was taken, else empty.
QString StayedFile(ItemPtr i_entry);
// The deepest folder that there is already of those on the way to the file, complete or not.
QString FolderToOpen(ItemPtr i_entry);

// Hands the file or folder to the desktop. False if the desktop has nothing for it.
bool OpenOnDesktop(const QString& i_path);

// Whole names where the cell shows less; for a finished file that stayed behind, where it is. Safe to show.
QString TransferToolTip(const TransferTypes& i_types, const TransferRow* ip_row, int i_column);
