// The tree of one search's results: many rows, changed in bulk, and the keys that act on the selected ones.
#pragma once

#include "ui/search_result_list_item.h"

#include <QTreeWidget>

#include <vector>

class SearchResultsTree : public QTreeWidget {
    Q_OBJECT

public:
    explicit SearchResultsTree(QWidget* ip_parent);

    SearchUserRow* UserRowAt(int i_index) const;

    // From here to the next turn of the event loop rows may be shown, hidden, expanded and collapsed by the thousand:
    // the places of all rows are found once, then.
    void StartBulkChange();
    // The view's side of m_isFilteredOut, for a child of the parent (the null index: of the tree itself).
    void HideRow(int i_row, const QModelIndex& i_parent, SearchResultListItem& io_item, bool i_hide);
    void ExpandRow(const SearchResultListItem* ip_row, bool i_expand);

    // In the order in which the tree shows them. Rows that the filter has taken out are not among them: what cannot be
    // seen must not be downloaded by mistake.
    std::vector<SearchResultListItem*> SelectedRows() const;

    // In the middle of the tree as long as no row is to be seen.
    void SetHint(const QString& i_sentence);

    // What the selected rows stand for, one a line: names of users, paths of folders, names (or paths) of files.
    void CopySelected(bool i_paths) const;

Q_SIGNALS:
    void DownloadRequested();

protected:
    void keyPressEvent(QKeyEvent* ip_event) override;
    void paintEvent(QPaintEvent* ip_event) override;

private:
    bool ShowsNothing() const;

    QString m_hint;
};
