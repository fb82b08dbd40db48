#include "ui/chat_form.h"

#include "app/settings.h"
#include "app/text.h"
#include "net/server.h"
#include "store/data.h"
#include "ui/chat_edit.h"
#include "ui/chat_find_bar.h"
#include "ui/chat_line.h"
#include "ui/chat_view.h"
#include "ui/display_text.h"
#include "ui/event_tool_bar.h"
#include "ui/focus_widget.h"
#include "ui/ignore_list.h"
#include "ui/tab_page.h"

#include <QHBoxLayout>

#include <utility>

ChatForm::ChatForm(std::string i_user, QWidget* ip_parent) : QWidget(ip_parent), m_user(std::move(i_user)) {
    BuildLayout();
    d.GetType("user")->GetItem(m_user)->Connect(d.GetType("user_chat_widget")->GetItem(this));
}

ChatForm::~ChatForm() {
    if (const ItemPtr l_form = d.GetType("user_chat_widget")->HasItem(this)) {
        l_form.Remove();
    }
}

void ChatForm::AddChat(std::string i_text) {
    if (IsIgnored(m_user)) {
        return;
    }
    mp_chatView->AddChatLine(SaidLine(m_user, i_text));
    eventToolBar->AddEvent(ToQString(m_user), QStringLiteral(":/icons/chat_icon"), mp_chatEdit);
}

void ChatForm::Focus() {
    FocusWidget(mp_chatEdit);
}

// Shown at once, since the server does not send it back; that is so without a connection too, where it gets nowhere.
void ChatForm::OnEnter() {
    if (mp_chatEdit->text().isEmpty()) {
        return;
    }
    const std::string l_text = mp_chatEdit->TakeLine();
    mp_chatView->AddChatLine(SaidLine(SettingText("username"), l_text));
    mp_chatView->ShowEnd();
    gp_server->SendPrivateChat(m_user, l_text);
}

void ChatForm::showEvent(QShowEvent* ip_event) {
    QWidget::showEvent(ip_event);
    eventToolBar->RemoveEvent(mp_chatEdit);
}

void ChatForm::BuildLayout() {
    mp_chatView = new ChatView(ChatView::History::Whole, nullptr);
    mp_chatView->setAccessibleName(tr("Conversation with %1").arg(LabelText(m_user)));
    mp_chatView->setPlaceholderText(tr("Nothing has been said yet."));
    mp_chatEdit = new ChatEdit([this] { return std::vector<std::string_view>{m_user}; }, nullptr);
    mp_chatEdit->setAccessibleName(tr("Message to %1").arg(LabelText(m_user)));
    mp_chatEdit->setPlaceholderText(tr("Message to %1").arg(LabelText(m_user)));

    QHBoxLayout* const lp_outer = new QHBoxLayout(this);
    lp_outer->setObjectName(QStringLiteral("horizontalLayout"));
    UseWholeTab(lp_outer);
    QVBoxLayout* const lp_layout = new QVBoxLayout;
    lp_layout->setObjectName(QStringLiteral("verticalLayout"));
    lp_outer->addLayout(lp_layout);
    lp_layout->addWidget(mp_chatView);
    lp_layout->addWidget(new ChatFindBar(mp_chatView, mp_chatEdit, this));
    lp_layout->addWidget(mp_chatEdit);
    setFocusProxy(mp_chatEdit);

    connect(mp_chatEdit, &QLineEdit::returnPressed, this, &ChatForm::OnEnter);
    connect(mp_chatEdit, &ChatEdit::PageWanted, mp_chatView, &ChatView::ScrollPage);
}
