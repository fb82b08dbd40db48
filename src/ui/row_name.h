// The name that a row stands for, byte for byte, beside the text that it shows: what is shown may be cut or have its
// invisible characters spelled out, and is no key to anything. The tool bar's column keys find it too.
#pragma once

#include "ui/action_set_tool_bar.h"

#include <QByteArray>
#include <QListWidgetItem>
#include <QTreeWidgetItem>

#include <string>
#include <string_view>

inline QByteArray ToRowName(std::string_view i_name) {
    return QByteArray(i_name.data(), static_cast<qsizetype>(i_name.size()));
}

inline void SetRowName(QListWidgetItem& io_row, std::string_view i_name) {
    io_row.setData(c_actionKeyRole, ToRowName(i_name));
}
inline void SetRowName(QTreeWidgetItem& io_row, std::string_view i_name) {
    io_row.setData(0, c_actionKeyRole, ToRowName(i_name));
}
inline std::string RowName(const QListWidgetItem& i_row) {
    return i_row.data(c_actionKeyRole).toByteArray().toStdString();
}
inline std::string RowName(const QTreeWidgetItem& i_row) {
    return i_row.data(0, c_actionKeyRole).toByteArray().toStdString();
}
