// Remembers the geometry of windows, the panes of splitters and the columns of trees across runs, in the item store,
// each under a name. Live trees or splitters of one name move together: a change in one is stored and given to the
// others at once.
//
// Register after the store has been loaded and after the widget has its columns or panes: what is stored under the
// name is applied at once; where nothing is, the present sizes are what is remembered. All sizes are
// device-independent pixels. A store file may be damaged, so a stored number counts only where it makes sense, and a
// window whose place is on no screen comes back on one.
#pragma once

#include "store/data.h"

#include <QList>
#include <QObject>
#include <QString>

class QSplitter;
class QTreeWidget;
class ResizableWindow;

class SizeManager : public QObject {
    Q_OBJECT

public:
    // Becomes the global sizeManager and creates its Types: before the store is loaded.
    explicit SizeManager(QObject* ip_parent);
    ~SizeManager() override;

    // One window to a name. Not owned; it may die at any time.
    void RegisterResizableWindow(QString i_name, ResizableWindow* ip_window);
    // An empty list stands for the sizes that the splitter has. The list is stored, not applied.
    void RegisterSplitter(QString i_name, QSplitter* ip_splitter, QList<int> i_defaultSizes);
    // A last column that stretches to fill the header is left out.
    void RegisterTreeWidget(QString i_name, QTreeWidget* ip_tree);

private:
    void OnWindowResized(int i_width, int i_height);
    void OnWindowMoved(int i_x, int i_y);
    void OnWindowDestroyed(QObject* ip_window);
    void OnSplitterMoved(int i_position, int i_index);
    void OnSplitterDestroyed(QObject* ip_splitter);
    void OnTreeColumnResizedMoved(int i_section, int i_oldSize, int i_newSize);
    void OnTreeDestroyed(QObject* ip_tree);

    ItemPtr SenderWindow() const;

    bool m_updating = false; // our own resizing of the others of a name is no change by the user
};

extern SizeManager* sizeManager;
