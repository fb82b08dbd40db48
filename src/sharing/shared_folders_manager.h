// Turns the folders that the user shares into items of the store and keeps them in step with the disk; answers who may
// have which of the files; tells the server how much there is. Has MP3 files read for their audio attributes.
//
// A `shared_folder` is a root as the user chose it, a `shared_file_folder` one directory at or below a root, a
// `shared_file` one file in a directory. Paths and names are the file system's bytes, `/` between the parts.
//
// Nothing here fails: a directory that is missing or cannot be read looks empty, and its files count as removed.
// Main thread only, but for the scanner, which has a thread of its own. A walk runs to its end inside the call that
// starts it.
#pragma once

#include "net/wire.h"
#include "sharing/mp3_scanner.h"
#include "store/data.h"

#include <QObject>
#include <QString>
#include <QThread>

#include <string>

class FolderListing;

class SharedFoldersManager : public QObject, public DataHandler {
    Q_OBJECT

public:
    // Sets the global and creates the Types. `gp_server` and the Types of the server and the peer network exist by now.
    explicit SharedFoldersManager(QObject* ip_parent = nullptr);
    // Waits until the scanner is done with the file that it is reading.
    ~SharedFoldersManager() override;

    // Called once, after the store file is loaded: rescans, and from then on walks each new `shared_folder` at once.
    void Init();

    // Removes the root and whatever no other root reaches. A path that is not shared is left alone.
    void UnshareFolder(const std::string& i_path);

    // The file for a path as a peer wrote it: either separator, ASCII letters in any case. Null if there is none.
    ItemPtr GetSharedFileItem(const std::string& i_path);
    bool IsFileSharedWithUser(ItemPtr i_file, const std::string& i_user);
    // The `shared_folder` items that the user may see.
    ItemSet GetUserSharedFolders(const std::string& i_user);

public Q_SLOTS:
    // Brings all roots in step with the disk, then emits SharedFilesRescanned.
    void RescanShares();

Q_SIGNALS:
    void SharedFilesRescanned(int i_added, int i_removed);
    // A file whose audio attributes are not known yet; sent at each walk until it has `is_scanned`. Each byte of the
    // path is one Latin-1 character.
    void MP3ScanRequired(QString i_path);
    // During a walk, at most every 100 ms: how many files this walk has met so far.
    void WalkProgressed(int i_files);

private Q_SLOTS:
    void OnConnectedToServer();
    void OnReceivedUserStats(std::string i_user, UserStats i_stats);
    void OnMP3Scanned(QString i_path, int i_mpegVersion, QString i_channelMode, int i_frequencyIndex, bool i_vbr,
                      int i_bitrate);

private:
    void OnSharedFolderAdded(Item* ip_folder);
    void OnSharedFileNameAdded(Item* ip_name);
    void OnSharedFileFolderAdded(Item* ip_folder);

    void MirrorFolder(Item* ip_root, const FolderListing& i_listing);
    Item* AddFile(Item* ip_folder, std::string_view i_name, long long i_size);
    void FileFound(Item* ip_file, const FolderListing& i_listing, std::string_view i_name);
    int RemoveUnreachedFolders();

    void StartScanner();
    void StopScanner();

    int m_filesAdded = 0;
    int m_filesRemoved = 0;
    MP3Scanner m_scanner;
    QThread m_scannerThread;
};

extern SharedFoldersManager* sharedFoldersManager;
