#include "ui/transfers_form.h"

#include "app/settings.h"
#include "app/timers.h"
#include "app/timestamp.h"
#include "transfers/transfer_queue_manager.h"
#include "ui/action_set_tool_bar.h"
#include "ui/empty_list_hint.h"
#include "ui/message_box.h"
#include "ui/size_manager.h"
#include "ui/tab_page.h"
#include "ui/transfer_actions.h"
#include "ui/transfer_counts.h"
#include "ui/transfer_list.h"
#include "ui/transfer_tree.h"
#include "ui/user_menu_options.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QShortcut>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>

namespace {

constexpr int c_uploadColumns = 8;
constexpr int c_downloadColumns = 9;
constexpr int c_highestLimit = 99999;     // KiB per second
constexpr qint64 c_uploadsKept = 300'000; // milliseconds that an upload without a sign of life stays listed

constexpr const char* c_clearDownloads = "clear_complete_downloads";
constexpr const char* c_clearUploads = "clear_complete_aborted_uploads";

template <class Widget>
Widget* Named(Widget* ip_widget, const char* i_name) {
    ip_widget->setObjectName(QLatin1String(i_name));
    return ip_widget;
}

void SwitchSetting(const char* ip_key, bool i_on) {
    if (i_on) {
        SetSetting(ip_key, "yes");
    } else {
        d.GetType("global")->GetItem(ip_key)->Disconnect("global_value");
    }
}

QWidget* MakePage(TransferTree* ip_tree, QHBoxLayout* ip_controls) {
    QWidget* const lp_page = new QWidget;
    lp_page->setFocusProxy(ip_tree);
    QVBoxLayout* const lp_layout = new QVBoxLayout(lp_page);
    UseWholeTab(lp_layout);
    lp_layout->addWidget(ip_tree);
    lp_layout->addLayout(ip_controls);
    return lp_page;
}

QLabel* MakeCounts(const char* ip_name) {
    QLabel* const lp_label = Named(new QLabel, ip_name);
    lp_label->setTextFormat(Qt::PlainText);
    return lp_label;
}

// Milliseconds since the upload last did something; empty if that is not known.
std::optional<qint64> Silence(ItemPtr i_entry) {
    const QDateTime l_now = QDateTime::currentDateTime();
    std::optional<qint64> l_silence = AgeInMilliseconds(i_entry["last_status_change_time"], l_now);
    if (const ItemPtr l_receipt = i_entry["last_receipt_time"]) {
        const qint64 l_age = l_receipt.AsPointer<QDateTime>()->msecsTo(l_now);
        l_silence = std::min(l_silence.value_or(l_age), l_age);
    }
    return l_silence;
}

// A path that fires for items of the Type, by the connections of theirs.
PathNode* Path(const char* ip_root, std::initializer_list<const char*> i_children, PathNodeRelation i_relation) {
    PathNode* const lp_root = new PathNode(d, ip_root);
    for (const char* const lp_child : i_children) {
        new PathNode(lp_root, lp_child, i_relation);
    }
    return lp_root;
}

} // namespace

TransfersForm::TransfersForm(QWidget* ip_parent) : QWidget(ip_parent) {
    BuildLayout();
}

void TransfersForm::BuildLayout() {
    mp_tabs = Named(new QTabWidget, "transfersTabControl");
    mp_tabs->tabBar()->setAccessibleName(tr("Directions"));
    mp_tabs->addTab(MakeDownloadsPage(), tr("Downloads"));
    mp_tabs->addTab(MakeUploadsPage(), tr("Uploads"));
    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    lp_layout->addWidget(mp_tabs);
}

QWidget* TransfersForm::MakeDownloadsPage() {
    mp_downloadsTree = new TransferTree(QStringLiteral("downloadsList"), c_downloadColumns);
    mp_downloadsTree->setAccessibleName(tr("Downloads"));
    new EmptyListHint(mp_downloadsTree,
                      tr("Nothing to download. Files come into this list from search results and from "
                         "the shares of other users."));
    mp_clearDownloads = Named(new QCheckBox(tr("Clear Complete Downloads")), "clearDownloadsCheckBox");
    mp_downloadCounts = MakeCounts("downloadCounts");

    QHBoxLayout* const lp_controls = new QHBoxLayout;
    lp_controls->addWidget(mp_clearDownloads);
    lp_controls->addStretch();
    lp_controls->addWidget(mp_downloadCounts);
    return MakePage(mp_downloadsTree, lp_controls);
}

