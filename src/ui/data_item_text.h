// How the store browser shows an item. The password is never shown, and since one item may be the value of several
// settings, neither is any value that the password has or may have had.
#pragma once

#include <QString>

class Item;

// Whether the value is, or may have been, the password.
bool IsSecret(const Item& i_item);
// The value as a cell shows it: cut and with what is invisible made visible, or dots.
QString ItemText(const Item& i_item);
// In the tree: with the Type's name before it.
QString LabelledItemText(const Item& i_item);
// What a filter is held against: the whole value, or the same dots.
QString ItemFilterText(const Item& i_item);
