// How long the window stands still: while a list of 10,000 rooms arrives and is sorted, and while a store with 100,000
// shared files is saved. What is measured is the longest stretch in which the event loop does not come round, and all
// such stretches together, in the main thread's own time: what else the machine does is no fault of the window's. The
// yardstick of the room list is a bare QTreeWidget filled with the same texts in one go.

#include "processor_time.h"

#include "app/settings.h"
#include "app/timers.h"
#include "net/server.h"
#include "sharing/shared_folders_manager.h"
#include "store/data.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int c_rooms = 10'000;
constexpr int c_files = 100'000;
constexpr int c_filesOfFolder = 100;

struct Stillness {
    double longest = 0; // milliseconds
    double total = 0;
};

// Milliseconds that this thread has worked since some moment.
double Clock() {
    return ThreadMicroseconds() / 1000;
}

// Runs the event loop until the condition holds, and sums up the turns in which it did more than wait.
Stillness Watch(const std::function<bool()>& i_isOver) {
    Stillness l_result;
    while (!i_isOver()) {
        const double l_start = Clock();
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        const double l_milliseconds = Clock() - l_start;
        l_result.longest = std::max(l_result.longest, l_milliseconds);
        l_result.total += l_milliseconds;
        QThread::usleep(200);
    }
    return l_result;
}

std::string RoomName(int i_room) {
    return "Room " + std::to_string(i_room * 7919L % c_rooms) + " of the harbour";
}

double FillBareTree() {
    QTreeWidget l_tree;
    l_tree.setColumnCount(2);
    const double l_start = Clock();
    QList<QTreeWidgetItem*> l_rows;
    for (int l_room = 0; l_room < c_rooms; ++l_room) {
        l_rows.append(new QTreeWidgetItem({QString::fromStdString(RoomName(l_room)), QString::number(l_room % 500)}));
    }
    l_tree.addTopLevelItems(l_rows);
    l_tree.sortItems(0, Qt::AscendingOrder);
    return Clock() - l_start;
}

void MeasureRooms(MainWindow& i_window, const char* ip_what, int i_extraUsers) {
    const QTreeWidget* const lp_list = i_window.findChild<QTreeWidget*>(QStringLiteral("roomList"));
    const double l_start = Clock();
    for (int l_room = 0; l_room < c_rooms; ++l_room) {
        d.GetType("room")
            ->GetItem(RoomName(l_room))
            ->Connect(d.GetType("user_count")->GetItem(l_room % 500 + i_extraUsers));
    }
    const double l_arrival = Clock() - l_start;
    int l_turns = 0; // the rows come in the first, their picture after it
    const Stillness l_still = Watch([&] { return lp_list->topLevelItemCount() == c_rooms && ++l_turns > 20; });
    std::printf("%s: arrival %.1f ms, rows, sorting and painting %.1f ms, together %.1f ms (wanted: 100 at most); "
                "beside a bare tree's %.1f ms\n",
                ip_what, l_arrival, l_still.total, l_arrival + l_still.total, FillBareTree());
}

void MakeFiles(const QString& i_folder) {
    for (int l_file = 0; l_file < c_files; ++l_file) {
        const std::string l_path = i_folder.toStdString() + "/Album " + std::to_string(l_file / c_filesOfFolder);
        if (l_file % c_filesOfFolder == 0) {
            mkdir(l_path.c_str(), 0700);
        }
        const std::string l_name = l_path + "/" + std::to_string(l_file % c_filesOfFolder) + " - Song number " +
                                   std::to_string(l_file) + ".ogg";
        const int l_descriptor = open(l_name.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        if (l_descriptor < 0 || ftruncate(l_descriptor, 3'000'000 + l_file * 13) != 0) {
            std::perror("window: cannot make the files");
        }
        close(l_descriptor);
    }
}

void MeasureSaving(const QString& i_home) {
    const QString l_shared = i_home + QStringLiteral("/shared");
    mkdir(l_shared.toLocal8Bit().constData(), 0700);
    MakeFiles(l_shared);
    d.GetType("shared_folder")->NewItem(l_shared.toStdString())->NewItem("shared_public");
    std::printf("%zu files shared\n", d.GetType("shared_file")->CountItems());

    const std::string l_store = i_home.toStdString() + "/.Tidewell";
    QTimer* const lp_timer = timerManager->FiveMinuteTimer();
    QObject::connect(lp_timer, &QTimer::timeout, lp_timer, [=] { lp_timer->start(300'000); });
    Stillness l_worst;
    for (int l_round = 0; l_round < 5; ++l_round) {
        unlink(l_store.c_str());
        lp_timer->start(0);
        const Stillness l_still = Watch([&] { return access(l_store.c_str(), F_OK) == 0; });
        l_worst.longest = std::max(l_worst.longest, l_still.longest);
    }
    struct stat l_status = {};
    stat(l_store.c_str(), &l_status);
    std::printf("saving them (%.1f MB): the window stands still for %.1f ms (wanted: 100 at most)\n",
                static_cast<double>(l_status.st_size) / 1e6, l_worst.longest);
}

} // namespace

int main(int i_count, char** ip_arguments) {
    const QTemporaryDir l_home(QDir::tempPath() + QStringLiteral("/window-XXXXXX"));
    qputenv("HOME", l_home.path().toUtf8());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication l_application(i_count, ip_arguments);
    MainWindow l_window;
    l_window.show();
    Watch([l_turns = 0]() mutable { return ++l_turns > 50; });
    MeasureRooms(l_window, "10,000 rooms come", 1);
    MeasureRooms(l_window, "their counts change", 2);
    MeasureSaving(l_home.path());
    return 0;
}
