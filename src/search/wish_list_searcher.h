// Repeats the enabled searches of the wish list: one at each period that the server dictates, in alphabetic order and
// round again. Before the first period has come nothing is searched.
#pragma once

#include <QObject>
#include <QTimer>

class WishListSearcher : public QObject {
    Q_OBJECT

public:
    // Sets the global, and ties itself to gp_server. The Types of settings and of the wish list exist by now.
    explicit WishListSearcher(QObject* ip_parent);
    ~WishListSearcher() override;

public Q_SLOTS:
    // A new period starts from the front; one of 0 stops the searches.
    void OnWishListWait(unsigned int i_seconds);
    void OnSearchTimerTimeout();

private:
    QTimer m_timer;
};

extern WishListSearcher* wishListSearcher;
