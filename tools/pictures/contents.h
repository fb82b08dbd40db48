#pragma once

// What a client holds after a while of use: rooms, talks, transfers, searches, users, a share list. Made by the same
// calls and events by which a network brings it. Once, into the main window's store.
void FillStore();

// Whether all of it stands in its place: some comes in slices.
bool IsStoreFilled();
