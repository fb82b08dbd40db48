#pragma once

#include <QString>
#include <QTreeWidgetItem>

#include <string>
#include <string_view>

// A row of a room's user list. Sorts by number in the columns of numbers, by country in that of flags, else by name
// without regard to case; equal ones by name. Not yet in a list when made, so that a full row is put in its place once.
class QRoomUserListItemWidget : public QTreeWidgetItem {
public:
    enum Column { Nothing, Flag, User, Files, Speed, ColumnCount };

    explicit QRoomUserListItemWidget(std::string_view i_name);

    // The name as the store has it: what is shown may be cut.
    const std::string& Name() const { return m_name; }

    // Numbers as the server tells them, the speed in bytes a second.
    void Show(std::string_view i_country, long long i_files, long long i_speed);

    bool operator<(const QTreeWidgetItem& i_other) const override;

private:
    int CompareNames(const QRoomUserListItemWidget& i_other) const;

    const std::string m_name;
    const QString m_sortName;
    std::string m_country;
    long long m_files = 0;
    long long m_speed = 0;
};