QWidget* TransfersForm::MakeUploadsPage() {
    mp_uploadsTree = new TransferTree(QStringLiteral("uploadsList"), c_uploadColumns);
    mp_uploadsTree->setAccessibleName(tr("Uploads"));
    new EmptyListHint(mp_uploadsTree, tr("Nobody is fetching files from you at the moment."));
    mp_clearUploads = Named(new QCheckBox(tr("Clear Complete/Aborted Uploads")), "clearUploadsCheckBox");
    mp_uploadLimit = Named(new QCheckBox(tr("Limit Upload Speed to")), "uploadLimitCheckBox");
    mp_uploadLimitValue = Named(new QSpinBox, "uploadLimitSpinBox");
    mp_uploadLimitValue->setMaximum(c_highestLimit);
    mp_uploadLimitValue->setAccessibleName(tr("Limit of the upload speed in kilobytes per second"));
    QLabel* const lp_unit = new QLabel(tr("Kilobytes Per Second"));
    lp_unit->setBuddy(mp_uploadLimitValue);
    mp_uploadCounts = MakeCounts("uploadCounts");

    QHBoxLayout* const lp_controls = new QHBoxLayout;
    lp_controls->addWidget(mp_clearUploads);
    lp_controls->addSpacing(24);
    lp_controls->addWidget(mp_uploadLimit);
    lp_controls->addWidget(mp_uploadLimitValue);
    lp_controls->addWidget(lp_unit);
    lp_controls->addStretch();
    lp_controls->addWidget(mp_uploadCounts);
    return MakePage(mp_uploadsTree, lp_controls);
}

void TransfersForm::Init() {
    mp_downloads = MakeList(c_downloadTypes, mp_downloadsTree, mp_downloadCounts);
    mp_uploads = MakeList(c_uploadTypes, mp_uploadsTree, mp_uploadCounts);
    WatchDownloads();
    WatchUploads();
    WatchUsers();
    dataSaver->AddDataLoadedHandler(this);
    connect(timerManager->HalfMinuteTimer(), &QTimer::timeout, this, &TransfersForm::EveryHalfMinute);
    AddActions();
    AddKeys();
    mp_downloadsTree->setFocus();
}

TransferList* TransfersForm::MakeList(const TransferTypes& i_types, TransferTree* ip_tree, QLabel* ip_counts) {
    TransferList* const lp_list = new TransferList(i_types, ip_tree);
    new TransferCounts(*lp_list, ip_counts);
    connect(ip_tree, &QTreeWidget::customContextMenuRequested, this,
            [this, lp_list](const QPoint& i_point) { OnContextMenuRequested(*lp_list, i_point); });
    return lp_list;
}

void TransfersForm::WatchDownloads() {
    d.AddPathEventHandler(Path("download_entry", {"user", "file_name", "file_size", "remote_folder"}, Connected),
                          MakeHandler(this, &TransfersForm::OnDownloadEntryAdded));
    d.AddPathEventHandler(Path("download_entry", {"place_in_line"}, Connected),
                          MakeHandler(this, &TransfersForm::OnDownloadPlaceInLine));
    d.GetType("download_entry")->m_itemRemoved.AddHandler(MakeHandler(this, &TransfersForm::OnDownloadEntryRemoved));
    connect(transferQueueManager, &TransferQueueManager::DownloadProgressed, mp_downloads, &TransferList::OnProgress);
    connect(transferQueueManager, &TransferQueueManager::TransfersLoaded, this, &TransfersForm::OnTransfersLoaded);
    connect(mp_downloads, &TransferList::Completed, this, &TransfersForm::OnCompleted);
    // The rest of what completes a download comes first.
    connect(this, &TransfersForm::DownloadComplete, this, &TransfersForm::OnDownloadComplete, Qt::QueuedConnection);
}

void TransfersForm::WatchUploads() {
    d.AddPathEventHandler(Path("upload_entry", {"user", "shared_file"}, Connected),
                          MakeHandler(this, &TransfersForm::OnUploadEntryAdded));
    connect(transferQueueManager, &TransferQueueManager::UploadProgressed, mp_uploads, &TransferList::OnProgress);
}

void TransfersForm::WatchUsers() {
    d.AddPathEventHandler(Path("user", {"is_online"}, NewlyConnected), MakeHandler(this, &TransfersForm::OnUserOnline));
    d.AddPathEventHandler(Path("user", {"is_online"}, NewlyDisconnected),
                          MakeHandler(this, &TransfersForm::OnUserOffline));
}

