#include "server/scripted_client.h"

#include <QElapsedTimer>
#include <QFile>

#include <gtest/gtest.h>

#include <deque>
#include <random>
#include <vector>

namespace {

std::string Bytes(std::initializer_list<std::uint32_t> i_numbers) {
    std::string l_bytes;
    for (const std::uint32_t l_number : i_numbers) {
        l_bytes.append(reinterpret_cast<const char*>(&l_number), sizeof(l_number));
    }
    return l_bytes;
}

std::string Framed(const std::string& i_body) {
    return Bytes({static_cast<std::uint32_t>(i_body.size())}) + i_body;
}

template <class Message>
std::string BodyOf(const Message& i_message) {
    return std::string(Encode(i_message).GetWritten());
}

// Every message that the server reads, whole.
std::vector<std::string> AllBodies() {
    return {BodyOf(to_server::SetWaitPort{1}),
            BodyOf(to_server::GetUserAddress{"x"}),
            BodyOf(to_server::AddUser{"x"}),
            BodyOf(to_server::UntrackUser{"x"}),
            BodyOf(to_server::GetUserStatus{"x"}),
            BodyOf(to_server::RoomChat{"x", "y"}),
            BodyOf(to_server::EnterRoom{"x"}),
            BodyOf(to_server::LeaveRoom{"x"}),
            BodyOf(to_server::IndirectConnectionRequest{1, "x", "P"}),
            BodyOf(to_server::PrivateChat{"x", "y"}),
            BodyOf(to_server::PrivateChatAcknowledgement{1}),
            BodyOf(to_server::FileSearch{1, "x"}),
            BodyOf(to_server::FilesFolders{1, 1}),
            BodyOf(to_server::GetUserStats{"x"}),
            BodyOf(to_server::DNetNoParent{true}),
            BodyOf(to_server::DNetCanParent{true}),
            BodyOf(to_server::WishListSearch{1, "x"}),
            BodyOf(to_server::UploadSpeed{1}),
            BodyOf(to_server::DNetLevel{1}),
            BodyOf(to_server::DNetGroupLeader{"x"}),
            BodyOf(to_server::ChildDepth{true}),
            BodyOf(to_server::CantConnectToPeer{1, "x"})};
}

class ServerHostileInput : public testing::Test {
protected:
    // The sender of the bytes is put out, and nobody else notices.
    void ExpectPutOut(ScriptedClient& io_client, const std::string& i_bytes) {
        io_client.SendBytes(i_bytes);
        EXPECT_TRUE(io_client.AwaitClose()) << testing::PrintToString(i_bytes.substr(0, 40));
        m_bystander.Settle();
    }

    const ServerProcess m_server;
    ScriptedClient m_bystander{m_server.Port(), "bystander"};
};

} // namespace

TEST_F(ServerHostileInput, AMalformedFrameEndsItsSenderOnly) {
    const std::uint32_t l_chat = to_server::RoomChat::code;
    std::vector<std::string> l_frames = {
        Bytes({0xFFFFFFFF}),
        Bytes({0x80000000}),
        Bytes({0x7FFFFFFF}),
        Bytes({512 * 1024 + 1}),
        Bytes({0}), // no code
        Framed("abc"),
        Framed(Bytes({l_chat, 0x20001}) + std::string(0x20001, 'r')), // a text over the limit
        Framed(Bytes({l_chat, 0xFFFFFFFF})),
        Framed(Bytes({l_chat, 0x80000000, 0})),
        Framed(Bytes({l_chat, 1})), // a text that is not there
    };
    for (const std::string& l_body : AllBodies()) {
        l_frames.push_back(Framed(l_body.substr(0, l_body.size() - 1)));
    }
    for (const std::string& l_frame : l_frames) {
        ScriptedClient l_client(m_server.Port(), "rogue");
        ExpectPutOut(l_client, l_frame);
    }
}

