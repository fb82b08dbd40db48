// What the server session asks of whoever makes this program's listening port reachable through a router.
#pragma once

class QTcpSocket;

class PortMapper {
public:
    virtual ~PortMapper() = default;
    // Finds a router, once in the life of the process.
    virtual void Init() = 0;
    // Maps the port to itself on the address of the socket's local end.
    virtual void AddPortMapping(QTcpSocket* ip_socket, int i_port) = 0;
};
