#include "transfers_host.h"

#include "app/timestamp.h"
#include "transfers/live_transfer.h"
#include "transfers/local_paths.h"
#include "ui/transfer_text.h"
#include "ui/transfers_form.h"

#include <QCheckBox>
#include <QClipboard>
#include <QDesktopServices>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QProgressBar>
#include <QSpinBox>

#include <filesystem>
#include <fstream>

namespace {

enum Column { User, Folder, File, Status, Progress, TimeLeft, Rate, Size, Place };

class TransfersFormTest : public PageTest {
protected:
    // The form over what the store holds by now.
    void Open() {
        m_form = new TransfersForm;
        ShowPage(m_form);
        m_form->Init();
        dataSaver->EmitDataLoaded();
        m_downloads = Find<QTreeWidget>("downloadsList");
        m_uploads = Find<QTreeWidget>("uploadsList");
        EXPECT_TRUE(QTest::qWaitFor([this] { return m_downloads->hasFocus(); }));
    }
    template <class Widget>
    Widget* Find(const char* i_name) {
        Widget* const lp_widget = m_form->findChild<Widget*>(QLatin1String(i_name));
        EXPECT_TRUE(lp_widget) << i_name;
        return lp_widget;
    }

    static Item* Download(const std::string& i_name, const std::string& i_folder = "music\\live",
                          const std::string& i_user = "Bo", long long i_size = 4'000) {
        transferQueueManager->AddDownload(i_user, i_name, i_folder, i_size, 0);
        return transferQueueManager->GetDownloadEntry(i_user, i_name, i_folder);
    }
    static void SetStatus(Item* ip_entry, const std::string& i_status) {
        transferQueueManager->SetDownloadEntryStatus(ip_entry, i_status);
    }
    static void Start(Item* ip_entry, long long i_position, int i_rate) {
        ConnectCell(ip_entry, "write_position", i_position);
        ConnectCell(ip_entry, "bytes_per_second", i_rate);
        SetStatus(ip_entry, "downloading");
        Q_EMIT transferQueueManager->DownloadProgressed(ip_entry);
    }
    static Item* Upload(const std::string& i_name, const std::string& i_status, int i_secondsAgo) {
        const ItemPtr l_file = d.GetType("shared_file")->NewItem();
        l_file.Connect(d.GetType("shared_file_name")->GetItem(i_name));
        l_file.Connect(d.GetType("shared_file_size")->GetItem(2'000));
        l_file.Connect(d.GetType("shared_file_folder")->GetItem("/home/me/music"));
        const ItemPtr l_entry = d.GetType("upload_entry")->NewItem();
        l_entry.Connect(d.GetType("user")->GetItem("Bo"));
        l_entry.Connect(l_file);
        transferQueueManager->SetUploadEntryStatus(l_entry, i_status);
        const std::string l_then = ToTimestamp(QDateTime::currentDateTime().addSecs(-i_secondsAgo));
        l_entry.Connect(d.GetType("last_status_change_time")->GetItem(l_then));
        return l_entry.Get();
    }
    static void Write(const QString& i_path, std::size_t i_size) {
        const std::filesystem::path l_path = ToUtf8(i_path);
        std::filesystem::create_directories(l_path.parent_path());
        std::ofstream(l_path) << std::string(i_size, 'x');
    }
    static QString PathOf(Item* ip_entry, bool i_complete) {
        return ToFileSystemForm(transferQueueManager->GetDownloadTargetPath(ip_entry, i_complete));
    }

    QTreeWidgetItem* UserRow() { return Child(m_downloads, {0}); }
    QTreeWidgetItem* FolderRow() { return Child(m_downloads, {0, 0}); }
    QTreeWidgetItem* FileRow(int i_index = 0) { return Child(m_downloads, {0, 0, i_index}); }
    QProgressBar* Bar(QTreeWidgetItem* ip_row) {
        return qobject_cast<QProgressBar*>(m_downloads->itemWidget(ip_row, Progress));
    }
    static std::string Text(const QTreeWidgetItem* ip_row, int i_column) {
        return ip_row->text(i_column).toStdString();
    }
    std::string Names(int i_column) { return Tree(m_downloads->invisibleRootItem(), i_column); }

    TransfersForm* m_form = nullptr;
    QTreeWidget* m_downloads = nullptr;
    QTreeWidget* m_uploads = nullptr;
};

std::size_t NodeCount() {
    std::size_t l_count = 0;
    for (const char* l_type : {"download_list_user_node", "download_list_folder_node", "download_list_node",
                               "upload_list_user_node", "upload_list_folder_node", "upload_list_node"}) {
        l_count += d.GetType(l_type)->CountItems();
    }
    return l_count;
}

} // namespace

TEST_F(TransfersFormTest, RestoredEntriesStandInTheOrderOfAdding) {
    SetStatus(Download("c", "x\\y"), "aborted");
    SetStatus(Download("b", "x\\y"), "complete");
    Download("a", "x\\y", "Al");
    Download("d");
    const ItemPtr l_damaged = d.GetType("download_entry")->NewItem();
    l_damaged.Connect(d.GetType("user")->GetItem("Bo"));
    Open();
    EXPECT_EQ(Names(File), " ( (c b)  (d))  ( (a))");
    EXPECT_EQ(Names(Status), " ( (queued complete)  (queued))  ( (queued))");
    EXPECT_EQ(Names(User).substr(0, 12), "Bo [offline]");
    EXPECT_EQ(Text(FolderRow(), Folder), "y/x");
    EXPECT_EQ(Text(FileRow(), Size), "4,000");
    EXPECT_THAT(ActionTexts(), testing::ElementsAre("Remove Download(s)", "Expand Folders [on]", "Expand Users [on]",
                                                    "Open File", "Open Folder", "Retry"));
    EXPECT_EQ(m_downloads->columnCount(), 9);
    EXPECT_EQ(m_uploads->columnCount(), 8);
}

TEST_F(TransfersFormTest, UsersComeAndGoInTheDownloadsOnly) {
    Open();
    Item* const lp_entry = Download("a");
    Upload("mine", "queued", 0);
    EXPECT_EQ(Text(UserRow(), User), "Bo [offline]");
    EXPECT_EQ(Text(Child(m_uploads, {0}), User), "Bo");
    d.GetType("user")->GetItem("Bo")->NewItem("is_online");
    EXPECT_EQ(Text(UserRow(), User), "Bo");
    d.GetType("user")->GetItem("Bo")->Disconnect("is_online");
    EXPECT_EQ(Text(UserRow(), User), "Bo [offline]");
    EXPECT_EQ(Text(Child(m_uploads, {0}), User), "Bo");

    Q_EMIT m_downloads->customContextMenuRequested(m_downloads->viewport()->rect().bottomLeft());
    EXPECT_FALSE(m_form->findChild<QMenu*>()) << "there is no row";
    Q_EMIT m_downloads->customContextMenuRequested(m_downloads->visualItemRect(FileRow()).center());
    ASSERT_TRUE(m_form->findChild<QMenu*>());
    EXPECT_TRUE(m_form->findChild<QMenu*>()->isVisible());
    m_form->findChild<QMenu*>()->close();

    lp_entry->Connect(d.GetType("place_in_line")->GetItem(7));
    EXPECT_EQ(Text(FileRow(), Place), "7");
    SetStatus(lp_entry, "aborted");
    EXPECT_EQ(Text(FileRow(), Place), "");
}

TEST_F(TransfersFormTest, RowsGoWithTheirLastFile) {
    Open();
    Item* const lp_one = Download("1");
    Item* const lp_two = Download("2", "other");
    Download("3", "other");
    Item* const lp_alone = Download("4", "music\\live", "Al");
    EXPECT_EQ(NodeCount(), 2u + 3u + 4u);
    transferQueueManager->RemoveDownload(lp_one);
    EXPECT_EQ(Names(File), " ( (2 3))  ( (4))");
    transferQueueManager->RemoveDownload(lp_alone);
    transferQueueManager->RemoveDownload(lp_two);
    EXPECT_EQ(Names(File), " ( (3))");
    EXPECT_EQ(NodeCount(), 3u);

    // A selected row may go with another one before its turn comes.
    Download("5", "third");
    m_downloads->selectAll();
    Press("Remove Download(s)");
    EXPECT_EQ(m_downloads->topLevelItemCount(), 0);
    EXPECT_EQ(NodeCount(), 0u);
    EXPECT_TRUE(g("download_entry").empty());
    d.RemoveDisconnectedItems();
    EXPECT_TRUE(
        QTest::qWaitFor([this] { return Find<QLabel>("downloadCounts")->text() == QStringLiteral("0 files"); }));
}

TEST_F(TransfersFormTest, StatusesAddUpInFoldersAndUsers) {
    Open();
    Item* const l_entries[] = {Download("1"), Download("2"), Download("3")};
    struct Case {
        const char* statuses[3];
        const char* sum;
        QColor colour;
    };
    const QColor l_green(0, 100, 0), l_blue(0, 0, 255), l_waiting(51, 102, 255), l_red(255, 10, 71), l_black(Qt::black);
    const Case l_cases[] = {
        {{"downloading", "queued", "denied"}, "downloading", l_blue},
        {{"complete", "queued", "denied"}, "queued", l_waiting},
        {{"complete", "complete", "complete"}, "complete", l_green},
        {{"complete", "aborted", "denied"}, "denied", l_red},
        {{"local error", "aborted", "complete"}, "aborted", l_red},
        {{"local error", "complete", "complete"}, "", l_black},
    };
    for (const Case& l_case : l_cases) {
        SCOPED_TRACE(l_case.sum);
        UserRow()->setExpanded(false);
        FolderRow()->setExpanded(false);
        for (int l_index = 0; l_index < 3; ++l_index) {
            SetStatus(l_entries[l_index], l_case.statuses[l_index]);
            EXPECT_EQ(Text(FileRow(l_index), Status), l_case.statuses[l_index]);
        }
        for (QTreeWidgetItem* const lp_row : {UserRow(), FolderRow()}) {
            EXPECT_EQ(Text(lp_row, Status), l_case.sum);
            EXPECT_EQ(lp_row->foreground(Size).color(), l_case.colour);
            lp_row->setExpanded(true);
            EXPECT_EQ(Text(lp_row, Status), "") << "the details show below";
            EXPECT_EQ(lp_row->foreground(User).color(), l_case.colour);
        }
    }
    EXPECT_EQ(FileRow(0)->foreground(File).color(), l_red) << "local error";

    l_entries[0]->Connect(d.GetType("denial_reason")->GetItem("Too BUSY\u202E"));
    SetStatus(l_entries[0], "denied");
    EXPECT_EQ(Text(FileRow(0), Status).substr(0, 8), "too busy");
    EXPECT_THAT(Text(FileRow(0), Status), testing::Not(testing::HasSubstr("\u202E")));
    FolderRow()->setExpanded(false);
    transferQueueManager->RemoveDownload(l_entries[0]);
    EXPECT_EQ(Text(FolderRow(), Status), "complete") << "those that are left";

    // The words of the other direction.
    Upload("mine", "requesting", 0);
    Child(m_uploads, {0, 0})->setExpanded(false);
    EXPECT_EQ(Text(Child(m_uploads, {0, 0, 0}), Status), "requesting");
    EXPECT_EQ(Child(m_uploads, {0, 0, 0})->foreground(File).color(), l_black);
    EXPECT_EQ(Text(Child(m_uploads, {0, 0}), Status), "");
    Upload("too", "uploading", 0);
    EXPECT_EQ(Text(Child(m_uploads, {0, 0}), Status), "uploading");
}

TEST_F(TransfersFormTest, FiguresStandWhereTheyAreSeen) {
    Open();
    Item* const lp_entry = Download("a", "f", "Bo", 4'000'000);
    Download("b", "f", "Bo", 1'000'000);
    Start(lp_entry, 1'000'000, 2'048);
    ASSERT_TRUE(Bar(FileRow()));
    EXPECT_EQ(Bar(FileRow())->text().toStdString(), "1,000,000 (25.0%)");
    EXPECT_EQ(Bar(FileRow())->value(), 25);
    EXPECT_EQ(FileRow()->data(Progress, Qt::AccessibleTextRole).toString().toStdString(), "1,000,000 (25.0%)");
    EXPECT_EQ(Text(FileRow(), TimeLeft), "   24m:24s");
    EXPECT_EQ(Text(FileRow(), Rate), "2.0");
    EXPECT_FALSE(Bar(UserRow())) << "its one folder tells the same";
    ASSERT_TRUE(Bar(FolderRow()));
    EXPECT_EQ(Bar(FolderRow())->text().toStdString(), "1,000,000 (20.0%)");

    UserRow()->setExpanded(false);
    const auto l_progress = [&](long long i_position) {
        WriteCell(lp_entry, "write_position", i_position);
        Q_EMIT transferQueueManager->DownloadProgressed(lp_entry);
    };
    l_progress(2'000'000);
    EXPECT_TRUE(QTest::qWaitFor([&] { return Bar(UserRow()) && Bar(UserRow())->value() == 40; }));
    EXPECT_EQ(Text(UserRow(), Rate), "2.0");
    EXPECT_EQ(Text(UserRow(), Status), "downloading");
    UserRow()->setExpanded(true);
    EXPECT_FALSE(Bar(UserRow()));
    EXPECT_EQ(Text(UserRow(), Rate) + Text(UserRow(), TimeLeft) + Text(UserRow(), Status), "");

    // Broken off: the last figure stands though it came too soon to be painted.
    l_progress(2'500'000);
    l_progress(3'000'001);
    SetStatus(lp_entry, "aborted");
    EXPECT_EQ(Bar(FileRow())->text().toStdString(), "3,000,001 (75.0%)");
    EXPECT_EQ(Text(FileRow(), Rate) + Text(FileRow(), TimeLeft), "");
    SetStatus(lp_entry, "complete");
    EXPECT_FALSE(Bar(FileRow()));
}

TEST_F(TransfersFormTest, FiguresArePaintedTenTimesASecondAndTheLastIsExact) {
    Open();
    Item* const lp_entry = Download("a", "f", "Bo", 100'000);
    Start(lp_entry, 0, 0);
    EXPECT_EQ(Text(FileRow(), TimeLeft), "   0s");
    int l_changes = 0;
    QObject::connect(m_downloads, &QTreeWidget::itemChanged, m_form,
                     [&](QTreeWidgetItem* ip_row, int) { l_changes += ip_row == FileRow(); });
    QElapsedTimer l_time;
    l_time.start();
    long long l_position = 0;
    while (l_time.elapsed() < 500) {
        WriteCell(lp_entry, "write_position", ++l_position);
        WriteCell(lp_entry, "bytes_per_second", static_cast<int>(l_position));
        Q_EMIT transferQueueManager->DownloadProgressed(lp_entry);
        QCoreApplication::processEvents();
    }
    const qint64 l_paintings = l_time.elapsed() / 100 + 1;
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return Text(FileRow(), Rate) == RateText(static_cast<int>(l_position)).toStdString(); }));
    EXPECT_THAT(Bar(FileRow())->text().toStdString(),
                testing::StartsWith(CommafyNumber(l_position).toStdString() + " "));
    EXPECT_LE(l_changes, 2 * (l_paintings + 1)) << "the time left and the rate, at each painting";
    EXPECT_GT(l_position, l_paintings);
}

TEST_F(TransfersFormTest, NumbersThatLieAreShownWithinBounds) {
    EXPECT_EQ(TimeLeftText(3'725).toStdString(), "   1h:2m:5s");
    EXPECT_EQ(TimeLeftText(SecondsLeft(-5, 1)).toStdString(), "   0s");
    EXPECT_EQ(ProgressText(0, Percentage(0, 0)).toStdString(), " (100.0%)");
    Open();
    constexpr long long l_most = std::numeric_limits<long long>::max();
    Item* const lp_entry = Download("a", "f", "Bo", l_most);
    Download("b", "f", "Bo", l_most);
    Item* const lp_negative = Download("c", "f", "Bo", -1);
    Start(lp_entry, l_most, 1);
    EXPECT_EQ(Bar(FileRow())->value(), 100);
    EXPECT_EQ(Bar(FolderRow())->value(), 100) << "sums stop at the largest number";
    SetStatus(lp_entry, "aborted");
    Start(lp_negative, 10, 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return Bar(FileRow(2)) != nullptr; }));
    EXPECT_EQ(Bar(FileRow(2))->value(), 100);
    EXPECT_EQ(Text(FileRow(2), Size), "");
}

TEST_F(TransfersFormTest, ForeignNamesAreShownAndCopiedSafely) {
    Open();
    const std::string l_name = "evil\u202Egpj.exe<img src=x>";
    Download(l_name, "a\\<b>\nc", "Mal\u200Flory" + std::string(100'000, 'x'));
    EXPECT_THAT(Text(FileRow(), File), testing::HasSubstr("[U+202E]"));
    EXPECT_THAT(Text(FolderRow(), Folder), testing::HasSubstr("[U+000A]"));
    EXPECT_LT(UserRow()->text(User).size(), 600);
    const QString l_tip = FileRow()->toolTip(File);
    EXPECT_TRUE(l_tip.contains(QStringLiteral("&lt;img")) && !l_tip.contains(QStringLiteral("<img")));
    EXPECT_LT(UserRow()->toolTip(User).size(), 600);

    m_downloads->setCurrentItem(FileRow());
    QTest::keyClick(m_downloads, Qt::Key_C, Qt::ControlModifier);
    EXPECT_THAT(QApplication::clipboard()->text().toStdString(), testing::HasSubstr("[U+202E]gpj.exe"));
}

TEST_F(TransfersFormTest, CompleteDownloadsAreClearedOnlyWhileTheBoxIsOn) {
    Open();
    QCheckBox* const lp_box = Find<QCheckBox>("clearDownloadsCheckBox");
    Item* const lp_old = Download("old");
    SetStatus(lp_old, "complete");
    QCoreApplication::processEvents();
    lp_box->click();
    EXPECT_TRUE(IsSettingYes("clear_complete_downloads"));
    QCoreApplication::processEvents();
    EXPECT_EQ(Names(File), " ( (old))") << "complete before the box was on";

    Item* const lp_entry = Download("new");
    SetStatus(lp_entry, "complete");
    EXPECT_EQ(g("download_entry").size(), 2u) << "whoever completes it goes on with it first";
    Item* const lp_gone = Download("gone");
    SetStatus(lp_gone, "complete");
    transferQueueManager->RemoveDownload(lp_gone);
    QCoreApplication::processEvents();
    EXPECT_EQ(Names(File), " ( (old))");
    EXPECT_TRUE(Download("new")) << "wanted again";
    lp_box->click();
    EXPECT_FALSE(HasSetting("clear_complete_downloads"));
}

TEST_F(TransfersFormTest, EndedUploadsAreClearedAfterFiveMinutes) {
    Open();
    Upload("ended", "complete", 301);
    Upload("fresh", "aborted", 290);
    Upload("waiting", "queued", 1'000);
    Item* const lp_moving = Upload("moving", "uploading", 1'000);
    ConnectCell(lp_moving, "last_receipt_time", QDateTime::currentDateTime());
    const auto l_names = [this] { return Tree(Child(m_uploads, {0, 0}), File); };
    int l_ticks = 0;
    QObject::connect(timerManager->HalfMinuteTimer(), &QTimer::timeout, m_form, [&] { ++l_ticks; });
    timerManager->HalfMinuteTimer()->start(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return l_ticks > 1; }));
    EXPECT_EQ(l_names(), "ended fresh waiting moving");
    Find<QCheckBox>("clearUploadsCheckBox")->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return l_names() == "fresh waiting moving"; }));
}

