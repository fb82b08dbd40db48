// The flags of countries, by the code that the server tells of a user.
#pragma once

#include <QIcon>
#include <QString>

#include <string_view>

struct CountryFlag {
    QIcon icon;   // empty for a code that has no picture
    QString name; // of the country, or the code where we know none; empty for what can be no code
};

// The code is foreign text of any length; its case does not matter.
CountryFlag FindCountryFlag(std::string_view i_code);
