// Keeps the rows of the room list in step with the user counts of the rooms. A server tells of thousands of rooms at
// once, so changes are collected and shown together when the event loop comes round, with one sorting for all of them.
#pragma once

#include <QObject>
#include <QTimer>

#include <string>
#include <string_view>
#include <unordered_map>

class QTreeWidget;
class QTreeWidgetItem;

class RoomList : public QObject {
    Q_OBJECT

public:
    // Names the columns and their widths. The tree outlives this object, and all of its rows are made here.
    explicit RoomList(QTreeWidget* ip_tree);

    void SetUserCount(std::string_view i_room, std::string_view i_count);

    // The room of the selected row as the store has it; empty if no row is selected.
    std::string SelectedRoom() const;

private:
    void ShowChanges();

    QTreeWidget* mp_tree;
    std::unordered_map<std::string, QTreeWidgetItem*> m_rows; // by the room's name as the store has it
    std::unordered_map<std::string, std::string> m_changes;   // room to count, not yet shown
    QTimer m_showTimer;
};
