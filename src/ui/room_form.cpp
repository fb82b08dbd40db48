#include "ui/room_form.h"

#include "app/settings.h"
#include "app/text.h"
#include "net/server.h"
#include "ui/action_set_tool_bar.h"
#include "ui/chat_edit.h"
#include "ui/chat_find_bar.h"
#include "ui/chat_line.h"
#include "ui/chat_view.h"
#include "ui/display_text.h"
#include "ui/event_tool_bar.h"
#include "ui/icon.h"
#include "ui/ignore_list.h"
#include "ui/room_user_list.h"
#include "ui/size_manager.h"
#include "ui/tab_page.h"

#include <QScrollBar>
#include <QSplitter>
#include <QTabWidget>
#include <QVBoxLayout>

#include <utility>

namespace {

const QString g_alertIcon = QStringLiteral(":/icons/chat_icon");

} // namespace

RoomForm::RoomForm(std::string i_room, QWidget* ip_parent) : QWidget(ip_parent), m_room(std::move(i_room)) {
    BuildLayout();
    WatchStore();
    connect(gp_server, &Server::RoomChat, this, &RoomForm::OnRoomChat);
    connect(gp_server, &Server::Connected, this, &RoomForm::OnConnected);
    connect(gp_server, &Server::Disconnected, this, &RoomForm::OnDisconnected);
    actionBar->RegisterWidget(this, QStringLiteral("room"));
    actionBar->AddWidgetKey(this, QStringLiteral("room"), ToQString(m_room));
    ShowAutojoin(d.GetType("room")->GetItem(m_room)->IsConnected("room_autojoin"));
}

RoomForm::~RoomForm() {
    if (const ItemPtr l_form = d.GetType("room_form")->HasItem(this)) {
        l_form.Remove();
    }
}

void RoomForm::Init() {
    sizeManager->RegisterSplitter(QStringLiteral("room_splitter"), mp_splitter, mp_splitter->sizes());
    sizeManager->RegisterTreeWidget(QStringLiteral("room_user_list"), mp_userList);
}

void RoomForm::AddStatusMessage(std::string i_text) {
    mp_chatView->AddStatusLine(StatusLine(i_text));
}

void RoomForm::OnRoomChat(std::string i_room, std::string i_user, std::string i_chat) {
    if (i_room != m_room || IsIgnored(i_user)) {
        return;
    }
    mp_chatView->AddChatLine(SaidLine(i_user, i_chat));
    const std::string l_ownName = SettingText("username");
    if (i_user != l_ownName && Mentions(ToQString(i_chat), ToQString(l_ownName))) {
        Alert(i_user);
    }
}

void RoomForm::OnUserItemClicked(QTreeWidgetItem*, int) {}

// The line shows when the server sends it back, as it does to everyone in the room.
void RoomForm::OnEnterPressed() {
    if (!mp_chatEdit->text().isEmpty()) {
        gp_server->SendRoomChat(m_room, mp_chatEdit->TakeLine());
        mp_chatView->ShowEnd();
    }
}

void RoomForm::OnConnected() {
    AddStatusMessage(ToUtf8(tr("Reconnected.")));
    gp_server->EnterRoom(m_room);
}

void RoomForm::OnDisconnected() {
    AddStatusMessage(ToUtf8(tr("Disconnected.")));
}

void RoomForm::showEvent(QShowEvent* ip_event) {
    QWidget::showEvent(ip_event);
    eventToolBar->RemoveEvent(mp_chatEdit);
    MarkTab(false);
}

void RoomForm::OnUserAdded(Item* ip_user) {
    mp_userList->ShowUser(ip_user);
}

void RoomForm::OnUserRemoved(Item* ip_user) {
    mp_userList->RemoveUser(ip_user->AsView());
}

// The tab goes at once and hears nothing more, so that entering the room again, even before this object is deleted,
// finds no trace of it.
void RoomForm::OnLeftRoom(Item*) {
    RemoveDataHandlers();
    disconnect(gp_server, nullptr, this, nullptr);
    if (const ItemPtr l_form = d.GetType("room_form")->HasItem(this)) {
        l_form.Remove();
    }
    hide();
    setParent(nullptr);
    deleteLater();
}

void RoomForm::OnRoomAutojoinOn(Item*) {
    ShowAutojoin(true);
}

void RoomForm::OnRoomAutojoinOff(Item*) {
    ShowAutojoin(false);
}

