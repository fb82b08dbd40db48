// The Types of everything that is shared: our own folders and files as they lie on the disk, the users' share lists,
// and who may see what.
//
// Needs the Types of the server and of the peer network (`user`, `user_list_group`, `bitrate` and its kin) and the
// global `dataSaver`.
#pragma once

void CreateSharesTypes();
