// What the tool bar's actions and the keys do on the search page.
#include "ui/search_form.h"

#include "app/text.h"
#include "transfers/transfer_queue_manager.h"
#include "ui/action_set_tool_bar.h"
#include "ui/search_edit.h"
#include "ui/search_result_list_item.h"
#include "ui/search_results_form.h"
#include "ui/search_results_tree.h"
#include "ui/wish_list_tree.h"

#include <QLineEdit>
#include <QShortcut>
#include <QTabWidget>

#include <map>

namespace {

constexpr char c_transferIcon[] = ":/icons/transfer_icon";
constexpr char c_searchIcon[] = ":/icons/search_icon";
constexpr char c_wishIcon[] = ":/icons/wishlist_icon";

// Turns a tab's setting round and answers what it is now.
bool Toggle(ItemPtr i_widget, const char* ip_setting) {
    const bool l_isOn = i_widget[ip_setting].AsView() == "no";
    i_widget.Connect(d.GetType(ip_setting)->GetItem(l_isOn ? "yes" : "no"));
    return l_isOn;
}

ItemPtr WidgetOf(const QWidget* ip_form) {
    return d.GetType("search_results_widget")->HasItem(ip_form);
}

void Download(ItemPtr i_result) {
    if (!i_result) {
        return;
    }
    transferQueueManager->AddDownload(
        i_result["search_results"]["user"].AsString(), i_result["search_result_file_name"].AsString(),
        i_result["search_result_file_folder"].AsString(), i_result["search_result_file_size"].ToInt64().value_or(0), 0);
}

ItemPtr FolderNodeOf(const QTreeWidgetItem* ip_row) {
    if (const ItemPtr l_node = d.GetType("search_results_folder_node")->HasItem(ip_row)) {
        return l_node;
    }
    return d.GetType("search_result_node")->HasItem(ip_row)["search_results_folder_node"];
}

} // namespace

void SearchForm::AddActions() {
    const auto l_add = [](const char* ip_set, const char* ip_id, const QString& i_text, const char* ip_icon) {
        actionBar->AddSetAction(ip_set, ip_id, ToUtf8(i_text), ip_icon, false);
    };
    l_add("search_results", "download_search_results_file", tr("Download File"), c_transferIcon);
    l_add("search_results", "download_search_results_folder", tr("Download Folder"), c_transferIcon);
    l_add("search_results", "order_by_available", tr("Order by Available"), c_searchIcon);
    l_add("search_results", "order_by_fastest", tr("Order by Fastest"), c_searchIcon);
    l_add("search_results", "expand_folders", tr("Expand Folders"), c_searchIcon);
    l_add("search_results", "expand_users", tr("Expand Users"), c_searchIcon);
    l_add("search_results", "add_remove_wishlist", tr("Add to Wishlist"), c_wishIcon);
    l_add("wish_list", "remove_wish_list_item", tr("Remove Wish List Search"), c_wishIcon);
    l_add("wish_list", "enable_all_wish_list_items", tr("Enable All Wish List Searches"), c_wishIcon);
    l_add("wish_list", "disable_all_wish_list_items", tr("Disable All Wish List Searches"), c_wishIcon);
    connect(actionBar, &ActionSetToolBar::ActionTriggered, this, &SearchForm::OnActionBarTriggered);
}

void SearchForm::AddKeys() {
    const auto l_add = [this](const QKeySequence& i_keys, auto i_handler) {
        QShortcut* const lp_key = new QShortcut(i_keys, this);
        lp_key->setContext(Qt::WidgetWithChildrenShortcut);
        connect(lp_key, &QShortcut::activated, this, i_handler);
    };
    l_add(Qt::CTRL | Qt::Key_D, &SearchForm::DownloadSelectedFiles);
    l_add(Qt::CTRL | Qt::Key_W, [this] { OnTabCloseRequested(mp_tabs->currentIndex()); });
    l_add(Qt::CTRL | Qt::Key_L, [this] { mp_searchEdit->setFocus(Qt::ShortcutFocusReason); });
    l_add(Qt::CTRL | Qt::Key_F, [this] {
        if (SearchResultsForm* const lp_form = CurrentForm()) {
            lp_form->FilterEdit()->setFocus(Qt::ShortcutFocusReason);
            lp_form->FilterEdit()->selectAll();
        }
    });
}

void SearchForm::OnActionBarTriggered(std::string i_id) {
    using Method = void (SearchForm::*)(SearchResultsForm*);
    static const std::map<std::string_view, Method> s_ofTab{{"expand_folders", &SearchForm::ToggleFolders},
                                                            {"expand_users", &SearchForm::ToggleUsers},
                                                            {"order_by_available", &SearchForm::OrderByAvailable},
                                                            {"order_by_fastest", &SearchForm::OrderByFastest}};
    if (const auto l_found = s_ofTab.find(i_id); l_found != s_ofTab.end()) {
        // Other widgets may publish a key of this name; only an address of ours counts.
        const ItemPtr l_widget = d.GetType("search_results_widget")->HasItem(actionBar->GetKeyBytes("widget"));
        if (l_widget) {
            (this->*l_found->second)(l_widget.AsPointer<SearchResultsForm>());
        }
    } else if (i_id == "download_search_results_file") {
        DownloadSelectedFiles();
    } else if (i_id == "download_search_results_folder") {
        DownloadSelectedFolders();
    } else if (i_id == "add_remove_wishlist") {
        ToggleWish();
    } else if (i_id == "remove_wish_list_item") {
        RemoveSelectedWishes();
    } else if (i_id == "enable_all_wish_list_items" || i_id == "disable_all_wish_list_items") {
        CheckAllWishes(i_id == "enable_all_wish_list_items");
    }
}

