// The Types of downloads and uploads, their relations, and which of them the store file keeps.
#pragma once

// Creates every Type of a transfer in `d` and registers the saved ones with `dataSaver`. Needs both of them and
// the Types `user` and `shared_file`; no manager. Call once.
void CreateTransferTypes();
