#include "newcomer.h"

#include "hands/hands.h"
#include "net/server.h"
#include "ui/action_set_tool_bar.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPixmap>
#include <QTabWidget>
#include <QTextBrowser>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

#include <algorithm>

namespace {

constexpr qint64 g_askAgainAfter = 250;     // ms; whoever has never logged in is unknown to the server
constexpr qint64 g_searchAgainAfter = 5000; // ms; whoever has come only just now may have missed a search

enum { OnlineStatus = 1 };                   // column of the user list
enum { File = 4, Size = 5 };                 // columns of search results
enum { TransferFile = 2, Status, Progress }; // columns of the list of downloads

QString Text(const char* ip_text) {
    return Player::tr(ip_text);
}

QString Greeting() {
    return Text("Hello! The tide tables are here, thank you.");
}

// The rows of files in a tree of users, folders and files.
QList<QTreeWidgetItem*> Leaves(QTreeWidget* ip_tree) {
    QList<QTreeWidgetItem*> l_rows;
    for (QTreeWidgetItemIterator l_row(ip_tree, QTreeWidgetItemIterator::NoChildren); *l_row; ++l_row) {
        l_rows += *l_row;
    }
    return l_rows;
}

} // namespace

Newcomer::Newcomer(MainWindow& i_window, Player& i_player, NewcomerOptions i_options)
    : m_window(i_window), m_player(i_player), m_options(std::move(i_options)) {}

std::vector<Step> Newcomer::Steps() {
    const QString l_first = m_options.users.first();
    const QString l_last = m_options.users.last();
    const auto l_always = [] { return Outcome::Done; };
    return {
        {Text("The window is connected to the server."), nullptr,
         [] { return gp_server->IsConnected() ? Outcome::Done : Outcome::NotYet; }},
        {Text("Users page: %1 added to the user list; all are online.").arg(m_options.users.join(Text(" and "))),
         [this] { return OpenAddUser(); }, [this] { return AddUsers(); }},
        {Text("Search page: \"%1\" typed; all have answered.").arg(m_options.search), [this] { return Search(); },
         [this] { return LookForAnswers(); }},
        {Text("The folder of \"%1\" selected, \"Download Folder\" clicked.").arg(m_options.name),
         [this] { return DownloadFolder(); }, l_always},
        {Text("A file of %1 selected, Return pressed.").arg(l_last), [this] { return DownloadFile(); }, l_always},
        {Text("Transfers page: all is complete."),
         [this] {
             hands::TurnTo(Find<QTreeWidget>("downloadsList"));
             return true;
         },
         [this] { return FollowDownloads(); }},
        {Text("The file here and the one that %1 shares have the same SHA-256.").arg(l_first), nullptr,
         [this] { return CheckDigest(); }},
        {Text("Shares page: \"Browse user's files\" chosen from the menu of %1; the list is here.").arg(l_first),
         [this] { return ChooseFromMenu(Text("Browse user's files")); }, [this] { return LookThroughShare(); }},
        {Text("Rooms page: all are in the room that everybody enters at the login."), [this] { return TurnToRoom(); },
         [this] { return LookForUsersOfRoom(); }},
        {Text("Said in it: %1").arg(Greeting()), [this] { return Say("roomsPage", Greeting()); },
         [this] { return LookForChat("roomsPage", Greeting()); }},
        {Text("Chat page: \"Message user\" chosen from the menu of %1.").arg(l_first),
         [this] { return ChooseFromMenu(Text("Message user")); },
         [this] { return LookForChat("chatPage", QString()); }},
        {Text("Told %1: %2").arg(l_first, Greeting()), [this] { return Say("chatPage", Greeting()); },
         [this] { return LookForChat("chatPage", Greeting()); }},
        {Text("Diagnostics page: the log of the transfers."), [this] { return TurnToLog(); }, l_always},
        {Text("Pictures of all pages lie in %1.").arg(m_options.pictureFolder), nullptr,
         [this] { return TakePictures(); }},
        {Text("\"Data\" chosen from the menu \"Connection\": the item store, pictured too."),
         [this] { return OpenStoreBrowser(); }, [this] { return LookThroughStore(); }},
    };
}

template <class Widget>
Widget* Newcomer::Find(const char* ip_name, const char* ip_page) const {
    const QWidget* const lp_page = m_window.findChild<QWidget*>(QLatin1String(ip_page));
    return lp_page ? lp_page->findChild<Widget*>(QLatin1String(ip_name)) : nullptr;
}

QLineEdit* Newcomer::DialogEdit(const char* ip_edit) const {
    QLineEdit* const lp_edit = m_window.findChild<QLineEdit*>(QLatin1String(ip_edit));
    return lp_edit && lp_edit->window() == QApplication::activeWindow() ? lp_edit : nullptr;
}

// --- The users ---

bool Newcomer::OpenAddUser() {
    QTreeWidget* const lp_list = Find<QTreeWidget>("userList", "userListForm");
    hands::TurnTo(lp_list);
    hands::Click(lp_list->viewport());
    return hands::ClickButton(actionBar, Text("Add User"));
}

