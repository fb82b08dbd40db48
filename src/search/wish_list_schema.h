#pragma once

// Creates the Types of saved searches, those of the wish list and the last ones typed (search_history.h), and tells
// dataSaver that they are saved. Needs only the store and dataSaver.
void CreateWishListTypes();
