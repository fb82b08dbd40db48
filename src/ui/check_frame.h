#pragma once

#include <QPalette>

// For what draws a check box in a list: styles frame one in a shade of the window's colour, which cannot be seen on a
// dark list.
inline void FrameOnDarkList(QPalette& io_palette) {
    if (io_palette.color(QPalette::Base).lightness() < io_palette.color(QPalette::Text).lightness()) {
        io_palette.setColor(QPalette::Window, io_palette.color(QPalette::Text));
    }
}
