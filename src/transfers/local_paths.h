// Where a foreign file goes on the own disk: paths made from what a peer wrote, always inside the download folder.
//
// Two forms: "backslash form", as the queue handles local targets, and the file system's own with '/'.
#pragma once

#include <QString>

#include <string_view>

// The name of one folder or file made from foreign text: control characters and separators become '_', and so do
// "", "." and ".."; bytes that are not UTF-8 become U+FFFD; at most limits::pathComponent bytes, no character cut.
QString CleanComponent(std::string_view i_name);

// Backslash form of i_base, "\complete" or "\downloading", and the last i_levels + 1 components of the remote folder,
// cleaned; empty ones are left out. i_levels is brought into 0..64.
QString LocalFolder(const QString& i_base, bool i_complete, std::string_view i_remoteFolder, long long i_levels);

QString ToFileSystemForm(QString i_path);

// Whether the path, which lies below i_base by its text, does so on the disk too: no link on the way, down to the
// last part that exists, leads out of i_base. File system form, both.
bool IsInsideFolder(const QString& i_base, const QString& i_path);
