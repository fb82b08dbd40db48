#pragma once

// Creates the Types of saved searches and tells dataSaver that they are saved. Needs only the store and dataSaver.
void CreateWishListTypes();
