#include "contents.h"

#include "app/log.h"
#include "app/timestamp.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "peer/search_reply.h"
#include "search/search_replies.h"
#include "sharing/shared_folders_manager.h"
#include "store/data.h"
#include "transfers/live_transfer.h"
#include "transfers/transfer_queue_manager.h"
#include "ui/chat_form.h"
#include "ui/ignore_list.h"
#include "ui/main_window.h"
#include "ui/room_form.h"
#include "ui/search_arrivals.h"
#include "ui/search_form.h"

#include <QDateTime>
#include <QTabWidget>

namespace {

struct Member {
    const char* name;
    const char* country;
    int files;
    int speed; // bytes per second
};

constexpr const char* c_longName = "Thalassa of the long name that says where she lives";

constexpr Member c_members[] = {
    {"Marlo", "nz", 18'342, 2'400'000}, {"Pebble", "pt", 1'204, 310'000}, {"Ondine", "fr", 96, 0},
    {"Tamsin", "gb", 45'872, 780'000},  {"Jökull", "is", 0, 0},           {"Skerry", "no", 7'431, 1'100'000},
    {c_longName, "gr", 512, 52'000},
};

constexpr const char* c_rooms[] = {"Field recordings", "Harbour",  "Lighthouses", "Maps & charts",
                                   "Old sea songs",    "Rainfall", "Tide tables", "Weather of the northern islands"};

ItemPtr User(const char* ip_name) {
    return d.GetType("user")->GetItem(ip_name);
}

void FillRooms() {
    int l_count = 3;
    for (const char* lp_room : c_rooms) {
        d.GetType("room")->GetItem(lp_room)->Connect(d.GetType("user_count")->GetItem(l_count));
        l_count = (l_count * 17 + 5) % 913;
    }
    const ItemPtr l_harbour = d.GetType("room")->GetItem("Harbour");
    l_harbour.NewItem("in_room");
    for (const Member& l_member : c_members) {
        const ItemPtr l_user = User(l_member.name);
        l_user.Connect(d.GetType("average_download_speed")->GetItem(l_member.speed));
        l_user.Connect(d.GetType("shared_files_count")->GetItem(l_member.files));
        l_user.Connect(d.GetType("country_code")->GetItem(l_member.country));
        l_harbour.Connect(l_user);
    }
    RoomForm* const lp_form = l_harbour["room_form"].AsPointer<RoomForm>();
    lp_form->OnRoomChat("Harbour", "Marlo", "Spring tide tonight, the causeway is under water from nine.");
    lp_form->OnRoomChat("Harbour", "Pebble", "The table is at https://tides.example/harbour?month=11 as always");
    lp_form->AddStatusMessage("Disconnected.");
    lp_form->AddStatusMessage("Reconnected.");
    lp_form->OnRoomChat("Harbour", "Ondine", "<b>Merci</b> & good night");
    lp_form->OnRoomChat(
        "Harbour", c_longName,
        "I have walked out to the second beacon this morning and recorded the oyster catchers, the "
        "bell of the buoy and, much to my surprise, a whole choir that sang on the quay. Who are they?");
    lp_form->OnRoomChat("Harbour", "Newcomer", "That was us!");
    d.GetType("room")->GetItem("Tide tables")->NewItem("in_room");
    d.GetType("room")->GetItem("Weather of the northern islands")->NewItem("in_room");
}

void FillChats() {
    ChatForm* const lp_marlo = mainWindow->GetChatForm("Marlo");
    lp_marlo->AddChat("I have put the recordings of last night into the shared folder.");
    lp_marlo->AddChat("They are the ones with the bell: https://harbour.example/bell");
    mainWindow->GetChatForm("Tamsin")->AddChat("Which harbour was that?");
    mainWindow->GetChatForm(c_longName)->AddChat("Good evening");
}

Item* Download(const char* ip_user, const char* ip_file, const char* ip_folder, long long i_size) {
    transferQueueManager->AddDownload(ip_user, ip_file, ip_folder, i_size, 0);
    return transferQueueManager->GetDownloadEntry(ip_user, ip_file, ip_folder);
}

void Run(Item* ip_entry, const char* ip_position, long long i_position, int i_rate) {
    ConnectCell(ip_entry, ip_position, i_position);
    ConnectCell(ip_entry, "bytes_per_second", i_rate);
    ConnectCell(ip_entry, "last_receipt_time", QDateTime::currentDateTime());
}

void FillDownloads() {
    constexpr const char* c_bells = "recordings\\Bells and buoys";
    Item* const lp_running = Download("Marlo", "bell at low water.ogg", c_bells, 48'213'904);
    Run(lp_running, "write_position", 17'902'336, 412'000);
    transferQueueManager->SetDownloadEntryStatus(lp_running, "downloading");
    Q_EMIT transferQueueManager->DownloadProgressed(lp_running);
    Item* const lp_next = Download("Marlo", "bell in the fog.ogg", c_bells, 51'777'120);
    lp_next->Connect(d.GetType("place_in_line")->GetItem(1));
    transferQueueManager->SetDownloadEntryStatus(Download("Marlo", "buoy.ogg", c_bells, 9'120'442), "complete");
    Item* const lp_denied = Download("Tamsin", "chart of the inner harbour, second edition.pdf", "maps", 2'004'118);
    lp_denied->Connect(d.GetType("denial_reason")->GetItem("File not shared."));
    transferQueueManager->SetDownloadEntryStatus(lp_denied, "denied");
    transferQueueManager->SetDownloadEntryStatus(Download("Tamsin", "lights.pdf", "maps", 311'870), "aborted");
    Item* const lp_long = Download(c_longName, "a very long name of a file that does not fit into any column.flac",
                                   "sounds\\of the sea\\and of everything that lies beside it", 1'204'883'017);
    lp_long->Connect(d.GetType("place_in_line")->GetItem(1'240));
}

// Of files that the home folder really shares.
void FillUploads() {
    constexpr const char* c_statuses[] = {"uploading", "queued", "complete", "aborted", "queued"};
    std::size_t l_index = 0;
    for (Item* const lp_file : g("shared_file")) {
        if (l_index == std::size(c_statuses)) {
            break;
        }
        const ItemPtr l_entry = d.GetType("upload_entry")->NewItem();
        l_entry.Connect(User(l_index < 3 ? "Ondine" : "Skerry"));
        l_entry.Connect(lp_file);
        if (l_index == 0) {
            Run(l_entry.Get(), "read_position", 1'400'000, 96'000);
        }
        transferQueueManager->SetUploadEntryStatus(l_entry, c_statuses[l_index]);
        l_entry.Connect(d.GetType("last_status_change_time")->GetItem(CurrentTimestamp()));
        Q_EMIT transferQueueManager->UploadProgressed(l_entry);
        ++l_index;
    }
}

FileInfo File(const std::string& i_name, long long i_size, unsigned i_bitRate = 0, unsigned i_seconds = 0) {
    FileInfo l_file;
    l_file.name = i_name;
    l_file.size = i_size;
    if (i_bitRate != 0) {
        l_file.attributes.attributes = {{0, i_bitRate}, {1, i_seconds}, {2, 0}};
    }
    return l_file;
}

void Answer(unsigned int i_token, const char* ip_user, bool i_isFree, std::uint32_t i_speed, std::uint32_t i_queue,
            std::vector<FileInfo> i_files) {
    SearchReply l_reply;
    l_reply.user = ip_user;
    l_reply.token = i_token;
    l_reply.files = std::move(i_files);
    l_reply.isFree = i_isFree;
    l_reply.speed = i_speed;
    l_reply.uploadsInQueue = i_queue;
    SearchReplies l_replies;
    if (const ItemPtr l_results =
            l_replies.TakeSearchReply(d.GetType("search_request")->HasItem(Value(i_token)), l_reply)) {
        Q_EMIT peerMessenger->SearchResults(l_results);
    }
}

void FillSearches() {
    const unsigned int l_token = gp_server->FileSearch("bell harbour", false);
    Answer(l_token, "Marlo", true, 2'400'000, 0,
           {File("recordings\\Bells and buoys\\bell at low water.ogg", 48'213'904),
            File("recordings\\Bells and buoys\\bell in the fog.ogg", 51'777'120),
            File("recordings\\Harbour\\evening bell.mp3", 4'402'113, 192, 183)});
    Answer(l_token, "Skerry", false, 1'100'000, 12,
           {File("music\\Choir of the harbour\\01 The bell.mp3", 7'312'004, 320, 182),
            File("music\\Choir of the harbour\\02 The bell again.mp3", 6'001'990, 320, 150)});
    Answer(l_token, c_longName, true, 52'000, 0,
           {File("sounds\\of the sea\\and of everything that lies beside it\\the bell of the harbour, as it is heard "
                 "from the second beacon on a calm morning.flac",
                 88'004'100)});
    gp_server->FileSearch("nothing of this name", false);
    for (const auto& [lp_text, l_isOn] :
         {std::pair("lighthouse keepers' songs", true), std::pair("tide table 1911", true),
          std::pair("a wish with a name so long that its column cannot show the whole of it", false)}) {
        Item* const lp_wish = d.GetType("wish_list_item")->GetItem(lp_text);
        if (l_isOn) {
            lp_wish->Connect(d.GetType("wish_list_item_enabled")->GetGlobalNullItem());
        }
        mainWindow->findChild<SearchForm*>()->OnWishListItemAdded(lp_wish);
    }
}

void FillUsers() {
    for (const char* lp_group : {"Choir", "Coast guard", "People who record birds along the western shore"}) {
        d.GetType("user_list_group")->GetItem(lp_group);
    }
    d.GetType("user_list_group")->GetItem("Choir")->Connect(d.GetType("group_download_priority")->GetItem(2));
    for (const char* lp_name : {"Marlo", "Skerry", "Tamsin", c_longName}) {
        User(lp_name).NewItem("in_user_list");
    }
    for (const auto& [lp_user, lp_group] :
         {std::pair("Marlo", "Choir"), std::pair("Marlo", "Coast guard"), std::pair("Skerry", "Choir"),
          std::pair(c_longName, "People who record birds along the western shore")}) {
        User(lp_user)["in_user_list"].Connect(d.GetType("user_list_group")->GetItem(lp_group));
    }
    for (const Member& l_member : c_members) {
        User(l_member.name).NewItem("is_tracked");
    }
    for (const char* lp_name : {"Marlo", "Skerry", "Ondine"}) {
        User(lp_name).NewItem("is_online");
    }
    User("Pushy").NewItem("unshared");
    SetIgnored("Pushy", true);
    SetIgnored("Noisy", true);
}

void FillShares() {
    FileInfoMap l_folders = {
        {"recordings", {File("read me.txt", 812)}},
        {"recordings\\Bells and buoys",
         {File("bell at low water.ogg", 48'213'904), File("bell in the fog.ogg", 51'777'120),
          File("the bell of the harbour, as it is heard from the second beacon on a calm morning.mp3", 9'120'442, 256,
               310)}},
        {"recordings\\Birds", {File("oyster catchers.mp3", 4'402'113, 192, 183)}},
        {"recordings\\Birds\\1998", {File("terns.mp3", 1'402'113, 128, 83), File("gulls.mp3", 2'200'640, 128, 131)}},
        {"maps", {File("lights.pdf", 311'870)}},
        {"songs of the islands, sung by those who live there\\first part", {File("one.mp3", 3'000'000, 192, 121)}}};
    AttributeTranslationTable l_names;
    sharedFoldersManager->OnUserShare("Tamsin", l_folders, l_names);
}

} // namespace

void FillStore() {
    FillRooms();
    FillChats();
    FillUsers();
    FillDownloads();
    FillUploads();
    FillSearches();
    FillShares();
}

bool IsStoreFilled() {
    const QTabWidget* const lp_shares =
        mainWindow->findChild<QWidget*>(QStringLiteral("sharesForm"))->findChild<QTabWidget*>();
    return mainWindow->findChild<SearchArrivals*>()->IsEmpty() && lp_shares->count() == 1;
}
