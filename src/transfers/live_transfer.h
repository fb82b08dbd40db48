// What an entry holds only while its transfer runs: the worker, the open file, the socket, and the figures.
#pragma once

#include "store/data.h"

// The Types that differ between the two directions.
struct LiveTypes {
    const char* thread;
    const char* file;
    const char* socket;
    const char* position;
};
inline constexpr LiveTypes kLiveDownload{"download_thread", "download_file", "download_socket", "write_position"};
inline constexpr LiveTypes kLiveUpload{"upload_thread", "upload_file", "upload_socket", "read_position"};

// When the thread and the socket are deleted: a signal of theirs may be on the way up the stack, unless the event loop
// is over.
enum class Deletion { Later, Now };

// Stops the worker and waits for it; then closes and frees the file and the socket and removes all these items. What is
// not there is passed over.
void EndLiveTransfer(ItemPtr i_entry, const LiveTypes& i_types, Deletion i_deletion = Deletion::Later);

// Tells the worker to stop, without waiting.
void SignalLiveTransfer(ItemPtr i_entry, const LiveTypes& i_types);

// Makes the item of a heap cell and connects it. The cell belongs to the item: OnCellRemoved of the manager frees it.
template <class T>
void ConnectCell(ItemPtr i_entry, const char* ip_type, T i_value) {
    i_entry.Connect(d.GetType(ip_type)->NewItem(new T(std::move(i_value))));
}

// Writes through to the cell, without any event. Nothing happens without a cell.
template <class T>
void WriteCell(ItemPtr i_entry, const char* ip_type, T i_value) {
    if (const ItemPtr l_cell = i_entry[ip_type]) {
        *l_cell.AsPointer<T>() = std::move(i_value);
    }
}
