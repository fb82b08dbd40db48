// The list of downloads: how long it takes to restore 10,000 entries beside 10, and what three running downloads at
// full loopback speed cost the main thread, with the page on show: their senders are processes, their workers and files
// real.
//
// Wanted: no more than 1 s between the two restorations, and the window never blocked for more than 50 ms.
//
//   transfer_rows [ENTRIES]    one restoration, for the program itself
#include "heartbeat.h"
#include "page_world.h"
#include "ui/transfers_form.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTreeWidget>

#include <cstdlib>
#include <vector>

namespace {

// For the program itself, with the port behind it: the peer that sends one file.
constexpr const char* c_send = "send";

constexpr int c_few = 10;
constexpr int c_many = 10'000;
constexpr int c_filesOfFolder = 20;
constexpr int c_foldersOfUser = 50;
constexpr int c_patience = 60'000; // milliseconds
constexpr int c_running = 3;
constexpr long long c_fileSize = 512LL << 20; // of each that runs

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
    std::printf("adding %d downloads by the queue: %.0f ms\n", c_many, Time([&] {
                    for (int l_index = 0; l_index < c_many; ++l_index) {
                        transferQueueManager->AddDownload("Bo", "song " + std::to_string(l_index), "music", 4'000'000,
                                                          0);
                    }
                    l_world.Settle();
                }));
    QTcpServer l_listener;
    l_listener.listen(QHostAddress::LocalHost);
    std::vector<std::unique_ptr<QProcess>> l_senders;
    QElapsedTimer l_clock;
    l_clock.start();
    const Heartbeat l_heartbeat;
    for (int l_index = 0; l_index < c_running; ++l_index) {
        l_senders.push_back(std::make_unique<QProcess>());
        l_senders.back()->start(QCoreApplication::applicationFilePath(),
                                {QLatin1String(c_send), QString::number(l_listener.serverPort())});
        l_listener.waitForNewConnection(c_patience);
        QTcpSocket* const lp_socket = l_listener.nextPendingConnection();
        lp_socket->setParent(nullptr);
        const ItemPtr l_entry =
            transferQueueManager->GetDownloadEntry("Bo", "song " + std::to_string(l_index), "music");
        l_entry.Connect(d.GetType("file_size")->GetItem(c_fileSize));
        l_entry.Connect(d.GetType("remote_transfer_req")->GetItem(l_index + 1));
        transferQueueManager->OnFileConnection("Bo", lp_socket, static_cast<unsigned>(l_index + 1));
    }
    const ItemPtr l_complete = d.GetType("download_entry_status")->GetItem("complete");
    while (l_complete->CountItems("download_entry") < c_running && l_clock.elapsed() < c_patience) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    const double l_seconds = static_cast<double>(l_clock.elapsed()) / 1000;
    const Heartbeat::Figures l_figures = l_heartbeat.Read();
    std::printf("%d of %d downloads at %.0f MiB/s in all for %.1f s: the main thread works for %.1f%% of the time\n",
                static_cast<int>(l_complete->CountItems("download_entry")), c_many,
                c_running * static_cast<double>(c_fileSize >> 20) / l_seconds, l_seconds,
                l_figures.total / l_seconds / 10);
    std::printf("by the clock, with all processes on this machine, the window is held %.1f ms at most\n",
                l_figures.mostByClock);
    Judge("the window is held at most", l_figures.most, 50);

    QTreeWidget* const lp_list = lp_form->findChild<QTreeWidget*>(QStringLiteral("downloadsList"));
    lp_list->setFocus();
    lp_list->selectAll();
    std::printf("removing all %d: %.0f ms\n", c_many, Time([&] {
                    Q_EMIT actionBar->ActionTriggered("remove_download");
                    l_world.Settle();
                }));
}

// Takes the offset and sends the file as fast as it is taken.
int Send(int i_port) {
    QTcpSocket l_socket;
    l_socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(i_port));
    while (l_socket.bytesAvailable() < 8) {
        if (!l_socket.waitForReadyRead(c_patience)) {
            return 1;
        }
    }
    const QByteArray l_block(1 << 20, 'x');
    for (long long l_sent = 0; l_sent < c_fileSize; l_sent += l_block.size()) {
        l_socket.write(l_block);
        while (l_socket.bytesToWrite() > 0 && l_socket.waitForBytesWritten(c_patience)) {
        }
    }
    l_socket.waitForDisconnected(c_patience);
    return 0;
}

} // namespace

int main(int i_count, char** ip_arguments) {
    if (i_count == 3 && std::string(ip_arguments[1]) == c_send) {
        const QCoreApplication l_application(i_count, ip_arguments);
        return Send(std::atoi(ip_arguments[2]));
    }
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
