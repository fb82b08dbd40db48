#include "transfers/pace.h"

#include <algorithm>
#include <limits>

namespace {

constexpr long long kMost = std::numeric_limits<long long>::max();
constexpr long long kSlack = 1000;        // bytes
constexpr long long kShortestPause = 100; // milliseconds
constexpr long long kMillisecondsASecond = 1000;

} // namespace

std::chrono::milliseconds PauseBeforeBlock(int i_limit, std::chrono::milliseconds i_elapsed, long long i_bytes) {
    using std::chrono::milliseconds;
    const long long l_elapsed = i_elapsed.count();
    if (i_limit <= 0 || l_elapsed <= 0) {
        return milliseconds(0);
    }
    const long long l_rate = i_limit * 1024LL;
    if (l_elapsed > (kMost - kSlack) / l_rate) {
        return milliseconds(0); // a budget beyond any file
    }
    const long long l_budget = l_elapsed * l_rate / kMillisecondsASecond;
    if (i_bytes < l_budget + kSlack) {
        return milliseconds(0);
    }
    const long long l_ahead = std::min(i_bytes - l_budget, kMost / kMillisecondsASecond);
    const long long l_pause = l_ahead * kMillisecondsASecond / l_rate;
    return milliseconds(l_pause >= kShortestPause ? l_pause : 0);
}

int AverageRate(long long i_bytes, std::chrono::milliseconds i_elapsed) {
    const long long l_elapsed = i_elapsed.count();
    if (l_elapsed <= 0 || i_bytes <= 0) {
        return 0;
    }
    const long long l_rate = std::min(i_bytes, kMost / kMillisecondsASecond) * kMillisecondsASecond / l_elapsed;
    return static_cast<int>(std::min<long long>(l_rate, std::numeric_limits<int>::max()));
}
