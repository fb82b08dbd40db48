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
#include "peer/peer_messenger.h"
#include "sharing/mp3_scanner.h"
#include "sharing/search_tokens.h"
#include "sharing/share_list_builder.h"
#include "sharing/user_share_builder.h"
#include "sharing/user_share_remover.h"
#include "store/data.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QThread>

#include <memory>
#include <string>

class FileRoots;
class FolderIndexer;
class FolderListing;
class UploadSlots;

class SharedFoldersManager : public QObject, public DataHandler, public SharedFilesSource {
    Q_OBJECT

public:
    // Sets the global and creates the Types. `gp_server`, `peerMessenger` and their Types exist by now.
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

    // Not owned; null takes it out again. Without it search replies tell of no free slot and an empty queue.
    void SetUploadSlots(UploadSlots* ip_slots);
    // Sends the user the files that match, if there are any that the user may have, and not too many.
    void ProcessSearch(const std::string& i_user, unsigned int i_requestToken, const std::string& i_text);

    // The list of what the user may see, made when it is asked for.
    void GetSharedFilesMessage(const std::string& i_user, Answer i_answer) override;
    // Takes somebody's list from the user at once, and out of the store as there is time; then sweeps.
    void RemoveUserShare(ItemPtr i_share);
    // Bit rate and length of a file in somebody's list or answer, as "192 CBR, 4m5s"; empty if nothing is known.
    QString GetFileItemDisplayString(ItemPtr i_file);

public Q_SLOTS:
    // Sends the user the files of one directory, if the user may see it; else there is no reply.
    void OnFilesInFoldersRequested(const std::string& i_user, quint32 i_request, const std::string& i_folder);
    // Takes the list, which is empty afterwards.
    void OnUserShare(const std::string& i_user, FileInfoMap& io_folders, AttributeTranslationTable& i_attributeNames);
    void OnDNetSearchRequest(const std::string& i_user, quint32 i_requestToken, const std::string& i_text);
    // Brings all roots in step with the disk, then emits SharedFilesRescanned.
    void RescanShares();

Q_SIGNALS:
    void SharedFilesRescanned(int i_added, int i_removed);
    // A file whose audio attributes are not known yet; sent at each walk until it has `is_scanned`. Each byte of the
    // path is one Latin-1 character.
    void MP3ScanRequired(QString i_path);
    // During a walk that takes its time, some ten times a second: how many files this walk has met so far.
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
    void FileFound(Item* ip_file, const FolderListing& i_listing, std::string_view i_name, FolderIndexer& io_indexer);
    int RemoveUnreachedFolders();
    void ReportProgress();

    void StartScanner();
    void StopScanner();

    int m_filesAdded = 0;
    int m_filesRemoved = 0;
    int m_filesMet = 0; // by the walk under way
    QElapsedTimer m_sinceProgress;
    SearchTokenCutter m_tokenCutter;
    UploadSlots* mp_uploadSlots = nullptr;
    // These need the Types.
    std::unique_ptr<FileRoots> mp_fileRoots;
    std::unique_ptr<ShareListBuilder> mp_shareListBuilder;
    std::unique_ptr<UserShareBuilder> mp_userShareBuilder;
    std::unique_ptr<UserShareRemover> mp_userShareRemover;
    MP3Scanner m_scanner;
    QThread m_scannerThread;
};

extern SharedFoldersManager* sharedFoldersManager;
