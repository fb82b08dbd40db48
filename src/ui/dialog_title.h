#pragma once

#include <QString>

// A window title that is shown as it is: "[*]" in one would stand for the mark of unsaved changes.
inline QString LiteralTitle(QString i_title) {
    return i_title.replace(QLatin1String("[*]"), QLatin1String("[*][*]"));
}
