// Who uploads next: a higher priority of the user's best group, then privilege, then arrival.
#pragma once

#include "store/data.h"

// The largest `group_download_priority` of the groups in which the user list has this user; never below 0, and 0 for
// one who is not in the list.
int GroupDownloadPriority(ItemPtr i_user);

// Both arguments are `upload_entry` items. Entries of one user keep their order of arrival.
bool GoesBefore(ItemPtr i_a, ItemPtr i_b);

// The same order over many entries, with each user judged once.
ItemList InUploadOrder(const ItemSet& i_entries);
