#include "ui/row_colour.h"

#include <QPalette>

#include <algorithm>
#include <cmath>

namespace {

constexpr double c_readable = 4.5;

double Linear(float i_channel) {
    const double l_channel = i_channel;
    return l_channel <= 0.04045 ? l_channel / 12.92 : std::pow((l_channel + 0.055) / 1.055, 2.4);
}

double Luminance(const QColor& i_colour) {
    return 0.2126 * Linear(i_colour.redF()) + 0.7152 * Linear(i_colour.greenF()) + 0.0722 * Linear(i_colour.blueF());
}

double Contrast(double i_one, double i_other) {
    return (std::max(i_one, i_other) + 0.05) / (std::min(i_one, i_other) + 0.05);
}

bool IsBlack(const QColor& i_colour) {
    return i_colour.red() == 0 && i_colour.green() == 0 && i_colour.blue() == 0;
}

} // namespace

double ContrastRatio(const QColor& i_one, const QColor& i_other) {
    return Contrast(Luminance(i_one), Luminance(i_other));
}

QColor RowColour(const QColor& i_colour, const QPalette& i_palette) {
    const double l_row = Luminance(i_palette.color(QPalette::Base));
    const bool l_isLight = Contrast(l_row, 0) >= Contrast(l_row, 1);
    if (l_isLight || !i_colour.isValid()) {
        return i_colour;
    }
    if (IsBlack(i_colour)) {
        return i_palette.color(QPalette::Text);
    }
    const double l_lightestRow = std::max(l_row, Luminance(i_palette.color(QPalette::AlternateBase)));
    const QColor l_start = i_colour.toHsl();
    QColor l_result = i_colour;
    // In steps that the eye does not tell apart; at the top stands white.
    constexpr int l_step = 2;
    for (int l_lightness = l_start.lightness();
         Contrast(Luminance(l_result), l_lightestRow) < c_readable && l_lightness < 255;) {
        l_lightness = std::min(l_lightness + l_step, 255);
        l_result = QColor::fromHsl(l_start.hslHue(), l_start.hslSaturation(), l_lightness, l_start.alpha()).toRgb();
    }
    return l_result;
}

void RowColourDelegate::initStyleOption(QStyleOptionViewItem* op_option, const QModelIndex& i_index) const {
    const QPalette l_palette = op_option->palette; // in which the base class puts the plain colour
    QStyledItemDelegate::initStyleOption(op_option, i_index);
    const QVariant l_foreground = i_index.data(Qt::ForegroundRole);
    if (l_foreground.isValid()) {
        const QColor l_colour = l_foreground.value<QBrush>().color();
        op_option->palette.setColor(QPalette::Text, RowColour(l_colour, l_palette));
    }
}
