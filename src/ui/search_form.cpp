#include "ui/search_form.h"

#include "app/text.h"
#include "app/timers.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "search/search_history.h"
#include "ui/action_set_tool_bar.h"
#include "ui/display_text.h"
#include "ui/empty_tabs_hint.h"
#include "ui/event_tool_bar.h"
#include "ui/focus_widget.h"
#include "ui/icon.h"
#include "ui/search_arrivals.h"
#include "ui/search_edit.h"
#include "ui/search_placement.h"
#include "ui/search_result_list_item.h"
#include "ui/search_results_form.h"
#include "ui/search_results_tree.h"
#include "ui/search_schema.h"
#include "ui/size_manager.h"
#include "ui/tab_closer.h"
#include "ui/user_menu_options.h"
#include "ui/wish_list_tree.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QSplitter>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int c_wishListWidth = 200;
constexpr int c_sortDelay = 1000; // milliseconds
constexpr char c_searchIcon[] = ":/icons/search_icon";
constexpr char c_wishIcon[] = ":/icons/wishlist_icon";

ItemPtr WidgetOf(const QWidget* ip_form) {
    return d.GetType("search_results_widget")->HasItem(ip_form);
}

ItemPtr RequestOf(unsigned int i_token) {
    return d.GetType("search_request")->HasItem(i_token);
}

} // namespace

SearchForm::SearchForm(QWidget* ip_parent) : QWidget(ip_parent) {
    BuildLayout();
    connect(mp_searchEdit, &QLineEdit::returnPressed, this, &SearchForm::OnSearchEntered);
    connect(mp_tabs, &QTabWidget::tabCloseRequested, this, &SearchForm::OnTabCloseRequested);
    AddKeys();
}

void SearchForm::BuildLayout() {
    mp_searchEdit = new SearchEdit(this);
    mp_searchEdit->setObjectName(QStringLiteral("searchEdit"));
    QLabel* const lp_label = new QLabel(tr("Search:"));
    lp_label->setBuddy(mp_searchEdit);

    mp_tabs = new QTabWidget;
    mp_tabs->setObjectName(QStringLiteral("searchTabControl"));
    mp_tabs->setAccessibleName(tr("Searches"));
    mp_tabs->tabBar()->setAccessibleName(tr("Searches"));
    mp_tabs->setTabsClosable(true);
    new TabCloser(mp_tabs);
    new EmptyTabsHint(mp_tabs, tr("Type some words above and press Return.\nWhat other users share under them "
                                  "comes in here."));
    mp_wishList = new WishListTree(this);
    mp_splitter = new QSplitter(Qt::Horizontal);
    mp_splitter->setObjectName(QStringLiteral("searchSplitter"));
    mp_splitter->addWidget(mp_tabs);
    mp_splitter->addWidget(mp_wishList);
    mp_splitter->setStretchFactor(0, 1);
    mp_splitter->setStretchFactor(1, 0);

    QHBoxLayout* const lp_line = new QHBoxLayout;
    lp_line->addWidget(lp_label);
    lp_line->addWidget(mp_searchEdit, 1);
    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    lp_layout->addLayout(lp_line);
    lp_layout->addWidget(mp_splitter, 1);
    setFocusProxy(mp_searchEdit);
}

void SearchForm::Init() {
    CreateSearchFormTypes();
    mp_arrivals = new SearchArrivals(this);
    connect(mp_arrivals, &SearchArrivals::Placed, this, &SearchForm::OnPlaced);
    connect(gp_server, &Server::SearchRequested, this, &SearchForm::OnSearchRequest);
    connect(peerMessenger, &PeerMessenger::SearchResults, this, &SearchForm::OnUserSearchResults);
    Type* const lp_entry = d.GetType("download_entry");
    Type* const lp_status = d.GetType("download_entry_status");
    d.AddConnectionEventHandler(lp_entry, lp_status, MakeHandler(this, &SearchForm::OnDownloadsChanged));
    d.AddDisconnectionEventHandler(lp_entry, lp_status, MakeHandler(this, &SearchForm::OnDownloadsChanged));

    mp_searchEdit->ReloadHistory();
    // The page may not have its size yet; it is about as wide as its window.
    const QList<int> l_sizes{std::max(width(), window()->width()) - c_wishListWidth, c_wishListWidth};
    mp_splitter->setSizes(l_sizes);
    sizeManager->RegisterSplitter(QStringLiteral("wish_list_splitter"), mp_splitter, l_sizes);
    AddActions();
    actionBar->AutoFocusTabWidget(mp_tabs);
    SetUpWishList();
}

