// Answers on their way into their tabs. A few are placed at once; of a burst, or of one huge answer, so many a turn
// that the window stays alive, the rest when it has drawn.
#pragma once

#include "store/data.h"

#include <QObject>
#include <QTimer>

#include <deque>
#include <vector>

class SearchArrivals : public QObject, public DataHandler {
    Q_OBJECT

public:
    explicit SearchArrivals(QObject* ip_parent);

    // i_answer: a search_results of a request that has this tab, a search_results_widget.
    void Take(ItemPtr i_widget, ItemPtr i_answer);
    // What waits for that tab is forgotten: it closes.
    void Forget(ItemPtr i_widget);
    bool IsEmpty() const { return m_waiting.empty(); }

Q_SIGNALS:
    void Placed(ItemPtr i_widget); // some of what waited for it

private:
    struct Arrival {
        ItemPtr widget;
        ItemPtr answer;
        std::vector<Item*> results; // of the answer, in its order
        std::size_t placed = 0;     // of them
    };

    void PlaceSlice();
    void PlaceSome(Arrival& io_arrival);
    void OnPauseOver();
    void OnResultsRemoved(Item* ip_answer);

    std::deque<Arrival> m_waiting;
    QTimer m_pause;                 // while it runs, only what is left of the budget may be used
    double m_spentMilliseconds = 0; // since the last pause
};
