// The "Transfers" page: downloads and uploads, each by user and folder, with what is cleared by itself and how fast
// uploads may be.
#pragma once

#include "store/data.h"
#include "store/data_saver.h"

#include <QWidget>

#include <absl/container/flat_hash_set.h>

#include <string>

class QCheckBox;
class QLabel;
class QPoint;
class QSpinBox;
class QTabWidget;
class TransferList;
class TransferTree;
struct TransferTypes;

class TransfersForm : public QWidget, public DataHandler, public DataLoadedEventHandler {
    Q_OBJECT

public:
    explicit TransfersForm(QWidget* ip_parent = nullptr);

    // Once, before the store is loaded; needs transferQueueManager, timerManager, dataSaver, sizeManager and actionBar.
    void Init();

    void DataLoaded() override;

Q_SIGNALS:
    void DownloadComplete(ItemPtr i_entry);

private:
    void BuildLayout();
    QWidget* MakeDownloadsPage();
    QWidget* MakeUploadsPage();
    TransferList* MakeList(const TransferTypes& i_types, TransferTree* ip_tree, QLabel* ip_counts);
    void WatchDownloads();
    void WatchUploads();
    void WatchUsers();
    void AddActions();
    void AddKeys();
    void ShowExpandTexts();

    void OnTransfersLoaded();
    void OnDownloadEntryAdded(Item* ip_entry);
    void OnDownloadEntryRemoved(Item* ip_entry);
    void OnDownloadPlaceInLine(Item* ip_entry);
    void OnUploadEntryAdded(Item* ip_entry);
    void OnUserOnline(Item* ip_user);
    void OnUserOffline(Item* ip_user);
    void OnCompleted(ItemPtr i_entry);
    void OnDownloadComplete(ItemPtr i_entry);
    void EveryHalfMinute();

    void OnActionBarTriggered(std::string i_id);
    void OnContextMenuRequested(const TransferList& i_list, const QPoint& i_point);
    void OnClearDownloadsCheckStateChanged(int i_state);
    void OnClearUploadsCheckStateChanged(int i_state);
    void OnUploadSpeedLimitSpinValueChanged(int i_value);
    void OnUploadSpeedLimitCheckStateChanged(int i_state);
    void Tell(const QString& i_sentence);

    bool m_downloadsLoaded = false; // until then rows would come in the order of the file
    bool m_expandDownloadFolders = true;
    bool m_expandDownloadUsers = true;
    bool m_expandUploadFolders = true;
    bool m_expandUploadUsers = true;
    // Entries whose DownloadComplete is on its way, for as long as they are there.
    absl::flat_hash_set<Item*> m_completed;

    TransferTree* mp_downloadsTree = nullptr;
    TransferTree* mp_uploadsTree = nullptr;
    TransferList* mp_downloads = nullptr; // from Init() on
    TransferList* mp_uploads = nullptr;
    QTabWidget* mp_tabs = nullptr;
    QLabel* mp_downloadCounts = nullptr;
    QLabel* mp_uploadCounts = nullptr;
    QCheckBox* mp_clearDownloads = nullptr;
    QCheckBox* mp_clearUploads = nullptr;
    QCheckBox* mp_uploadLimit = nullptr;
    QSpinBox* mp_uploadLimitValue = nullptr;
};
