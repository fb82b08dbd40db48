// The foot of the window: the state of the connection on the left; on the right what is shared, how fast files move,
// and how others can reach us. Each place has an accessible name with its text, so that a screen reader tells changes.
#pragma once

#include <QStatusBar>
#include <QString>

class QLabel;

class StatusBar : public QStatusBar {
    Q_OBJECT

public:
    explicit StatusBar(QWidget* ip_parent);

    // Sentences to show as they are; foreign parts have gone through DisplayText. i_spoken is what a screen reader
    // says, where the text itself changes too often for that.
    void ShowConnection(const QString& i_text);
    void ShowConnection(const QString& i_text, const QString& i_spoken);

    enum class Reach { Unknown, Reached, Deaf };
    void ShowListening(Reach i_reach, const QString& i_text, const QString& i_explanation);

    void ShowShares(long long i_files, long long i_folders);
    // Bytes per second.
    void ShowSpeeds(long long i_download, long long i_upload);

    // In the place of the connection, and painted at once, without the event loop; until EndWalk().
    void ShowWalk(long long i_files);
    void EndWalk();

private:
    QLabel* AddPlace(const char* ip_name);

    QLabel* mp_connection = nullptr;
    QLabel* mp_shares = nullptr;
    QLabel* mp_speeds = nullptr;
    QLabel* mp_listening = nullptr;
    QString m_connectionText;
    QString m_connectionSpoken;
    bool m_isWalking = false;
};
