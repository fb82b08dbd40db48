#include "transfers/download_folder.h"

#include "app/settings.h"
#include "app/text.h"

#include <QDir>

QString DownloadFolder() {
    const std::string l_folder = SettingText("download_folder");
    return l_folder.empty() ? DefaultDownloadFolder() : ToQString(l_folder);
}

QString DefaultDownloadFolder() {
    return QDir::homePath() + QStringLiteral("/Tidewell Downloads");
}
