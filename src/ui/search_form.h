// The page where searches are entered: the line, a tab for each search, and the wish list beside them.
//
// What stands where is in the store (ui/search_schema.h): a tab is a search_results_widget, which has one
// search_request or, of a wish, one for each time that it was searched for; rows have nodes.
//
// One .cpp file a concern:
//   search_form             the page, its tabs, answers on their way into them
//   search_form_actions     what the tool bar's actions and the keys do, downloads among them
//   search_form_wish_list   the rows of the wish list
#pragma once

#include "store/data.h"

#include <QWidget>

#include <string>

class QSplitter;
class QTabWidget;
class QTreeWidget;
class QTreeWidgetItem;
class SearchArrivals;
class SearchEdit;
class SearchResultsForm;
class WishListTree;

class SearchForm : public QWidget, public DataHandler {
    Q_OBJECT

public:
    explicit SearchForm(QWidget* ip_parent);

    // Once the store has been loaded and all managers and tool bars are there.
    void Init();

    // Opens a tab for the request of the token. For a wish that has one, adds the request to it; for a wish that is
    // gone, does nothing.
    void CreateSearchForm(unsigned int i_token, const std::string& i_text, bool i_wishList);
    // The user row of any row of a result tree.
    QTreeWidgetItem* GetNodeUserNode(QTreeWidgetItem* ip_row);
    // Places one file in the tree of a tab, a search_results_widget.
    void OnSearchResult(ItemPtr i_widget, ItemPtr i_result);

public Q_SLOTS:
    void OnSearchEntered();
    void OnSearchRequest(unsigned int i_token, const std::string& i_text, bool i_wishList);
    void OnUserSearchResults(ItemPtr i_results);
    void OnFilterTextChanged(const QString& i_text);
    void OnTabCloseRequested(int i_index);
    void OnSearchResultsContextMenuRequested(const QPoint& i_point);
    void OnResultDoubleClicked(QTreeWidgetItem* ip_row, int i_column);
    void OnActionBarTriggered(std::string i_id);
    void OnWishListItemCheckStateChanged(int i_state);

public:
    void OnWishListItemAdded(Item* ip_wish);
    void OnWishListItemRemoved(Item* ip_wish);

private:
    void BuildLayout();
    void AddKeys();
    void AddActions();
    void SetUpTab(SearchResultsForm* ip_form, ItemPtr i_widget);
    void OnPlaced(ItemPtr i_widget);
    void OnDownloadsChanged(ConnectionInfo& i_info);

    SearchResultsForm* CurrentForm() const; // null without a tab
    ItemPtr CurrentWidget() const;

    void ToggleFolders(SearchResultsForm* ip_form);
    void ToggleUsers(SearchResultsForm* ip_form);
    void OrderByAvailable(SearchResultsForm* ip_form);
    void OrderByFastest(SearchResultsForm* ip_form);
    void DownloadSelectedFiles();
    void DownloadSelectedFolders();
    void ToggleWish();

    void SetUpWishList();
    void RemoveSelectedWishes();
    void CheckAllWishes(bool i_isChecked);
    void ToggleSelectedWishes();

    SearchEdit* mp_searchEdit;
    QSplitter* mp_splitter;
    QTabWidget* mp_tabs;
    WishListTree* mp_wishList;
    SearchArrivals* mp_arrivals = nullptr; // from Init on
};
