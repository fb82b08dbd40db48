#include "palettes.h"

#include <QColor>

namespace {

QPalette MakePalette(const QColor& i_window, const QColor& i_base, const QColor& i_button, const QColor& i_text,
                     const QColor& i_disabled) {
    QPalette l_palette(i_button, i_window);
    l_palette.setColor(QPalette::Base, i_base);
    l_palette.setColor(QPalette::AlternateBase, i_window);
    l_palette.setColor(QPalette::WindowText, i_text);
    l_palette.setColor(QPalette::Text, i_text);
    l_palette.setColor(QPalette::ButtonText, i_text);
    l_palette.setColor(QPalette::ToolTipBase, i_base);
    l_palette.setColor(QPalette::ToolTipText, i_text);
    l_palette.setColor(QPalette::PlaceholderText, i_disabled);
    l_palette.setColor(QPalette::Highlight, QColor(0x2A, 0x6F, 0xB0));
    l_palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const QPalette::ColorRole l_role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        l_palette.setColor(QPalette::Disabled, l_role, i_disabled);
    }
    return l_palette;
}

} // namespace

QPalette LightPalette() {
    return MakePalette(QColor(0xEF, 0xEF, 0xEF), Qt::white, QColor(0xE4, 0xE4, 0xE4), Qt::black,
                       QColor(0x80, 0x80, 0x80));
}

QPalette DarkPalette() {
    QPalette l_palette = MakePalette(QColor(0x2B, 0x2B, 0x2B), QColor(0x1E, 0x1E, 0x1E), QColor(0x38, 0x38, 0x38),
                                     QColor(0xE6, 0xE6, 0xE6), QColor(0x88, 0x88, 0x88));
    l_palette.setColor(QPalette::Link, QColor(0x6A, 0xB0, 0xF3));
    return l_palette;
}
