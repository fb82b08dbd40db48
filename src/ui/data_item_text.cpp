#include "ui/data_item_text.h"

#include "app/text.h"
#include "store/data.h"
#include "ui/display_text.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

// As many for every password.
const QString c_dots = QString(8, QChar(0x2022));

bool IsPassword(Item* ip_setting) {
    return ip_setting->AsView() == "password";
}

} // namespace

// A value that no setting has lingers until the next sweep; it may be the password of a minute ago.
bool IsSecret(const Item& i_item) {
    if (i_item.GetType()->GetName() != "global_value") {
        return false;
    }
    const Data& l_data = *i_item.GetType()->GetData();
    if (!l_data.FindType("global") || !l_data.FindType("vglobal")) {
        return false;
    }
    const ItemSet l_settings = i_item.GetItems("global");
    return l_settings.empty() ? !i_item.IsConnected("vglobal")
                              : std::any_of(l_settings.begin(), l_settings.end(), IsPassword);
}

QString ItemText(const Item& i_item) {
    return IsSecret(i_item) ? c_dots : CellText(i_item.AsView());
}

QString LabelledItemText(const Item& i_item) {
    const QString l_type = CellText(i_item.GetType()->GetName());
    return i_item.GetType()->IsNull()
               ? QCoreApplication::translate("DataDialog", "[%1, null]").arg(l_type)
               : QCoreApplication::translate("DataDialog", "[%1] %2").arg(l_type, ItemText(i_item));
}

QString ItemFilterText(const Item& i_item) {
    return IsSecret(i_item) ? c_dots : ToQString(i_item.AsView());
}
