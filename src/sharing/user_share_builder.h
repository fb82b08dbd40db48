// Turns the share lists that other users send into items, in short slices. The `user_share` of a user is there at once
// and gets its `user_share_loaded` when all of the list is in the store. Main thread only.
#pragma once

#include "peer/file_records.h"
#include "store/data.h"

#include <QObject>
#include <QTimer>

#include <list>
#include <string>

class UserShareBuilder : public QObject, public DataHandler {
    Q_OBJECT

public:
    UserShareBuilder();

    // For a user without a list. If the user loses the list before it is finished, no more is made of it.
    void Take(const std::string& i_user, FileInfoMap i_folders);

private Q_SLOTS:
    void MakeSlice();

private:
    // One list on its way.
    struct Job {
        Item* share;
        FileInfoMap folders;    // what is not in the store yet; the first one may have begun
        Item* folder = nullptr; // the first one's, once it has begun
    };

    void MakeNext();
    void OnListLost(ConnectionInfo& i_info);

    std::list<Job> m_jobs;
    QTimer m_slice;
};