void RoomForm::BuildLayout() {
    mp_chatView = new ChatView(ChatView::History::Bounded, nullptr);
    mp_chatView->setAccessibleName(tr("Conversation in %1").arg(LabelText(m_room)));
    mp_chatView->setPlaceholderText(tr("Nothing has been said since you came in."));
    mp_userList = new RoomUserList(nullptr);
    mp_chatEdit = new ChatEdit([this] { return mp_userList->Names(); }, nullptr);
    mp_chatEdit->setAccessibleName(tr("Message to %1").arg(LabelText(m_room)));
    mp_chatEdit->setPlaceholderText(tr("Message to everyone in the room"));

    QWidget* const lp_talk = new QWidget;
    lp_talk->setObjectName(QStringLiteral("layoutWidget"));
    QVBoxLayout* const lp_talkLayout = new QVBoxLayout(lp_talk);
    lp_talkLayout->setObjectName(QStringLiteral("verticalLayout"));
    lp_talkLayout->setContentsMargins(0, 0, 0, 0);
    lp_talkLayout->addWidget(mp_chatView);
    lp_talkLayout->addWidget(new ChatFindBar(mp_chatView, mp_chatEdit, lp_talk));
    lp_talkLayout->addWidget(mp_chatEdit);

    mp_splitter = new QSplitter(Qt::Horizontal);
    mp_splitter->setObjectName(QStringLiteral("splitter"));
    mp_splitter->addWidget(lp_talk);
    mp_splitter->addWidget(mp_userList);
    mp_splitter->setSizes({280, 250});
    mp_splitter->setStretchFactor(0, 1);
    mp_splitter->setStretchFactor(1, 0);
    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    UseWholeTab(lp_layout);
    lp_layout->setObjectName(QStringLiteral("verticalLayout_2"));
    lp_layout->addWidget(mp_splitter);
    setFocusProxy(mp_chatEdit);

    connect(mp_chatEdit, &QLineEdit::returnPressed, this, &RoomForm::OnEnterPressed);
    connect(mp_chatEdit, &ChatEdit::PageWanted, mp_chatView, &ChatView::ScrollPage);
    connect(mp_userList, &QTreeWidget::itemClicked, this, &RoomForm::OnUserItemClicked);
}

void RoomForm::WatchStore() {
    const ItemPtr l_room = d.GetType("room")->GetItem(m_room);
    l_room.Connect(d.GetType("room_form")->GetItem(this));
    const auto l_watch = [&](const char* ip_type, PathNodeRelation i_relation, void (RoomForm::*ip_handler)(Item*)) {
        PathNode* const lp_root = new PathNode(l_room);
        new PathNode(lp_root, ip_type, i_relation);
        d.AddPathEventHandler(lp_root, MakeHandler(this, ip_handler));
    };
    l_watch("in_room", NewlyDisconnected, &RoomForm::OnLeftRoom);
    l_watch("room_autojoin", NewlyConnected, &RoomForm::OnRoomAutojoinOn);
    l_watch("room_autojoin", NewlyDisconnected, &RoomForm::OnRoomAutojoinOff);
    WatchUsers(l_room);
}

// A user comes into the list once all that the list shows is known, and each later change comes the same way.
void RoomForm::WatchUsers(ItemPtr i_room) {
    PathNode* const lp_user = new PathNode(d, "user");
    new PathNode(lp_user, i_room, Connected);
    for (const char* ip_type : {"average_download_speed", "shared_files_count", "country_code"}) {
        new PathNode(lp_user, ip_type, Connected);
    }
    d.AddPathEventHandler(lp_user, MakeHandler(this, &RoomForm::OnUserAdded));

    PathNode* const lp_leaver = new PathNode(d, "user");
    new PathNode(lp_leaver, i_room, NewlyDisconnected);
    d.AddPathEventHandler(lp_leaver, MakeHandler(this, &RoomForm::OnUserRemoved));
}

void RoomForm::ShowAutojoin(bool i_isOn) {
    actionBar->SetWidgetActionText(this, QStringLiteral("toggle_room_autojoin"),
                                   i_isOn ? tr("Auto-Join Room [on]") : tr("Auto-Join Room [off]"));
}

void RoomForm::Alert(const std::string& i_user) {
    eventToolBar->AddEvent(tr("%1 in %2").arg(ToQString(i_user), ToQString(m_room)), g_alertIcon, mp_chatEdit);
    MarkTab(!isVisible());
}

// On its tab, as long as it lies in one.
void RoomForm::MarkTab(bool i_isMarked) {
    for (QWidget* lp_outer = parentWidget(); lp_outer; lp_outer = lp_outer->parentWidget()) {
        if (QTabWidget* const lp_tabs = qobject_cast<QTabWidget*>(lp_outer)) {
            lp_tabs->setTabIcon(lp_tabs->indexOf(this), i_isMarked ? LoadIcon(g_alertIcon) : QIcon());
            return;
        }
    }
}
