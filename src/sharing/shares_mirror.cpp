// The walks: the shared folders on the disk become items, and what has left the disk leaves the store.
#include "sharing/shared_folders_manager.h"

#include "app/log.h"
#include "app/text.h"
#include "sharing/folder_listing.h"
#include "sharing/folder_walk.h"
#include "sharing/search_index.h"

#include <absl/container/flat_hash_map.h>

namespace {

// Milliseconds; with what a turn of the walk takes on top, someone who watches sees ten reports a second.
constexpr qint64 c_progressInterval = 80;
constexpr int c_filesPerLook = 64; // at the clock

// The files that a directory had at the last walk, by name. Two lookups in the store and an intersection would tell
// the same of one file; a table made once per directory costs a third of that.
class KnownFiles {
public:
    explicit KnownFiles(Item* ip_folder) {
        for (Item* lp_file : ip_folder->GetItems("shared_file")) {
            const ItemPtr l_name = lp_file->HasItem("shared_file_name");
            // Only an edited store file has nameless files, or two of one name.
            if (!l_name || !m_files.try_emplace(l_name.AsView(), lp_file).second)
                m_surplus.push_back(lp_file);
        }
    }

    // Null if the directory had no such file.
    Item* Take(std::string_view i_name) {
        const auto l_file = m_files.find(i_name);
        return l_file == m_files.end() ? nullptr : std::exchange(l_file->second, nullptr);
    }

    // Removes the files that nobody took and answers how many they were.
    int RemoveRest() {
        int l_removed = static_cast<int>(m_surplus.size());
        for (Item* lp_file : m_surplus)
            lp_file->Remove();
        for (const auto& [l_name, lp_file] : m_files) {
            if (lp_file) {
                lp_file->Remove();
                ++l_removed;
            }
        }
        return l_removed;
    }

private:
    absl::flat_hash_map<std::string_view, Item*> m_files; // the keys are the name items' own text
    std::vector<Item*> m_surplus;
};

} // namespace

void SharedFoldersManager::OnSharedFolderAdded(Item* ip_folder) {
    m_filesMet = 0;
    m_sinceProgress.start();
    WalkFolders(ip_folder->AsString(), [&](const FolderListing& i_listing) {
        MirrorFolder(ip_folder, i_listing);
        ReportProgress();
    });
}

void SharedFoldersManager::ReportProgress() {
    if (m_sinceProgress.hasExpired(c_progressInterval)) {
        Q_EMIT WalkProgressed(m_filesMet);
        m_sinceProgress.start();
    }
}

void SharedFoldersManager::MirrorFolder(Item* ip_root, const FolderListing& i_listing) {
    Log(QStringLiteral("Shared"), 1,
        QStringLiteral("Adding folder %1 as part of sharing %2")
            .arg(ToQString(i_listing.Path()), ToQString(ip_root->AsView())),
        ip_root);
    Item* const lp_folder = d.GetType("shared_file_folder")->GetItem(i_listing.Path());
    lp_folder->Connect(ip_root);

    const Data::Operation l_walking(d); // listeners may remove what is at hand here
    KnownFiles l_known(lp_folder);
    FolderIndexer l_indexer(m_tokenCutter, lp_folder);
    for (const std::string_view l_name : i_listing.Files()) {
        Item* lp_file = l_known.Take(l_name);
        if (!lp_file) {
            const std::optional<long long> l_size = i_listing.FileSize(l_name);
            if (!l_size)
                continue;
            lp_file = AddFile(lp_folder, l_name, *l_size);
        }
        FileFound(lp_file, i_listing, l_name, l_indexer);
        if (++m_filesMet % c_filesPerLook == 0)
            ReportProgress();
    }
    m_filesRemoved += l_known.RemoveRest();
}

Item* SharedFoldersManager::AddFile(Item* ip_folder, std::string_view i_name, long long i_size) {
    Item* const lp_name = d.GetType("shared_file_name")->GetItem(i_name);
    Item* const lp_file = ip_folder->NewItem("shared_file").Get();
    lp_file->Connect(lp_name);
    lp_file->Connect(d.GetType("shared_file_size")->GetItem(i_size));
    ++m_filesAdded;
    return lp_file;
}

// For each file that a walk meets, new or known: what is derived from files is brought up to date here.
void SharedFoldersManager::FileFound(Item* ip_file, const FolderListing& i_listing, std::string_view i_name,
                                     FolderIndexer& io_indexer) {
    const bool l_isMP3 = i_name.size() > 4 && (i_name.ends_with(".mp3") || i_name.ends_with(".MP3"));
    if (l_isMP3 && !ip_file->IsConnected("is_scanned"))
        Q_EMIT MP3ScanRequired(QString::fromLatin1(i_listing.FilePath(i_name)));
    io_indexer.TokenizeSharedFile(ip_file, i_name);
}

void SharedFoldersManager::RescanShares() {
    m_filesAdded = 0;
    m_filesRemoved = 0;
    const Data::Operation l_walking(d);
    for (Item* lp_root : g("shared_folder")) {
        lp_root->Disconnect("shared_file_folder");
        OnSharedFolderAdded(lp_root);
    }
    m_filesRemoved += RemoveUnreachedFolders();
    Q_EMIT SharedFilesRescanned(m_filesAdded, m_filesRemoved);
}

void SharedFoldersManager::UnshareFolder(const std::string& i_path) {
    if (ItemPtr l_root = d.GetType("shared_folder")->HasItem(i_path)) {
        l_root.Remove();
        RemoveUnreachedFolders();
    }
}

// Removes the directories that no root reaches any more, with their files, and answers how many files those were.
// The files go one by one, before the sweep: a file whose audio attributes are also those of a file in somebody's
// share list is still connected to that list through them.
int SharedFoldersManager::RemoveUnreachedFolders() {
    int l_removed = 0;
    for (Item* lp_folder : g("shared_file_folder").NotConnected("shared_folder")) {
        const ItemSet l_files = lp_folder->GetItems("shared_file");
        l_removed += static_cast<int>(l_files.size());
        l_files.Remove();
    }
    d.RemoveDisconnectedItems();
    return l_removed;
}