TEST_F(ServerHostileInput, AStrangerGetsNoFurtherThanTheLogin) {
    const std::string l_login = BodyOf(to_server::Login{"rogue", "secret", 157, "", 100});
    std::vector<std::string> l_frames = {Bytes({64 * 1024 + 1}), Bytes({0xFFFFFFFF}), Framed("")};
    for (std::size_t l_length = 0; l_length < l_login.size(); ++l_length) {
        l_frames.push_back(Framed(l_login.substr(0, l_length)));
    }
    for (const std::string& l_frame : l_frames) {
        ScriptedClient l_client(m_server.Port());
        ExpectPutOut(l_client, l_frame);
    }

    ScriptedClient l_impatient(m_server.Port());
    for (const std::string& l_body : AllBodies()) {
        l_impatient.SendBytes(Framed(l_body));
    }
    EXPECT_TRUE(l_impatient.LogIn("patient", "secret").accepted);
    m_bystander.Settle();
    m_bystander.TakeAll<from_server::RoomList>();
    m_bystander.Send(to_server::GetRoomList{});
    EXPECT_TRUE(m_bystander.Await<from_server::RoomList>()->open.names.empty());
}

TEST_F(ServerHostileInput, MessagesWithoutMeaningHereAreSkipped) {
    for (const std::uint32_t l_code : {0U, 28U, 93U, 102U, 128U, 130U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        m_bystander.SendBytes(Framed(Bytes({l_code})));
        m_bystander.SendBytes(Framed(Bytes({l_code}) + "anything, of any length"));
    }
    m_bystander.SendBytes(Framed(BodyOf(to_server::GetUserStatus{"x"}) + "a field of a later version"));
    EXPECT_TRUE(m_bystander.Await<from_server::UserStatus>());
    m_bystander.Settle();
}

TEST_F(ServerHostileInput, SurvivesNoise) {
    std::mt19937 l_random(20260101);
    const std::vector<std::string> l_bodies = AllBodies();
    const auto l_noise = [&](std::size_t i_length) {
        std::string l_bytes(i_length, '\0');
        for (char& l_byte : l_bytes) {
            l_byte = static_cast<char>(l_random());
        }
        return l_bytes;
    };
    // From an address of their own: the server turns away who comes from one with too many strangers already.
    const QHostAddress l_elsewhere(QStringLiteral("127.0.0.2"));
    for (int l_round = 0; l_round < 300; ++l_round) {
        ScriptedClient l_stranger(m_server.Port(), l_elsewhere);
        l_stranger.SendBytes(l_noise(l_random() % 200));
    }
    for (int l_round = 0; l_round < 10; ++l_round) {
        ScriptedClient l_client(m_server.Port(), "rogue");
        for (int l_frame = 0; l_frame < 200; ++l_frame) {
            std::string l_body = l_bodies[l_random() % l_bodies.size()];
            l_body.resize(l_body.size() + l_random() % 8, 'z');
            l_body[4 + l_random() % (l_body.size() - 4)] = static_cast<char>(l_random());
            l_client.SendBytes(Framed(l_body));
        }
    }
    m_bystander.Settle();
}

#ifndef __SANITIZE_ADDRESS__ // its quarantine keeps what was freed
TEST_F(ServerHostileInput, GivesBackTheMemoryOfUnfinishedFrames) {
    const auto l_residentKiB = [&] {
        QFile l_status(QStringLiteral("/proc/%1/statm").arg(m_server.ProcessId()));
        EXPECT_TRUE(l_status.open(QIODevice::ReadOnly));
        return l_status.readAll().split(' ').at(1).toLong() * 4;
    };
    const auto l_round = [&] {
        std::deque<ScriptedClient> l_strangers;
        for (int l_count = 0; l_count < 60; ++l_count) {
            l_strangers.emplace_back(m_server.Port());
            l_strangers.back().SendBytes(Bytes({64 * 1024}) + std::string(60 * 1024, 'x'));
            l_strangers.back().Flush();
        }
        m_bystander.Settle();
    };
    l_round();
    m_bystander.Settle();
    const long l_before = l_residentKiB();
    for (int l_count = 0; l_count < 5; ++l_count) {
        l_round();
    }
    QElapsedTimer l_time;
    l_time.start();
    while (l_residentKiB() > l_before + 5 * 1024 && l_time.elapsed() < g_patienceMs) {
        m_bystander.Settle(); // the last ones may still be going
    }
    EXPECT_LE(l_residentKiB(), l_before + 5 * 1024);
}
#endif
