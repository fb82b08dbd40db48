// A row of the lists of transfers: a user, below it a folder, below that a file.
//
// Rows know the statuses of the files below them as counts, so that the status of the whole costs the same for ten
// files as for ten thousand.
#pragma once

#include <QColor>
#include <QTreeWidgetItem>

#include <array>
#include <string_view>

struct TransferTypes;

namespace transfer_column {
enum Column { User, Folder, File, Status, Progress, TimeLeft, Rate, Size, Place };
}

// The colour of a status word on a light palette; black for every word without one, and for none.
QColor StatusColour(std::string_view i_status);

class TransferRow : public QTreeWidgetItem {
public:
    enum Level { UserLevel = UserType, FolderLevel, FileLevel };

    // The Types outlive the row.
    TransferRow(Level i_level, const TransferTypes& i_types) : QTreeWidgetItem(i_level), m_types(i_types) {}

    TransferRow* Above() const { return static_cast<TransferRow*>(parent()); }
    bool IsFile() const { return type() == FileLevel; }

    // All columns in the colour of the status.
    void SetColourByStatus(std::string_view i_status);

    // Of a file row that has its place in the tree: counts the status in the rows above.
    void CountStatus(std::string_view i_status);
    // Before it is taken out.
    void UncountStatus();
    // The status of all files below together: the active one if any has it, else "queued" if any waits, "complete" if
    // all are, "denied" or "aborted" if any is, and empty if none of these.
    std::string_view AggregateStatus() const;

    // What a screen reader says for the progress, whose bar is a widget of its own.
    void SetProgressText(const QString& i_text) { m_progressText = i_text; }

    // Adds the colour, the progress in words, and the tool tip, which is made when it is asked for.
    QVariant data(int i_column, int i_role) const override;

private:
    // Those that the aggregate tells apart.
    enum Kind { Active, Queued, Complete, Denied, Aborted, Other, KindCount, None = KindCount };

    Kind KindOf(std::string_view i_status) const;
    void CountAbove(Kind i_kind, int i_change);

    const TransferTypes& m_types;
    QColor m_colour;
    Kind m_kind = None;                   // of a file row
    std::array<int, KindCount> m_below{}; // of the others: how many files of each kind
    QString m_progressText;
};
