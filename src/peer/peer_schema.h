// The Types of the peer network: sockets and connection attempts, messages that wait, and what searches bring back.
//
// Needs the Types of the server (`user`). Nothing of it is saved but what the shares add of their own.
#pragma once

void CreatePeerTypes();