void TransfersForm::AddActions() {
    const auto l_add = [](const char* ip_set, const char* ip_id, const QString& i_text, bool i_needsSelection) {
        actionBar->AddSetAction(ip_set, ip_id, i_text.toStdString(), ":/icons/transfer_icon", i_needsSelection);
    };
    l_add("downloads", "remove_download", tr("Remove Download(s)"), true);
    l_add("downloads", "expand_download_folders", tr("Expand Folders"), false);
    l_add("downloads", "expand_download_users", tr("Expand Users"), false);
    l_add("downloads", "open_download_file", tr("Open File"), true);
    l_add("downloads", "open_download_folder", tr("Open Folder"), true);
    l_add("downloads", "retry_download", tr("Retry"), true);
    l_add("uploads", "expand_upload_folders", tr("Expand Folders"), false);
    l_add("uploads", "expand_upload_users", tr("Expand Users"), false);
    actionBar->RegisterWidget(mp_downloadsTree, QStringLiteral("downloads"));
    actionBar->RegisterWidget(mp_uploadsTree, QStringLiteral("uploads"));
    actionBar->AutoFocusTabWidget(mp_tabs);
    ShowExpandTexts();
    connect(actionBar, &ActionSetToolBar::ActionTriggered, this, &TransfersForm::OnActionBarTriggered);
}

void TransfersForm::AddKeys() {
    const auto l_add = [this](QWidget* ip_tree, const QKeySequence& i_keys, auto i_handler) {
        QShortcut* const lp_key = new QShortcut(i_keys, ip_tree);
        lp_key->setContext(Qt::WidgetShortcut);
        connect(lp_key, &QShortcut::activated, this, i_handler);
    };
    l_add(mp_downloadsTree, QKeySequence(QKeySequence::Copy), [this] { CopySelectedNames(*mp_downloads); });
    l_add(mp_uploadsTree, QKeySequence(QKeySequence::Copy), [this] { CopySelectedNames(*mp_uploads); });
    l_add(mp_downloadsTree, QKeySequence(QKeySequence::Delete), [this] { RemoveSelectedDownloads(*mp_downloads); });
}

void TransfersForm::ShowExpandTexts() {
    const auto l_show = [](QWidget* ip_tree, const char* ip_id, const QString& i_text, bool i_on) {
        actionBar->SetWidgetActionText(ip_tree, QLatin1String(ip_id), i_text.arg(i_on ? tr("on") : tr("off")));
    };
    l_show(mp_downloadsTree, "expand_download_folders", tr("Expand Folders [%1]"), m_expandDownloadFolders);
    l_show(mp_downloadsTree, "expand_download_users", tr("Expand Users [%1]"), m_expandDownloadUsers);
    l_show(mp_uploadsTree, "expand_upload_folders", tr("Expand Folders [%1]"), m_expandUploadFolders);
    l_show(mp_uploadsTree, "expand_upload_users", tr("Expand Users [%1]"), m_expandUploadUsers);
}

// Only now are the controls listened to, so that loading changes nothing.
void TransfersForm::DataLoaded() {
    const long long l_limit = SettingNumber("upload_speed_limit").value_or(0);
    mp_uploadLimitValue->setValue(static_cast<int>(std::clamp<long long>(l_limit, 0, c_highestLimit)));
    mp_uploadLimit->setChecked(IsSettingYes("upload_speed_limit_enabled"));
    mp_clearDownloads->setChecked(IsSettingYes(c_clearDownloads));
    mp_clearUploads->setChecked(IsSettingYes(c_clearUploads));
    connect(mp_uploadLimitValue, &QSpinBox::valueChanged, this, &TransfersForm::OnUploadSpeedLimitSpinValueChanged);
    connect(mp_uploadLimit, &QCheckBox::stateChanged, this, &TransfersForm::OnUploadSpeedLimitCheckStateChanged);
    connect(mp_clearDownloads, &QCheckBox::stateChanged, this, &TransfersForm::OnClearDownloadsCheckStateChanged);
    connect(mp_clearUploads, &QCheckBox::stateChanged, this, &TransfersForm::OnClearUploadsCheckStateChanged);
    sizeManager->RegisterTreeWidget(QStringLiteral("download_list"), mp_downloadsTree);
    sizeManager->RegisterTreeWidget(QStringLiteral("upload_list"), mp_uploadsTree);
}

void TransfersForm::OnTransfersLoaded() {
    m_downloadsLoaded = true;
    mp_downloadsTree->PostponeLayout();
    const ItemSet l_entries = g("download_entry");
    for (Item* const lp_entry : l_entries.SortNumericBy("download_order", true)) {
        mp_downloads->AddEntry(lp_entry);
    }
    // Those whose order was lost with a damaged file.
    for (Item* const lp_entry : l_entries) {
        mp_downloads->AddEntry(lp_entry);
    }
}