// The text goes out as it was typed.
void SearchForm::OnSearchEntered() {
    const std::string l_text = ToUtf8(mp_searchEdit->text());
    mp_searchEdit->ClearAfterSearch();
    RememberSearch(l_text);
    mp_searchEdit->ReloadHistory();
    gp_server->FileSearch(l_text, false);
}

// A wish gets its tab when something has been found.
void SearchForm::OnSearchRequest(unsigned int i_token, const std::string& i_text, bool i_wishList) {
    if (!i_wishList) {
        CreateSearchForm(i_token, i_text, false);
    }
}

void SearchForm::CreateSearchForm(unsigned int i_token, const std::string& i_text, bool i_wishList) {
    const ItemPtr l_request = RequestOf(i_token);
    const ItemPtr l_wish = i_wishList ? d.GetType("wish_list_item")->HasItem(i_text) : ItemPtr();
    if (!l_request || (i_wishList && !l_wish)) {
        return;
    }
    if (const ItemPtr l_widget = l_wish["search_results_widget"]) {
        l_widget.Connect(l_request);
        return;
    }
    SearchResultsForm* const lp_form = new SearchResultsForm(this);
    const QString l_icon = QLatin1String(i_wishList ? c_wishIcon : c_searchIcon);
    const ItemPtr l_widget = d.GetType("search_results_widget")->GetItem(static_cast<QWidget*>(lp_form));
    l_widget.Connect(l_request);
    SetUpTab(lp_form, l_widget);
    const int l_index = mp_tabs->addTab(lp_form, LoadIcon(l_icon), TitleText(i_text));
    mp_tabs->setTabToolTip(l_index, ToolTipText(i_text));
    lp_form->setAccessibleName(LabelText(i_text));
    if (l_wish) {
        l_widget.Connect(l_wish);
        actionBar->SetWidgetActionText(lp_form, QStringLiteral("add_remove_wishlist"), tr("Remove from Wish List"));
        eventToolBar->AddEvent(ToQString(i_text), l_icon, lp_form);
    } else {
        if (!gp_server->IsConnected()) {
            lp_form->SetWaitingText(tr("Not connected: this search has reached nobody.\nSearch again when the "
                                       "connection stands."));
        }
        FocusWidget(lp_form->Tree());
    }
}

void SearchForm::SetUpTab(SearchResultsForm* ip_form, ItemPtr i_widget) {
    i_widget.Connect(d.GetType("expand_folders")->GetItem("yes"));
    i_widget.Connect(d.GetType("expand_users")->GetItem("yes"));
    ip_form->SetSortingParamters(SearchResultListItem::Free, Qt::DescendingOrder);

    SearchResultsTree* const lp_tree = ip_form->Tree();
    connect(lp_tree, &QTreeWidget::itemDoubleClicked, this, &SearchForm::OnResultDoubleClicked);
    connect(lp_tree, &QTreeWidget::customContextMenuRequested, this, &SearchForm::OnSearchResultsContextMenuRequested);
    connect(lp_tree, &SearchResultsTree::DownloadRequested, this, &SearchForm::DownloadSelectedFiles);
    connect(ip_form->FilterEdit(), &QLineEdit::textChanged, this, &SearchForm::OnFilterTextChanged);
    sizeManager->RegisterTreeWidget(QStringLiteral("search_results"), lp_tree);

    actionBar->RegisterWidget(ip_form, QStringLiteral("search_results"));
    actionBar->AddWidgetKey(ip_form, QStringLiteral("widget"), ToQString(i_widget.AsView()));
    for (const auto& [lp_id, l_text] :
         {std::pair("order_by_available", tr("Order by Available [on]")),
          std::pair("order_by_fastest", tr("Order by Fastest")), std::pair("expand_folders", tr("Expand Folders [on]")),
          std::pair("expand_users", tr("Expand Users [on]"))}) {
        actionBar->SetWidgetActionText(ip_form, QLatin1String(lp_id), l_text);
    }
}

