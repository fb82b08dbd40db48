// The rows of a search's results: users, under them folders, under them files. What the order and the filter need is
// held ready, and texts are made when a row is drawn: there may be many thousand rows.
//
// A row knows nothing of the store; the nodes do.
#pragma once

#include "ui/search_filter.h"

#include <QTreeWidgetItem>

#include <cstdint>
#include <string_view>

class SearchResultListItem : public QTreeWidgetItem {
public:
    enum Column { User, Free, Speed, Folder, File, Size, Attributes, ColumnCount };
    enum Kind { UserRow = QTreeWidgetItem::UserType, FolderRow, FileRow };

    // The tree sorts descending: what is greatest stands first. By Free: free users, then short queues, then as by
    // Speed. By Speed: fast ones, then file names in ascending order. By any other column: the file names.
    bool operator<(const QTreeWidgetItem& i_other) const override;

    // As the filter decided last; the view is told by whoever decides.
    bool m_isFilteredOut = false;
    // Rows directly below that are not filtered out.
    int m_shownChildren = 0;

protected:
    explicit SearchResultListItem(Kind i_kind) : QTreeWidgetItem(i_kind) {}
};

class SearchUserRow : public SearchResultListItem {
public:
    // i_speed in bytes a second; i_queue: uploads waiting there.
    SearchUserRow(std::string_view i_user, bool i_isFree, std::uint32_t i_queue, std::uint32_t i_speed);

    QVariant data(int i_column, int i_role) const override;
    bool IsFree() const { return m_isFree; }

private:
    friend class SearchResultListItem;

    QString m_user;
    QString m_speedText;
    double m_speed; // as shown, KiB a second
    std::uint32_t m_queue;
    bool m_isFree;
};

class SearchFolderRow : public SearchResultListItem {
public:
    explicit SearchFolderRow(std::string_view i_folder);

    QVariant data(int i_column, int i_role) const override;
    const QString& Text() const { return m_text; }

private:
    QString m_text; // innermost folder first
};

class SearchFileRow : public SearchResultListItem {
public:
    explicit SearchFileRow(FilteredFile i_file) : SearchResultListItem(FileRow), m_file(std::move(i_file)) {}

    QVariant data(int i_column, int i_role) const override;
    const FilteredFile& TheFile() const { return m_file; }

private:
    FilteredFile m_file;
};
