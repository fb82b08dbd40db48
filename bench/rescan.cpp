// How long the mirror of the shared folders takes on 100,000 real files, beside `find -printf '%s %p'` on the same
// tree in the same run: the first walk, which makes every file's items and its part of the search index, and a second
// one with nothing changed.
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
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int c_artists = 100;
constexpr int c_albums = 10;  // each
constexpr int c_tracks = 100; // each
constexpr int c_rounds = 5;

// Of the processor, in user and kernel mode, so that a busy machine does not blur the ratios; the tree is in the page
// cache, so nobody waits for a disk.
using Milliseconds = double;

Milliseconds ProcessorTime(int i_whose) {
    rusage l_usage = {};
    getrusage(i_whose, &l_usage);
    const auto l_milliseconds = [](const timeval& i_time) {
        return static_cast<double>(i_time.tv_sec) * 1e3 + static_cast<double>(i_time.tv_usec) / 1e3;
    };
    return l_milliseconds(l_usage.ru_utime) + l_milliseconds(l_usage.ru_stime);
}

Milliseconds Time(int i_whose, const std::function<void()>& i_work) {
    const Milliseconds l_start = ProcessorTime(i_whose);
    i_work();
    return ProcessorTime(i_whose) - l_start;
}

Milliseconds Best(const std::vector<Milliseconds>& i_times) {
    return *std::min_element(i_times.begin(), i_times.end());
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

void Print(const char* ip_walk, const std::vector<Milliseconds>& i_walk, const std::vector<Milliseconds>& i_find,
           double i_wanted) {
    const double l_ratio = Best(i_walk) / Best(i_find);
    std::printf("%-11s %5.0f ms, find %4.0f ms, the best of %d rounds: %.2f times (wanted: %.0f or less)  %s\n",
                ip_walk, Best(i_walk), Best(i_find), c_rounds, l_ratio, i_wanted,
                l_ratio <= i_wanted ? "PASS" : "SHORT");
}

void Measure(const std::string& i_root) {
    Type* const lp_roots = d.GetType("shared_folder");
    std::vector<Milliseconds> l_find, l_first, l_second;
    Find(i_root); // warms the cache
    for (int l_round = 0; l_round < c_rounds; ++l_round) {
        l_find.push_back(Time(RUSAGE_CHILDREN, [&] { Find(i_root); }));
        lp_roots->NewItem(i_root);
        l_first.push_back(Time(RUSAGE_THREAD, [] { sharedFoldersManager->RescanShares(); }));
        l_second.push_back(Time(RUSAGE_THREAD, [] { sharedFoldersManager->RescanShares(); }));
        std::printf("round %d: find %.0f ms, first walk %.0f ms, second walk %.0f ms, %zu files\n", l_round + 1,
                    l_find.back(), l_first.back(), l_second.back(), d.GetType("shared_file")->GetItems().size());
        sharedFoldersManager->UnshareFolder(i_root);
    }
    Print("first walk", l_first, l_find, 5);
    Print("second walk", l_second, l_find, 2);
}

// Requests for scans are queued as ever, but stay where they are: a scanner at work would read half a terabyte of holes
// beside the walks, and drive the tree out of the page cache.
class IdleScanner {
public:
    IdleScanner() {
        m_scanner.moveToThread(&m_thread);
        QObject::disconnect(sharedFoldersManager, &SharedFoldersManager::MP3ScanRequired, nullptr, nullptr);
        QObject::connect(sharedFoldersManager, &SharedFoldersManager::MP3ScanRequired, &m_scanner,
                         [](const QString&) {});
    }

private:
    QThread m_thread; // never started
    QObject m_scanner;
};

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
        const IdleScanner l_scanner;
        Measure(l_root);
    }
    std::filesystem::remove_all(l_root);
    return 0;
}
