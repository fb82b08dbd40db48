// The life of the session: login, refusal, loss, reconnection, and bytes that come in pieces or lie.
#include "net/session_fixture.h"

#include "net/port_mapper.h"

namespace {

std::string LengthOnly(std::uint32_t i_length) {
    return std::string(reinterpret_cast<const char*>(&i_length), 4);
}

// What a user would see of the session's ups and downs.
struct Spies {
    explicit Spies(Server& i_session)
        : connecting(&i_session, &Server::Connecting), failed(&i_session, &Server::ConnectionFailed),
          connected(&i_session, &Server::Connected), disconnected(&i_session, &Server::Disconnected) {}
    std::string Reason() { return failed.takeFirst().at(0).value<std::string>(); }
    QSignalSpy connecting;
    QSignalSpy failed;
    QSignalSpy connected;
    QSignalSpy disconnected;
};

TEST_F(SessionTest, TheLoginIsExactToTheByte) {
    Session().Connect();
    ASSERT_TRUE(m_server.Accept());
    const std::string l_expected = LengthOnly(67) + LengthOnly(1) + LengthOnly(5) + "alice" + LengthOnly(6) + "secret" +
                                   LengthOnly(157) + LengthOnly(32) + "c4e31313222cf05fcdd1fc068af5570e" +
                                   LengthOnly(100);
    ASSERT_TRUE(WaitUntil([&] { return m_server.Client().bytesAvailable() >= qint64(l_expected.size()); }));
    EXPECT_EQ(m_server.Client().readAll().toStdString(), l_expected);
}

TEST_F(SessionTest, AnIncompletePairOfNameAndPasswordIsReplacedByTheDefaults) {
    d.GetType("global")->GetItem("password")->Disconnect("global_value");
    Session().Connect();
    ASSERT_TRUE(m_server.Accept());
    const auto l_login = m_server.Next<to_server::Login>();
    ASSERT_TRUE(l_login);
    EXPECT_EQ(l_login->userName, "TidewellQT");
    EXPECT_EQ(l_login->password, "TidewellQTLanterns");
    EXPECT_EQ(SettingText("username"), "TidewellQT");
}

TEST_F(SessionTest, WithoutAUserNameNothingIsTried) {
    d.GetType("global")->GetItem("username")->Disconnect("global_value");
    Spies l_spies(Session());
    Session().Connect();
    EXPECT_EQ(l_spies.connecting.count(), 0);
    EXPECT_FALSE(m_server.HasPendingClient());
}

TEST_F(SessionTest, ARefusalEndsTheAttemptForGood) {
    Spies l_spies(Session());
    ASSERT_NO_FATAL_FAILURE(ConnectToServer());
    m_server.Say(SampleRefusal(from_server::LoginReply::invalidPassword));
    ASSERT_TRUE(m_server.SeesClose());
    ASSERT_EQ(l_spies.failed.count(), 1);
    EXPECT_EQ(l_spies.Reason(), "INVALIDPASS");
    EXPECT_EQ(l_spies.disconnected.count(), 0);
    FireHalfMinute();
    EXPECT_EQ(l_spies.connecting.count(), 1) << "no retry by itself";

    // The user may try again at once.
    ASSERT_NO_FATAL_FAILURE(LogIn());
    EXPECT_EQ(l_spies.connected.count(), 1);
}

TEST_F(SessionTest, ALostConnectionIsTriedAgainAtTheTick) {
    Spies l_spies(Session());
    ASSERT_NO_FATAL_FAILURE(LogIn());
    SayAndSettle(from_server::UserStatus{"bob", from_server::statusOnline, false});
    EXPECT_TRUE(User("bob").IsConnected("is_online"));

    m_server.SayBytes(LengthOnly(100) + "part of a message");
    m_server.Close();
    ASSERT_TRUE(WaitUntil([&] { return l_spies.disconnected.count() > 0; }));
    EXPECT_FALSE(User("bob").IsConnected("is_online"));
    EXPECT_EQ(l_spies.failed.count(), 0);
    FireHalfMinute();
    FireHalfMinute();
    ASSERT_NO_FATAL_FAILURE(LogIn());
    EXPECT_EQ(l_spies.disconnected.count(), 1);
    EXPECT_EQ(l_spies.connecting.count(), 2);

    FireHalfMinute();
    EXPECT_EQ(l_spies.connecting.count(), 2) << "nothing is wanted any more";
}

TEST_F(SessionTest, AnErrorWhileConnectingIsToldOnceAndTriedAgain) {
    SetSetting("server_port", [] { return ScriptedServer().Port(); }()); // closed again by now
    Spies l_spies(Session());
    Session().Connect();
    ASSERT_TRUE(WaitUntil([&] { return l_spies.disconnected.count() > 0; }));
    EXPECT_EQ(l_spies.failed.count(), 1);
    EXPECT_EQ(l_spies.Reason(), "socket error");
    SetSetting("server_port", m_server.Port());
    FireHalfMinute();
    ASSERT_TRUE(m_server.Accept());
    EXPECT_EQ(l_spies.failed.count(), 0);
    EXPECT_EQ(l_spies.disconnected.count(), 1);
}

TEST_F(SessionTest, APortThatIsNoneFailsAsASocketErrorWould) {
    Spies l_spies(Session());
    for (const char* l_port : {"0", "-1", "65536", "4294969538"}) {
        SetSetting("server_port", l_port);
        Session().Connect();
        ASSERT_EQ(l_spies.failed.count(), 1) << l_port;
        EXPECT_EQ(l_spies.Reason(), "socket error");
    }
    EXPECT_EQ(l_spies.disconnected.count(), 4);
    SetSetting("server_port", m_server.Port());
    FireHalfMinute();
    EXPECT_TRUE(m_server.Accept());
}

TEST_F(SessionTest, TheUsersDisconnectionIsFinalButSwallowsNoLaterLoss) {
    Spies l_spies(Session());
    ASSERT_NO_FATAL_FAILURE(LogIn());
    Session().SendRoomChat("lobby", "last words");
    Session().Disconnect();
    EXPECT_EQ(l_spies.disconnected.count(), 1);
    EXPECT_TRUE(m_server.Next<to_server::RoomChat>()) << "what was said before still goes out";
    ASSERT_TRUE(m_server.SeesClose());
    FireHalfMinute();
    Session().Disconnect();
    EXPECT_EQ(l_spies.connecting.count(), 1);
    EXPECT_EQ(l_spies.disconnected.count(), 1);

    ASSERT_NO_FATAL_FAILURE(LogIn());
    m_server.Close();
    ASSERT_TRUE(WaitUntil([&] { return l_spies.disconnected.count() == 2; }));
    FireHalfMinute();
    EXPECT_TRUE(m_server.Accept());
}

TEST_F(SessionTest, AfterALoginItTellsRoomsOnceAndTrackedUsersAndOpenQuestionsEachTime) {
    d.GetType("room")->GetItem("lobby")->NewItem("room_autojoin");
    Session().TrackUser("bob");
    Session().GetUserAddress("carol");
    QObject::connect(&Session(), &Server::Connected, &Session(), [this] { Session().SetWaitPort(2235); });

    ASSERT_NO_FATAL_FAILURE(LogIn());
    EXPECT_EQ(m_server.Next<to_server::SetWaitPort>().value_or(to_server::SetWaitPort{}).port, 2235);
    EXPECT_EQ(m_server.Next<to_server::EnterRoom>().value_or(to_server::EnterRoom{}).room, "lobby");
    EXPECT_EQ(m_server.Next<to_server::AddUser>().value_or(to_server::AddUser{}).user, "bob");
    EXPECT_EQ(m_server.Next<to_server::GetUserAddress>().value_or(to_server::GetUserAddress{}).user, "carol");

    Session().Disconnect();
    ASSERT_NO_FATAL_FAILURE(LogIn());
    EXPECT_TRUE(m_server.Next<to_server::SetWaitPort>());
    EXPECT_TRUE(m_server.Next<to_server::AddUser>()) << "rooms are rejoined by their forms";
    EXPECT_TRUE(m_server.Next<to_server::GetUserAddress>());
}

TEST_F(SessionTest, MessagesArriveWholeHoweverTheirBytesDo) {
    ASSERT_NO_FATAL_FAILURE(LogIn());
    std::vector<std::string> l_heard;
    QObject::connect(
        &Session(), &Server::RoomChat, &Session(),
        [&](const std::string&, const std::string&, const std::string& i_text) { l_heard.push_back(i_text); });
    const auto l_frame = [](const char* ip_text) {
        return ScriptedServer::FrameOf(from_server::RoomChat{"lobby", "bob", ip_text});
    };
    for (const char l_byte : l_frame("bytewise")) {
        m_server.SayBytes(std::string(1, l_byte));
        QCoreApplication::processEvents();
    }
    // No code, a code that nobody knows, no bytes at all: skipped whole.
    m_server.SayBytes(ScriptedServer::FrameOfBody("abc") + ScriptedServer::FrameOfBody("what is this?") +
                      LengthOnly(0));
    m_server.SayBytes(l_frame("one") + l_frame("two") + l_frame("three").substr(0, 7));
    ASSERT_TRUE(WaitUntil([&] { return l_heard.size() == 3; }));
    m_server.SayBytes(l_frame("three").substr(7));
    Settle();
    EXPECT_EQ(l_heard, (std::vector<std::string>{"bytewise", "one", "two", "three"}));
}

TEST_F(SessionTest, AFrameWithAnImpossibleLengthIsALoss) {
    Spies l_spies(Session());
    for (const std::uint32_t l_length : {64U * 1024 * 1024 + 1, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        ASSERT_NO_FATAL_FAILURE(LogIn());
        m_server.SayBytes(LengthOnly(l_length));
        ASSERT_TRUE(m_server.SeesClose()) << l_length;
    }
    EXPECT_EQ(l_spies.disconnected.count(), 4);
    FireHalfMinute();
    EXPECT_TRUE(m_server.Accept());
}

TEST_F(SessionTest, AServerThatDoesNotReadIsALossAndNoGrowingQueue) {
    ASSERT_NO_FATAL_FAILURE(LogIn());
    Spies l_spies(Session());
    m_server.Client().setReadBufferSize(1);
    const std::string l_text(100'000, 'x');
    for (int l_line = 0; l_line < 1000; ++l_line)
        Session().SendRoomChat("lobby", l_text);
    ASSERT_TRUE(Session().IsConnected()) << "not under the sender's feet";
    ASSERT_TRUE(WaitUntil([&] { return l_spies.disconnected.count() > 0; }));
    FireHalfMinute();
    EXPECT_TRUE(m_server.Accept());
}

TEST_F(SessionTest, AListenerMayDisconnectAndConnectInsideASignal) {
    const auto l_seeLogin = [this] {
        ASSERT_TRUE(m_server.Accept());
        ASSERT_TRUE(m_server.Next<to_server::Login>());
        m_server.Say(SampleAcceptance());
        ASSERT_TRUE(WaitUntil([this] { return Session().IsConnected(); }));
    };
    ASSERT_NO_FATAL_FAILURE(LogIn());
    QSignalSpy l_heard(&Session(), &Server::RoomChat);
    QObject::connect(&Session(), &Server::RoomChat, &Session(), &Server::Disconnect);
    QObject::connect(&Session(), &Server::Disconnected, &Session(), &Server::Connect);
    const std::string l_chat = ScriptedServer::FrameOf(from_server::RoomChat{"lobby", "bob", "hello"});
    m_server.SayBytes(l_chat + l_chat);
    ASSERT_NO_FATAL_FAILURE(l_seeLogin());
    EXPECT_EQ(l_heard.count(), 1) << "the second line came over a connection that is no more";
    m_server.Close();
    ASSERT_NO_FATAL_FAILURE(l_seeLogin());
}

TEST_F(SessionTest, EveryCutOfEveryMessageIsSurvived) {
    ASSERT_NO_FATAL_FAILURE(LogIn());
    std::string l_bytes;
    VisitMessagesFromServer([&l_bytes](const auto& i_message) {
        const std::string l_body(Encode(i_message).GetWritten());
        for (std::size_t l_length = 0; l_length <= l_body.size(); ++l_length)
            l_bytes += ScriptedServer::FrameOfBody(l_body.substr(0, l_length));
    });
    m_server.SayBytes(l_bytes);
    Settle();
    EXPECT_TRUE(Session().IsConnected());
    EXPECT_EQ(Attribute(Room("lobby"), "user_count"), "12");
}

TEST_F(SessionTest, LyingNumbersInEveryMessageAreSurvived) {
    ASSERT_NO_FATAL_FAILURE(LogIn());
    for (const std::uint32_t l_lie : {0U, 0x20001U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        std::string l_bytes;
        VisitMessagesFromServer([&](const auto& i_message) {
            const std::string l_body(Encode(i_message).GetWritten());
            for (std::size_t l_place = 4; l_place + 4 <= l_body.size(); ++l_place) {
                std::string l_lying = l_body;
                l_bytes += ScriptedServer::FrameOfBody(l_lying.replace(l_place, 4, LengthOnly(l_lie)));
            }
        });
        m_server.SayBytes(l_bytes);
    }
    SayAndSettle(from_server::UserStatus{"good", from_server::statusOnline, false});
    EXPECT_TRUE(User("good").IsConnected("is_online"));
}

class RecordingMapper : public PortMapper {
public:
    void Init() override { m_calls.push_back(0); }
    void AddPortMapping(QTcpSocket* ip_socket, int i_port) override {
        EXPECT_EQ(ip_socket->localAddress(), QHostAddress(QHostAddress::LocalHost));
        m_calls.push_back(i_port);
    }
    std::vector<int> m_calls; // 0 for Init, else the port mapped
};

TEST_F(SessionTest, ThePortIsMappedAtTheFirstLoginAndHourly) {
    RecordingMapper l_mapper;
    Session().SetPortMapper(&l_mapper);
    Session().DataLoaded();
    EXPECT_TRUE(IsSettingYes("use_upnp")) << "on by default";
    SetSetting("listening_port", "2235");

    ASSERT_NO_FATAL_FAILURE(LogIn());
    EXPECT_EQ(l_mapper.m_calls, (std::vector<int>{0, 2235}));
    Fire(timerManager->HourTimer());
    EXPECT_EQ(l_mapper.m_calls.size(), 3U);
    Session().Disconnect();
    Fire(timerManager->HourTimer());
    ASSERT_NO_FATAL_FAILURE(LogIn());
    EXPECT_EQ(l_mapper.m_calls, (std::vector<int>{0, 2235, 2235, 0})) << "mapped at the first login only";

    SetSetting("listening_port", "70000");
    Fire(timerManager->HourTimer());
    SetSetting("listening_port", "2235");
    SetSetting("use_upnp", "no");
    Session().DataLoaded();
    Fire(timerManager->HourTimer());
    EXPECT_EQ(l_mapper.m_calls.size(), 4U);
}

} // namespace
