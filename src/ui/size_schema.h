// The Types that remember sizes: per name a window, a tree or a splitter, and the numbers that belong to it.
#pragma once

// Creates them in `d` and registers with `dataSaver` all but those that hold the addresses of live widgets. Call once.
void CreateSizeTypes();
