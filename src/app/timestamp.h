// Time stamps as the store keeps them: local time as text in Qt::TextDate form, of one-second precision.
#pragma once

#include <QDateTime>

#include <optional>
#include <string>

class ItemPtr;

std::string ToTimestamp(const QDateTime& i_time);
std::string CurrentTimestamp();

// Milliseconds from the item's time to i_now; negative if the clock was set back in between. Empty for a null handle
// and for text that is no time: the caller decides what an entry of unknown age deserves.
std::optional<qint64> AgeInMilliseconds(ItemPtr i_timestamp, const QDateTime& i_now);
