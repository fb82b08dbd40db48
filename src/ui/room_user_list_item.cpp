#include "ui/room_user_list_item.h"

#include "app/text.h"
#include "ui/country_flag.h"
#include "ui/display_text.h"

#include <QTreeWidget>

#include <absl/strings/ascii.h>

namespace {

constexpr int c_bytesOfK = 1024;

QString SpeedText(long long i_speed) {
    return i_speed > 0 ? QString::number(static_cast<double>(i_speed) / c_bytesOfK, 'f', 1) : QString();
}

template <typename Number>
int Compare(const Number& i_left, const Number& i_right) {
    return i_left < i_right ? -1 : i_right < i_left ? 1 : 0;
}

} // namespace

// The text is read for each comparison otherwise, and thousands of rows are compared a hundred thousand times.
QRoomUserListItemWidget::QRoomUserListItemWidget(std::string_view i_name)
    : m_name(i_name), m_sortName(CellText(i_name).toCaseFolded()) {
    setText(User, CellText(i_name));
    setTextAlignment(Files, Qt::AlignRight | Qt::AlignVCenter);
    setTextAlignment(Speed, Qt::AlignRight | Qt::AlignVCenter);
}

void QRoomUserListItemWidget::Show(std::string_view i_country, long long i_files, long long i_speed) {
    std::string l_country(i_country);
    absl::AsciiStrToLower(&l_country);
    if (m_country != l_country) {
        m_country = l_country;
        const CountryFlag l_flag = FindCountryFlag(i_country);
        setIcon(Flag, l_flag.icon);
        setToolTip(Flag, l_flag.name);
        setData(Flag, Qt::AccessibleTextRole, l_flag.name);
    }
    m_files = i_files;
    m_speed = i_speed;
    setText(Files, CommafyNumber(i_files));
    setText(Speed, SpeedText(i_speed));
    emitDataChanged(); // the order may have changed where the text has not
}

int QRoomUserListItemWidget::CompareNames(const QRoomUserListItemWidget& i_other) const {
    const int l_order = m_sortName.compare(i_other.m_sortName);
    return l_order != 0 ? l_order : m_name.compare(i_other.m_name);
}

bool QRoomUserListItemWidget::operator<(const QTreeWidgetItem& i_other) const {
    const auto& l_other = static_cast<const QRoomUserListItemWidget&>(i_other);
    int l_order = 0;
    switch (treeWidget() ? treeWidget()->sortColumn() : User) {
    case Flag:
        l_order = m_country.compare(l_other.m_country);
        break;
    case Files:
        l_order = Compare(m_files, l_other.m_files);
        break;
    case Speed:
        l_order = Compare(m_speed, l_other.m_speed);
        break;
    default:
        break;
    }
    return (l_order != 0 ? l_order : CompareNames(l_other)) < 0;
}
