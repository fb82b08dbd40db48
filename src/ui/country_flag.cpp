#include "ui/country_flag.h"

#include "app/text.h"

#include <QFile>
#include <QHash>
#include <QLocale>

#include <algorithm>

namespace {

constexpr std::size_t c_longestCode = 9; // "catalonia"

bool CanBeCode(std::string_view i_code) {
    return !i_code.empty() && i_code.size() <= c_longestCode &&
           std::all_of(i_code.begin(), i_code.end(), [](char i_byte) {
               return (i_byte >= 'a' && i_byte <= 'z') || (i_byte >= 'A' && i_byte <= 'Z');
           });
}

QString CountryName(const QString& i_code) {
    const QLocale::Territory l_territory = QLocale::codeToTerritory(i_code);
    return l_territory == QLocale::AnyTerritory ? i_code.toUpper() : QLocale::territoryToString(l_territory);
}

} // namespace

// A room has thousands of users from a few countries, and making an icon asks for files. Only codes that have one are
// kept, so strangers cannot make the memory grow. Never freed: pictures must not outlive the application, as static
// objects would.
CountryFlag FindCountryFlag(std::string_view i_code) {
    static auto* const lp_flags = new QHash<QString, CountryFlag>;
    if (!CanBeCode(i_code)) {
        return {};
    }
    const QString l_code = ToQString(i_code).toLower();
    const auto l_known = lp_flags->constFind(l_code);
    if (l_known != lp_flags->constEnd()) {
        return *l_known;
    }
    const QString l_file = QStringLiteral(":/resources/flags/") + l_code + QStringLiteral(".png");
    if (!QFile::exists(l_file)) {
        return {{}, CountryName(l_code)};
    }
    return *lp_flags->insert(l_code, {QIcon(l_file), CountryName(l_code)});
}
