// What of a search's results is to be seen: pieces of text, each of which the folder or the file's name must hold, and
// four narrower demands, none of which is made at the start. Plain values; knows no widget.
#pragma once

#include <QString>
#include <QStringMatcher>

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include <absl/container/inlined_vector.h>

enum class FileKind : std::uint8_t { Other, Audio, Video, Picture, Document, Archive };

// By the ending of the name.
FileKind FileKindOf(std::string_view i_fileName);

// Of one file, as far as the filter asks.
struct FilteredFile {
    QString name;
    long long size = 0; // bytes
    int bitRate = 0;    // kbit/s; 0 where the answer does not say
    FileKind kind = FileKind::Other;
};

class SearchFilter {
public:
    // What a folder leaves open for its files to supply. Valid as long as the pieces stand.
    using Pieces = absl::InlinedVector<const QStringMatcher*, 8>;

    // Pieces are what stands between blanks; case does not count.
    void SetText(const QString& i_text);

    bool IsOpen() const; // nothing is demanded
    Pieces NotIn(const QString& i_folder) const;
    bool Shows(const FilteredFile& i_file, bool i_isUserFree, const Pieces& i_pieces) const;

    long long smallestSize = 0; // bytes; 0: any
    int smallestBitRate = 0;    // kbit/s; 0: any
    std::optional<FileKind> kind;
    bool isFreeOnly = false;

private:
    std::vector<QStringMatcher> m_pieces;
};
