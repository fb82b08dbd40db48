// The log lines of transfers all go to one area.
#pragma once

#include "app/log.h"
#include "store/data.h"

#include <QString>

// i_user is the user concerned, or null.
inline void LogTransfer(int i_level, const QString& i_text, ItemPtr i_user) {
    Log(QStringLiteral("Transfer Queue"), i_level, i_text, i_user);
}
