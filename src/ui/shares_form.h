// The "Shares" page: a closable tab for each share list that has arrived.
#pragma once

#include "store/data.h"

#include <QWidget>

#include <string>

class QTabWidget;
class ShareForm;

class SharesForm : public QWidget, public DataHandler {
    Q_OBJECT

public:
    explicit SharesForm(QWidget* ip_parent = nullptr);

    // Once; needs sharedFoldersManager, transferQueueManager, actionBar and eventToolBar.
    void Init();

private:
    void OnUserShare(Item* ip_share);
    void OnTabCloseRequested(int i_index);
    void OnToolBarActionTriggered(std::string i_id);
    ShareForm* CurrentForm() const;

    QTabWidget* mp_tabControl;
};
