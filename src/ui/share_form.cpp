#include "ui/share_form.h"

#include "app/text.h"
#include "net/limits.h"
#include "sharing/shared_folders_manager.h"
#include "ui/action_set_tool_bar.h"
#include "ui/display_text.h"
#include "ui/event_tool_bar.h"
#include "ui/share_downloads.h"
#include "ui/share_rows.h"
#include "ui/tab_page.h"
#include "ui/transfer_text.h"
#include "ui/transfer_types.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QShortcut>
#include <QSplitter>
#include <QStringList>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <absl/container/flat_hash_map.h>

#include <map>
#include <utility>

namespace {

// Deeper folders stand at the top: no honest list comes near, and views follow the levels of a tree by recursion.
constexpr int c_deepestRow = 200;

constexpr qint64 c_readingSlice = 8; // milliseconds
constexpr int c_nameWidth = 200;
constexpr int c_sizeWidth = 70;

template <class Widget>
Widget* Named(Widget* ip_widget, const char* i_name) {
    ip_widget->setObjectName(QLatin1String(i_name));
    return ip_widget;
}

QTreeWidget* MakeTree(const char* ip_name, const QStringList& i_headers) {
    QTreeWidget* const lp_tree = Named(new QTreeWidget, ip_name);
    lp_tree->setHeaderLabels(i_headers);
    lp_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    lp_tree->setUniformRowHeights(true);
    return lp_tree;
}

} // namespace

ShareForm::ShareForm(Item* ip_share, QWidget* ip_parent)
    : QWidget(ip_parent), m_share(ip_share), m_user(ItemPtr(ip_share)["user"].AsString()) {
    BuildLayout();
    actionBar->RegisterWidget(mp_folderTree, QStringLiteral("share_folders"));
    actionBar->RegisterWidget(mp_fileList, QStringLiteral("share_files"));
    m_share.Connect(d.GetType("user_share_tab")->GetItem(this));
    d.AddDisconnectionEventHandler(d.GetType("user_share"), d.GetType("user"),
                                   MakeHandler(this, &ShareForm::OnListLost));
    FillTree();
    connect(mp_folderTree, &QTreeWidget::currentItemChanged, this, &ShareForm::OnCurrentItemChanged);
    connect(mp_fileList, &QTreeWidget::itemSelectionChanged, this, &ShareForm::ShowCounts);
    connect(mp_filterEdit, &QLineEdit::textChanged, this, &ShareForm::OnFilterTextChanged);
    connect(&m_reading, &QTimer::timeout, this, &ShareForm::ReadSomeFolders);
    m_reading.start(0);
    AddKeys();
    eventToolBar->AddEvent(ToQString(m_user), QStringLiteral(":/icons/browse_icon"), this);
    connect(actionBar, &ActionSetToolBar::ActionTriggered, this, &ShareForm::OnActionBarTriggered);
}

void ShareForm::BuildLayout() {
    mp_notice = Named(new QLabel(tr("A newer list of this user has arrived and has a tab of its own. This old one can "
                                    "only be closed.")),
                      "replacedNotice");
    mp_notice->setWordWrap(true);
    mp_notice->setFrameShape(QFrame::StyledPanel);
    mp_notice->setMargin(6);
    mp_notice->hide();

    mp_filterEdit = Named(new QLineEdit, "filterEdit");
    mp_filterEdit->setClearButtonEnabled(true);
    QLabel* const lp_filterLabel = new QLabel(tr("Filter:"));
    lp_filterLabel->setBuddy(mp_filterEdit);
    QHBoxLayout* const lp_filter = new QHBoxLayout;
    lp_filter->addWidget(lp_filterLabel);
    lp_filter->addWidget(mp_filterEdit);

    mp_folderTree = MakeTree("folderTree", {tr("Folder")});
    mp_folderTree->setAccessibleName(tr("Shared folders of %1").arg(LabelText(m_user)));
    mp_fileList = MakeTree("fileList", {tr("File"), tr("Size"), tr("Attributes")});
    mp_fileList->setAccessibleName(tr("Files of the folder"));
    mp_fileList->setRootIsDecorated(false);
    mp_fileList->setAllColumnsShowFocus(true);
    mp_fileList->setColumnWidth(ShareFileRow::Name, c_nameWidth);
    mp_fileList->setColumnWidth(ShareFileRow::Size, c_sizeWidth);
    mp_fileList->headerItem()->setTextAlignment(ShareFileRow::Size, Qt::AlignRight | Qt::AlignVCenter);
    mp_fileList->sortByColumn(ShareFileRow::Name, Qt::AscendingOrder);
    mp_splitter = Named(new QSplitter(Qt::Horizontal), "splitter");
    mp_splitter->addWidget(mp_folderTree);
    mp_splitter->addWidget(mp_fileList);
    mp_splitter->setStretchFactor(0, 2);
    mp_splitter->setStretchFactor(1, 3);

    mp_counts = Named(new QLabel, "shareCounts");
    mp_counts->setTextFormat(Qt::PlainText);

    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    UseWholeTab(lp_layout);
    lp_layout->addWidget(mp_notice);
    lp_layout->addLayout(lp_filter);
    lp_layout->addWidget(mp_splitter, 1);
    lp_layout->addWidget(mp_counts);
    setFocusProxy(mp_folderTree);
}

