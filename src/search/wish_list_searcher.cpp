#include "search/wish_list_searcher.h"

#include <algorithm>
#include <limits>

#include "app/log.h"
#include "app/text.h"
#include "net/server.h"
#include "store/data.h"

WishListSearcher* wishListSearcher = nullptr;

namespace {

// Where in the sorted list the next search stands. It lasts as long as the run.
constexpr char nextIndex[] = "wish_list_search_index";
constexpr char period[] = "wish_list_wait"; // seconds

void SetRunValue(const char* ip_key, const Value& i_value) {
    d.GetType("vglobal")->GetItem(ip_key)->Connect(d.GetType("global_value")->GetItem(i_value));
}

void LogWish(const QString& i_text) {
    Log(QStringLiteral("Wish List"), 1, i_text, ItemPtr());
}

} // namespace

WishListSearcher::WishListSearcher(QObject* ip_parent) : QObject(ip_parent) {
    wishListSearcher = this;
    connect(gp_server, &Server::WishListWait, this, &WishListSearcher::OnWishListWait);
    SetRunValue(nextIndex, 0);
    connect(&m_timer, &QTimer::timeout, this, &WishListSearcher::OnSearchTimerTimeout);
}

WishListSearcher::~WishListSearcher() {
    wishListSearcher = nullptr;
}

void WishListSearcher::OnWishListWait(unsigned int i_seconds) {
    SetRunValue(period, i_seconds);
    m_timer.stop();
    const long long l_milliseconds = i_seconds * 1000LL;
    LogWish(QStringLiteral("Wish list wait period set to %1 milliseconds").arg(l_milliseconds));
    if (l_milliseconds == 0)
        return; // else the timer would never rest
    // A timer counts no further than this, some 24 days.
    m_timer.start(static_cast<int>(std::min<long long>(l_milliseconds, std::numeric_limits<int>::max())));
}

// A list that has shrunk since the last search leaves an index beyond its end: the steps go round.
void WishListSearcher::OnSearchTimerTimeout() {
    const ItemPtr l_enabled = d.GetType("wish_list_item_enabled")->GetGlobalNullItem();
    const ItemList l_items = l_enabled.GetItems("wish_list_item").SortAlphabetic(true);
    if (l_items.empty())
        return;
    const auto l_index =
        static_cast<std::size_t>(d.GetType("vglobal")->HasItem(nextIndex)["global_value"].ToInt64().value_or(0));
    const std::string l_text = l_items[l_index % l_items.size()]->AsString();
    gp_server->FileSearch(l_text, true);
    LogWish(QStringLiteral("Sent wish list search: %1").arg(ToQString(l_text)));
    SetRunValue(nextIndex, l_index + 1 < l_items.size() ? l_index + 1 : 0);
}
