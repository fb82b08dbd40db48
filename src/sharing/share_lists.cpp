// The lists of shared files: one's own for other users, and theirs for the store.
#include "sharing/shared_folders_manager.h"

#include "app/log.h"
#include "app/text.h"

#include <algorithm>
#include <utility>

void SharedFoldersManager::GetSharedFilesMessage(const std::string& i_user, Answer i_answer) {
    Log(QStringLiteral("Shared"), 1, QStringLiteral("Shared file list requested by user %1").arg(ToQString(i_user)),
        d.GetType("user")->HasItem(i_user));
    mp_shareListBuilder->BuildShareList(GetUserSharedFolders(i_user), std::move(i_answer));
}

void SharedFoldersManager::OnFilesInFoldersRequested(const std::string& i_user, quint32 i_request,
                                                     const std::string& i_folder) {
    std::string l_path = i_folder;
    std::replace(l_path.begin(), l_path.end(), '\\', '/');
    if (GetUserSharedFolders(i_user).Connected("shared_file_folder", l_path).empty())
        return;
    mp_shareListBuilder->BuildFolderReply(l_path, i_request, i_folder,
                                          [i_user](const std::optional<MemStream>& i_message) {
                                              if (i_message)
                                                  peerMessenger->SendMessage(i_user, *i_message);
                                          });
}

void SharedFoldersManager::OnUserShare(const std::string& i_user, FileInfoMap& io_folders, AttributeTranslationTable&) {
    Log(QStringLiteral("Shared"), 1, QStringLiteral("Received shared file list from user %1").arg(ToQString(i_user)),
        d.GetType("user")->HasItem(i_user));
    if (const ItemPtr l_old = d.GetType("user")->HasItem(i_user)["user_share"])
        RemoveUserShare(l_old);
    mp_userShareBuilder->Take(i_user, std::move(io_folders));
}

void SharedFoldersManager::RemoveUserShare(ItemPtr i_share) {
    mp_userShareRemover->Take(i_share);
}

QString SharedFoldersManager::GetFileItemDisplayString(ItemPtr i_file) {
    QString l_text = ToQString(i_file["bitrate"].AsView());
    const ItemPtr l_mode = i_file["bitrate_mode"];
    if (l_mode.AsView() == "vbr")
        l_text += QStringLiteral(" VBR");
    else if (l_mode.AsView() == "cbr")
        l_text += QStringLiteral(" CBR");
    if (const ItemPtr l_length = i_file["length_seconds"])
        l_text += QStringLiteral(", ") + ToQString(FormatSeconds(l_length.ToInt64().value_or(0)));
    return l_text;
}