void ShareForm::AddKeys() {
    const auto l_add = [this](QWidget* ip_widget, const QKeySequence& i_keys, auto i_handler) {
        QShortcut* const lp_key = new QShortcut(i_keys, ip_widget);
        lp_key->setContext(Qt::WidgetWithChildrenShortcut);
        connect(lp_key, &QShortcut::activated, this, i_handler);
    };
    const auto l_downloadFiles = [this] { OnActionBarTriggered("download_share_file"); };
    l_add(this, QKeySequence(QKeySequence::Find), [this] {
        mp_filterEdit->setFocus(Qt::ShortcutFocusReason);
        mp_filterEdit->selectAll();
    });
    l_add(mp_filterEdit, QKeySequence(Qt::Key_Escape), [this] { mp_filterEdit->clear(); });
    l_add(mp_folderTree, QKeySequence(QKeySequence::Copy), [this] { CopySelected(mp_folderTree); });
    l_add(mp_fileList, QKeySequence(QKeySequence::Copy), [this] { CopySelected(mp_fileList); });
    l_add(mp_folderTree, QKeySequence(Qt::CTRL | Qt::Key_D), [this] { OnActionBarTriggered("download_share_folder"); });
    l_add(mp_fileList, QKeySequence(Qt::CTRL | Qt::Key_D), l_downloadFiles);
    l_add(mp_fileList, QKeySequence(Qt::Key_Return), l_downloadFiles);
    l_add(mp_fileList, QKeySequence(Qt::Key_Enter), l_downloadFiles);
}

void ShareForm::FillTree() {
    // In the order of bytes a folder comes before what lies in it.
    std::map<std::string_view, Item*> l_folders;
    for (Item* const lp_folder : m_share.GetItems("user_share_folder")) {
        l_folders.emplace(ItemPtr(lp_folder)["user_share_folder_name"].AsView(), lp_folder);
    }
    absl::flat_hash_map<std::string_view, ShareFolderRow*> l_rows;
    l_rows.reserve(l_folders.size());
    m_rows.reserve(l_folders.size());
    QList<QTreeWidgetItem*> l_top;
    Type* const lp_nodes = d.GetType("user_share_folder_node");
    for (const auto& [l_path, lp_folder] : l_folders) {
        const auto l_parent = l_rows.find(GetParentFolder(l_path)); // not there yet for a folder that is its own
        const bool l_isTop = l_parent == l_rows.end() || l_parent->second->Depth() >= c_deepestRow;
        ShareFolderRow* const lp_row =
            new ShareFolderRow(GetFileName(l_path), l_isTop ? 0 : l_parent->second->Depth() + 1);
        if (l_isTop) {
            l_top += lp_row;
        } else {
            l_parent->second->addChild(lp_row);
        }
        m_deepest = std::max(m_deepest, lp_row->Depth());
        l_rows.emplace(l_path, lp_row);
        m_rows.push_back(lp_row);
        lp_nodes->GetItem(lp_row)->Connect(lp_folder);
    }
    mp_folderTree->addTopLevelItems(l_top);
    mp_folderTree->expandAll();
}

