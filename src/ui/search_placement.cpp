#include "ui/search_placement.h"

#include "peer/file_records.h"
#include "ui/display_text.h"
#include "ui/search_result_list_item.h"
#include "ui/search_results_form.h"
#include "ui/search_results_tree.h"

#include <algorithm>
#include <limits>
#include <vector>

#include <absl/container/flat_hash_map.h>

namespace {

// Numbers off the wire were made text by us; what does not fit is cut to what does.
template <class Number>
Number NumberOf(ItemPtr i_item) {
    using Limits = std::numeric_limits<Number>;
    return static_cast<Number>(std::clamp<long long>(i_item.ToInt64().value_or(0), Limits::min(), Limits::max()));
}

FilteredFile FileOf(const Item* ip_result) {
    const std::string_view l_name = ip_result->HasItem("search_result_file_name").AsView();
    FilteredFile l_file;
    l_file.name = CellText(l_name);
    l_file.size = NumberOf<long long>(ip_result->HasItem("search_result_file_size"));
    l_file.bitRate = NumberOf<int>(ip_result->HasItem("bitrate"));
    l_file.kind = FileKindOf(l_name);
    return l_file;
}

bool IsYes(ItemPtr i_item) {
    return i_item.AsView() == "yes";
}

// One call of PlaceSearchResults.
class Placement {
public:
    Placement(ItemPtr i_widget, ItemPtr i_answer)
        : m_widget(i_widget), m_answer(i_answer), m_form(*i_widget.AsPointer<SearchResultsForm>()),
          m_tree(*m_form.Tree()), m_filter(m_form.Filter()), m_isFiltering(!m_filter.IsOpen()) {}

    void Place(std::span<Item* const> i_results);

private:
    struct Folder {
        SearchFolderRow* row;
        ItemPtr node;
        bool isNew;
        SearchFilter::Pieces pieces; // that its files must supply
        QList<QTreeWidgetItem*> newFiles;
    };

    void FindUserRow();
    Folder& FolderOf(ItemPtr i_folder);
    void MakeFileRow(Item* ip_result);
    void PutIntoTree();
    void HideFilteredOut();
    void Expand();

    ItemPtr m_widget;
    ItemPtr m_answer;
    SearchResultsForm& m_form;
    SearchResultsTree& m_tree;
    const SearchFilter& m_filter;
    bool m_isFiltering;

