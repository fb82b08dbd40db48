#pragma once

// Creates the Types that tie searches and wishes to their widgets: each holds an address of this run, so that a row is
// found from an item and an item from a row. Needs the Types of peers and of the wish list. None is saved.
void CreateSearchFormTypes();
