// What a person does and sees in rooms and private chats, as commands of the driven client.
#pragma once

#include "world/window_commands.h"

// KIND is "room" or "chat"; a chat with a user is opened if need be.
//
// shown KIND NAME        the text on show; empty where there is no such room
// write KIND NAME TEXT   into the line, then Return; false where there is no such room
// listed ROOM            the names in its user list, from the top
// alerts                 the texts of the buttons of what waits
// ignore USER
void AddTalkCommands(Commands& io_commands);
