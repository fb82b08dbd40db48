// The real managers of one client, with a home of their own, for tests of the queues.
#pragma once

#include "app/log.h"
#include "app/settings.h"
#include "app/text.h"
#include "app/timers.h"
#include "app/timestamp.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "sharing/shared_folders_manager.h"
#include "store/data_saver.h"
#include "transfers/scripted_peer.h"
#include "transfers/transfer_queue_manager.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

class Client : public LogSink {
public:
    Client() {
        qputenv("HOME", m_home.path().toUtf8());
        new TimerManager;
        new DataSaver;
        (new Server)->CreateData();
        new PeerMessenger;
        CreateSettingsTypes();
        new SharedFoldersManager;
        new TransferQueueManager;
        SetSetting("listening_port", FreePort());
        dataSaver->EmitDataLoaded();
        sharedFoldersManager->Init();
        SetLogSink(this);
    }
    void Log(QString, int, QString i_text, ItemPtr) override { m_log.push_back(ToUtf8(i_text)); }

    QTemporaryDir m_home;
    std::vector<std::string> m_log;

private:
    static int FreePort() {
        QTcpServer l_probe;
        l_probe.listen();
        return l_probe.serverPort();
    }
};

class QueueTest : public testing::Test {
protected:
    QueueTest() : m_queue(*(TheClient(), transferQueueManager)) {
        SetSetting("download_folder", ToUtf8(m_folder.filePath(QStringLiteral("dl"))));
        TheClient().m_log.clear();
    }
    ~QueueTest() override {
        for (Item* lp_entry : g("download_entry")) {
            m_queue.RemoveDownload(lp_entry);
        }
        for (Item* lp_entry : g("upload_entry")) {
            m_queue.RemoveUpload(lp_entry);
        }
        for (Item* lp_folder : g("shared_folder")) {
            sharedFoldersManager->UnshareFolder(lp_folder->AsString());
        }
        for (const char* lp_mark : {"is_online", "is_privileged", "in_user_list", "unshared"}) {
            g("user").Disconnect(lp_mark);
        }
        g("connect_to_peer_request").Remove(); // attempts whose indirect leg nobody will answer
        Settle();
    }

    // Lives until the process ends; each test of CTest is a process.
    static Client& TheClient() {
        static Client* const lp_client = new Client;
        return *lp_client;
    }
    static bool Logged(const std::string& i_text) {
        const auto& l_log = TheClient().m_log;
        return std::find(l_log.begin(), l_log.end(), i_text) != l_log.end();
    }

    QString Path(const std::string& i_name) const { return m_folder.filePath(ToQString(i_name)); }
    void Write(const std::string& i_name, const std::string& i_bytes) const {
        QDir().mkpath(ToQString(GetFolder(ToUtf8(Path(i_name)))));
        QFile l_file(Path(i_name));
        ASSERT_TRUE(l_file.open(QIODevice::WriteOnly));
        l_file.write(i_bytes.data(), static_cast<qint64>(i_bytes.size()));
    }
    std::string Read(const std::string& i_name) const {
        QFile l_file(Path(i_name));
        return l_file.open(QIODevice::ReadOnly) ? l_file.readAll().toStdString() : "(none)";
    }
    bool Exists(const std::string& i_name) const { return QFile::exists(Path(i_name)); }

    ItemPtr Download(const ScriptedPeer& i_peer, const std::string& i_name) const {
        return m_queue.GetDownloadEntry(i_peer.Name(), i_name, "music\\live");
    }
    static std::string Status(ItemPtr i_entry) { return i_entry[i_entry.GetType()->GetName() + "_status"].AsString(); }
    static bool Becomes(ItemPtr i_entry, const std::string& i_status) {
        return Until([&] { return Status(i_entry) == i_status; });
    }
    static void Age(ItemPtr i_owner, const char* ip_type, int i_seconds) {
        const std::string l_then = ToTimestamp(QDateTime::currentDateTime().addSecs(-i_seconds));
        i_owner.Connect(d.GetType(ip_type)->GetItem(l_then));
    }

    QTemporaryDir m_folder;
    TransferQueueManager& m_queue;
};
