// Opening and moving local files where the name may lead to something unexpected. Paths in file system form.
#pragma once

#include <QString>

#include <memory>
#include <string>

class QFile;

// Both answer null unless the name leads to a regular file; a FIFO or a device never blocks the caller.
std::unique_ptr<QFile> OpenToSend(const std::string& i_path);
// Creates a missing file, never follows a link as the last component, and refuses a file that another transfer is
// writing. The position is at the end.
std::unique_ptr<QFile> OpenToAppend(const QString& i_path);

// False, with both names as they were, if i_to exists or the move is not possible. Within one file system only.
bool RenameWithoutOverwriting(const QString& i_from, const QString& i_to);
