// Plays someone's first minute with the program: the same window, driven by nobody. A search goes out, its answers are
// printed, one of them is queued, and the download is watched until it has arrived. For machines without a display.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <vector>

class MainWindow;

struct NewcomerOptions {
    QString search;        // what is searched
    QStringList users;     // who must answer; the first of them has the file
    QString name;          // of the file to download
    QString file;          // where the finished download must lie
    QString sha256;        // and its digest, in hexadecimal
    QString pictureFolder; // for pictures of the window, made if missing
    int secondsAtMost = 120;
};

// Goes through its steps in order, each as soon as it is true, prints them, and ends the event loop: with status 0
// after the last one, with 1 when one failed or the time is over.
class Newcomer : public QObject {
    Q_OBJECT

public:
    Newcomer(MainWindow& i_window, NewcomerOptions i_options);

    // A signal may end the loop before that.
    bool HasSeenAll() const { return m_next == m_steps.size(); }

private:
    enum class Outcome { NotYet, Done, Failed };
    struct Step {
        QString what;
        std::function<Outcome()> look;
    };

    void OnLook();
    void End(int i_status);

    Outcome LookForLogin();
    Outcome LookForUsers();
    Outcome LookForAnswers();
    Outcome QueueDownload();
    Outcome LookForProgress();
    Outcome LookForCompletion();
    Outcome CheckDigest();
    Outcome TakePictures();
    bool SavePicture(const QString& i_name);

    MainWindow& m_window;
    NewcomerOptions m_options;
    std::vector<Step> m_steps;
    std::size_t m_next = 0;
    qint64 m_searchedAt = -1; // on m_clock; -1 before the first search
    int m_pictures = 0;       // taken so far, one of each page
    QElapsedTimer m_clock;
    QTimer m_lookTimer;
};
