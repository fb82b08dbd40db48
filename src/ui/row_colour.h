// The colours that rows have by their state ("red" for an error) were chosen for dark text on white. On a dark palette
// the same hue is made light enough to be read.
#pragma once

#include <QColor>
#include <QStyledItemDelegate>

class QPalette;

// The text colour itself where the palette's rows are light. Where they are dark: black is the palette's text, and any
// other colour is lightened, in its hue, as far as it takes to stand at 4.5:1 against plain and alternate rows.
QColor RowColour(const QColor& i_colour, const QPalette& i_palette);

// How far apart two opaque colours are in lightness, from 1 to 21, by the formula of the WCAG.
double ContrastRatio(const QColor& i_one, const QColor& i_other);

// Paints the foreground of items through RowColour, with the palette of the moment: forms give their rows the plain
// colours and need not care when the palette changes. `tree->setItemDelegate(new RowColourDelegate(tree))`.
class RowColourDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* op_option, const QModelIndex& i_index) const override;
};
