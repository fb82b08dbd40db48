// From results in the store to rows in the tree of their tab: a row for each user, under it one for each folder, under
// that one for each file, each with its node. The filter of the tab holds for the new rows from the start.
#pragma once

#include "store/data.h"

#include <span>

class QTreeWidgetItem;

// Places files, search_result items of one answer, in the tree of the tab, a search_results_widget. They come into the
// view together, with one notice a folder: alone, each would cost a walk over all rows that are hidden or expanded.
void PlaceSearchResults(ItemPtr i_widget, std::span<Item* const> i_results);

// The user row of any row of a result tree; null for a row that is none or whose node is gone.
QTreeWidgetItem* UserRowOfNode(QTreeWidgetItem* ip_row);
