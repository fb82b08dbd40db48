// The rows of the share browser. Names that are cut in their column are whole in the tool tip.
#pragma once

#include "store/data.h"
#include "ui/share_filter.h"

#include <QTreeWidgetItem>

#include <string>

// A folder. What the filter reads of it lies here, apart from the texts that are made for display.
class ShareFolderRow : public QTreeWidgetItem {
public:
    ShareFolderRow(std::string_view i_name, int i_depth);

    ShareFolderRow* Child(int i_index) const { return static_cast<ShareFolderRow*>(child(i_index)); }
    int Depth() const { return m_depth; } // 0 at the top
    std::string_view FoldedName() const { return m_foldedName; }

    QVariant data(int i_column, int i_role) const override;

    NameList m_fileNames; // of the files that lie directly in it
    // Hidden by the filter. The row would have to ask its view, at some cost.
    bool m_isFilteredOut = false;

private:
    int m_depth;
    std::string m_foldedName;
};

// A file. Sorts by name without regard to case, and by bytes in the column of sizes.
class ShareFileRow : public QTreeWidgetItem {
public:
    enum Column { Name, Size, Attributes };

    explicit ShareFileRow(ItemPtr i_file);

    bool operator<(const QTreeWidgetItem& i_other) const override;
    QVariant data(int i_column, int i_role) const override;

private:
    long long m_bytes;
};

// Bytes as the peer told them; 0 where that is no size.
long long ShareFileSize(ItemPtr i_file);

// From a row to what it shows; null once that has left the store.
ItemPtr FolderOfRow(const QTreeWidgetItem* ip_row);
ItemPtr FileOfRow(const QTreeWidgetItem* ip_row);
