// Reads the audio attributes of MP3 files, one after the other, on the thread it is moved to; the requests wait in that
// thread's event queue.
//
// Paths are bytes. In a QString each byte is one Latin-1 character.
#pragma once

#include <QMutex>
#include <QObject>
#include <QString>

#include <string>

class MP3Scanner : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // Reads the whole file; anything but a regular file is refused without waiting for it. On false, for whatever
    // reason, only o_bitrate may have changed. Units and values are those of MP3Attributes.
    [[nodiscard]] bool ScanMP3(const std::string& i_path, int& o_mpegVersion, std::string& o_channelMode,
                               int& o_frequencyIndex, bool& o_vbr, int& o_bitrate);

    // From any thread. A scan under way still ends its file; every later one fails at once.
    void Quit();

public Q_SLOTS:
    // Emits MP3Scanned, or nothing if the scan fails.
    void OnMP3ScanRequired(QString i_path);

Q_SIGNALS:
    void MP3Scanned(QString i_path, int i_mpegVersion, QString i_channelMode, int i_frequencyIndex, bool i_vbr,
                    int i_bitrate);

private:
    bool IsQuitting() const;

    mutable QMutex m_quitMutex;
    bool m_quit = false;
};
