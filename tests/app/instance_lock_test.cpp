#include "app/instance_lock.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <filesystem>

#include <gtest/gtest.h>

namespace {

class InstanceLockTest : public testing::Test {
protected:
    std::string Folder() const { return m_folder.path().toStdString(); }

    QTemporaryDir m_folder;
};

} // namespace

TEST_F(InstanceLockTest, TheFirstIsCalledAndTheLockEndsWithIt) {
    {
        const InstanceLock l_first(Folder());
        EXPECT_FALSE(l_first.IsTaken());
        QSignalSpy l_calls(&l_first, &InstanceLock::Called);
        const InstanceLock l_second(Folder());
        EXPECT_TRUE(l_second.IsTaken());
        EXPECT_TRUE(l_second.CallHolder());
        EXPECT_TRUE(l_calls.wait(30'000));
        EXPECT_EQ(std::filesystem::status(Folder() + "/.Tidewell.socket").permissions() &
                      (std::filesystem::perms::group_all | std::filesystem::perms::others_all),
                  std::filesystem::perms::none);
    }
    EXPECT_FALSE(InstanceLock(Folder()).IsTaken());
}

TEST_F(InstanceLockTest, OtherFoldersAndFoldersWithoutALockAreNotInTheWay) {
    const InstanceLock l_first(Folder());
    const QTemporaryDir l_other;
    EXPECT_FALSE(InstanceLock(l_other.path().toStdString()).IsTaken());
    EXPECT_FALSE(InstanceLock(Folder() + "/missing").IsTaken());
    // The socket of a process that was killed.
    QFile l_leftover(l_other.filePath(QStringLiteral(".Tidewell.socket")));
    ASSERT_TRUE(l_leftover.open(QIODevice::WriteOnly));
    const InstanceLock l_after(l_other.path().toStdString());
    EXPECT_TRUE(InstanceLock(l_other.path().toStdString()).CallHolder());
}
