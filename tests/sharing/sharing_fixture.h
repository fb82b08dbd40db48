// The managers that sharing stands on, made once for the process (Types cannot be made twice), and an empty store for
// each test.
#pragma once

#include "app/settings.h"
#include "app/timers.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "sharing/shared_folders_manager.h"
#include "sharing/temp_tree.h"
#include "store/data.h"
#include "store/data_saver.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

class SharingTest : public testing::Test {
protected:
    SharingTest() { static Managers l_managers; }

    ~SharingTest() override {
        for (const char* l_root : {"shared_folder", "user", "user_list_group", "global", "user_share"})
            g(l_root).Remove();
        d.RemoveDisconnectedItems();
    }

    static Item* Share(const std::string& i_path) { return d.GetType("shared_folder")->NewItem(i_path); }

    // The paths of all files in the store, sorted.
    static std::vector<std::string> SharedPaths() {
        std::vector<std::string> l_paths;
        for (Item* lp_file : g("shared_file"))
            l_paths.push_back(lp_file->HasItem("shared_file_folder").AsString() + "/" +
                              lp_file->HasItem("shared_file_name").AsString());
        std::sort(l_paths.begin(), l_paths.end());
        return l_paths;
    }

    // Added and removed, as a rescan reports them.
    static std::pair<int, int> Rescan() {
        QSignalSpy l_spy(sharedFoldersManager, &SharedFoldersManager::SharedFilesRescanned);
        sharedFoldersManager->RescanShares();
        return l_spy.size() == 1 ? std::pair(l_spy[0][0].toInt(), l_spy[0][1].toInt()) : std::pair(-1, -1);
    }

private:
    struct Managers {
        TimerManager timers;
        DataSaver saver;
        Server server;
        std::unique_ptr<PeerMessenger> messenger;
        std::unique_ptr<SharedFoldersManager> sharedFolders;

        Managers() {
            server.CreateData();
            messenger = std::make_unique<PeerMessenger>();
            CreateSettingsTypes();
            SetSetting("listening_port", 0);
            messenger->DataLoaded();
            sharedFolders = std::make_unique<SharedFoldersManager>();
            sharedFolders->Init();
        }
    };
};
