#pragma once

#include <QLayout>

// For the layout of what fills a tab. Tabs have no frame: nothing stands in from the sides, and only the tabs
// themselves are kept away from.
inline void UseWholeTab(QLayout* ip_layout) {
    constexpr int c_belowTabs = 6;
    ip_layout->setContentsMargins(0, c_belowTabs, 0, 0);
}