// Closed searches, and wishes that were dropped or disabled since they were searched for, stay closed.
void SearchForm::OnUserSearchResults(ItemPtr i_results) {
    const ItemPtr l_request = i_results["search_request"];
    if (!l_request) {
        return;
    }
    if (!l_request["search_results_widget"]) {
        const std::string l_text = l_request["search_request_text"].AsString();
        const ItemPtr l_wish = d.GetType("wish_list_item")->HasItem(l_text);
        if (!l_request.IsConnected("wishlist_search") || !l_wish || !l_wish.IsConnected("wish_list_item_enabled")) {
            return;
        }
        CreateSearchForm(static_cast<unsigned int>(l_request.AsUInt()), l_text, true);
    }
    mp_arrivals->Take(l_request["search_results_widget"], i_results);
}

void SearchForm::OnSearchResult(ItemPtr i_widget, ItemPtr i_result) {
    Item* const lp_result = i_result.Get();
    PlaceSearchResults(i_widget, {&lp_result, 1});
    OnPlaced(i_widget);
}

// One sorting for a burst of answers.
void SearchForm::OnPlaced(ItemPtr i_widget) {
    delayedInvoker->Invoke(i_widget.AsPointer<SearchResultsForm>(), QLatin1String(SLOT(Sort())), c_sortDelay);
}

void SearchForm::OnFilterTextChanged(const QString& i_text) {
    for (QObject* lp_object = sender(); lp_object; lp_object = lp_object->parent()) {
        if (SearchResultsForm* const lp_form = qobject_cast<SearchResultsForm*>(lp_object)) {
            lp_form->SetFilterText(i_text);
            return;
        }
    }
}

void SearchForm::OnTabCloseRequested(int i_index) {
    QWidget* const lp_form = mp_tabs->widget(i_index);
    const ItemPtr l_widget = WidgetOf(lp_form);
    if (!l_widget) {
        return;
    }
    const ItemSet l_requests = l_widget.GetItems("search_request");
    mp_arrivals->Forget(l_widget);
    l_widget.Remove();
    mp_tabs->removeTab(i_index);
    delete lp_form;
    for (Item* const lp_request : l_requests) {
        lp_request->GetItems("search_results").Remove();
        lp_request->Remove();
    }
    d.RemoveDisconnectedItems();
    if (mp_tabs->count() == 0) {
        mp_searchEdit->setFocus();
    }
}

SearchResultsForm* SearchForm::CurrentForm() const {
    return qobject_cast<SearchResultsForm*>(mp_tabs->currentWidget());
}

ItemPtr SearchForm::CurrentWidget() const {
    return WidgetOf(mp_tabs->currentWidget());
}

QTreeWidgetItem* SearchForm::GetNodeUserNode(QTreeWidgetItem* ip_row) {
    return UserRowOfNode(ip_row);
}

void SearchForm::OnSearchResultsContextMenuRequested(const QPoint& i_point) {
    QTreeWidget* const lp_tree = qobject_cast<QTreeWidget*>(sender());
    const QTreeWidgetItem* const lp_userRow = GetNodeUserNode(lp_tree->itemAt(i_point));
    if (const ItemPtr l_node = d.GetType("search_results_user_node")->HasItem(lp_userRow)) {
        OpenUserMenu(l_node["user"].AsString(), lp_tree->viewport()->mapToGlobal(i_point), this);
    }
}

void SearchForm::OnResultDoubleClicked(QTreeWidgetItem*, int) {}

// Rows bear marks by the state of downloads, which is looked up as they are drawn.
void SearchForm::OnDownloadsChanged(ConnectionInfo&) {
    if (SearchResultsForm* const lp_form = CurrentForm(); lp_form && lp_form->isVisible()) {
        lp_form->Tree()->viewport()->update();
    }
}
