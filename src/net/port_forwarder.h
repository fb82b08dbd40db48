// Makes the listening port reachable from outside: finds a router through UPnP and has it forward the port. All that
// happens, and every failure, ends in a line of the log; nothing else depends on the mapping.
//
// Returns at once from every call. What a call starts goes on in the background, the calls one after the other, so that
// the lines of one are never mixed with those of the next. The questions to the router are put by a program of their
// own (port_helper_main.cpp). Main thread only.
#pragma once

#include <QObject>
#include <QString>

#include <cstdint>
#include <deque>
#include <functional>

#include "net/port_helper.h"
#include "net/port_mapper.h"

class PortForwarder : public QObject, public PortMapper {
    Q_OBJECT

public:
    PortForwarder(); // becomes the global portForwarder
    // In the middle of anything: nothing more is logged, and what was asked of the router may or may not have happened.
    ~PortForwarder() override;

    // The first call looks for a router; all others do nothing, also if none was found.
    void Init() override;
    // The socket matters only within the call. A port that is mapped already is mapped anew, once.
    void AddPortMapping(QTcpSocket* ip_socket, int i_port) override;
    void RemovePortMapping(int i_port);

    // Nothing is under way or waiting.
    [[nodiscard]] bool IsIdle() const { return !m_isBusy; }
    // Confines the search to the own machine, at this address of it. For tests.
    void SetSearchInterface(const QString& i_address) { m_searchInterface = i_address; }

private:
    using Task = std::function<void()>;
    using OnResult = std::function<void(int i_code)>;
    struct Device {
        bool isOwn; // it described itself, and is near
        QString target;
        QString url;
    };

    // Each task ends with exactly one End(), at once or later.
    void Do(Task i_task);
    void End();

    void Search();
    void OnSearched(const PortHelper::Answer& i_answer);
    void Describe(const QString& i_url);
    void OnDescribed(const QString& i_url, const PortHelper::Answer& i_answer);

    void Map(const QString& i_ownAddress, int i_port);
    void OnMapped(const QString& i_ownAddress, int i_port, int i_code);
    void MapAgain(const QString& i_ownAddress, int i_port);
    void AskForMapping(const QString& i_ownAddress, int i_port, OnResult i_onResult);
    void Unmap(int i_port, Task i_then);

    // Logs the lines of the choice. Empty when no device may be asked.
    static QString ChooseDevice(const QList<Device>& i_devices);
    static QList<Device> Devices(const PortHelper::Answer& i_answer);

    bool m_initialized = false; // or about to be: the search has been ordered
    // What the router said of itself. Without a control address there is no router.
    QString m_controlUrl;
    QString m_serviceType;

    PortHelper m_helper;
    std::deque<Task> m_waiting;
    bool m_isBusy = false;
    QString m_searchInterface;
};

extern PortForwarder* portForwarder;