TEST_F(TransfersFormTest, ControlsFollowTheSettingsAndSetThem) {
    SetSetting("upload_speed_limit", 50);
    SetSetting("upload_speed_limit_enabled", "no");
    SetSetting("clear_complete_aborted_uploads", "yes");
    Open();
    QSpinBox* const lp_limit = Find<QSpinBox>("uploadLimitSpinBox");
    QCheckBox* const lp_box = Find<QCheckBox>("uploadLimitCheckBox");
    EXPECT_EQ(lp_limit->value(), 50);
    EXPECT_FALSE(lp_box->isChecked());
    EXPECT_TRUE(Find<QCheckBox>("clearUploadsCheckBox")->isChecked());
    EXPECT_EQ(transferQueueManager->GetUploadSpeed(), 0);
    lp_limit->setValue(80);
    EXPECT_TRUE(lp_box->isChecked());
    EXPECT_EQ(transferQueueManager->GetUploadSpeed(), 80);
    lp_box->click();
    EXPECT_EQ(transferQueueManager->GetUploadSpeed(), 0);
    lp_limit->setValue(0);
    EXPECT_FALSE(lp_box->isChecked());
    EXPECT_EQ(SettingText("upload_speed_limit"), "0");
}

TEST_F(TransfersFormTest, TheToolBarExpandsAndCollapsesEachList) {
    Open();
    Download("1");
    Download("2", "other");
    Press("Expand Folders [on]");
    EXPECT_FALSE(FolderRow()->isExpanded());
    EXPECT_EQ(Text(FolderRow(), Status), "queued");
    Download("3", "third");
    EXPECT_FALSE(Child(m_downloads, {0, 2})->isExpanded()) << "new ones come as the others are";
    Press("Expand Folders [off]");
    EXPECT_TRUE(Child(m_downloads, {0, 2})->isExpanded());
    Press("Expand Users [on]");
    EXPECT_FALSE(UserRow()->isExpanded());

    Upload("mine", "queued", 0);
    Find<QTabWidget>("transfersTabControl")->setCurrentIndex(1);
    EXPECT_THAT(ActionTexts(), testing::ElementsAre("Expand Folders [on]", "Expand Users [on]"));
    Press("Expand Users [on]");
    EXPECT_FALSE(Child(m_uploads, {0})->isExpanded());
    EXPECT_TRUE(FolderRow()->isExpanded()) << "of the other list";
}

