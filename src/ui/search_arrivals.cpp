#include "ui/search_arrivals.h"

#include "ui/search_placement.h"

#include <QElapsedTimer>

#include <algorithm>
#include <chrono>

namespace {

// A round: placing until the budget is used up, then a pause in which the window draws and everything else is done.
// What the view does about an arrival (it draws, and finds the places of all rows anew) counts against the budget and
// makes the pause longer.
constexpr double c_budgetMilliseconds = 35;
constexpr double c_drawMilliseconds = 4;
constexpr std::size_t c_rowsAMillisecond = 2500; // of finding places
constexpr std::size_t c_step = 256;              // results between two looks at the clock

// Of a tree with so many rows: that the view is not at work for more than a quarter of the time.
std::chrono::milliseconds PauseFor(std::size_t i_rows) {
    constexpr std::size_t l_longest = 1000;
    return std::chrono::milliseconds(50 + std::min(i_rows / 1000, l_longest));
}

} // namespace

SearchArrivals::SearchArrivals(QObject* ip_parent) : QObject(ip_parent) {
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &SearchArrivals::OnPauseOver);
    d.GetType("search_results")->m_itemRemoved.AddHandler(MakeHandler(this, &SearchArrivals::OnResultsRemoved));
}

void SearchArrivals::Take(ItemPtr i_widget, ItemPtr i_answer) {
    const ItemSet l_results = i_answer.GetItems("search_result");
    m_waiting.push_back({i_widget, i_answer, {l_results.begin(), l_results.end()}});
    if (m_spentMilliseconds < c_budgetMilliseconds) {
        PlaceSlice();
    }
}

void SearchArrivals::Forget(ItemPtr i_widget) {
    std::erase_if(m_waiting, [i_widget](const Arrival& i_arrival) { return i_arrival.widget == i_widget; });
}

void SearchArrivals::OnResultsRemoved(Item* ip_answer) {
    std::erase_if(m_waiting, [ip_answer](const Arrival& i_arrival) { return i_arrival.answer == ip_answer; });
}

void SearchArrivals::PlaceSlice() {
    QElapsedTimer l_clock;
    l_clock.start();
    const double l_before = m_spentMilliseconds;
    while (!m_waiting.empty() && m_spentMilliseconds < c_budgetMilliseconds) {
        PlaceSome(m_waiting.front());
        m_spentMilliseconds = l_before + static_cast<double>(l_clock.nsecsElapsed()) / 1e6;
    }
    // One turn of the event loop later, for all that this one has placed.
    const std::size_t l_rows = d.GetType("search_result_node")->CountItems();
    m_spentMilliseconds += c_drawMilliseconds + static_cast<double>(l_rows) / c_rowsAMillisecond;
    if (!m_pause.isActive()) {
        m_pause.start(PauseFor(l_rows));
    }
}

void SearchArrivals::PlaceSome(Arrival& io_arrival) {
    const std::size_t l_count = std::min(c_step, io_arrival.results.size() - io_arrival.placed);
    PlaceSearchResults(io_arrival.widget, std::span(io_arrival.results).subspan(io_arrival.placed, l_count));
    io_arrival.placed += l_count;
    const ItemPtr l_widget = io_arrival.widget;
    if (io_arrival.placed == io_arrival.results.size()) {
        m_waiting.pop_front();
    }
    Q_EMIT Placed(l_widget);
}

void SearchArrivals::OnPauseOver() {
    m_spentMilliseconds = 0;
    if (!m_waiting.empty()) {
        PlaceSlice();
    }
}
