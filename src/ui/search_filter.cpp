#include "ui/search_filter.h"

#include "app/text.h"

#include <QStringList>

#include <algorithm>
#include <string>

#include <absl/container/flat_hash_map.h>

namespace {

const absl::flat_hash_map<std::string_view, FileKind>& KindsOfEndings() {
    static const absl::flat_hash_map<std::string_view, FileKind> s_kinds = [] {
        absl::flat_hash_map<std::string_view, FileKind> l_kinds;
        const auto l_add = [&l_kinds](FileKind i_kind, std::initializer_list<std::string_view> i_endings) {
            for (const std::string_view l_ending : i_endings) {
                l_kinds.emplace(l_ending, i_kind);
            }
        };
        l_add(FileKind::Audio, {"aac", "aif", "aiff", "alac", "ape", "flac", "m4a", "mid", "midi", "mka", "mp2", "mp3",
                                "mpc", "oga", "ogg", "opus", "wav", "wma", "wv"});
        l_add(FileKind::Video, {"3gp", "avi", "divx", "flv", "m2ts", "m4v", "mkv", "mov", "mp4", "mpeg", "mpg", "ogm",
                                "ogv", "ts", "vob", "webm", "wmv"});
        l_add(FileKind::Picture, {"avif", "bmp", "gif", "heic", "ico", "jpeg", "jpg", "png", "psd", "svg", "tga", "tif",
                                  "tiff", "webp", "xcf"});
        l_add(FileKind::Document,
              {"azw3", "chm", "csv", "djvu", "doc", "docx", "epub", "fb2", "htm", "html", "md",  "mobi", "nfo",
               "odp",  "ods", "odt", "pdf",  "ppt", "pptx", "ps",   "rtf", "tex", "txt",  "xls", "xlsx", "xml"});
        l_add(FileKind::Archive, {"7z", "ace", "arj", "bz2", "cab", "deb", "gz", "iso", "lzh", "lzma", "rar", "rpm",
                                  "tar", "tbz", "tgz", "txz", "xz", "zip", "zst"});
        return l_kinds;
    }();
    return s_kinds;
}

} // namespace

FileKind FileKindOf(std::string_view i_fileName) {
    const std::string l_ending = GetFileExtension(i_fileName);
    const auto l_found = KindsOfEndings().find(std::string_view(l_ending));
    return l_found == KindsOfEndings().end() ? FileKind::Other : l_found->second;
}

void SearchFilter::SetText(const QString& i_text) {
    m_pieces.clear();
    for (const QString& l_piece : i_text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        m_pieces.emplace_back(l_piece, Qt::CaseInsensitive);
    }
}

bool SearchFilter::IsOpen() const {
    return m_pieces.empty() && smallestSize == 0 && smallestBitRate == 0 && !kind && !isFreeOnly;
}

SearchFilter::Pieces SearchFilter::NotIn(const QString& i_folder) const {
    Pieces l_pieces;
    for (const QStringMatcher& l_piece : m_pieces) {
        if (l_piece.indexIn(i_folder) < 0) {
            l_pieces.push_back(&l_piece);
        }
    }
    return l_pieces;
}

bool SearchFilter::Shows(const FilteredFile& i_file, bool i_isUserFree, const Pieces& i_pieces) const {
    return i_file.size >= smallestSize && i_file.bitRate >= smallestBitRate && (!kind || i_file.kind == *kind) &&
           (i_isUserFree || !isFreeOnly) &&
           std::all_of(i_pieces.begin(), i_pieces.end(),
                       [&i_file](const QStringMatcher* ip_piece) { return ip_piece->indexIn(i_file.name) >= 0; });
}
