// The whole vocabulary of the central server's protocol, both directions.
#pragma once

#include "net/messages_from_server.h"
#include "net/messages_to_server.h"
