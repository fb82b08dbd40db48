#include "search/wish_list_schema.h"

#include "store/data.h"
#include "store/data_saver.h"

void CreateWishListTypes() {
    Type* const lp_item = d.NewType("wish_list_item", true, false, true);
    Type* const lp_enabled = d.NewType("wish_list_item_enabled", false, true, true);
    lp_item->RelateToType(lp_enabled, Many, One, false);
    dataSaver->AddSavedType("wish_list_item");
    dataSaver->AddSavedType("wish_list_item_enabled");

    Type* const lp_recent = d.NewType("recent_search", true, false, true);
    Type* const lp_order = d.NewType("recent_search_order", false, false, true); // grows with each search
    lp_recent->RelateToType(lp_order, Many, One, false);
    dataSaver->AddSavedType("recent_search");
    dataSaver->AddSavedByConnectionType("recent_search_order", "recent_search");
}
