// Plays someone's first minutes with the program: its own window, by mouse and keys. The newcomer finds the other
// users, searches, downloads what was found and checks it, looks through what a user shares, talks, and takes a picture
// of each page. For machines without a display.
#pragma once

#include "player.h"

#include <QElapsedTimer>
#include <QString>
#include <QStringList>

#include <vector>

class MainWindow;
class QLineEdit;
class QTreeWidget;
class QTreeWidgetItem;

struct NewcomerOptions {
    QString search;        // what is searched
    QStringList users;     // who must answer; the first of them has the file
    QString name;          // of the file, which is downloaded with its folder
    QString file;          // where the finished download must lie
    QString sha256;        // and its digest, in hexadecimal
    QString pictureFolder; // for pictures of the window, made if missing
    int secondsAtMost = 120;
};

class Newcomer {
public:
    // Both outlive the newcomer.
    Newcomer(MainWindow& i_window, Player& i_player, NewcomerOptions i_options);

    // In their order, for as long as the newcomer lives.
    std::vector<Step> Steps();

private:
    // Of the pages; null where there is none of the name.
    template <class Widget>
    Widget* Find(const char* ip_name, const char* ip_page = "tabControl") const;
    // The line of a dialog that is open and active, or null.
    QLineEdit* DialogEdit(const char* ip_name) const;
    QTreeWidgetItem* ResultOf(const QString& i_user) const;
    QTreeWidgetItem* WantedResult() const;

    bool OpenAddUser();
    Outcome AddUsers();
    bool Search();
    Outcome LookForAnswers();
    void NoteAnswers() const;
    bool DownloadFolder();
    bool DownloadFile();
    Outcome FollowDownloads();
    Outcome CheckDigest() const;
    bool ChooseFromMenu(const QString& i_entry);
    Outcome LookThroughShare() const;
    bool TurnToRoom() const;
    Outcome LookForUsersOfRoom() const;
    bool Say(const char* ip_page, const QString& i_text);
    Outcome LookForChat(const char* ip_page, const QString& i_text) const;
    bool TurnToLog() const;
    Outcome TakePictures();
    bool SavePicture(QWidget& i_window, const QString& i_name);
    bool OpenStoreBrowser();
    Outcome LookThroughStore();

    MainWindow& m_window;
    Player& m_player;
    const NewcomerOptions m_options;
    QElapsedTimer m_sinceTry; // to add a user, or to search
    QStringList m_downloads;  // as printed last
    QStringList m_pictures;   // taken so far
};
