// Where a window of a remembered geometry opens so that its user can see and take hold of it: screens come and go
// between two runs, and a damaged store file holds any number.
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

// The size itself unless it is absurd: below what can be taken hold of, or far beyond the screens.
QSize BearableSize(const QSize& i_size);
// The top left corner of the window, as long as part of its upper edge lies on some screen; otherwise the nearest place
// on the primary screen.
QPoint VisiblePlace(const QRect& i_window);
