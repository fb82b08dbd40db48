// The list of downloads: how long it takes to restore 10,000 entries beside 10, and what running downloads cost the
// main thread. One block of 8192 bytes is one report; three workers at 1 GB/s each make some 370,000 of them a second.
//
//   transfer_rows [ENTRIES]    one restoration, for the program itself

#include "page_world.h"
#include "transfers/live_transfer.h"
#include "ui/transfers_form.h"

#include <QElapsedTimer>
#include <QThread>
#include <QTreeWidget>

#include <cstdlib>

namespace {

constexpr int c_few = 10;
constexpr int c_many = 10'000;
constexpr int c_filesOfFolder = 20;
constexpr int c_foldersOfUser = 50;
constexpr double c_reportsOfSecond = 3 * 1e9 / 8192;

void AddEntries(int i_count) {
    for (int l_index = 0; l_index < i_count; ++l_index) {
        const int l_folder = l_index / c_filesOfFolder;
        const ItemPtr l_entry = d.GetType("download_entry")->NewItem();
        const auto l_connect = [&](const char* ip_type, const Value& i_value) {
            l_entry.Connect(d.GetType(ip_type)->GetItem(i_value));
        };
        l_connect("user", "user " + std::to_string(l_folder / c_foldersOfUser));
        l_connect("file_name", "song " + std::to_string(l_index) + ".mp3");
        l_connect("remote_folder", "music\\album " + std::to_string(l_folder));
        l_connect("file_size", 4'000'000 + l_index);
        l_connect("subfolder_save_level", 0);
        l_connect("download_order", l_index + 1);
        l_connect("download_entry_status", l_index % 3 == 0 ? "complete" : "aborted");
    }
}

// Prints milliseconds from the loaded store to the painted window.
void Restore(int i_count) {
    PageWorld l_world;
    AddEntries(i_count);
    TransfersForm* const lp_form = new TransfersForm;
    std::printf("%f\n", Time([&] {
                    lp_form->Init();
                    dataSaver->EmitDataLoaded();
                    l_world.Show(lp_form);
                    l_world.Settle();
                }));
}

double RestoreInProcess(const std::string& i_program, int i_count) {
    double l_milliseconds = 0;
    FILE* const lp_output = popen((i_program + " " + std::to_string(i_count)).c_str(), "r");
    if (lp_output == nullptr || std::fscanf(lp_output, "%lf", &l_milliseconds) != 1) {
        std::exit(1);
    }
    pclose(lp_output);
    return l_milliseconds;
}

void RunDownloads() {
    PageWorld l_world;
    TransfersForm* const lp_form = new TransfersForm;
    lp_form->Init();
    dataSaver->EmitDataLoaded();
    l_world.Show(lp_form);
    l_world.Settle();
    ItemList l_running;
    std::printf("adding %d downloads by the queue: %.0f ms\n", c_many, Time([&] {
                    for (int l_index = 0; l_index < c_many; ++l_index) {
                        transferQueueManager->AddDownload("Bo", "song " + std::to_string(l_index), "music", 4'000'000,
                                                          0);
                    }
                    l_world.Settle();
                }));
    for (int l_index = 0; l_index < 3; ++l_index) {
        Item* const lp_entry = transferQueueManager->GetDownloadEntry("Bo", "song " + std::to_string(l_index), "music");
        ConnectCell(lp_entry, "write_position", 0LL);
        ConnectCell(lp_entry, "bytes_per_second", 1'000'000'000);
        transferQueueManager->SetDownloadEntryStatus(lp_entry, "downloading");
        l_running.push_back(lp_entry);
    }
    // As many reports as there would be in a second, with the event loop coming round every so often.
    double l_longest = 0;
    int l_reports = 0;
    const double l_work = Time([&] {
        QElapsedTimer l_second;
        for (l_second.start(); l_second.elapsed() < 1000; QThread::msleep(1)) {
            const double l_due = c_reportsOfSecond * static_cast<double>(l_second.nsecsElapsed()) / 1e9;
            l_longest = std::max(l_longest, Time([&] {
                                     for (; l_reports < l_due; ++l_reports) {
                                         Item* const lp_entry = l_running[static_cast<std::size_t>(l_reports) % 3];
                                         WriteCell<long long>(lp_entry, "write_position", l_reports);
                                         Q_EMIT transferQueueManager->DownloadProgressed(lp_entry);
                                     }
                                     QCoreApplication::processEvents();
                                 }));
        }
    });
    std::printf(
        "3 of %d downloads at 1 GB/s each: %d reports of a second cost %.0f ms of the main thread, with painting\n",
        c_many, l_reports, l_work);
    Judge("the window is held at most", l_longest, 50);

    QTreeWidget* const lp_list = lp_form->findChild<QTreeWidget*>(QStringLiteral("downloadsList"));
    lp_list->setFocus();
    lp_list->selectAll();
    std::printf("removing all %d: %.0f ms\n", c_many, Time([&] {
                    Q_EMIT actionBar->ActionTriggered("remove_download");
                    l_world.Settle();
                }));
}

} // namespace

int main(int i_count, char** ip_arguments) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication l_application(i_count, ip_arguments);
    if (i_count == 2) {
        Restore(std::atoi(ip_arguments[1]));
        return 0;
    }
    const double l_few = RestoreInProcess(ip_arguments[0], c_few);
    const double l_many = RestoreInProcess(ip_arguments[0], c_many);
    std::printf("restoring %d entries to a painted window: %.0f ms, %d: %.0f ms\n", c_few, l_few, c_many, l_many);
    Judge("the difference", l_many - l_few, 1000);
    RunDownloads();
    return 0;
}
