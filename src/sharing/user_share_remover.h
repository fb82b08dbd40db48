// Takes the share lists of other users out of the store, in short slices: one may hold a million files. Main thread
// only.
#pragma once

#include "store/data.h"

#include <QObject>
#include <QTimer>

#include <deque>

class UserShareRemover : public QObject, public DataHandler {
    Q_OBJECT

public:
    UserShareRemover();

    // The user has no list from here on, and nobody else touches this one any more. A short one is gone on return.
    void Take(ItemPtr i_share);

private Q_SLOTS:
    void RemoveSlice();

private:
    std::size_t RemoveSome();
    void OnShareRemoved(Item* ip_share);

    std::deque<Item*> m_shares;
    QTimer m_slice;
};
