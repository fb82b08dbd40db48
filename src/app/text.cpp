#include "app/text.h"

#include <QRegularExpression>

#include <absl/strings/ascii.h>

namespace {

constexpr std::string_view c_separators = "/\\";

bool IsSeparator(char i_byte) {
    return i_byte == '/' || i_byte == '\\';
}

std::string_view WithoutOneTrailingSeparator(std::string_view i_path) {
    if (!i_path.empty() && IsSeparator(i_path.back())) {
        i_path.remove_suffix(1);
    }
    return i_path;
}

const QRegularExpression& LinkPattern() {
    static const QRegularExpression l_pattern(
        QStringLiteral(R"((\bhttps?://[-a-zA-Z0-9+&@#/%?=~_|!:,.;]*[a-zA-Z0-9+&@#/%=~_|]))"));
    return l_pattern;
}

} // namespace

QString ToQString(std::string_view i_text) {
    return QString::fromUtf8(i_text.data(), static_cast<qsizetype>(i_text.size()));
}

std::string ToUtf8(const QString& i_text) {
    const QByteArray l_bytes = i_text.toUtf8();
    return std::string(l_bytes.constData(), static_cast<std::size_t>(l_bytes.size()));
}

bool GetBit(unsigned i_value, int i_bit) {
    return i_bit >= 1 && i_bit <= 32 && ((i_value >> (i_bit - 1)) & 1u) != 0;
}

std::string GetFileName(std::string_view i_path) {
    const std::string_view l_path = WithoutOneTrailingSeparator(i_path);
    const std::size_t l_separator = l_path.find_last_of(c_separators);
    return std::string(l_separator == std::string_view::npos ? l_path : l_path.substr(l_separator + 1));
}

std::string GetFolder(std::string_view i_path) {
    const std::string_view l_path = WithoutOneTrailingSeparator(i_path);
    return std::string(l_path.substr(0, l_path.find_last_of(c_separators)));
}

std::string GetParentFolder(std::string_view i_path) {
    const std::size_t l_last = i_path.find_last_not_of(c_separators);
    return l_last == std::string_view::npos ? std::string() : GetFolder(i_path.substr(0, l_last + 1));
}

std::string GetFileExtension(std::string_view i_name) {
    const std::size_t l_dot = i_name.rfind('.');
    std::string l_extension(l_dot == std::string_view::npos ? std::string_view() : i_name.substr(l_dot + 1));
    absl::AsciiStrToLower(&l_extension);
    return l_extension;
}

std::string GetAbsoluteFileName(std::string_view i_path) {
    std::string l_result;
    l_result.reserve(i_path.size());
    for (const char l_byte : i_path) {
        const bool l_insideRun = !l_result.empty() && IsSeparator(l_result.back()) && IsSeparator(l_byte);
        if (!l_insideRun) {
            l_result.push_back(absl::ascii_tolower(static_cast<unsigned char>(l_byte)));
        }
    }
    if (!l_result.empty() && IsSeparator(l_result.back())) {
        l_result.pop_back();
    }
    return l_result;
}

std::string ReversePathname(std::string_view i_path) {
    std::string l_result;
    l_result.reserve(i_path.size());
    std::size_t l_end = i_path.find_last_not_of(c_separators);
    while (l_end != std::string_view::npos) {
        const std::size_t l_separator = i_path.find_last_of(c_separators, l_end);
        const std::size_t l_begin = l_separator == std::string_view::npos ? 0 : l_separator + 1;
        if (!l_result.empty()) {
            l_result.push_back('/');
        }
        l_result.append(i_path.substr(l_begin, l_end - l_begin + 1));
        l_end = l_begin == 0 ? std::string_view::npos : i_path.find_last_not_of(c_separators, l_begin - 1);
    }
    return l_result;
}

QString CommafyNumber(long long i_number) {
    if (i_number <= 0) {
        return QString();
    }
    QString l_digits = QString::number(i_number);
    for (qsizetype l_position = l_digits.size() - 3; l_position > 0; l_position -= 3) {
        l_digits.insert(l_position, QLatin1Char(','));
    }
    return l_digits;
}

std::string FormatSeconds(long i_seconds) {
    const long l_days = i_seconds / 86400;
    const long l_hours = i_seconds % 86400 / 3600;
    std::string l_result;
    if (l_days != 0) {
        l_result += std::to_string(l_days) + "d";
    }
    if (l_days != 0 || l_hours != 0) {
        l_result += std::to_string(l_hours) + "h";
    }
    l_result += std::to_string(i_seconds % 3600 / 60) + "m";
    l_result += std::to_string(i_seconds % 60) + "s";
    return l_result;
}

std::vector<std::pair<qsizetype, qsizetype>> FindLinks(const QString& i_text) {
    std::vector<std::pair<qsizetype, qsizetype>> l_links;
    QRegularExpressionMatchIterator l_matches = LinkPattern().globalMatch(i_text);
    while (l_matches.hasNext()) {
        const QRegularExpressionMatch l_match = l_matches.next();
        l_links.emplace_back(l_match.capturedStart(), l_match.capturedLength());
    }
    return l_links;
}

QString EscapeHTML(QString i_text) {
    i_text.replace(QLatin1Char('&'), QLatin1String("&amp;"));
    i_text.replace(QLatin1Char('<'), QLatin1String("&lt;"));
    i_text.replace(QLatin1Char('>'), QLatin1String("&gt;"));
    return i_text;
}

QString ConvertLinks(QString i_html) {
    return i_html.replace(LinkPattern(), QStringLiteral(R"(<a href="\1">\1</a>)"));
}
