#include "ui/user_list_name_rows.h"

#include "ui/display_text.h"
#include "ui/row_name.h"

#include <QListWidget>

namespace {

// The first row that does not go before the text.
int PlaceOf(const QListWidget* ip_list, const QString& i_text) {
    int l_low = 0;
    int l_high = ip_list->count();
    while (l_low < l_high) {
        const int l_middle = l_low + (l_high - l_low) / 2;
        if (ip_list->item(l_middle)->text().compare(i_text, Qt::CaseInsensitive) < 0) {
            l_low = l_middle + 1;
        } else {
            l_high = l_middle;
        }
    }
    return l_low;
}

} // namespace

void PrepareNameList(QListWidget* ip_list) {
    ip_list->setTextElideMode(Qt::ElideRight);
    ip_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    ip_list->setUniformItemSizes(true);
}

QListWidgetItem* AddNameRow(QListWidget* ip_list, std::string_view i_name) {
    QListWidgetItem* const lp_row = new QListWidgetItem(CellText(i_name));
    SetRowName(*lp_row, i_name);
    ip_list->insertItem(PlaceOf(ip_list, lp_row->text()), lp_row);
    return lp_row;
}

QListWidgetItem* FindNameRow(const QListWidget* ip_list, std::string_view i_name) {
    for (int l_row = 0; l_row < ip_list->count(); ++l_row) {
        if (RowName(*ip_list->item(l_row)) == i_name) {
            return ip_list->item(l_row);
        }
    }
    return nullptr;
}
