// What the central server tells about, as Types of the store.
#pragma once

// Creates the Types of users and rooms with their relations, and tells dataSaver which of them outlive the process: the
// rooms to rejoin and the user list with its groups. All else is told anew after every login. Needs only d and
// dataSaver.
void CreateServerTypes();
