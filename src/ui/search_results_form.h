// One tab of the search page: the filter, the tree of what was found, and the counts below it.
#pragma once

#include "ui/search_filter.h"

#include <QTimer>
#include <QWidget>

class QLabel;
class QLineEdit;
class SearchFilterBar;
class SearchResultsTree;

class SearchResultsForm : public QWidget {
    Q_OBJECT

public:
    explicit SearchResultsForm(QWidget* ip_parent);

    SearchResultsTree* Tree() const { return mp_tree; }
    QLineEdit* FilterEdit() const;
    const SearchFilter& Filter() const;

    // Kept until they are changed; Sort() applies them.
    void SetSortingParamters(int i_column, Qt::SortOrder i_order);

    void SetFilterText(const QString& i_text);
    // All rows anew.
    void ApplyFilter();

    // Files that came into the tree, and those of them that are filtered out.
    void AddCounts(int i_files, int i_filteredOut);
    // What an empty tab says.
    void SetWaitingText(const QString& i_sentence);

public Q_SLOTS:
    void Sort();

protected:
    void showEvent(QShowEvent* ip_event) override;

private:
    void UpdateCounts();
    QString SelectionText() const;

    SearchFilterBar* mp_filterBar;
    SearchResultsTree* mp_tree;
    QLabel* mp_counts;
    QTimer m_countsTimer; // a burst of changes is one change of the label
    QString m_waitingText;
    int m_fileCount = 0;
    int m_filteredOutCount = 0;
    int m_sortColumn = 0;
    Qt::SortOrder m_sortOrder = Qt::DescendingOrder;
};
