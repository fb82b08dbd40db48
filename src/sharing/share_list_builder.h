// Makes the messages that list shared files, without stopping the main thread: what they tell is copied out of the
// store there, in short slices; encoding and packing run on a worker.
//
// One list is made at a time, the others wait. Files that come or leave while theirs is copied may be in it or not.
// Main thread only.
#pragma once

#include "app/background_worker.h"
#include "net/mem_stream.h"
#include "sharing/share_snapshot.h"
#include "store/data.h"

#include <QObject>
#include <QTimer>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class ShareListBuilder : public QObject, public DataHandler {
    Q_OBJECT

public:
    // Called once, from the event loop or at once; without a message when there is none for want of memory or because
    // too much is asked. Not called any more once the builder is gone.
    using Done = std::function<void(const std::optional<MemStream>&)>;

    ShareListBuilder();

    // The share list of these roots. Who asks while one of the same roots is being made gets that one.
    void BuildShareList(const ItemSet& i_roots, Done i_done);
    // The reply to a request for the directory's files; i_name is what the request called it.
    void BuildFolderReply(const std::string& i_path, std::uint32_t i_request, const std::string& i_name, Done i_done);

private Q_SLOTS:
    void CopySlice();

private:
    struct Run {
        std::vector<std::string> roots;                        // of a share list: their paths, sorted
        std::function<ItemSet()> directories;                  // those whose files are listed
        std::function<MemStream(const ShareSnapshot&)> encode; // called on the worker
        int code;
        std::vector<Done> waiting;
    };

    void Enqueue(Run i_run);
    void StartNext();
    bool CopyNext();
    void Pack();
    void OnPacked(const std::optional<MemStream>& i_message);
    void OnFileRemoved(Item* ip_file) { m_files.erase(ip_file); }
    void OnFolderRemoved(Item* ip_folder) { m_folders.erase(ip_folder); }

    std::deque<Run> m_runs; // the first one is being made
    bool m_isRunning = false;
    // What the first one still has to copy; items that are removed meanwhile leave these sets.
    ItemSet m_folders;
    ItemSet m_files; // of the last directory of the snapshot
    std::shared_ptr<ShareSnapshot> mp_snapshot;
    QTimer m_slice;
    BackgroundWorker m_worker{"share lists"};
};
