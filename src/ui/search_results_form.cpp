#include "ui/search_results_form.h"

#include "ui/event_tool_bar.h"
#include "ui/search_filter_bar.h"
#include "ui/search_results_tree.h"
#include "ui/tab_page.h"

#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QShortcut>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <limits>

namespace {

constexpr std::chrono::milliseconds c_countsDelay(50);

QString FilesText(int i_count) {
    return i_count == 1 ? SearchResultsForm::tr("1 file")
                        : SearchResultsForm::tr("%1 files").arg(QLocale().toString(i_count));
}

QString UsersText(int i_count) {
    return i_count == 1 ? SearchResultsForm::tr("1 user")
                        : SearchResultsForm::tr("%1 users").arg(QLocale().toString(i_count));
}

} // namespace

SearchResultsForm::SearchResultsForm(QWidget* ip_parent) : QWidget(ip_parent) {
    mp_filterBar = new SearchFilterBar(this);
    mp_tree = new SearchResultsTree(this);
    mp_counts = new QLabel;
    mp_counts->setObjectName(QStringLiteral("searchCounts"));
    mp_counts->setTextFormat(Qt::PlainText);
    mp_counts->setAccessibleName(tr("Counts of the search"));
    setFocusProxy(mp_tree);

    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    UseWholeTab(lp_layout);
    lp_layout->addWidget(mp_filterBar);
    lp_layout->addWidget(mp_tree, 1);
    lp_layout->addWidget(mp_counts);

    m_countsTimer.setSingleShot(true);
    m_countsTimer.setInterval(c_countsDelay);
    connect(&m_countsTimer, &QTimer::timeout, this, &SearchResultsForm::UpdateCounts);
    connect(mp_tree, &QTreeWidget::itemSelectionChanged, &m_countsTimer, qOverload<>(&QTimer::start));
    connect(mp_filterBar, &SearchFilterBar::Chosen, this, &SearchResultsForm::ApplyFilter);
    connect(FilterEdit(), &QLineEdit::returnPressed, mp_tree, qOverload<>(&QWidget::setFocus));
    connect(new QShortcut(Qt::Key_Escape, mp_filterBar, nullptr, nullptr, Qt::WidgetWithChildrenShortcut),
            &QShortcut::activated, mp_filterBar, &SearchFilterBar::Clear);
    SetWaitingText(tr("Waiting for answers…"));
}

QLineEdit* SearchResultsForm::FilterEdit() const {
    return mp_filterBar->Edit();
}

const SearchFilter& SearchResultsForm::Filter() const {
    return mp_filterBar->Filter();
}

void SearchResultsForm::SetSortingParamters(int i_column, Qt::SortOrder i_order) {
    m_sortColumn = i_column;
    m_sortOrder = i_order;
}

void SearchResultsForm::Sort() {
    mp_tree->sortByColumn(m_sortColumn, m_sortOrder);
}

void SearchResultsForm::SetFilterText(const QString& i_text) {
    mp_filterBar->SetText(i_text);
    ApplyFilter();
}

void SearchResultsForm::ApplyFilter() {
    const SearchFilter& l_filter = Filter();
    mp_tree->StartBulkChange();
    m_filteredOutCount = 0;
    for (int l_user = 0; l_user < mp_tree->topLevelItemCount(); ++l_user) {
        SearchUserRow* const lp_user = mp_tree->UserRowAt(l_user);
        const QModelIndex l_userIndex = mp_tree->model()->index(l_user, 0);
        lp_user->m_shownChildren = 0;
        for (int l_folder = 0; l_folder < lp_user->childCount(); ++l_folder) {
            auto* const lp_folder = static_cast<SearchFolderRow*>(lp_user->child(l_folder));
            const QModelIndex l_folderIndex = mp_tree->model()->index(l_folder, 0, l_userIndex);
            const SearchFilter::Pieces l_pieces = l_filter.NotIn(lp_folder->Text());
            lp_folder->m_shownChildren = 0;
            for (int l_file = 0; l_file < lp_folder->childCount(); ++l_file) {
                auto* const lp_file = static_cast<SearchFileRow*>(lp_folder->child(l_file));
                const bool l_isShown = l_filter.Shows(lp_file->TheFile(), lp_user->IsFree(), l_pieces);
                mp_tree->HideRow(l_file, l_folderIndex, *lp_file, !l_isShown);
                lp_folder->m_shownChildren += l_isShown ? 1 : 0;
            }
            m_filteredOutCount += lp_folder->childCount() - lp_folder->m_shownChildren;
            mp_tree->HideRow(l_folder, l_userIndex, *lp_folder, lp_folder->m_shownChildren == 0);
            lp_user->m_shownChildren += lp_folder->m_shownChildren > 0 ? 1 : 0;
        }
        mp_tree->HideRow(l_user, QModelIndex(), *lp_user, lp_user->m_shownChildren == 0);
    }
    UpdateCounts();
}

void SearchResultsForm::AddCounts(int i_files, int i_filteredOut) {
    m_fileCount += i_files;
    m_filteredOutCount += i_filteredOut;
    if (!m_countsTimer.isActive()) {
        m_countsTimer.start();
    }
}

void SearchResultsForm::SetWaitingText(const QString& i_sentence) {
    m_waitingText = i_sentence;
    UpdateCounts();
}

QString SearchResultsForm::SelectionText() const {
    int l_files = 0;
    long long l_bytes = 0;
    for (const SearchResultListItem* lp_row : mp_tree->SelectedRows()) {
        if (lp_row->type() == SearchResultListItem::FileRow) {
            ++l_files;
            const long long l_size = static_cast<const SearchFileRow*>(lp_row)->TheFile().size;
            // Sizes are what strangers say.
            l_bytes = l_size > std::numeric_limits<long long>::max() - l_bytes ? std::numeric_limits<long long>::max()
                                                                               : l_bytes + std::max(l_size, 0LL);
        }
    }
    if (l_files == 0) {
        return {};
    }
    return tr("%1 selected, %2")
        .arg(FilesText(l_files), QLocale().formattedDataSize(l_bytes, 1, QLocale::DataSizeTraditionalFormat));
}

void SearchResultsForm::UpdateCounts() {
    if (m_fileCount == 0) {
        mp_tree->SetHint(m_waitingText);
        mp_counts->setText(tr("No files yet"));
        return;
    }
    mp_tree->SetHint(tr("The filter hides everything that was found.\nEscape in the filter clears it."));
    QStringList l_parts{tr("%1 of %2").arg(FilesText(m_fileCount), UsersText(mp_tree->topLevelItemCount()))};
    if (m_filteredOutCount > 0) {
        l_parts.append(tr("%1 hidden by the filter").arg(QLocale().toString(m_filteredOutCount)));
    }
    if (const QString l_selection = SelectionText(); !l_selection.isEmpty()) {
        l_parts.append(l_selection);
    }
    mp_counts->setText(l_parts.join(QStringLiteral("   ·   ")));
}

void SearchResultsForm::showEvent(QShowEvent* ip_event) {
    QWidget::showEvent(ip_event);
    if (eventToolBar) {
        eventToolBar->RemoveEvent(this);
    }
}
