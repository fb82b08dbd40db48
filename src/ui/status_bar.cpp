#include "ui/status_bar.h"

#include <QLabel>

namespace {

QLabel* MakeLabel(const char* i_name) {
    QLabel* const lp_label = new QLabel;
    lp_label->setObjectName(QLatin1String(i_name));
    lp_label->setTextFormat(Qt::PlainText);
    lp_label->setContentsMargins(6, 0, 6, 0);
    return lp_label;
}

} // namespace

StatusBar::StatusBar(QWidget* ip_parent) : QStatusBar(ip_parent) {
    mp_connection = MakeLabel("connectionStatus");
    mp_listening = MakeLabel("listeningStatus");
    addWidget(mp_connection, 1);
    addPermanentWidget(mp_listening);
}

void StatusBar::ShowConnection(const QString& i_text) {
    mp_connection->setText(i_text);
}

void StatusBar::ShowListening(const QString& i_text) {
    mp_listening->setText(i_text);
}
