// The time from the start of the process to a painted window, with an empty store, beside a bare QMainWindow with as
// many tabs in the same run. Both are started in turn, each in a process and a home folder of its own.
//
//   startup [ROUNDS]

#include "ui/main_window.h"
#include "ui/window_style.h"

#include <QApplication>
#include <QProcess>
#include <QTabWidget>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

using Milliseconds = double;
constexpr int c_pages = 8;

// Ends the process as soon as everything that is to be seen at first has been painted.
class FirstPaint : public QObject {
public:
    explicit FirstPaint(QWidget* ip_window) : mp_window(ip_window) { ip_window->installEventFilter(this); }

    bool eventFilter(QObject* ip_object, QEvent* ip_event) override {
        if (ip_object == mp_window && ip_event->type() == QEvent::Paint) {
            QMetaObject::invokeMethod(
                qApp, [] { _exit(0); }, Qt::QueuedConnection);
        }
        return false;
    }

private:
    QWidget* mp_window;
};

std::unique_ptr<QMainWindow> BareWindow() {
    auto lp_window = std::make_unique<QMainWindow>();
    QTabWidget* const lp_tabs = new QTabWidget;
    for (int l_page = 0; l_page < c_pages; ++l_page) {
        lp_tabs->addTab(new QWidget, QStringLiteral("Page %1").arg(l_page));
    }
    lp_window->setCentralWidget(lp_tabs);
    lp_window->resize(1000, 600);
    return lp_window;
}

int Show(const char* ip_which, int i_count, char** ip_arguments) {
    QApplication l_application(i_count, ip_arguments);
    std::unique_ptr<QMainWindow> lp_window;
    if (std::strcmp(ip_which, "bare") == 0) {
        lp_window = BareWindow();
    } else {
        QApplication::setStyle(new WindowStyle);
        lp_window = std::make_unique<MainWindow>();
    }
    FirstPaint l_firstPaint(lp_window.get());
    lp_window->show();
    return QApplication::exec();
}

Milliseconds TimeStart(const QString& i_program, const char* ip_which) {
    const QTemporaryDir l_home;
    QProcess l_process;
    QProcessEnvironment l_environment = QProcessEnvironment::systemEnvironment();
    l_environment.insert(QStringLiteral("HOME"), l_home.path());
    l_process.setProcessEnvironment(l_environment);
    l_process.setStandardErrorFile(QProcess::nullDevice());
    const auto l_start = std::chrono::steady_clock::now();
    l_process.start(i_program, {QLatin1String(ip_which)});
    l_process.waitForFinished(-1);
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - l_start).count();
}

// The lower quartile: what else the machine does makes times longer, never shorter.
Milliseconds Typical(std::vector<Milliseconds> i_times) {
    const auto l_quarter = i_times.begin() + static_cast<std::ptrdiff_t>(i_times.size() / 4);
    std::nth_element(i_times.begin(), l_quarter, i_times.end());
    return *l_quarter;
}

} // namespace

int main(int i_count, char** ip_arguments) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const char* const lp_first = i_count > 1 ? ip_arguments[1] : "15";
    if (std::strcmp(lp_first, "bare") == 0 || std::strcmp(lp_first, "full") == 0) {
        return Show(lp_first, i_count, ip_arguments);
    }
    const int l_rounds = std::max(1, std::atoi(lp_first));
    const QString l_program = QString::fromLocal8Bit(ip_arguments[0]);
    std::vector<Milliseconds> l_bare, l_full;
    TimeStart(l_program, "full"); // warms the cache of the disk
    for (int l_round = 0; l_round < l_rounds; ++l_round) {
        l_bare.push_back(TimeStart(l_program, "bare"));
        l_full.push_back(TimeStart(l_program, "full"));
    }
    const Milliseconds l_bareTime = Typical(l_bare);
    const Milliseconds l_fullTime = Typical(l_full);
    std::printf("bare window with %d tabs  %7.1f ms\n", c_pages, l_bareTime);
    std::printf("this program's window    %7.1f ms  %.2f times (wanted: 1.5 at most)\n", l_fullTime,
                l_fullTime / l_bareTime);
    return l_fullTime <= 1.5 * l_bareTime ? 0 : 1;
}
