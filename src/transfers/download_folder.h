// The user's choice of where downloads go.
#pragma once

#include <QString>

// The setting "download_folder", or its default if it is empty.
QString DownloadFolder();
QString DefaultDownloadFolder();
