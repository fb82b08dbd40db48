// The answers to the searches of other users.
#include "sharing/shared_folders_manager.h"

#include "app/log.h"
#include "app/settings.h"
#include "app/text.h"
#include "peer/inflate.h"
#include "peer/peer_messages.h"
#include "peer/peer_messenger.h"
#include "peer/search_reply.h"
#include "sharing/audio_attributes.h"
#include "sharing/file_roots.h"
#include "sharing/search_matches.h"
#include "sharing/upload_slots.h"

#include <algorithm>
#include <map>

namespace {

FileInfo Record(const Item* ip_file) {
    FileInfo l_record;
    l_record.name = ip_file->HasItem("shared_file_folder").AsString();
    l_record.name.append(1, '/').append(ip_file->HasItem("shared_file_name").AsView());
    std::replace(l_record.name.begin(), l_record.name.end(), '/', '\\');
    l_record.size = ip_file->HasItem("shared_file_size").ToInt64().value_or(0);
    l_record.attributes = AttributesToSend(l_record.name, AudioAttributesOf(ip_file));
    return l_record;
}

// In order of their paths, each path once.
std::vector<FileInfo> Records(const std::vector<Item*>& i_files) {
    std::map<std::string, FileInfo> l_byPath;
    for (const Item* lp_file : i_files) {
        FileInfo l_record = Record(lp_file);
        std::string l_path = l_record.name;
        l_byPath.insert_or_assign(std::move(l_path), std::move(l_record));
    }
    std::vector<FileInfo> l_records;
    l_records.reserve(l_byPath.size());
    for (auto& [l_path, l_record] : l_byPath)
        l_records.push_back(std::move(l_record));
    return l_records;
}

} // namespace

void SharedFoldersManager::SetUploadSlots(UploadSlots* ip_slots) {
    mp_uploadSlots = ip_slots;
}

void SharedFoldersManager::OnDNetSearchRequest(const std::string& i_user, quint32 i_requestToken,
                                               const std::string& i_text) {
    if (i_user == SettingText("username"))
        return; // our own search has come to us through the tree: what is here we know
    ProcessSearch(i_user, i_requestToken, i_text);
}

void SharedFoldersManager::ProcessSearch(const std::string& i_user, unsigned int i_requestToken,
                                         const std::string& i_text) {
    const std::vector<Item*> l_files = FindSearchMatches(
        i_text, [&] { return GetUserSharedFolders(i_user); }, *mp_fileRoots);
    if (l_files.empty())
        return;

    SearchReply l_reply;
    l_reply.user = SettingText("username");
    l_reply.token = i_requestToken;
    l_reply.files = Records(l_files);
    l_reply.isFree = mp_uploadSlots && mp_uploadSlots->IsFreeToUpload();
    l_reply.speed = static_cast<std::uint32_t>(SettingNumber("upload_speed").value_or(0));
    l_reply.uploadsInQueue = mp_uploadSlots ? static_cast<std::uint32_t>(mp_uploadSlots->QueuedUploadCount()) : 0;
    const auto l_message = PackMessage(PM_FILE_SEARCH_RESULT, EncodeSearchReply(l_reply));
    if (!l_message)
        return;
    Log(QStringLiteral("Search"), 1,
        QStringLiteral("Sending search results to user %1 for search string %2")
            .arg(ToQString(i_user), ToQString(i_text)),
        ItemPtr());
    peerMessenger->SendMessage(i_user, *l_message);
}