void TransfersForm::OnDownloadEntryAdded(Item* ip_entry) {
    if (m_downloadsLoaded) {
        mp_downloads->AddEntry(ip_entry);
    }
}

void TransfersForm::OnDownloadEntryRemoved(Item* ip_entry) {
    m_completed.erase(ip_entry);
}

void TransfersForm::OnDownloadPlaceInLine(Item* ip_entry) {
    mp_downloads->ShowPlace(ip_entry);
}

void TransfersForm::OnUploadEntryAdded(Item* ip_entry) {
    mp_uploads->AddEntry(ip_entry);
}

void TransfersForm::OnUserOnline(Item* ip_user) {
    mp_downloads->ShowName(ip_user, true);
}

void TransfersForm::OnUserOffline(Item* ip_user) {
    mp_downloads->ShowName(ip_user, false);
}

void TransfersForm::OnCompleted(ItemPtr i_entry) {
    m_completed.insert(i_entry.Get());
    Q_EMIT DownloadComplete(i_entry);
}

void TransfersForm::OnDownloadComplete(ItemPtr i_entry) {
    if (m_completed.erase(i_entry.Get()) > 0 && IsSettingYes(c_clearDownloads) &&
        TransferStatus(c_downloadTypes, i_entry) == "complete") {
        transferQueueManager->RemoveDownload(i_entry);
    }
}

void TransfersForm::EveryHalfMinute() {
    if (!IsSettingYes(c_clearUploads)) {
        return;
    }
    const Data::Operation l_clearing(d);
    for (Item* const lp_entry : g("upload_entry")) {
        const std::optional<qint64> l_silence = Silence(lp_entry);
        if (TransferStatus(c_uploadTypes, lp_entry) != "queued" && l_silence && *l_silence >= c_uploadsKept) {
            transferQueueManager->RemoveUpload(lp_entry);
        }
    }
}

void TransfersForm::OnActionBarTriggered(std::string i_id) {
    if (i_id == "remove_download") {
        RemoveSelectedDownloads(*mp_downloads);
    } else if (i_id == "retry_download") {
        RetrySelectedDownloads(*mp_downloads);
    } else if (i_id == "open_download_file") {
        Tell(OpenSelectedFiles(*mp_downloads));
    } else if (i_id == "open_download_folder") {
        Tell(OpenSelectedFolders(*mp_downloads));
    } else if (i_id == "expand_download_folders") {
        mp_downloads->ExpandFolders(m_expandDownloadFolders = !m_expandDownloadFolders);
        ShowExpandTexts();
    } else if (i_id == "expand_download_users") {
        mp_downloads->ExpandUsers(m_expandDownloadUsers = !m_expandDownloadUsers);
        ShowExpandTexts();
    } else if (i_id == "expand_upload_folders") {
        mp_uploads->ExpandFolders(m_expandUploadFolders = !m_expandUploadFolders);
        ShowExpandTexts();
    } else if (i_id == "expand_upload_users") {
        mp_uploads->ExpandUsers(m_expandUploadUsers = !m_expandUploadUsers);
        ShowExpandTexts();
    }
}

void TransfersForm::OnContextMenuRequested(const TransferList& i_list, const QPoint& i_point) {
    if (const ItemPtr l_user = RowUser(i_list.Types(), i_list.Tree()->itemAt(i_point))) {
        OpenUserMenu(l_user.AsString(), i_list.Tree()->viewport()->mapToGlobal(i_point), this);
    }
}

void TransfersForm::OnClearDownloadsCheckStateChanged(int i_state) {
    SwitchSetting(c_clearDownloads, i_state == Qt::Checked);
}

void TransfersForm::OnClearUploadsCheckStateChanged(int i_state) {
    SwitchSetting(c_clearUploads, i_state == Qt::Checked);
}

void TransfersForm::OnUploadSpeedLimitSpinValueChanged(int i_value) {
    mp_uploadLimit->setChecked(i_value != 0);
    transferQueueManager->SetUploadSpeedLimit(i_value);
}

void TransfersForm::OnUploadSpeedLimitCheckStateChanged(int i_state) {
    if (i_state != Qt::PartiallyChecked) {
        transferQueueManager->EnableUploadSpeedLimit(i_state == Qt::Checked);
    }
}

void TransfersForm::Tell(const QString& i_sentence) {
    if (!i_sentence.isEmpty()) {
        OpenMessage(this, tr("Transfers"), i_sentence);
    }
}
