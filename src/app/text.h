// Pure helpers on text and paths. Paths may carry both separators, "/" and "\": local paths have the first, paths from
// the network the second, and mixed ones occur. All byte strings are UTF-8 or raw bytes; nothing here fails.
#pragma once

#include <QString>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Bytes that are not UTF-8 become U+FFFD, so a round trip is exact only for valid UTF-8.
QString ToQString(std::string_view i_text);
std::string ToUtf8(const QString& i_text);

// Bits count from 1 at the lowest. A bit outside 1 to 32 is not set.
bool GetBit(unsigned i_value, int i_bit);

// GetFileName, GetFolder: what stands behind and before the last separator, once one trailing separator is dropped.
// A path without a separator is its own name and its own folder.
std::string GetFileName(std::string_view i_path);
std::string GetFolder(std::string_view i_path);
// GetFolder after dropping all trailing separators; empty if nothing is left.
std::string GetParentFolder(std::string_view i_path);
// Lower case (ASCII), without the dot; empty if there is no dot.
std::string GetFileExtension(std::string_view i_name);
// The key under which a shared file is found: runs of separators shrunk to their first character, one trailing
// separator dropped, ASCII letters in lower case. Bytes of multi-byte characters stay as they are.
std::string GetAbsoluteFileName(std::string_view i_path);
// The components in reverse order, joined by "/", for display.
std::string ReversePathname(std::string_view i_path);

// Digits in groups of three. Empty for zero and below.
QString CommafyNumber(long long i_number);
// "1h1m1s"; days and hours only where they say something.
std::string FormatSeconds(long i_seconds);

// Where the http and https addresses of a text lie: begin and length of each, in order.
std::vector<std::pair<qsizetype, qsizetype>> FindLinks(const QString& i_text);
QString EscapeHTML(QString i_text);
// Makes http and https addresses clickable. The text must have gone through EscapeHTML before.
QString ConvertLinks(QString i_html);
