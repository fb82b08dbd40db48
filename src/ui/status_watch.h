// Tells the status bar what goes on: listens to the session, the messenger, the shares and the transfers. A timer of
// its own runs only while there is a countdown or a speed to follow.
#pragma once

#include "store/data.h"

#include <QHostAddress>
#include <QObject>
#include <QString>
#include <QTimer>

#include <string>

class StatusBar;

class StatusWatch : public QObject, public DataHandler {
    Q_OBJECT

public:
    // All managers and their Types exist; they and the bar outlive this object.
    explicit StatusWatch(StatusBar& i_bar);
    ~StatusWatch() override;

    // The next disconnection is the user's own wish, so that no attempt follows it.
    void ExpectDisconnection();
    // For someone who has just told who they are; unless a connection stands or is on its way.
    void TellHowToConnect();

private:
    void FollowConnection();
    void FollowCallers();
    void FollowShares();
    void FollowTransfers();

    void OnConnecting();
    void OnConnected();
    void OnDisconnected();
    void OnConnectionFailed(std::string i_reason);
    void ShowWait();

    void OnListenFinished();
    void OnCaller(Item* ip_socket);
    void ShowListening(bool i_isReached);

    void OnSharedFolderChanged(Item* ip_folder);
    void ShowShares();
    void OnWalkProgressed(int i_files);
    void OnWalkOver();

    void OnTransferBegun(Item* ip_speed);
    void OnTransferEnded(Item* ip_speed);
    void ShowSpeeds();

    StatusBar& m_bar;

    QString m_loss; // what to say when the connection ends: that depends on how far it had come and on who ended it
    bool m_isRetryComing = false; // after that end
    QTimer m_waitTimer;           // while waiting for the next attempt
    QHostAddress m_server;        // of the latest connection

    QTimer m_sharesTimer;
    bool m_isWalking = false;
    long long m_walkedBefore = 0; // in the roots that are done with
    int m_walked = 0;
    QTimer m_walkTimer;

    QTimer m_speedTimer; // while files move
};

// Whether a call from one address proves that others can reach us who are as far away as the server at the other: not
// one from this machine when the server is on another, not one from a private network when the server is outside.
[[nodiscard]] bool IsCallFromOutside(const QHostAddress& i_caller, const QHostAddress& i_server);
