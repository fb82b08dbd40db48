#include "transfers/upload_order.h"

#include <absl/container/flat_hash_map.h>

#include <algorithm>
#include <limits>
#include <tuple>

namespace {

// The smaller goes first.
struct UserRank {
    int priority = 0; // negated
    bool isUnprivileged = true;
};

struct Rank {
    UserRank user;
    long long arrival = 0;
    Item* entry = nullptr;

    bool operator<(const Rank& i_other) const {
        return std::tie(user.priority, user.isUnprivileged, arrival) <
               std::tie(i_other.user.priority, i_other.user.isUnprivileged, i_other.arrival);
    }
};

UserRank RankUser(ItemPtr i_user) {
    return {-GroupDownloadPriority(i_user), !i_user || !i_user.IsConnected("is_privileged")};
}

long long Arrival(ItemPtr i_entry) {
    return i_entry["upload_order"].ToInt64().value_or(std::numeric_limits<long long>::max());
}

} // namespace

int GroupDownloadPriority(ItemPtr i_user) {
    const ItemPtr l_listed = i_user["in_user_list"];
    long long l_best = 0;
    for (Item* lp_priority : l_listed.GetItems("user_list_group").GetItems("group_download_priority")) {
        l_best = std::max(l_best, lp_priority->ToInt64().value_or(0)); // saved, so it may be no number
    }
    return static_cast<int>(std::min<long long>(l_best, std::numeric_limits<int>::max()));
}

bool GoesBefore(ItemPtr i_a, ItemPtr i_b) {
    return Rank{RankUser(i_a["user"]), Arrival(i_a), i_a.Get()} < Rank{RankUser(i_b["user"]), Arrival(i_b), i_b.Get()};
}

ItemList InUploadOrder(const ItemSet& i_entries) {
    absl::flat_hash_map<ItemPtr, UserRank> l_users;
    std::vector<Rank> l_ranks;
    l_ranks.reserve(i_entries.size());
    for (Item* lp_entry : i_entries) {
        const ItemPtr l_user = lp_entry->HasItem("user");
        auto l_known = l_users.find(l_user);
        if (l_known == l_users.end()) {
            l_known = l_users.emplace(l_user, RankUser(l_user)).first;
        }
        l_ranks.push_back({l_known->second, Arrival(lp_entry), lp_entry});
    }
    std::stable_sort(l_ranks.begin(), l_ranks.end());

    ItemList l_order;
    l_order.reserve(l_ranks.size());
    for (const Rank& l_rank : l_ranks) {
        l_order.push_back(l_rank.entry);
    }
    return l_order;
}
