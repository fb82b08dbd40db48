// What the two directions of transfers call their Types, and what the lists read from an entry of either. Foreign and
// saved numbers are brought into a range that can be added up.
#pragma once

#include "store/data.h"

#include <string_view>

class QTreeWidgetItem;

struct TransferTypes {
    const char* entry;
    const char* status;
    const char* active;   // the status of an entry that moves bytes
    const char* userNode; // the rows
    const char* folderNode;
    const char* fileNode;
    const char* file; // between the entry and the three below; null where they are the entry's own
    const char* fileName;
    const char* folder;
    const char* fileSize;
    const char* position; // the cell of bytes that are there
    bool followsUsers;    // whether rows of users tell who is away
};

extern const TransferTypes c_downloadTypes;
extern const TransferTypes c_uploadTypes;

// The Types of the rows with their relations; those of entries and users exist.
void CreateTransferNodeTypes(const TransferTypes& i_types);

ItemPtr TransferFileName(const TransferTypes& i_types, ItemPtr i_entry);
ItemPtr TransferFolder(const TransferTypes& i_types, ItemPtr i_entry);
std::string_view TransferStatus(const TransferTypes& i_types, ItemPtr i_entry); // empty if there is none
long long TransferSize(const TransferTypes& i_types, ItemPtr i_entry);          // bytes, never negative
long long TransferPosition(const TransferTypes& i_types, ItemPtr i_entry);      // bytes, 0 while none are known
int TransferRate(ItemPtr i_entry);                                              // bytes per second, likewise

// From rows to what they show. A row that is no row of ours has no entries and no user.
ItemPtr RowEntry(const TransferTypes& i_types, const QTreeWidgetItem* ip_row); // of a file row, else null
ItemSet EntriesBelow(const TransferTypes& i_types, const QTreeWidgetItem* ip_row);
const QTreeWidgetItem* UserRow(const QTreeWidgetItem* ip_row);
ItemPtr RowUser(const TransferTypes& i_types, const QTreeWidgetItem* ip_row);

// Bytes of entries that are complete, under way, waiting or broken off; the others count for nothing.
struct ProgressStats {
    long long done = 0;
    long long remaining = 0;
    long long total = 0;
};
ProgressStats GetProgressStats(const TransferTypes& i_types, const ItemSet& i_entries);
// The sum, or the largest number where it would be larger.
long long AddBytes(long long i_one, long long i_other);
