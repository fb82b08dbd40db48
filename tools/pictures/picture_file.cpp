#include "picture_file.h"

#include <QHash>
#include <QImage>
#include <QString>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

constexpr int c_colours = 256;
constexpr int c_smallest = 0; // of Qt's measure of quality: the strongest compression

int Distance(QRgb i_a, QRgb i_b) {
    const auto l_square = [](int i_difference) { return i_difference * i_difference; };
    return l_square(qRed(i_a) - qRed(i_b)) + l_square(qGreen(i_a) - qGreen(i_b)) + l_square(qBlue(i_a) - qBlue(i_b));
}

struct Shade {
    QRgb colour;
    int pixels;
    int distance = std::numeric_limits<int>::max(); // to the nearest colour of the table
    uchar place = 0;                                // of that
};

// One colour after the other, always that whose absence would be seen most: a flag or a mark of few pixels counts as
// well as the many shades at the edges of letters.
QList<QRgb> ChooseColours(std::vector<Shade>& io_shades) {
    QList<QRgb> l_table;
    const auto l_loss = [](const Shade& i_shade) { return std::sqrt(i_shade.pixels) * i_shade.distance; };
    while (l_table.size() < c_colours) {
        const auto l_worst =
            std::max_element(io_shades.begin(), io_shades.end(),
                             [&](const Shade& i_a, const Shade& i_b) { return l_loss(i_a) < l_loss(i_b); });
        if (l_worst->distance == 0) {
            break;
        }
        const QRgb l_colour = l_worst->colour;
        for (Shade& l_shade : io_shades) {
            if (const int l_distance = Distance(l_shade.colour, l_colour); l_distance < l_shade.distance) {
                l_shade.distance = l_distance;
                l_shade.place = static_cast<uchar>(l_table.size());
            }
        }
        l_table.append(l_colour);
    }
    return l_table;
}

QImage WithFewColours(const QImage& i_image) {
    QHash<QRgb, int> l_counts;
    for (int l_y = 0; l_y < i_image.height(); ++l_y) {
        const QRgb* const lp_line = reinterpret_cast<const QRgb*>(i_image.constScanLine(l_y));
        for (int l_x = 0; l_x < i_image.width(); ++l_x) {
            ++l_counts[lp_line[l_x]];
        }
    }
    std::vector<Shade> l_shades;
    for (auto l_entry = l_counts.constBegin(); l_entry != l_counts.constEnd(); ++l_entry) {
        l_shades.push_back({l_entry.key(), l_entry.value()});
    }
    // Else the same picture would not always give the same file.
    std::sort(l_shades.begin(), l_shades.end(),
              [](const Shade& i_a, const Shade& i_b) { return i_a.colour < i_b.colour; });
    const QList<QRgb> l_table = ChooseColours(l_shades);
    QHash<QRgb, uchar> l_places;
    for (const Shade& l_shade : l_shades) {
        l_places[l_shade.colour] = l_shade.place;
    }
    QImage l_result(i_image.size(), QImage::Format_Indexed8);
    l_result.setColorTable(l_table);
    for (int l_y = 0; l_y < i_image.height(); ++l_y) {
        const QRgb* const lp_line = reinterpret_cast<const QRgb*>(i_image.constScanLine(l_y));
        uchar* const lp_result = l_result.scanLine(l_y);
        for (int l_x = 0; l_x < i_image.width(); ++l_x) {
            lp_result[l_x] = l_places.value(lp_line[l_x]);
        }
    }
    return l_result;
}

} // namespace

bool SavePicture(const QImage& i_image, const QString& i_path) {
    return WithFewColours(i_image.convertToFormat(QImage::Format_RGB32)).save(i_path, "PNG", c_smallest);
}
