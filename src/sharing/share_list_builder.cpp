#include "sharing/share_list_builder.h"

#include "net/limits.h"
#include "peer/inflate.h"
#include "peer/peer_messages.h"
#include "peer/share_list.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace {

constexpr qint64 c_copyingSlice = 8;    // ms
constexpr int c_filesBetweenLooks = 32; // at the clock

std::vector<std::string> PathsOf(const ItemSet& i_items) {
    std::vector<std::string> l_paths;
    for (Item* lp_item : i_items)
        l_paths.push_back(lp_item->AsString());
    std::sort(l_paths.begin(), l_paths.end());
    return l_paths;
}

} // namespace

ShareListBuilder::ShareListBuilder() {
    d.GetType("shared_file")->m_itemRemoved.AddHandler(MakeHandler(this, &ShareListBuilder::OnFileRemoved));
    d.GetType("shared_file_folder")->m_itemRemoved.AddHandler(MakeHandler(this, &ShareListBuilder::OnFolderRemoved));
    connect(&m_slice, &QTimer::timeout, this, &ShareListBuilder::CopySlice);
}

void ShareListBuilder::BuildShareList(const ItemSet& i_roots, Done i_done) {
    Run l_run;
    l_run.roots = PathsOf(i_roots);
    for (Run& l_other : m_runs) {
        if (l_other.code == PM_SHARED_FILE_LIST && l_other.roots == l_run.roots) {
            l_other.waiting.push_back(std::move(i_done));
            return;
        }
    }
    l_run.directories = [l_roots = l_run.roots] {
        ItemSet l_folders;
        for (const std::string& l_root : l_roots)
            l_folders.Add(d.GetType("shared_folder")->HasItem(l_root).GetItems("shared_file_folder"));
        return l_folders;
    };
    l_run.encode = [](const ShareSnapshot& i_snapshot) { return EncodeShareList(FoldersToSend(i_snapshot)); };
    l_run.code = PM_SHARED_FILE_LIST;
    l_run.waiting.push_back(std::move(i_done));
    Enqueue(std::move(l_run));
}

void ShareListBuilder::BuildFolderReply(const std::string& i_path, std::uint32_t i_request, const std::string& i_name,
                                        Done i_done) {
    Run l_run;
    l_run.directories = [i_path] { return i("shared_file_folder", i_path); };
    l_run.encode = [i_request, i_name](const ShareSnapshot& i_snapshot) {
        return EncodeFolderReply({i_request, i_name, FilesToSend(i_snapshot)});
    };
    l_run.code = PM_SHARED_FILES_IN_FOLDER;
    l_run.waiting.push_back(std::move(i_done));
    Enqueue(std::move(l_run));
}

void ShareListBuilder::Enqueue(Run i_run) {
    if (m_runs.size() >= limits::waitingListRequests) {
        i_run.waiting.front()(std::nullopt);
        return;
    }
    m_runs.push_back(std::move(i_run));
    StartNext();
}

void ShareListBuilder::StartNext() {
    if (m_isRunning || m_runs.empty())
        return;
    m_isRunning = true;
    m_folders = m_runs.front().directories();
    m_files.clear();
    mp_snapshot = std::make_shared<ShareSnapshot>();
    m_slice.start(0);
}

void ShareListBuilder::CopySlice() {
    QElapsedTimer l_time;
    l_time.start();
    while (!l_time.hasExpired(c_copyingSlice)) {
        for (int l_file = 0; l_file < c_filesBetweenLooks; ++l_file) {
            if (!CopyNext()) {
                m_slice.stop();
                Pack();
                return;
            }
        }
    }
}

// One directory, or one of its files; false when all are copied.
bool ShareListBuilder::CopyNext() {
    if (m_files.empty()) {
        if (m_folders.empty())
            return false;
        Item* const lp_folder = *m_folders.begin();
        m_folders.erase(m_folders.begin());
        lp_folder->GetItems("shared_file", m_files);
        mp_snapshot->push_back({lp_folder->AsString(), {}});
        mp_snapshot->back().files.reserve(m_files.size());
        return true;
    }
    const Item* const lp_file = *m_files.begin();
    m_files.erase(m_files.begin());
    mp_snapshot->back().files.push_back({lp_file->HasItem("shared_file_name").AsString(),
                                         lp_file->HasItem("shared_file_size").ToInt64().value_or(0),
                                         AudioAttributesOf(lp_file)});
    return true;
}

void ShareListBuilder::Pack() {
    const std::shared_ptr<const ShareSnapshot> l_snapshot = std::move(mp_snapshot);
    m_worker.Do([this, l_snapshot, l_encode = m_runs.front().encode,
                 l_code = m_runs.front().code](const std::atomic<bool>& i_stop) -> BackgroundWorker::Finish {
        // The message has no handle on this thread any more when its owner gets it.
        const auto l_message =
            std::make_shared<const std::optional<MemStream>>(PackMessage(l_code, l_encode(*l_snapshot), &i_stop));
        return [this, l_message] { OnPacked(*l_message); };
    });
}

void ShareListBuilder::OnPacked(const std::optional<MemStream>& i_message) {
    const std::vector<Done> l_waiting = std::move(m_runs.front().waiting);
    m_runs.pop_front();
    m_isRunning = false;
    StartNext();
    for (const Done& l_done : l_waiting)
        l_done(i_message);
}
