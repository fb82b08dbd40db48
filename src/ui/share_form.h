// The list of what one user shares, in a tab of the "Shares" page: the folders as a tree, and beside it the files of
// the folder that is chosen there.
//
// The list lives in the store. If the user's next list replaces it, this form becomes a closed book: it stays as it is
// on show, tells so, and nothing in it works any more.
#pragma once

#include "store/data.h"

#include <QTimer>
#include <QWidget>

#include <string>
#include <string_view>
#include <vector>

class QLabel;
class QLineEdit;
class QSplitter;
class QTreeWidget;
class QTreeWidgetItem;
class ShareFolderRow;

class ShareForm : public QWidget, public DataHandler {
    Q_OBJECT

public:
    // The whole list is in the store. Raises an alert until the form is on show.
    ShareForm(Item* ip_share, QWidget* ip_parent);

    // Opens the tree by one level more than before, wholly, not at all.
    void ExpandLevel();
    void ExpandAll();
    void CollapseAll();

    // Has the list taken out of the store and deletes the form.
    void Delete();

    QTreeWidget* FolderTree() const { return mp_folderTree; }

protected:
    void showEvent(QShowEvent* ip_event) override;

private:
    void BuildLayout();
    void AddKeys();
    void FillTree();
    void ReadFolder(ShareFolderRow* ip_row);
    void ReadSomeFolders();
    void ReadAllFolders();
    bool FilterFolderNode(ShareFolderRow* ip_row, const std::vector<std::string_view>& i_pieces);
    void ClearFileList();
    void RemoveFileNodes();
    void RemoveFolderNodes();
    void ShowLevel();
    void ShowCounts();
    void CopySelected(const QTreeWidget* ip_list);

    void OnActionBarTriggered(std::string i_id);
    void OnCurrentItemChanged(QTreeWidgetItem* ip_current);
    void OnFilterTextChanged(const QString& i_text);
    void OnListLost(ConnectionInfo& i_info);

    ItemPtr m_share; // null for a closed book
    std::string m_user;
    int m_deepest = 0; // level of the tree
    int m_level = 0;   // reached by ExpandLevel

    // What the filter searches is collected while nobody waits for it.
    std::vector<ShareFolderRow*> m_rows; // all of the tree, parents first
    std::size_t m_rowsRead = 0;
    long long m_files = 0; // in those
    long long m_bytes = 0;
    QTimer m_reading;

    QLabel* mp_notice = nullptr;
    QLineEdit* mp_filterEdit = nullptr;
    QSplitter* mp_splitter = nullptr;
    QTreeWidget* mp_folderTree = nullptr;
    QTreeWidget* mp_fileList = nullptr;
    QLabel* mp_counts = nullptr;
};
