#include "transfers/transfer_schema.h"

#include "store/data.h"
#include "store/data_saver.h"

namespace {

struct TypeRow {
    const char* name;
    bool isRoot;
    bool isNull;
};

struct RelationRow {
    const char* type;
    OneOrMany from;
    const char* other;
    OneOrMany to;
};

constexpr TypeRow kDownloadTypes[] = {
    {"download_entry", true, true},         {"file_name", false, false},
    {"remote_folder", false, false},        {"file_size", false, false},
    {"download_folder", false, false},      {"transfer_req", false, false},
    {"remote_transfer_req", false, false},  {"download_entry_status", false, false},
    {"download_order", false, false},       {"is_active", false, true},
    {"place_in_line", false, false},        {"last_place_in_line_request_time", false, false},
    {"subfolder_save_level", false, false}, {"last_status_change_time", false, false},
};

// The values of these are addresses: of an object that the transfer owns, or of a heap cell whose figure changes
// with every notice of a worker and so costs no event of the store.
constexpr TypeRow kLiveTypes[] = {
    {"download_socket", true, false},    {"upload_socket", true, false},   {"download_file", true, false},
    {"upload_file", true, false},        {"download_thread", true, false}, {"upload_thread", true, false},
    {"write_position", false, false},    {"read_position", false, false},  {"bytes_per_second", false, false},
    {"last_receipt_time", false, false},
};

// `upload_entry_status` is a root: its items keep their `is_active` flag through every sweep, and by way of the
// one shared flag the download status "downloading" stays reachable too.
constexpr TypeRow kUploadTypes[] = {
    {"upload_entry", true, true},     {"filename_as_requested", false, false},  {"upload_start_time", false, false},
    {"bytes_uploaded", false, false}, {"effective_upload_order", false, false}, {"upload_entry_status", true, false},
    {"upload_order", false, false},
};

constexpr RelationRow kDownloadRelations[] = {
    {"download_entry", Many, "user", One},
    {"download_entry", Many, "file_name", One},
    {"download_entry", Many, "remote_folder", One},
    {"download_entry", Many, "file_size", One},
    {"download_entry", Many, "download_folder", One},
    {"download_entry", One, "transfer_req", One},
    {"download_entry", Many, "remote_transfer_req", One},
    {"download_entry", Many, "download_entry_status", One},
    {"download_entry", One, "download_order", One},
    {"download_entry", Many, "place_in_line", One},
    {"download_entry", Many, "subfolder_save_level", One},
    {"download_entry", Many, "last_status_change_time", One},
    {"download_entry_status", Many, "is_active", One},
    {"user", Many, "last_place_in_line_request_time", One},
    {"download_entry", One, "download_socket", One},
    {"download_entry", One, "download_thread", One},
    {"download_entry", One, "download_file", One},
    {"download_entry", Many, "write_position", One},
    {"download_entry", One, "last_receipt_time", One},
    {"download_entry", One, "bytes_per_second", One},
};

constexpr RelationRow kUploadRelations[] = {
    {"upload_entry", Many, "user", One},
    {"upload_entry", Many, "shared_file", One},
    {"upload_entry", Many, "upload_entry_status", One},
    {"upload_entry", One, "upload_order", One},
    {"upload_entry", One, "transfer_req", One},
    {"upload_entry_status", Many, "is_active", One},
    {"upload_entry", Many, "filename_as_requested", One},
    {"upload_entry", Many, "upload_start_time", One},
    {"upload_entry", Many, "bytes_uploaded", One},
    {"upload_entry", Many, "last_status_change_time", One},
    {"upload_entry", One, "effective_upload_order", One},
    {"upload_entry", One, "upload_socket", One},
    {"upload_entry", One, "upload_file", One},
    {"upload_entry", Many, "read_position", One},
    {"upload_entry", One, "last_receipt_time", One},
    {"upload_entry", One, "bytes_per_second", One},
    {"upload_entry", One, "upload_thread", One},
};

constexpr RelationRow kDenialRelations[] = {
    {"denial_reason", One, "download_entry", Many},
    {"denial_reason", One, "upload_entry", Many},
};

// What of a download entry outlives the process. Of an upload nothing does: the peers ask again.
constexpr const char* kSavedWithDownload[] = {"user",           "file_name",           "remote_folder",
                                              "file_size",      "download_folder",     "download_entry_status",
                                              "download_order", "subfolder_save_level"};

template <std::size_t Count>
void MakeTypes(const TypeRow (&i_rows)[Count]) {
    for (const TypeRow& l_row : i_rows)
        d.NewType(l_row.name, l_row.isRoot, l_row.isNull, true);
}

template <std::size_t Count>
void Relate(const RelationRow (&i_rows)[Count]) {
    for (const RelationRow& l_row : i_rows)
        d.GetType(l_row.type)->RelateToType(d.GetType(l_row.other), l_row.from, l_row.to, false);
}

} // namespace

void CreateTransferTypes() {
    MakeTypes(kDownloadTypes);
    MakeTypes(kLiveTypes);
    Relate(kDownloadRelations);

    dataSaver->AddSavedType("download_entry");
    for (const char* lp_type : kSavedWithDownload)
        dataSaver->AddSavedByConnectionType(lp_type, "download_entry");

    MakeTypes(kUploadTypes);
    Relate(kUploadRelations);

    d.NewType("denial_reason", false, false, true);
    Relate(kDenialRelations);
}
