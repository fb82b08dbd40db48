#include "ui/window_place.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace {

constexpr QSize c_smallest(120, 80);
// What of the upper edge must be on a screen, for the hand to drag the window by.
constexpr QSize c_grip(64, 16);
constexpr int c_edgeHeight = 32;

bool IsWithinReach(const QRect& i_window) {
    const QRect l_edge(i_window.topLeft(), QSize(i_window.width(), c_edgeHeight));
    const QList<QScreen*> l_screens = QGuiApplication::screens();
    return std::any_of(l_screens.cbegin(), l_screens.cend(), [&](const QScreen* ip_screen) {
        const QRect l_seen = ip_screen->availableGeometry().intersected(l_edge);
        return l_seen.width() >= c_grip.width() && l_seen.height() >= c_grip.height();
    });
}

// The start of a stretch of that length which fits between the two borders, or starts at the first.
int Fit(int i_start, int i_length, int i_first, int i_last) {
    return std::max(i_first, std::min(i_start, i_last + 1 - i_length));
}

} // namespace

// A window may well be larger than the screen of today; but each pixel costs memory, and what is far beyond any screen
// was never asked for.
QSize BearableSize(const QSize& i_size) {
    QSize l_largest(4096, 4096);
    if (const QScreen* const lp_screen = QGuiApplication::primaryScreen()) {
        l_largest = l_largest.expandedTo(2 * lp_screen->virtualSize());
    }
    return i_size.expandedTo(c_smallest).boundedTo(l_largest);
}

QPoint VisiblePlace(const QRect& i_window) {
    const QScreen* const lp_screen = QGuiApplication::primaryScreen();
    if (!lp_screen || IsWithinReach(i_window)) {
        return i_window.topLeft();
    }
    const QRect l_room = lp_screen->availableGeometry();
    return {Fit(i_window.x(), i_window.width(), l_room.left(), l_room.right()),
            Fit(i_window.y(), i_window.height(), l_room.top(), l_room.bottom())};
}
