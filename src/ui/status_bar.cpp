#include "ui/status_bar.h"

#include "app/text.h"

#include <QLabel>
#include <QLocale>

namespace {

QLabel* MakeLabel(const char* ip_name) {
    QLabel* const lp_label = new QLabel;
    lp_label->setObjectName(QLatin1String(ip_name));
    lp_label->setTextFormat(Qt::PlainText);
    lp_label->setContentsMargins(6, 0, 6, 0);
    return lp_label;
}

void SetText(QLabel* ip_label, const QString& i_text, const QString& i_spoken) {
    if (ip_label->text() != i_text) {
        ip_label->setText(i_text);
    }
    if (ip_label->accessibleName() != i_spoken) {
        ip_label->setAccessibleName(i_spoken);
    }
}

// CommafyNumber leaves out zero.
QString Count(long long i_number) {
    return i_number > 0 ? CommafyNumber(i_number) : QStringLiteral("0");
}

QString Speed(long long i_bytesPerSecond) {
    constexpr double c_kibibyte = 1024;
    const double l_kibibytes = static_cast<double>(i_bytesPerSecond) / c_kibibyte;
    return l_kibibytes < c_kibibyte
               ? StatusBar::tr("%1 KiB/s").arg(QLocale().toString(l_kibibytes, 'f', 1))
               : StatusBar::tr("%1 MiB/s").arg(QLocale().toString(l_kibibytes / c_kibibyte, 'f', 1));
}

QString Mark(StatusBar::Reach i_reach) {
    switch (i_reach) {
    case StatusBar::Reach::Unknown:
        return QStringLiteral("○"); // an empty ring
    case StatusBar::Reach::Reached:
        return QStringLiteral("✓"); // a check mark
    case StatusBar::Reach::Deaf:
        return QStringLiteral("⚠"); // a warning sign
    }
    return {};
}

} // namespace

StatusBar::StatusBar(QWidget* ip_parent) : QStatusBar(ip_parent) {
    setAccessibleName(tr("Status"));
    mp_connection = MakeLabel("connectionStatus");
    // Long words are cut at the window's edge; they must not make the window wider.
    mp_connection->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    addWidget(mp_connection, 1);
    mp_shares = AddPlace("sharesStatus");
    mp_speeds = AddPlace("speedStatus");
    mp_listening = AddPlace("listeningStatus");
    ShowShares(0, 0);
    ShowSpeeds(0, 0);
}

QLabel* StatusBar::AddPlace(const char* ip_name) {
    QLabel* const lp_label = MakeLabel(ip_name);
    addPermanentWidget(lp_label);
    return lp_label;
}

void StatusBar::ShowConnection(const QString& i_text) {
    ShowConnection(i_text, i_text);
}

void StatusBar::ShowConnection(const QString& i_text, const QString& i_spoken) {
    m_connectionText = i_text;
    m_connectionSpoken = tr("Connection: %1").arg(i_spoken);
    if (!m_isWalking) {
        SetText(mp_connection, m_connectionText, m_connectionSpoken);
    }
}

void StatusBar::ShowListening(Reach i_reach, const QString& i_text, const QString& i_explanation) {
    const QString l_text = QStringLiteral("%1 %2").arg(Mark(i_reach), i_text);
    SetText(mp_listening, l_text, tr("Reachability: %1. %2").arg(i_text, i_explanation));
    mp_listening->setToolTip(i_explanation);
}

void StatusBar::ShowShares(long long i_files, long long i_folders) {
    const QString l_text = tr("%1 files in %2 folders shared").arg(Count(i_files), Count(i_folders));
    SetText(mp_shares, l_text, l_text);
}

void StatusBar::ShowSpeeds(long long i_download, long long i_upload) {
    SetText(mp_speeds, QStringLiteral("↓ %1  ↑ %2").arg(Speed(i_download), Speed(i_upload)),
            tr("Downloading at %1, uploading at %2").arg(Speed(i_download), Speed(i_upload)));
}

// The label is as wide as it can be and keeps its place, so its text may change without the layout's help.
void StatusBar::ShowWalk(long long i_files) {
    const QString l_spoken = tr("Looking through the shared folders");
    m_isWalking = true;
    SetText(mp_connection, tr("Looking through the shared folders: %1 files so far").arg(Count(i_files)), l_spoken);
    mp_connection->repaint();
}

void StatusBar::EndWalk() {
    m_isWalking = false;
    SetText(mp_connection, m_connectionText, m_connectionSpoken);
}
