// A connection between clients has two roads: straight to the other's address, and a call back that the server asks
// for. Here one of the two is blocked, and a download, which needs a connection in each direction, comes through.
#include "world/client_process.h"
#include "world/conditions.h"
#include "world/sample_file.h"

#include "server/server_process.h"

#include <gtest/gtest.h>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// Holds a port without listening: nobody else can listen there, and who connects is refused.
class BlockedPort {
public:
    explicit BlockedPort(quint16 i_port) : m_descriptor(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in l_address{};
        l_address.sin_family = AF_INET;
        l_address.sin_addr.s_addr = htonl(INADDR_ANY);
        l_address.sin_port = htons(i_port);
        EXPECT_EQ(::bind(m_descriptor, reinterpret_cast<sockaddr*>(&l_address), sizeof(l_address)), 0);
    }
    ~BlockedPort() { ::close(m_descriptor); }
    BlockedPort(const BlockedPort&) = delete;
    BlockedPort& operator=(const BlockedPort&) = delete;

private:
    const int m_descriptor;
};

class WorldConnectionLeg : public testing::TestWithParam<bool> {};

} // namespace

// Uploader unreachable: the messages come by its call back, the file straight from it to the downloader.
// Downloader unreachable: the messages go straight to the uploader, the file comes by the downloader's call back.
TEST_P(WorldConnectionLeg, AloneServesADownload) {
    const ServerProcess l_server;
    const ClientHome l_source(QStringLiteral("source"), l_server.Port());
    const ClientHome l_taker(QStringLiteral("taker"), l_server.Port());
    const QString l_file = l_source.Path(QStringLiteral("shared/album/song.bin"));
    WriteSampleFile(l_file, 3'000'000, 1);
    l_source.Edit(QStringLiteral("share"), {l_source.Path(QStringLiteral("shared")), QStringLiteral("public")});
    l_taker.Edit(QStringLiteral("want"), {QStringLiteral("source"), l_file, QStringLiteral("3000000")});

    const BlockedPort l_blocked(GetParam() ? l_source.Port() : l_taker.Port());
    const ClientProcess l_sourceProcess(l_source);
    const ClientProcess l_takerProcess(l_taker);
    const QString l_complete = l_taker.Downloads("complete/album/song.bin");
    EXPECT_TRUE(WaitUntil([&] { return SizeOf(l_complete) == 3'000'000; }));
    EXPECT_EQ(Sha256(l_complete), Sha256(l_file));
}

INSTANTIATE_TEST_SUITE_P(Unreachable, WorldConnectionLeg, testing::Values(true, false),
                         [](const auto& i_info) { return i_info.param ? "Uploader" : "Downloader"; });
