#include "app/instance_lock.h"
#include "app/process_limits.h"
#include "app/quit_signals.h"
#include "app/text.h"
#include "ui/main_window.h"
#include "ui/window_style.h"

#include <QApplication>
#include <QDir>
#include <QNetworkProxy>

#include <cstdio>

namespace {

// For someone who starts the program a second time: what they want to see is the first one's window.
void ShowTheOther(const InstanceLock& i_lock) {
    if (!i_lock.CallHolder()) {
        std::fputs("Tidewell is already running in this home folder.\n", stderr);
    }
}

} // namespace

int main(int i_count, char** ip_arguments) {
    RaiseDescriptorLimit();
    QApplication l_application(i_count, ip_arguments);
    // Qt would ask the desktop's settings, on the main thread, and send the connections to the server and to other
    // clients through a web proxy, which cannot carry them.
    QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
    QuitSignals l_quitSignals;
    const InstanceLock l_lock(ToUtf8(QDir::homePath()));
    if (l_lock.IsTaken()) {
        ShowTheOther(l_lock);
        return 0;
    }
    QApplication::setStyle(new WindowStyle);
    MainWindow l_window;
    QObject::connect(&l_lock, &InstanceLock::Called, &l_window, &MainWindow::RaiseWindow);
    l_window.show();
    return QApplication::exec();
}
