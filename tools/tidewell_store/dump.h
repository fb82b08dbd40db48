// The readable text of a whole store: for each Type that has items, in name order, its items with their values, and
// below each item what it is connected to. The same store always gives the same text.
#pragma once

#include <iosfwd>

class Data;

void Dump(const Data& i_data, std::ostream& o_text);