void SearchForm::ToggleFolders(SearchResultsForm* ip_form) {
    const bool l_isOn = Toggle(WidgetOf(ip_form), "expand_folders");
    actionBar->SetWidgetActionText(ip_form, QStringLiteral("expand_folders"),
                                   l_isOn ? tr("Expand Folders [on]") : tr("Expand Folders [off]"));
    SearchResultsTree* const lp_tree = ip_form->Tree();
    lp_tree->StartBulkChange();
    for (int l_user = 0; l_user < lp_tree->topLevelItemCount(); ++l_user) {
        const SearchUserRow* const lp_user = lp_tree->UserRowAt(l_user);
        for (int l_folder = 0; l_folder < lp_user->childCount(); ++l_folder) {
            lp_tree->ExpandRow(static_cast<SearchFolderRow*>(lp_user->child(l_folder)), l_isOn);
        }
    }
}

void SearchForm::ToggleUsers(SearchResultsForm* ip_form) {
    const bool l_isOn = Toggle(WidgetOf(ip_form), "expand_users");
    actionBar->SetWidgetActionText(ip_form, QStringLiteral("expand_users"),
                                   l_isOn ? tr("Expand Users [on]") : tr("Expand Users [off]"));
    SearchResultsTree* const lp_tree = ip_form->Tree();
    lp_tree->StartBulkChange();
    for (int l_user = 0; l_user < lp_tree->topLevelItemCount(); ++l_user) {
        lp_tree->ExpandRow(lp_tree->UserRowAt(l_user), l_isOn);
    }
}

void SearchForm::OrderByAvailable(SearchResultsForm* ip_form) {
    actionBar->SetWidgetActionText(ip_form, QStringLiteral("order_by_available"), tr("Order by Available [on]"));
    actionBar->SetWidgetActionText(ip_form, QStringLiteral("order_by_fastest"), tr("Order by Fastest"));
    ip_form->SetSortingParamters(SearchResultListItem::Free, Qt::DescendingOrder);
    ip_form->Sort();
}

void SearchForm::OrderByFastest(SearchResultsForm* ip_form) {
    actionBar->SetWidgetActionText(ip_form, QStringLiteral("order_by_available"), tr("Order by Available"));
    actionBar->SetWidgetActionText(ip_form, QStringLiteral("order_by_fastest"), tr("Order by Fastest [on]"));
    ip_form->SetSortingParamters(SearchResultListItem::Speed, Qt::DescendingOrder);
    ip_form->Sort();
}

void SearchForm::DownloadSelectedFiles() {
    const SearchResultsForm* const lp_form = CurrentForm();
    if (!lp_form) {
        return;
    }
    for (const SearchResultListItem* const lp_row : lp_form->Tree()->SelectedRows()) {
        if (lp_row->type() == SearchResultListItem::FileRow) {
            Download(d.GetType("search_result_node")->HasItem(lp_row)["search_result"]);
        }
    }
}

// All that was found of each folder, also what the filter hides of it.
void SearchForm::DownloadSelectedFolders() {
    const SearchResultsForm* const lp_form = CurrentForm();
    if (!lp_form) {
        return;
    }
    ItemSet l_folders;
    for (const SearchResultListItem* const lp_row : lp_form->Tree()->SelectedRows()) {
        if (const ItemPtr l_folder = FolderNodeOf(lp_row)) {
            l_folders.insert(l_folder);
        }
    }
    const ItemSet l_results = l_folders.GetItems("search_result_node").GetItems("search_result");
    for (Item* const lp_result : l_results.SortAlphabeticBy("search_result_file_name", true)) {
        Download(lp_result);
    }
}

void SearchForm::ToggleWish() {
    const ItemSet l_requests = CurrentWidget().GetItems("search_request");
    if (l_requests.empty()) {
        return;
    }
    const Item* const lp_request = *l_requests.begin();
    Type* const lp_wishes = d.GetType("wish_list_item");
    const std::string l_text = lp_request->HasItem("search_request_text").AsString();
    const ItemPtr l_wish = lp_wishes->HasItem(l_text);
    if (lp_request->IsConnected("wishlist_search")) {
        if (l_wish) {
            l_wish.Remove();
        }
    } else if (!l_wish) {
        const ItemPtr l_new = lp_wishes->GetItem(l_text);
        l_new.Connect(d.GetType("wish_list_item_enabled")->GetGlobalNullItem());
        OnWishListItemAdded(l_new.Get());
    }
}
