#pragma once

#include <QTabWidget>

// The tabs of the rooms one is in. They have no close buttons: a tab goes when the room is left.
class RoomTabWidget : public QTabWidget {
    Q_OBJECT

public:
    using QTabWidget::QTabWidget;
};