TEST_F(TransfersFormTest, RetryRemovesAndAddsAgain) {
    Open();
    Item* const l_entries[] = {Download("denied"), Download("done"), Download("running")};
    SetStatus(l_entries[0], "denied");
    SetStatus(l_entries[1], "complete");
    Start(l_entries[2], 5, 5);
    m_downloads->setCurrentItem(UserRow());
    Press("Retry");
    EXPECT_EQ(Names(File), " ( (done running denied))") << "the others need none";
    EXPECT_EQ(Names(Status), " ( (complete downloading queued))");
    m_downloads->setCurrentItem(FileRow(0));
    Press("Retry");
    EXPECT_EQ(Names(File), " ( (running denied done))");
    EXPECT_EQ(Text(FileRow(2), Status), "queued");
}

class Opened : public QObject {
    Q_OBJECT

public:
    Opened() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "OnUrl"); }
    std::vector<QString> m_paths;

public Q_SLOTS:
    void OnUrl(const QUrl& i_url) { m_paths.push_back(i_url.toLocalFile()); }
};

TEST_F(TransfersFormTest, FinishedFilesAreOpenedWhereTheyStay) {
    Open();
    Opened l_opened;
    Item* const lp_moved = Download("moved");
    Item* const lp_stayed = Download("stayed");
    Item* const lp_waiting = Download("waiting");
    Write(PathOf(lp_moved, true), 4'000);
    SetStatus(lp_moved, "complete");
    Write(PathOf(lp_stayed, true), 1'000);
    Write(PathOf(lp_stayed, false), 4'000);
    SetStatus(lp_stayed, "complete");
    EXPECT_FALSE(FileRow(0)->toolTip(File).contains(QStringLiteral("stays")));
    EXPECT_TRUE(
        FileRow(1)->toolTip(File).contains(QStringLiteral("this one stays at:<br>%1").arg(PathOf(lp_stayed, false))));

    FileRow(0)->setSelected(true);
    FileRow(1)->setSelected(true);
    Press("Open File");
    EXPECT_THAT(l_opened.m_paths, testing::ElementsAre(PathOf(lp_moved, true), PathOf(lp_stayed, false)));
    l_opened.m_paths.clear();
    m_downloads->clearSelection(); // whatever keys an earlier test of the process has left pressed
    FileRow(2)->setSelected(true);
    EXPECT_EQ(FileRow(2)->text(File), QStringLiteral("waiting"));
    Press("Open File");
    EXPECT_THAT(l_opened.m_paths, testing::IsEmpty());
    ASSERT_TRUE(QTest::qWaitFor([this] { return m_form->findChild<QMessageBox*>() != nullptr; })) << "it says why";
    m_form->findChild<QMessageBox*>()->close();
    Press("Open Folder");
    EXPECT_THAT(l_opened.m_paths, testing::ElementsAre(PathOf(lp_waiting, false).section(u'/', 0, -2)));
}

#include "transfers_form_test.moc"
