#include "app/timestamp.h"

#include "app/text.h"
#include "store/data.h"

std::string ToTimestamp(const QDateTime& i_time) {
    return ToUtf8(i_time.toString(Qt::TextDate));
}

std::string CurrentTimestamp() {
    return ToTimestamp(QDateTime::currentDateTime());
}

std::optional<qint64> AgeInMilliseconds(ItemPtr i_timestamp, const QDateTime& i_now) {
    const QDateTime l_time = QDateTime::fromString(ToQString(i_timestamp.AsView()), Qt::TextDate);
    return l_time.isValid() ? std::optional<qint64>(l_time.msecsTo(i_now)) : std::nullopt;
}
