#include "dnet_network.h"

#include <QHostAddress>

#include <algorithm>

#include "app/text.h"

void DNetTest::SetUp() {
    PeerNetworkTest::SetUp();
    static DNetManager s_manager;
    SetLogSink(this);
    QObject::connect(dnetManager, &DNetManager::DNetSearchRequest, &m_context,
                     [this](const std::string& i_user, quint32 i_token, const std::string& i_text) {
                         m_searches.push_back(i_user + " " + std::to_string(i_token) + " " + i_text);
                     });
}

// The peers of the test have gone by now.
void DNetTest::TearDown() {
    SetLogSink(nullptr);
    EXPECT_TRUE(WaitFor([] { return g("dnet_child").empty() && g("dnet_parent_candidate").empty(); }));
    EXPECT_TRUE(WaitFor([] { return Entry("dnet_parent_user") == "none"; }));
    g("dnet_global").Disconnect("dnet_value");
    d.GetType("global")->GetItem("upload_speed")->Disconnect("global_value");
    dnetManager->OnDNetParentMinSpeed(-1);
    dnetManager->OnDNetParentSpeedConnectionRatio(-1);
    dnetManager->OnConnected();
    PeerNetworkTest::TearDown();
}

void DNetTest::NameParents(std::initializer_list<std::pair<std::string, quint16>> i_parents) {
    from_server::DNetPossibleParents l_list;
    for (const auto& [l_user, l_port] : i_parents)
        l_list.parents.emplace_back(l_user, TCPAddress{QHostAddress(QHostAddress::LocalHost).toIPv4Address(), l_port});
    TheServer().Send(l_list);
}

namespace {

struct Relay {
    static constexpr std::int32_t code = from_server::DNetMessage::code;
    std::string body;
    [[nodiscard]] bool Read(InputStream&) { return true; }
    bool Write(OutputStream& o_body) const { return o_body.WriteBuffer(body.data(), body.size()); }
};

} // namespace

void DNetTest::RelayFromServer(const std::string& i_body) {
    TheServer().Send(Relay{i_body});
}

std::unique_ptr<ScriptedPeer> DNetTest::ConnectCandidate(const std::string& i_user) {
    ScriptedListener l_listener;
    NameParents({{i_user, l_listener.Port()}});
    auto l_peer = l_listener.Next();
    EXPECT_TRUE(WaitFor([&] { return User(i_user).IsConnected("dnet_parent_candidate"); }));
    EXPECT_TRUE(WaitFor([&] { return l_peer->Frames().size() == 1; }));
    l_peer->Frames().clear();
    return l_peer;
}

std::unique_ptr<ScriptedPeer> DNetTest::ConnectParent(const std::string& i_user, std::optional<int> i_level,
                                                      const std::string& i_leader) {
    auto l_peer = ConnectCandidate(i_user);
    if (i_level)
        l_peer->SendFrame(BytesOf(EncodeDNetLevel(*i_level)));
    if (!i_leader.empty())
        l_peer->SendFrame(BytesOf(EncodeDNetGroupLeader(i_leader)));
    l_peer->SendFrame(SearchFrom("first"));
    EXPECT_TRUE(WaitFor([&] { return Entry("dnet_parent_user") == i_user; }));
    LetThingsSettle();
    TheServer().Forget();
    return l_peer;
}

std::unique_ptr<ScriptedPeer> DNetTest::ConnectChild(const std::string& i_user) {
    auto l_peer = ScriptedPeer::Introduced(i_user, "D");
    EXPECT_TRUE(WaitFor([&] { return User(i_user).IsConnected("dnet_child"); }));
    return l_peer;
}

std::string DNetTest::Entry(const char* ip_name) {
    const ItemPtr l_value = d.GetType("dnet_global")->HasItem(ip_name)["dnet_value"];
    return l_value ? l_value.AsString() : "none";
}

std::string DNetTest::SearchFrom(const std::string& i_user) {
    return BytesOf(EncodeDNetSearch({i_user, 7, "some words"}));
}

bool DNetTest::HearsSearchOf(const std::string& i_user) {
    return WaitFor([&] { return std::ranges::count(m_searches, i_user + " 7 some words") > 0; });
}

bool DNetTest::HasLine(std::string_view i_line) const {
    return std::ranges::count(m_lines, i_line) > 0;
}

void DNetTest::Log(QString i_area, int i_level, QString i_text, ItemPtr) {
    if (i_area == QLatin1String("Distributed Network"))
        m_lines.push_back(std::to_string(i_level) + " " + ToUtf8(i_text));
}
