// The scanner's thread, and what its results become in the store.
#include "sharing/shared_folders_manager.h"

#include "app/log.h"
#include "app/text.h"

// Requests queue in the scanner's thread, results in the main thread: both connections cross threads, because the
// scanner has moved before they are made.
void SharedFoldersManager::StartScanner() {
    m_scannerThread.setObjectName(QStringLiteral("MP3 scanner"));
    m_scannerThread.start(QThread::InheritPriority);
    m_scanner.moveToThread(&m_scannerThread);
    connect(this, &SharedFoldersManager::MP3ScanRequired, &m_scanner, &MP3Scanner::OnMP3ScanRequired);
    connect(&m_scanner, &MP3Scanner::MP3Scanned, this, &SharedFoldersManager::OnMP3Scanned);
}

// Waits for the file that is being scanned; those that are queued fall through.
void SharedFoldersManager::StopScanner() {
    m_scanner.Quit();
    m_scannerThread.quit();
    m_scannerThread.wait();
}

void SharedFoldersManager::OnMP3Scanned(QString i_path, int i_mpegVersion, QString i_channelMode, int i_frequencyIndex,
                                        bool i_vbr, int i_bitrate) {
    const std::string l_path = i_path.toLatin1().toStdString();
    Log(QStringLiteral("MP3 Scanning"), 1, QStringLiteral("Scanned %1").arg(ToQString(l_path)), ItemPtr());
    const ItemPtr l_file = GetSharedFileItem(l_path);
    // It may have left the share in the meantime.
    if (!l_file)
        return;
    l_file.Connect(d.GetType("mpeg_version")->GetItem(i_mpegVersion));
    l_file.Connect(d.GetType("channel_mode")->GetItem(ToUtf8(i_channelMode)));
    l_file.Connect(d.GetType("audio_frequency")->GetItem(i_frequencyIndex));
    l_file.Connect(d.GetType("bitrate_mode")->GetItem(i_vbr ? "vbr" : "cbr"));
    l_file.Connect(d.GetType("bitrate")->GetItem(i_bitrate));
    // From here on the file is saved with the store and is not scanned again.
    l_file.Connect(d.GetType("is_scanned")->GetGlobalNullItem());
}
