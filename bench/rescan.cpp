// How long the mirror of the shared folders takes on 100,000 real files, beside `find -printf '%s %p'` on the same
// tree in the same run: the first walk, which makes every file's items, and a second one with nothing changed.
//
//   rescan [FOLDER]    FOLDER: where the tree is made and removed again; the temporary folder if it is left out

#include "app/settings.h"
#include "app/timers.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "sharing/shared_folders_manager.h"
#include "store/data.h"
#include "store/data_saver.h"

#include <QCoreApplication>
#include <QProcess>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int c_artists = 100;
constexpr int c_albums = 10;  // each
constexpr int c_tracks = 100; // each
constexpr int c_rounds = 5;

using Milliseconds = double;

Milliseconds Time(const std::function<void()>& i_work) {
    const auto l_start = std::chrono::steady_clock::now();
    i_work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - l_start).count();
}

Milliseconds Median(std::vector<Milliseconds> i_times) {
    std::nth_element(i_times.begin(), i_times.begin() + c_rounds / 2, i_times.end());
    return i_times[c_rounds / 2];
}

// Names as a music collection has them: most of them once, a few (covers, playlists) in every folder. The files are
// holes of different sizes, so that the tree costs inodes and no space.
void MakeTree(const std::filesystem::path& i_root) {
    for (int l_album = 0; l_album < c_artists * c_albums; ++l_album) {
        const std::filesystem::path l_folder =
            i_root / ("Artist " + std::to_string(l_album / c_albums)) / ("Album " + std::to_string(l_album % c_albums));
        std::filesystem::create_directories(l_folder);
        for (int l_track = 0; l_track < c_tracks; ++l_track) {
            const std::string l_name = l_track == 0   ? "cover.jpg"
                                       : l_track == 1 ? "playlist.m3u"
                                                      : std::to_string(l_track) + " - Song " +
                                                            std::to_string(l_album * c_tracks + l_track) + ".mp3";
            const int l_file = open((l_folder / l_name).c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
            if (l_file == -1 || ftruncate(l_file, 3'000'000 + (l_album * 7919L + l_track * 104729L) % 4'000'000) != 0)
                std::perror("rescan: cannot make the tree");
            close(l_file);
        }
    }
}

void Find(const std::string& i_root) {
    QProcess l_find;
    l_find.setStandardOutputFile(QProcess::nullDevice());
    l_find.start(QStringLiteral("find"),
                 {QString::fromStdString(i_root), QStringLiteral("-printf"), QStringLiteral("%s %p\n")});
    l_find.waitForFinished(-1);
}

void Measure(const std::string& i_root) {
    Type* const lp_roots = d.GetType("shared_folder");
    std::vector<Milliseconds> l_find, l_first, l_second;
    Find(i_root); // warms the cache
    for (int l_round = 0; l_round < c_rounds; ++l_round) {
        l_find.push_back(Time([&] { Find(i_root); }));
        lp_roots->NewItem(i_root);
        l_first.push_back(Time([] { sharedFoldersManager->RescanShares(); }));
        l_second.push_back(Time([] { sharedFoldersManager->RescanShares(); }));
        std::printf("round %d: find %.0f ms, first walk %.0f ms, second walk %.0f ms, %zu files\n", l_round + 1,
                    l_find.back(), l_first.back(), l_second.back(), d.GetType("shared_file")->GetItems().size());
        sharedFoldersManager->UnshareFolder(i_root);
    }
    std::printf("first walk  / find: %.2f (wanted: 4 or less)\n", Median(l_first) / Median(l_find));
    std::printf("second walk / find: %.2f (wanted: 2 or less)\n", Median(l_second) / Median(l_find));
}

} // namespace

int main(int i_count, char** ip_arguments) {
    QCoreApplication l_application(i_count, ip_arguments);
    const std::filesystem::path l_place = i_count > 1 ? ip_arguments[1] : std::filesystem::temp_directory_path();
    std::string l_root = (l_place / "tidewell-rescan-XXXXXX").native();
    if (!mkdtemp(l_root.data())) {
        std::perror("rescan: cannot make a folder for the tree");
        return 1;
    }
    MakeTree(l_root);

    TimerManager l_timers;
    DataSaver l_saver;
    Server l_server;
    l_server.CreateData();
    PeerMessenger l_messenger;
    CreateSettingsTypes();
    {
        SharedFoldersManager l_sharedFolders; // without Init: only the rescans below walk
        Measure(l_root);
    }
    std::filesystem::remove_all(l_root);
    return 0;
}
