#include "app/process_limits.h"
#include "app/quit_signals.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QNetworkProxy>

int main(int i_count, char** ip_arguments) {
    RaiseDescriptorLimit();
    QApplication l_application(i_count, ip_arguments);
    // Qt would ask the desktop's settings, on the main thread, and send the connections to the server and to other
    // clients through a web proxy, which cannot carry them.
    QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
    QuitSignals l_quitSignals;
    MainWindow l_window;
    l_window.show();
    return QApplication::exec();
}
