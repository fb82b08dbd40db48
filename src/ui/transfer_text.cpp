#include "ui/transfer_text.h"

#include "app/text.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

QString Text(const char* ip_text) {
    return QCoreApplication::translate("TransferText", ip_text);
}

QString Number(long long i_number) {
    return i_number > 0 ? CommafyNumber(i_number) : QStringLiteral("0");
}

} // namespace

QString TimeLeftText(long long i_seconds) {
    QString l_text = QStringLiteral("   ");
    if (i_seconds >= 3600) {
        l_text += Text("%1h:").arg(i_seconds / 3600);
    }
    if (i_seconds >= 60) {
        l_text += Text("%1m:").arg(i_seconds / 60 % 60);
    }
    return l_text + Text("%1s").arg(i_seconds % 60);
}

long long SecondsLeft(long long i_bytes, int i_bytesPerSecond) {
    return i_bytesPerSecond > 0 ? std::max(0LL, i_bytes) / i_bytesPerSecond : 0;
}

double Percentage(long long i_position, long long i_whole) {
    if (i_whole <= 0) {
        return 100;
    }
    return std::clamp(static_cast<double>(i_position) * 100.0 / static_cast<double>(i_whole), 0.0, 100.0);
}

QString ProgressText(long long i_position, double i_percentage) {
    return QStringLiteral("%1 (%2%)").arg(CommafyNumber(i_position), QString::number(i_percentage, 'f', 1));
}

QString RateText(int i_bytesPerSecond) {
    return QString::number(i_bytesPerSecond / 1024.0, 'f', 1);
}

QString FileCountText(long long i_files) {
    return i_files == 1 ? Text("1 file") : Text("%1 files").arg(Number(i_files));
}

QString FilesAndBytesText(long long i_files, long long i_bytes) {
    return Text("%1, %2").arg(FileCountText(i_files),
                              i_bytes == 1 ? Text("1 byte") : Text("%1 bytes").arg(Number(i_bytes)));
}