void ShareForm::ReadFolder(ShareFolderRow* ip_row) {
    for (const ItemPtr l_file : FolderOfRow(ip_row).GetItems("user_share_file")) {
        ip_row->m_fileNames.Add(FoldCase(l_file["user_share_file_name"].AsView()));
        m_bytes = AddBytes(m_bytes, ShareFileSize(l_file));
        ++m_files;
    }
}

void ShareForm::ReadSomeFolders() {
    QElapsedTimer l_time;
    l_time.start();
    while (m_rowsRead < m_rows.size() && !l_time.hasExpired(c_readingSlice)) {
        ReadFolder(m_rows[m_rowsRead++]);
    }
    if (m_rowsRead == m_rows.size()) {
        m_reading.stop();
        ShowCounts();
    }
}

void ShareForm::ReadAllFolders() {
    while (m_rowsRead < m_rows.size()) {
        ReadFolder(m_rows[m_rowsRead++]);
    }
}

void ShareForm::OnCurrentItemChanged(QTreeWidgetItem* ip_current) {
    ClearFileList();
    if (!ip_current) {
        return;
    }
    const FilterPieces l_pieces(mp_filterEdit->text());
    const auto l_rest = PiecesNotIn(static_cast<const ShareFolderRow*>(ip_current)->FoldedName(), l_pieces.All());
    QList<QTreeWidgetItem*> l_rows;
    Type* const lp_nodes = d.GetType("user_share_file_node");
    for (const ItemPtr l_file : FolderOfRow(ip_current).GetItems("user_share_file")) {
        if (PiecesNotIn(FoldCase(l_file["user_share_file_name"].AsView()), l_rest).empty()) {
            ShareFileRow* const lp_row = new ShareFileRow(l_file);
            lp_nodes->GetItem(lp_row)->Connect(l_file);
            l_rows += lp_row;
        }
    }
    mp_fileList->setSortingEnabled(false);
    mp_fileList->addTopLevelItems(l_rows);
    mp_fileList->setSortingEnabled(true);
}

// Of this form's rows; those of other tabs stay.
void ShareForm::RemoveFileNodes() {
    Type* const lp_nodes = d.GetType("user_share_file_node");
    for (int l_index = 0; l_index < mp_fileList->topLevelItemCount(); ++l_index) {
        if (const ItemPtr l_node = lp_nodes->HasItem(mp_fileList->topLevelItem(l_index))) {
            l_node.Remove();
        }
    }
}

void ShareForm::ClearFileList() {
    RemoveFileNodes();
    mp_fileList->clear();
}

void ShareForm::RemoveFolderNodes() {
    Type* const lp_nodes = d.GetType("user_share_folder_node");
    for (const ShareFolderRow* const lp_row : m_rows) {
        if (const ItemPtr l_node = lp_nodes->HasItem(lp_row)) {
            l_node.Remove();
        }
    }
}

void ShareForm::OnFilterTextChanged(const QString& i_text) {
    ReadAllFolders();
    const FilterPieces l_pieces(i_text);
    for (int l_index = 0; l_index < mp_folderTree->topLevelItemCount(); ++l_index) {
        FilterFolderNode(static_cast<ShareFolderRow*>(mp_folderTree->topLevelItem(l_index)), l_pieces.All());
    }
}

// Whether the row stays on show. What the name of a folder has met is met for all that lies below it.
bool ShareForm::FilterFolderNode(ShareFolderRow* ip_row, const std::vector<std::string_view>& i_pieces) {
    const std::vector<std::string_view> l_rest = PiecesNotIn(ip_row->FoldedName(), i_pieces);
    bool l_isVisible = l_rest.empty() || ip_row->m_fileNames.HasNameWith(l_rest);
    for (int l_index = 0; l_index < ip_row->childCount(); ++l_index) {
        l_isVisible |= FilterFolderNode(ip_row->Child(l_index), l_rest);
    }
    if (!l_isVisible && mp_folderTree->currentItem() == ip_row) {
        ClearFileList();
    }
    if (ip_row->m_isFilteredOut == l_isVisible) {
        ip_row->m_isFilteredOut = !l_isVisible;
        ip_row->setHidden(!l_isVisible);
    }
    return l_isVisible;
}

