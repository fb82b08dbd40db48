#include "ui/row_colour.h"
#include "ui/window_style.h"

#include <QImage>
#include <QPainter>
#include <QStyleOption>
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

TEST(WindowStyle, BoxesToCheckHaveAFrameThatIsSeenOnDark) {
    const WindowStyle l_style(QStringLiteral("Fusion"));
    const QPalette l_dark = Palette("#1b1e20", "#31363b", "#eff0f1");
    const auto l_framePixels = [&](QStyle::PrimitiveElement i_element, QStyleOption&& i_option) {
        QImage l_image(16, 16, QImage::Format_RGB32);
        l_image.fill(l_dark.color(QPalette::Base));
        i_option.palette = l_dark;
        i_option.palette.setColor(QPalette::Window, QColor(0x2a, 0x2e, 0x32));
        i_option.rect = l_image.rect();
        i_option.state = QStyle::State_Enabled | QStyle::State_Off;
        QPainter l_painter(&l_image);
        l_style.drawPrimitive(i_element, &i_option, &l_painter, nullptr);
        l_painter.end();
        int l_count = 0;
        for (int l_x = 0; l_x < l_image.width(); ++l_x) {
            for (int l_y = 0; l_y < l_image.height(); ++l_y) {
                l_count += ContrastRatio(l_image.pixelColor(l_x, l_y), l_dark.color(QPalette::Base)) >= 3 ? 1 : 0;
            }
        }
        return l_count;
    };
    EXPECT_GE(l_framePixels(QStyle::PE_IndicatorCheckBox, QStyleOptionButton()), 40);
    EXPECT_GE(l_framePixels(QStyle::PE_IndicatorItemViewItemCheck, QStyleOptionViewItem()), 40);
}
