// Every cap of the central server, each with its reason. Tests make a Limits of their own with shorter times.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

struct Limits {
    // Connections. The descriptor limit lowers `sessions` at the start; see CentralServer.
    int sessions = 10000;
    int unauthenticated = 1024;         // beyond it the oldest stranger makes room for the newest
    int unauthenticatedPerAddress = 64; // one address cannot push the others out
    std::chrono::milliseconds loginTime{60000};
    std::chrono::milliseconds closingTime{5000}; // for a refused client to take its last bytes

    // A client tells its port right after the login. Who asks for its address before that is answered when the port has
    // come, or after this time, in case it has none to tell.
    std::chrono::milliseconds portGrace{5000};

    // Frames. A stranger needs room for one login; the largest message of a user is a chat line of 128 KiB.
    std::size_t loginFrame = 64 * 1024;
    std::size_t frame = 512 * 1024;
    std::int64_t readBuffer = 64 * 1024; // what a socket holds before its sender has to wait
    int framesPerTurn = 100;             // then other sessions get their turn

    // Bytes waiting for one client, and the smaller allowance once all queues together are too long.
    std::int64_t sendQueue = 8 * 1024 * 1024;
    std::int64_t sendQueues = 256 * 1024 * 1024;
    std::int64_t sendQueueWhenFull = 1024 * 1024;

    // A session pays for the bytes it sends and for all bytes that they make the server send to anyone. One that
    // has used up its allowance is not read until it has refilled, so a flood slows only its own sender.
    std::int64_t trafficBurst = 4 * 1024 * 1024;
    std::int64_t trafficPerSecond = 1024 * 1024;
    std::int64_t trafficPerFrame = 64; // the cost of a message beside its bytes

    // Names and texts, in bytes.
    std::size_t name = 64;
    std::size_t password = 256;
    std::size_t roomName = 64;

    // What one user can make the server remember while logged in.
    std::size_t trackedUsers = 10000;
    std::size_t roomsOfUser = 100;
    std::size_t rooms = 10000;

    // Searches of one client. Each goes to everyone, who answers it from a whole share; a person types far fewer.
    int searchesPerSecond = 10;
    int searchBurst = 30;

    // Lists of possible parents for one client, each of which is a walk through all clients. An honest one asks when it
    // has lost its parent.
    int parentListsPerSecond = 1;
    int parentListBurst = 10;
    std::size_t possibleParents = 10;  // in one list
    std::size_t parentsOfClient = 200; // offered to one client, and remembered

    // A client that has lost the server but not its connections to other clients is back within a minute or two.
    std::chrono::milliseconds departureMemory{600000};

    // Messages kept for one user, and those of them from one sender. All of them go out at one login, so their
    // bytes must fit well into the send queue.
    int keptMessages = 1000;
    int keptMessagesOfSender = 200;
    std::int64_t keptBytes = 2 * 1024 * 1024;

    int passwordThreads = 2; // each takes 64 MiB while it works
};
