// The real store and a real session, against a scripted server.
#pragma once

#include <QSignalSpy>

#include <gtest/gtest.h>

#include "app/settings.h"
#include "app/timers.h"
#include "net/message_samples.h"
#include "net/scripted_server.h"
#include "net/server.h"
#include "peer/peer_schema.h"
#include "store/data.h"

class SessionTest : public testing::Test {
protected:
    SessionTest() {
        static TimerManager l_timers;
        static DataSaver l_saver;
        mp_session = std::make_unique<Server>();
        static const bool l_typesStand = CreateTypes();
        static_cast<void>(l_typesStand);
        SetSetting("server_host", "127.0.0.1");
        SetSetting("server_port", m_server.Port());
        SetSetting("username", "alice");
        SetSetting("password", "secret");
    }

    ~SessionTest() override {
        mp_session.reset();
        std::map<std::string, Type*> l_types;
        d.GetTypes(l_types);
        for (const auto& [l_name, lp_type] : l_types)
            lp_type->GetItems().Remove();
    }

    Server& Session() { return *mp_session; }

    // Connects and takes the login off the wire.
    void ConnectToServer() {
        Session().Connect();
        ASSERT_TRUE(m_server.Accept());
        ASSERT_TRUE(m_server.Next<to_server::Login>());
    }

    void LogIn() {
        ASSERT_NO_FATAL_FAILURE(ConnectToServer());
        from_server::LoginReply l_reply;
        l_reply.accepted = true;
        m_server.Say(l_reply);
        ASSERT_TRUE(WaitUntil([this] { return Session().IsConnected(); }));
    }

    // Returns once the session has handled everything said so far.
    void Settle() {
        QSignalSpy l_reached(&Session(), &Server::DNetReset);
        m_server.Say(from_server::DNetReset{});
        ASSERT_TRUE(WaitUntil([&l_reached] { return l_reached.count() > 0; }));
    }

    template <class Message>
    void SayAndSettle(const Message& i_message) {
        m_server.Say(i_message);
        Settle();
    }

    template <class Condition>
    static bool WaitUntil(Condition i_condition) {
        return QTest::qWaitFor(i_condition, deadlineMilliseconds);
    }

    static void Fire(QTimer* ip_timer) { QMetaObject::invokeMethod(ip_timer, "timeout", Qt::DirectConnection); }
    static void FireHalfMinute() { Fire(timerManager->HalfMinuteTimer()); }

    static ItemPtr User(const char* ip_name) { return d.GetType("user")->HasItem(ip_name); }
    static ItemPtr Room(const char* ip_name) { return d.GetType("room")->HasItem(ip_name); }
    static std::string Attribute(ItemPtr i_item, const char* ip_type) { return i_item[ip_type].AsString(); }
    static std::set<std::string> Names(const ItemSet& i_items) {
        std::set<std::string> l_names;
        for (Item* lp_item : i_items)
            l_names.insert(lp_item->AsString());
        return l_names;
    }

    ScriptedServer m_server;

private:
    bool CreateTypes() {
        mp_session->CreateData();
        CreatePeerTypes();
        CreateSettingsTypes();
        return true;
    }

    std::unique_ptr<Server> mp_session;
};
