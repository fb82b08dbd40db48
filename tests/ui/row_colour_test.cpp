#include "ui/row_colour.h"

#include <QImage>
#include <QPainter>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace {

QPalette Palette(const char* i_base, const char* i_alternate, const char* i_text) {
    QPalette l_palette;
    l_palette.setColor(QPalette::Base, QColor(QLatin1String(i_base)));
    l_palette.setColor(QPalette::AlternateBase, QColor(QLatin1String(i_alternate)));
    l_palette.setColor(QPalette::Text, QColor(QLatin1String(i_text)));
    return l_palette;
}

} // namespace

TEST(RowColour, ContrastIsThatOfTheFormula) {
    EXPECT_NEAR(ContrastRatio(Qt::black, Qt::white), 21.0, 0.001);
    EXPECT_NEAR(ContrastRatio(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.01);
    EXPECT_NEAR(ContrastRatio(Qt::red, Qt::white), 4.0, 0.01);
}

TEST(RowColour, IsExactOnLightAndReadableInItsHueOnDark) {
    const QPalette l_light = Palette("#ffffff", "#f0f0f0", "#101010");
    const QPalette l_dark = Palette("#1b1e20", "#31363b", "#eff0f1");
    for (const QColor& l_colour : {QColor(Qt::red), QColor(Qt::blue), QColor(Qt::darkBlue), QColor(Qt::darkGreen),
                                   QColor(Qt::gray), QColor(Qt::darkGray), QColor(128, 64, 0), QColor(1, 0, 0)}) {
        EXPECT_EQ(RowColour(l_colour, l_light), l_colour);
        const QColor l_shown = RowColour(l_colour, l_dark);
        EXPECT_GE(ContrastRatio(l_shown, l_dark.color(QPalette::Base)), 4.5) << qPrintable(l_colour.name());
        EXPECT_GE(ContrastRatio(l_shown, l_dark.color(QPalette::AlternateBase)), 4.5) << qPrintable(l_colour.name());
        EXPECT_LE(ContrastRatio(l_shown, l_dark.color(QPalette::AlternateBase)), 5.2) << "no lighter than it takes";
        EXPECT_NEAR(l_shown.hslHue(), l_colour.hslHue(), 2) << qPrintable(l_colour.name());
    }
    EXPECT_EQ(RowColour(Qt::yellow, l_dark), QColor(Qt::yellow)) << "readable as it is";
    EXPECT_EQ(RowColour(Qt::black, l_light), QColor(Qt::black));
    EXPECT_EQ(RowColour(Qt::black, l_dark), QColor(0xef, 0xf0, 0xf1));
}

TEST(RowColour, ADelegateFollowsThePalette) {
    QTreeWidget l_tree;
    l_tree.setItemDelegate(new RowColourDelegate(&l_tree));
    QTreeWidgetItem* const lp_row = new QTreeWidgetItem(&l_tree, {QString(60, QChar(0x2588))});
    lp_row->setForeground(0, QColor(Qt::black));
    // The colour in the middle of a row of full blocks.
    const auto l_painted = [&](const QPalette& i_palette) {
        l_tree.setPalette(i_palette);
        return l_tree.viewport()->grab().toImage().pixelColor(l_tree.visualItemRect(lp_row).center());
    };
    EXPECT_EQ(l_painted(Palette("#ffffff", "#f0f0f0", "#303030")), QColor(Qt::black));
    EXPECT_EQ(l_painted(Palette("#1b1e20", "#31363b", "#eff0f1")), QColor(0xef, 0xf0, 0xf1));
}
