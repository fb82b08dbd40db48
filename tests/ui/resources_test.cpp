// The pictures are found under their names and are sharp: drawn for the pixels they fill, not stretched to them.
#include <QDir>
#include <QIcon>
#include <QImage>

#include <gtest/gtest.h>

namespace {

// Of all pixels, how many are drawn on.
double Cover(const QImage& i_image) {
    int l_count = 0;
    for (int l_y = 0; l_y < i_image.height(); ++l_y) {
        for (int l_x = 0; l_x < i_image.width(); ++l_x) {
            l_count += i_image.pixelColor(l_x, l_y).alpha() > 40 ? 1 : 0;
        }
    }
    return static_cast<double>(l_count) / (i_image.width() * i_image.height());
}

QImage Picture(const QString& i_name, int i_size, qreal i_ratio) {
    return QIcon(i_name).pixmap(QSize(i_size, i_size), i_ratio).toImage();
}

} // namespace

class Resources : public testing::Test {
protected:
    Resources() {
        Q_INIT_RESOURCE(icons);
        Q_INIT_RESOURCE(flags);
    }
};

TEST_F(Resources, IconsPaintAtEverySizeAndScale) {
    for (const char* lp_name : {"add_user", "browse", "chat", "offline", "online", "remove_user", "room", "search",
                                "transfer", "users", "wishlist"}) {
        const QString l_name = QStringLiteral(":/icons/%1_icon").arg(QLatin1String(lp_name));
        for (const auto& [l_size, l_ratio] : {std::pair(16, 1.0), std::pair(32, 1.0), std::pair(16, 2.0)}) {
            const QImage l_image = Picture(l_name, l_size, l_ratio);
            ASSERT_EQ(l_image.width(), l_size * l_ratio) << lp_name;
            EXPECT_GT(Cover(l_image), 0.15) << lp_name;
        }
        const QImage l_stretched = Picture(l_name, 16, 1.0).scaled(32, 32);
        EXPECT_NE(Picture(l_name, 32, 1.0).convertToFormat(l_stretched.format()), l_stretched) << lp_name;
    }
    EXPECT_FALSE(Picture(QStringLiteral(":icons/online_icon"), 16, 1.0).isNull()) << "also without the slash";
    // Seen in one colour, the two faces still differ.
    const QImage l_online = Picture(QStringLiteral(":/icons/online_icon"), 32, 1.0);
    const QImage l_offline = Picture(QStringLiteral(":/icons/offline_icon"), 32, 1.0);
    EXPECT_GT(Cover(l_online), 1.5 * Cover(l_offline));
}

TEST_F(Resources, FlagsStandUnderTheirCodes) {
    const QStringList l_flags = QDir(QStringLiteral(":/resources/flags")).entryList();
    EXPECT_EQ(l_flags.size(), 248);
    for (const QString& l_flag : l_flags) {
        const QImage l_image(QStringLiteral(":/resources/flags/") + l_flag);
        EXPECT_FALSE(l_image.isNull()) << qPrintable(l_flag);
        EXPECT_LE(l_image.height(), 12) << qPrintable(l_flag);
    }
    for (const char* lp_code : {"eu", "je", "gb", "de", "catalonia"}) {
        EXPECT_TRUE(l_flags.contains(QLatin1String(lp_code) + QStringLiteral(".png"))) << lp_code;
    }
}
