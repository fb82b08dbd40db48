// The network of the messenger's tests with the real DNetManager on top: the scripted server names scripted peers as
// possible parents, and others come by themselves as children.
//
// One manager can live in a process, and it tries nobody twice: each test uses users of its own.
#pragma once

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "dnet/dnet_manager.h"
#include "dnet/dnet_messages.h"
#include "peer_network.h"

class DNetTest : public PeerNetworkTest, public LogSink {
protected:
    void SetUp() override;
    void TearDown() override;

    // As the server says it.
    static void NameParents(std::initializer_list<std::pair<std::string, quint16>> i_parents);
    static void RelayFromServer(const std::string& i_body);

    // Named by the server, connected to by us, introduced, and known as a candidate.
    static std::unique_ptr<ScriptedPeer> ConnectCandidate(const std::string& i_user);
    // A candidate that said this, delivered a search and is the parent; its messages have been handled.
    std::unique_ptr<ScriptedPeer> ConnectParent(const std::string& i_user, std::optional<int> i_level = {},
                                                const std::string& i_leader = {});
    // Connected to us.
    static std::unique_ptr<ScriptedPeer> ConnectChild(const std::string& i_user);
    static std::size_t CountChildren() { return d.GetType("dnet_child")->CountItems(); }

    // The value of an entry of dnet_global; "none" if there is none.
    static std::string Entry(const char* ip_name);
    static std::string SearchFrom(const std::string& i_user);
    // Waits for a search of that user to be heard by the rest of the program.
    bool HearsSearchOf(const std::string& i_user);

    template <class Message>
    static Message TakeFromServer() {
        Message l_message;
        EXPECT_TRUE(TheServer().Take(l_message)) << Message::code;
        return l_message;
    }
    bool HasLine(std::string_view i_line) const;

    // "user token text" of each search that was heard.
    std::vector<std::string> m_searches;
    // "level text" of each line of the area.
    std::vector<std::string> m_lines;

private:
    void Log(QString i_area, int i_level, QString i_text, ItemPtr i_item) override;
};
