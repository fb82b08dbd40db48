#include "ui/chat_inbox.h"

#include "net/limits.h"
#include "ui/chat_form.h"
#include "ui/chat_waiting_form.h"
#include "ui/event_tool_bar.h"
#include "ui/ignore_list.h"
#include "ui/main_window.h"

#include <QTabBar>
#include <QTabWidget>

namespace {

bool HasChat(const std::string& i_user) {
    return d.GetType("user")->HasItem(i_user).HasItem("user_chat_widget") != nullptr;
}

} // namespace

ChatInbox::ChatInbox(QTabWidget* ip_tabs) : mp_tabs(ip_tabs), mp_waiting(new ChatWaitingForm(ip_tabs->window())) {
    connect(mp_waiting, &ChatWaitingForm::Emptied, this, &ChatInbox::OnWaitingEmpty);
    connect(mp_waiting, &ChatWaitingForm::Opened, this,
            [](const std::string& i_user) { mainWindow->OpenChatForm(i_user); });
    d.AddConnectionEventHandler(d.GetType("user"), d.GetType("user_chat_widget"),
                                MakeHandler(this, &ChatInbox::OnChatOpened));
}

void ChatInbox::Receive(const std::string& i_user, const std::string& i_text) {
    if (IsIgnored(i_user)) {
        return;
    }
    if (HasChat(i_user) || d.GetType("user_chat_widget")->CountItems() < limits::chatTabs) {
        mainWindow->GetChatForm(i_user)->AddChat(i_text);
    } else {
        Wait(i_user, i_text);
    }
}

// However a chat comes to be opened, what waited for it goes there.
void ChatInbox::OnChatOpened(ConnectionInfo& i_info) {
    ChatForm* const lp_form = ItemPtr(i_info.m_itemTo).AsPointer<ChatForm>();
    for (const std::string& l_text : mp_waiting->Take(i_info.m_itemFrom->AsString())) {
        lp_form->AddChat(l_text);
    }
}

void ChatInbox::Wait(const std::string& i_user, const std::string& i_text) {
    if (mp_tabs->indexOf(mp_waiting) < 0) {
        const int l_tab = mp_tabs->addTab(mp_waiting, tr("Waiting messages"));
        mp_tabs->tabBar()->setTabButton(l_tab, QTabBar::RightSide, nullptr); // it closes when nothing waits
        mp_tabs->tabBar()->setTabButton(l_tab, QTabBar::LeftSide, nullptr);
    }
    mp_waiting->Add(i_user, i_text);
    eventToolBar->AddEvent(tr("Waiting messages"), QStringLiteral(":/icons/chat_icon"), mp_waiting);
}

void ChatInbox::OnWaitingEmpty() {
    const int l_tab = mp_tabs->indexOf(mp_waiting);
    if (l_tab >= 0) {
        mp_tabs->removeTab(l_tab);
    }
    eventToolBar->RemoveEvent(mp_waiting);
}
