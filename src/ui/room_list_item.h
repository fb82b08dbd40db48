#pragma once

#include <QTreeWidgetItem>

// A row of the room list: sorts by name without regard to case, and by number in the column of users. What it sorts by
// is kept ready, since a long list compares its rows many thousand times.
class QRoomListItemWidget : public QTreeWidgetItem {
public:
    QRoomListItemWidget();

    void setData(int i_column, int i_role, const QVariant& i_value) override;
    bool operator<(const QTreeWidgetItem& i_other) const override;

private:
    QString m_foldedName;
    int m_userCount = 0;
};