Outcome Newcomer::AddUsers() {
    QLineEdit* const lp_edit = DialogEdit("userNameEdit");
    if (!lp_edit) {
        return Outcome::NotYet;
    }
    for (const QString& l_user : m_options.users) {
        const QTreeWidgetItem* const lp_row = hands::FindRow(Find<QTreeWidget>("userList", "userListForm"), {l_user});
        if (!lp_row && !lp_edit->isReadOnly() && (!m_sinceTry.isValid() || m_sinceTry.hasExpired(g_askAgainAfter))) {
            hands::Type(lp_edit, l_user);
            hands::Press(Qt::Key_Return, lp_edit);
            m_sinceTry.start();
        }
        if (!lp_row || lp_row->text(OnlineStatus).isEmpty()) {
            return Outcome::NotYet;
        }
    }
    hands::Press(Qt::Key_Escape, lp_edit);
    return Outcome::Done;
}

// --- The search ---

QTreeWidgetItem* Newcomer::ResultOf(const QString& i_user) const {
    const QTreeWidget* const lp_tree = Find<QTreeWidget>("searchResultsTreeWidget");
    return lp_tree ? hands::FindRow(lp_tree, {i_user}) : nullptr;
}

QTreeWidgetItem* Newcomer::WantedResult() const {
    const QTreeWidgetItem* const lp_user = ResultOf(m_options.users.first());
    for (int l_folder = 0; lp_user && l_folder < lp_user->childCount(); ++l_folder) {
        for (int l_file = 0; l_file < lp_user->child(l_folder)->childCount(); ++l_file) {
            if (lp_user->child(l_folder)->child(l_file)->text(File) == m_options.name) {
                return lp_user->child(l_folder)->child(l_file);
            }
        }
    }
    return nullptr;
}

bool Newcomer::Search() {
    QLineEdit* const lp_edit = Find<QLineEdit>("searchEdit");
    hands::TurnTo(lp_edit);
    hands::Type(lp_edit, m_options.search);
    hands::Press(Qt::Key_Return, lp_edit);
    m_sinceTry.start();
    return true;
}

Outcome Newcomer::LookForAnswers() {
    const bool l_haveAllAnswered = std::all_of(m_options.users.begin(), m_options.users.end(),
                                               [this](const QString& i_user) { return ResultOf(i_user); });
    if (l_haveAllAnswered && WantedResult()) {
        NoteAnswers();
        return Outcome::Done;
    }
    if (m_sinceTry.hasExpired(g_searchAgainAfter)) {
        hands::Press(Qt::CTRL | Qt::Key_W, Find<QTreeWidget>("searchResultsTreeWidget"));
        Search();
    }
    return Outcome::NotYet;
}

void Newcomer::NoteAnswers() const {
    for (const QTreeWidgetItem* const lp_file : Leaves(Find<QTreeWidget>("searchResultsTreeWidget"))) {
        m_player.Note(Text("%1 has %2, %3 bytes")
                          .arg(lp_file->parent()->parent()->text(0), lp_file->text(File), lp_file->text(Size)));
    }
}

// --- The downloads ---

bool Newcomer::DownloadFolder() {
    hands::ClickRow(WantedResult()->parent());
    return hands::ClickButton(actionBar, Text("Download Folder"));
}

bool Newcomer::DownloadFile() {
    hands::ClickRow(ResultOf(m_options.users.last())->child(0)->child(0));
    hands::Press(Qt::Key_Return);
    return true;
}

// They may be too fast for each of their states to be seen.
Outcome Newcomer::FollowDownloads() {
    QStringList l_now;
    bool l_isAllComplete = true;
    for (const QTreeWidgetItem* const lp_file : Leaves(Find<QTreeWidget>("downloadsList"))) {
        const QString l_status = lp_file->text(Status);
        const QString l_progress = lp_file->data(Progress, Qt::AccessibleTextRole).toString();
        l_now += Text("%1: %2  %3").arg(lp_file->text(TransferFile), l_status, l_progress).trimmed();
        l_isAllComplete = l_isAllComplete && l_status == QLatin1String("complete");
        if (l_status == QLatin1String("denied") || l_status == QLatin1String("local error")) {
            return Outcome::Failed;
        }
    }
    for (const QString& l_line : l_now) {
        if (!m_downloads.contains(l_line)) {
            m_player.Note(l_line);
        }
    }
    m_downloads = l_now;
    return !l_now.isEmpty() && l_isAllComplete ? Outcome::Done : Outcome::NotYet;
}

Outcome Newcomer::CheckDigest() const {
    QFile l_file(m_options.file);
    QCryptographicHash l_hash(QCryptographicHash::Sha256);
    const bool l_isRead = l_file.open(QIODevice::ReadOnly) && l_hash.addData(&l_file);
    const QString l_digest = QString::fromLatin1(l_hash.result().toHex());
    m_player.Note(l_isRead ? l_digest : Text("%1 cannot be read").arg(m_options.file));
    return l_isRead && l_digest == m_options.sha256 ? Outcome::Done : Outcome::Failed;
}

// --- A user's shares, a room, a chat, the log ---

