#include "transfers/local_paths.h"

#include "app/text.h"
#include "net/limits.h"

#include <QFileInfo>

#include <algorithm>
#include <string>

namespace {

constexpr long long kMostLevels = 64; // a damaged store could name any number
constexpr QChar kSubstitute = u'_';

bool IsForbidden(QChar i_character) {
    return i_character == u'/' || i_character == u'\\' || i_character.category() == QChar::Other_Control;
}

QString CutToBytes(const QString& i_text, std::size_t i_bytes) {
    QByteArray l_bytes = i_text.toUtf8();
    if (static_cast<std::size_t>(l_bytes.size()) <= i_bytes) {
        return i_text;
    }
    qsizetype l_end = static_cast<qsizetype>(i_bytes);
    while (l_end > 0 && (static_cast<unsigned char>(l_bytes[l_end]) & 0xC0) == 0x80) { // inside a character
        --l_end;
    }
    return QString::fromUtf8(l_bytes.constData(), l_end);
}

} // namespace

QString CleanComponent(std::string_view i_name) {
    QString l_name = ToQString(i_name);
    std::replace_if(l_name.begin(), l_name.end(), IsForbidden, kSubstitute);
    if (l_name.isEmpty() || l_name == QStringLiteral(".") || l_name == QStringLiteral("..")) {
        return QString(std::max<qsizetype>(l_name.size(), 1), kSubstitute);
    }
    return CutToBytes(l_name, limits::pathComponent);
}

QString LocalFolder(const QString& i_base, bool i_complete, std::string_view i_remoteFolder, long long i_levels) {
    QString l_suffix;
    std::string l_folder(i_remoteFolder);
    for (long long l_level = std::clamp(i_levels, 0LL, kMostLevels); l_level >= 0 && !l_folder.empty(); --l_level) {
        const std::string l_name = GetFileName(l_folder);
        if (!l_name.empty()) {
            l_suffix.prepend(CleanComponent(l_name)).prepend(u'\\');
        }
        l_folder = GetParentFolder(l_folder);
    }
    return QString(i_base).replace(u'/', u'\\') +
           (i_complete ? QStringLiteral("\\complete") : QStringLiteral("\\downloading")) + l_suffix;
}

QString ToFileSystemForm(QString i_path) {
    return i_path.replace(u'\\', u'/');
}

bool IsInsideFolder(const QString& i_base, const QString& i_path) {
    const QString l_base = QFileInfo(i_base).canonicalFilePath();
    if (l_base.isEmpty()) {
        return !QFileInfo(i_base).isSymLink(); // nothing there yet, so nothing below it either
    }
    // From the whole path upward to the first part that is there. A link to nowhere is there too: creating the file
    // would create what it names.
    for (QString l_path = i_path; l_path.size() > i_base.size(); l_path = l_path.section(u'/', 0, -2)) {
        const QFileInfo l_info(l_path);
        if (l_info.exists()) {
            const QString l_real = l_info.canonicalFilePath();
            return l_real == l_base || l_base == QStringLiteral("/") || l_real.startsWith(l_base + u'/');
        }
        if (l_info.isSymLink()) {
            return false;
        }
    }
    return true;
}
