// One client's connection: frames in, frames out, and the limits on both. What the frames mean is its owner's matter.
#pragma once

#include "server/limits.h"
#include "server/traffic.h"

#include "net/frame_reader.h"

#include <QObject>
#include <QTimer>

#include <cstdint>
#include <functional>
#include <string>

class QTcpSocket;

class Session : public QObject {
    Q_OBJECT

public:
    enum class State {
        Stranger,  // no login yet; ends by itself after Limits::loginTime
        LoggingIn, // the password is being checked; nothing is read meanwhile
        Online,
        Ending // nothing is taken in or queued any more
    };

    // Reads one whole frame; false says that it was malformed, which ends the session.
    using FrameHandler = std::function<bool(Session&, MemStream&)>;

    // Takes over the connected socket. `i_limits` and `io_traffic` outlive the session.
    Session(QTcpSocket* ip_socket, const Limits& i_limits, Traffic& io_traffic, FrameHandler i_handler);
    ~Session() override;

    State GetState() const { return m_state; }
    const std::string& Name() const { return m_name; }  // empty before the login
    std::uint32_t Address() const { return m_address; } // IPv4, the first number most significant

    void BeginLogin();
    void FinishLogin(const std::string& i_name);

    void Send(const MemStream& i_message);    // adds the frame
    void SendFrame(std::string_view i_frame); // for one frame that goes to many
    void EndAfterSending();                   // lets the last bytes go out first, for a while
    void End();                               // at once, but never from within a call: Ended comes from the event loop

Q_SIGNALS:
    void Ended(Session* ip_session); // once; the session is of no more use then

private:
    bool IsReading() const { return m_state == State::Stranger || m_state == State::Online; }
    void OnReadyRead();
    void SayNoMore();
    void OnBytesWritten(qint64 i_count);
    void OnDisconnected();
    bool ReadFrame();
    bool HandleFrame();
    std::int64_t AllowedQueue() const;

    QTcpSocket* mp_socket; // child
    const Limits& m_limits;
    Traffic& m_traffic;
    FrameHandler m_handler;
    FrameReader m_reader;
    TrafficBudget m_budget;
    QTimer m_readAgain;        // after the allowance has refilled, or in the next turn
    QTimer m_deadline;         // of the login, later of the farewell
    std::int64_t m_queued = 0; // this session's part of m_traffic.queued
    State m_state = State::Stranger;
    bool m_hasEnded = false;
    std::string m_name;
    std::uint32_t m_address;
};