void ShareForm::ExpandLevel() {
    if (m_share && m_level != m_deepest) {
        mp_folderTree->expandToDepth(m_level);
        ++m_level;
        ShowLevel();
    }
}

void ShareForm::ExpandAll() {
    if (m_share) {
        mp_folderTree->expandAll();
        m_level = 0;
        ShowLevel();
    }
}

void ShareForm::CollapseAll() {
    if (m_share) {
        mp_folderTree->collapseAll();
        m_level = 0;
        ShowLevel();
    }
}

void ShareForm::ShowLevel() {
    actionBar->SetWidgetActionText(mp_folderTree, QStringLiteral("expand_level"),
                                   m_level == 0 ? tr("Expand Level") : tr("Expand Level [%1]").arg(m_level));
}

void ShareForm::ShowCounts() {
    QString l_text =
        tr("%1 in %2")
            .arg(FilesAndBytesText(m_files, m_bytes),
                 m_rows.size() == 1 ? tr("1 folder")
                                    : tr("%1 folders").arg(CommafyNumber(static_cast<qint64>(m_rows.size()))));
    const QList<QTreeWidgetItem*> l_selected = mp_fileList->selectedItems();
    if (!l_selected.isEmpty()) {
        long long l_bytes = 0;
        for (const QTreeWidgetItem* const lp_row : l_selected) {
            l_bytes = AddBytes(l_bytes, ShareFileSize(FileOfRow(lp_row)));
        }
        l_text = tr("%1; selected: %2").arg(l_text, FilesAndBytesText(l_selected.size(), l_bytes));
    }
    mp_counts->setText(m_rowsRead == m_rows.size() ? l_text : QString());
}

void ShareForm::CopySelected(const QTreeWidget* ip_list) {
    QStringList l_names;
    for (const QTreeWidgetItem* const lp_row : ip_list->selectedItems()) {
        const ItemPtr l_name = ip_list == mp_folderTree ? FolderOfRow(lp_row)["user_share_folder_name"]
                                                        : FileOfRow(lp_row)["user_share_file_name"];
        l_names += DisplayText(ToQString(l_name.AsView()), static_cast<int>(limits::textLengthOrCount));
    }
    if (!l_names.isEmpty()) {
        QGuiApplication::clipboard()->setText(l_names.join(u'\n'));
    }
}

// Every tab hears of it; the one on show is meant.
void ShareForm::OnActionBarTriggered(std::string i_id) {
    if (!m_share || !isVisibleTo(window())) {
        return;
    }
    if (i_id == "download_share_file") {
        for (const QTreeWidgetItem* const lp_row : mp_fileList->selectedItems()) {
            DownloadShareFile(m_user, FileOfRow(lp_row));
        }
    } else if (i_id == "download_share_folder") {
        std::vector<ItemPtr> l_folders;
        for (const QTreeWidgetItem* const lp_row : mp_folderTree->selectedItems()) {
            l_folders.push_back(FolderOfRow(lp_row));
        }
        DownloadShareFolders(m_user, l_folders);
    }
}

void ShareForm::showEvent(QShowEvent* ip_event) {
    QWidget::showEvent(ip_event);
    eventToolBar->RemoveEvent(this);
}

void ShareForm::OnListLost(ConnectionInfo& i_info) {
    if (m_share != ItemPtr(i_info.m_itemFrom)) {
        return;
    }
    m_share = ItemPtr();
    m_reading.stop();
    const Data::Operation l_closing(d);
    RemoveFolderNodes();
    RemoveFileNodes();
    mp_notice->show();
    mp_filterEdit->setEnabled(false);
    mp_splitter->setEnabled(false);
}

void ShareForm::Delete() {
    m_reading.stop();
    RemoveFileNodes();
    RemoveFolderNodes();
    if (const ItemPtr l_tab = d.GetType("user_share_tab")->HasItem(this)) {
        l_tab.Remove();
    }
    if (const ItemPtr l_share = std::exchange(m_share, ItemPtr())) {
        sharedFoldersManager->RemoveUserShare(l_share);
    } else {
        d.RemoveDisconnectedItems();
    }
    deleteLater();
}
