#include "app/process_limits.h"
#include "app/quit_signals.h"
#include "ui/main_window.h"

#include <QApplication>

int main(int i_count, char** ip_arguments) {
    RaiseDescriptorLimit();
    QApplication l_application(i_count, ip_arguments);
    QuitSignals l_quitSignals;
    MainWindow l_window;
    l_window.show();
    return QApplication::exec();
}
