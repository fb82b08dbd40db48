#include "search/search_replies.h"

#include <optional>
#include <utility>
#include <vector>

#include <absl/container/flat_hash_map.h>

#include "app/text.h"
#include "peer/search_reply.h"

namespace {

// One file of an answer, beside its name and folder as the store has them.
struct NewFile {
    const FileInfo* info;
    Item* name;
    Item* folder;
};

// Connects an attribute to a result. Of values that a record repeats the last one holds; it alone is made an item,
// since a record may hold a great many.
void SetAttributes(const ItemPtr& i_result, const AttributeMap& i_attributes) {
    std::optional<int> l_bitRate;
    std::optional<int> l_length;
    std::optional<int> l_mode;
    for (const auto& [l_code, l_value] : i_attributes.attributes) {
        if (l_code == FileAttributeBitRate)
            l_bitRate = l_value;
        else if (l_code == FileAttributeLength)
            l_length = l_value;
        else if (l_code == FileAttributeVariableBitRate)
            l_mode = l_value;
    }
    if (l_bitRate)
        i_result.Connect(d.GetType("bitrate")->GetItem(*l_bitRate));
    if (l_length)
        i_result.Connect(d.GetType("length_seconds")->GetItem(*l_length));
    if (l_mode)
        i_result.Connect(d.GetType("bitrate_mode")->GetItem(*l_mode == 0 ? "cbr" : "vbr"));
}

bool HasShown(const ItemPtr& i_user, Item* ip_name, Item* ip_folder) {
    const ItemSet l_sameFiles = d.GetItems(ip_name, ip_folder, "search_result");
    return !l_sameFiles.empty() && !l_sameFiles.GetItems("search_results").Connected(i_user).empty();
}

// The records that are new from this user. Those of one answer are compared with earlier answers only, so that each
// name in each folder is looked up once, however often the answer repeats it.
std::vector<NewFile> FindNewFiles(const ItemPtr& i_user, const std::vector<FileInfo>& i_files) {
    Type* const lp_names = d.GetType("search_result_file_name");
    Type* const lp_folders = d.GetType("search_result_file_folder");
    const bool l_hasAnswered = i_user.IsConnected("search_results");
    absl::flat_hash_map<std::pair<Item*, Item*>, bool> l_known;
    std::vector<NewFile> l_files;
    for (const FileInfo& l_info : i_files) {
        Item* const lp_name = lp_names->GetItem(GetFileName(l_info.name));
        Item* const lp_folder = lp_folders->GetItem(GetFolder(l_info.name));
        if (l_hasAnswered) {
            const auto [l_entry, l_isFirst] = l_known.try_emplace({lp_name, lp_folder}, false);
            if (l_isFirst)
                l_entry->second = HasShown(i_user, lp_name, lp_folder);
            if (l_entry->second)
                continue;
        }
        l_files.push_back({&l_info, lp_name, lp_folder});
    }
    return l_files;
}

} // namespace

// The results get their user last: until then no other answer is compared with them.
ItemPtr SearchReplies::TakeSearchReply(ItemPtr i_request, const SearchReply& i_reply) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_reply.user);
    const std::vector<NewFile> l_files = FindNewFiles(l_user, i_reply.files);
    if (l_files.empty())
        return ItemPtr();

    const ItemPtr l_results = d.GetType("search_results")->NewItem();
    for (const NewFile& l_file : l_files) {
        const ItemPtr l_result = d.GetType("search_result")->NewItem();
        SetAttributes(l_result, l_file.info->attributes);
        l_result.Connect(l_results);
        l_result.Connect(l_file.folder);
        l_result.Connect(l_file.name);
        l_result.Connect(d.GetType("search_result_file_size")->GetItem(l_file.info->size));
    }
    l_results.Connect(i_request);
    l_results.Connect(l_user);
    l_results.Connect(d.GetType("search_results_user_available")->GetItem(i_reply.isFree ? "yes" : "no"));
    l_results.Connect(d.GetType("search_results_user_speed")->GetItem(i_reply.speed));
    l_results.Connect(d.GetType("search_results_uploads_in_queue")->GetItem(i_reply.uploadsInQueue));
    return l_results;
}