bool Newcomer::ChooseFromMenu(const QString& i_entry) {
    QTreeWidgetItem* const lp_row = ResultOf(m_options.users.first());
    hands::TurnTo(lp_row->treeWidget());
    return hands::Choose(hands::OpenMenu(lp_row), i_entry);
}

Outcome Newcomer::LookThroughShare() const {
    QTreeWidget* const lp_folders = Find<QTreeWidget>("folderTree", "sharesForm");
    const QLabel* const lp_counts = Find<QLabel>("shareCounts", "sharesForm");
    if (!lp_folders || lp_counts->text().isEmpty()) {
        return Outcome::NotYet;
    }
    hands::TurnTo(lp_folders);
    const auto l_found = lp_folders->findItems(QFileInfo(m_options.file).dir().dirName(), Qt::MatchRecursive);
    if (l_found.isEmpty()) {
        return Outcome::Failed;
    }
    hands::ClickRow(l_found.first());
    m_player.Note(lp_counts->text());
    return Outcome::Done;
}

bool Newcomer::TurnToRoom() const {
    hands::TurnTo(Find<QTreeWidget>("roomList"));
    return true;
}

Outcome Newcomer::LookForUsersOfRoom() const {
    const QTreeWidget* const lp_users = Find<QTreeWidget>("userList", "roomsPage");
    const auto l_isHere = [lp_users](const QString& i_user) { return hands::FindRow(lp_users, {i_user}); };
    return lp_users && std::all_of(m_options.users.begin(), m_options.users.end(), l_isHere) ? Outcome::Done
                                                                                             : Outcome::NotYet;
}

bool Newcomer::Say(const char* ip_page, const QString& i_text) {
    QLineEdit* const lp_edit = Find<QLineEdit>("chatEdit", ip_page);
    hands::Type(lp_edit, i_text);
    hands::Press(Qt::Key_Return, lp_edit);
    return true;
}

Outcome Newcomer::LookForChat(const char* ip_page, const QString& i_text) const {
    const QTextBrowser* const lp_view = Find<QTextBrowser>("chatView", ip_page);
    return lp_view && lp_view->isVisible() && lp_view->toPlainText().contains(i_text) ? Outcome::Done : Outcome::NotYet;
}

bool Newcomer::TurnToLog() const {
    const QTabWidget* const lp_logs = Find<QTabWidget>("logTabWidget");
    for (int l_log = 0; l_log < lp_logs->count(); ++l_log) {
        if (lp_logs->tabText(l_log) == QLatin1String("Transfer Queue")) {
            hands::TurnTo(lp_logs->widget(l_log));
            return true;
        }
    }
    return false;
}

bool Newcomer::OpenStoreBrowser() {
    QMenu* const lp_menu = m_window.menuBar()->findChild<QMenu*>();
    lp_menu->popup(m_window.menuBar()->mapToGlobal(m_window.menuBar()->rect().bottomLeft()));
    return hands::Choose(lp_menu, Text("&Data"));
}

Outcome Newcomer::LookThroughStore() {
    QTreeWidget* const lp_types = Find<QTreeWidget>("typeList", "dataDialog");
    QListWidget* const lp_items = Find<QListWidget>("itemList", "dataDialog");
    if (!lp_types || !lp_types->isActiveWindow()) {
        return Outcome::NotYet;
    }
    hands::ClickRow(hands::FindRow(lp_types, {QStringLiteral("user")}));
    const QList<QListWidgetItem*> l_users = lp_items->findItems(m_options.users.first(), Qt::MatchExactly);
    if (l_users.isEmpty()) {
        return Outcome::Failed;
    }
    hands::ClickRow(l_users.first());
    const bool l_isTaken = SavePicture(*lp_types->window(), QStringLiteral("data"));
    m_player.Note(m_pictures.last());
    lp_types->window()->close();
    return l_isTaken ? Outcome::Done : Outcome::Failed;
}

// --- The pictures ---

bool Newcomer::SavePicture(QWidget& i_window, const QString& i_name) {
    m_pictures += QStringLiteral("%1-%2.png").arg(m_pictures.size() + 1).arg(i_name);
    return QDir().mkpath(m_options.pictureFolder) &&
           i_window.grab().save(QDir(m_options.pictureFolder).filePath(m_pictures.last()));
}

// A page that has just been turned up is laid out when the event loop comes back, so one look turns, the next one
// shoots.
Outcome Newcomer::TakePictures() {
    QTabWidget* const lp_pages = m_window.findChild<QTabWidget*>(QStringLiteral("tabControl"));
    const int l_page = static_cast<int>(m_pictures.size());
    if (lp_pages->currentIndex() != l_page) {
        hands::TurnTo(lp_pages->widget(l_page));
        return Outcome::NotYet;
    }
    if (!SavePicture(m_window, lp_pages->tabText(l_page).toLower())) {
        return Outcome::Failed;
    }
    if (m_pictures.size() < lp_pages->count()) {
        return Outcome::NotYet;
    }
    m_player.Note(m_pictures.join(QStringLiteral(", ")));
    return Outcome::Done;
}