    SearchUserRow* mp_userRow = nullptr;
    ItemPtr m_userNode;
    bool m_isNewUser = false;
    std::vector<Folder> m_folders;
    absl::flat_hash_map<Item*, std::size_t> m_folderPlaces; // in m_folders
    int m_filteredOut = 0;
};

void Placement::Place(std::span<Item* const> i_results) {
    FindUserRow();
    for (Item* const lp_result : i_results) {
        MakeFileRow(lp_result);
    }
    m_tree.StartBulkChange();
    PutIntoTree();
    if (m_isFiltering) {
        HideFilteredOut();
    }
    Expand();
    m_form.AddCounts(static_cast<int>(i_results.size()), m_filteredOut);
}

void Placement::FindUserRow() {
    const ItemPtr l_user = m_answer["user"];
    m_userNode = d.GetItem(m_widget, l_user, "search_results_user_node");
    if (m_userNode) {
        mp_userRow = m_userNode.AsPointer<SearchUserRow>();
        return;
    }
    m_isNewUser = true;
    mp_userRow = new SearchUserRow(l_user.AsView(), IsYes(m_answer["search_results_user_available"]),
                                   NumberOf<std::uint32_t>(m_answer["search_results_uploads_in_queue"]),
                                   NumberOf<std::uint32_t>(m_answer["search_results_user_speed"]));
    m_userNode = d.GetType("search_results_user_node")->GetItem(mp_userRow);
    m_userNode.Connect(m_widget);
    m_userNode.Connect(l_user);
}

Placement::Folder& Placement::FolderOf(ItemPtr i_folder) {
    const auto [l_entry, l_isFirst] = m_folderPlaces.try_emplace(i_folder.Get(), m_folders.size());
    if (!l_isFirst) {
        return m_folders[l_entry->second];
    }
    ItemPtr l_node = m_isNewUser ? nullptr : d.GetItem(m_userNode, i_folder, "search_results_folder_node");
    const bool l_isNew = !l_node;
    SearchFolderRow* lp_row = l_node.AsPointer<SearchFolderRow>();
    if (l_isNew) {
        lp_row = new SearchFolderRow(i_folder.AsView());
        l_node = d.GetType("search_results_folder_node")->GetItem(lp_row);
        l_node.Connect(m_userNode);
        l_node.Connect(i_folder);
    }
    m_folders.push_back({lp_row, l_node, l_isNew, m_filter.NotIn(lp_row->Text()), {}});
    return m_folders.back();
}

void Placement::MakeFileRow(Item* ip_result) {
    Folder& l_folder = FolderOf(ip_result->HasItem("search_result_file_folder"));
    SearchFileRow* const lp_row = new SearchFileRow(FileOf(ip_result));
    if (!m_isFiltering || m_filter.Shows(lp_row->TheFile(), mp_userRow->IsFree(), l_folder.pieces)) {
        ++l_folder.row->m_shownChildren;
    } else {
        lp_row->m_isFilteredOut = true;
        ++m_filteredOut;
    }
    l_folder.newFiles.append(lp_row);
    const ItemPtr l_node = d.GetType("search_result_node")->GetItem(lp_row);
    l_node.Connect(ip_result);
    l_node.Connect(l_folder.node);
}

// From the leaves up: what is not in the tree yet is put together without the view's knowledge.
void Placement::PutIntoTree() {
    QList<QTreeWidgetItem*> l_newFolders;
    for (const Folder& l_folder : m_folders) {
        l_folder.row->addChildren(l_folder.newFiles);
        if (l_folder.isNew) {
            l_newFolders.append(l_folder.row);
        }
    }
    mp_userRow->addChildren(l_newFolders);
    if (m_isNewUser) {
        m_tree.addTopLevelItem(mp_userRow);
    }
}

void Placement::HideFilteredOut() {
    const QModelIndex l_userIndex = m_tree.indexFromItem(mp_userRow);
    for (const Folder& l_folder : m_folders) {
        const QModelIndex l_folderIndex = m_tree.indexFromItem(l_folder.row);
        const int l_count = l_folder.row->childCount();
        for (int l_row = l_count - static_cast<int>(l_folder.newFiles.size()); l_row < l_count; ++l_row) {
            if (static_cast<SearchFileRow*>(l_folder.row->child(l_row))->m_isFilteredOut) {
                m_tree.setRowHidden(l_row, l_folderIndex, true);
            }
        }
        m_tree.HideRow(l_folderIndex.row(), l_userIndex, *l_folder.row, l_folder.row->m_shownChildren == 0);
    }
    mp_userRow->m_shownChildren = 0;
    for (int l_folder = 0; l_folder < mp_userRow->childCount(); ++l_folder) {
        const auto* const lp_folder = static_cast<SearchFolderRow*>(mp_userRow->child(l_folder));
        mp_userRow->m_shownChildren += lp_folder->m_isFilteredOut ? 0 : 1;
    }
    m_tree.HideRow(l_userIndex.row(), QModelIndex(), *mp_userRow, mp_userRow->m_shownChildren == 0);
}

void Placement::Expand() {
    if (IsYes(m_widget["expand_users"])) {
        m_tree.ExpandRow(mp_userRow, true);
    }
    if (IsYes(m_widget["expand_folders"])) {
        for (const Folder& l_folder : m_folders) {
            m_tree.ExpandRow(l_folder.row, true);
        }
    }
}

} // namespace

void PlaceSearchResults(ItemPtr i_widget, std::span<Item* const> i_results) {
    if (!i_results.empty()) {
        Placement(i_widget, i_results.front()->HasItem("search_results")).Place(i_results);
    }
}

QTreeWidgetItem* UserRowOfNode(QTreeWidgetItem* ip_row) {
    ItemPtr l_folderNode = d.GetType("search_results_folder_node")->HasItem(ip_row);
    if (const ItemPtr l_fileNode = d.GetType("search_result_node")->HasItem(ip_row)) {
        l_folderNode = l_fileNode["search_results_folder_node"];
    }
    const ItemPtr l_userNode = l_folderNode ? l_folderNode["search_results_user_node"]
                                            : d.GetType("search_results_user_node")->HasItem(ip_row);
    return l_userNode.AsPointer<QTreeWidgetItem>();
}
