#include "world/client_process.h"
#include "world/conditions.h"

#include "server/server_process.h"

#include <gtest/gtest.h>

#include <csignal>
#include <random>
#include <sys/stat.h>

namespace {

// Changes with every save, since each writes a new file.
ino_t FileNumber(const QString& i_path) {
    struct stat l_status {};
    ::stat(i_path.toUtf8().constData(), &l_status);
    return l_status.st_ino;
}

} // namespace

TEST(WorldStoreFile, IsWholeAfterAKillAtAnyMomentOfSaving) {
    const ServerProcess l_server;
    const ClientHome l_home(QStringLiteral("anna"), l_server.Port());
    {
        DrivenClient l_client(l_home);
        for (int l_file = 0; l_file < 2000; ++l_file) {
            l_client.Do({QStringLiteral("want"), QStringLiteral("nobody"), QString::number(l_file),
                         QStringLiteral("folder %1").arg(l_file % 50), QString::number(l_file)});
        }
        EXPECT_EQ(l_client.Stop(SIGTERM), 0);
    }
    const QStringList l_whole = l_home.Dump();
    EXPECT_GT(l_whole.size(), 2000);

    std::mt19937 l_random(std::random_device{}());
    DrivenClient l_client(l_home);
    for (int l_round = 0; l_round < 12; ++l_round) {
        if (!l_client.IsRunning())
            l_client.Start();
        l_client.Do({QStringLiteral("isConnected")});
        const ino_t l_before = FileNumber(l_home.StoreFile());
        l_client.SaveOnAndOn();
        EXPECT_TRUE(WaitUntil([&] { return FileNumber(l_home.StoreFile()) != l_before; }));
        const auto l_moment = l_random() % 50'000;
        QThread::usleep(l_moment);
        l_client.Kill();
        ASSERT_EQ(l_home.Dump(), l_whole) << "killed " << l_moment << " microseconds after the first save";
    }
}
