#include "ui/chat_waiting_form.h"

#include "net/limits.h"
#include "ui/display_text.h"
#include "ui/event_tool_bar.h"
#include "ui/tab_page.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

enum Column { User, Messages };

constexpr int c_userWidth = 200;
constexpr std::size_t c_bytesOfCharacter = 4; // in UTF-8, at most
constexpr std::size_t c_keptText = (limits::chatLineText + 2) * c_bytesOfCharacter;

} // namespace

ChatWaitingForm::ChatWaitingForm(QWidget* ip_parent) : QWidget(ip_parent) {
    setObjectName(QStringLiteral("chatWaitingForm"));
    QLabel* const lp_label =
        new QLabel(tr("So many chats are open that no more open by themselves. These people have written to you:"));
    lp_label->setWordWrap(true);
    mp_list = new QTreeWidget;
    mp_list->setObjectName(QStringLiteral("waitingList"));
    mp_list->setAccessibleName(tr("People whose messages wait"));
    mp_list->setHeaderLabels({tr("User"), tr("Messages")});
    mp_list->setColumnWidth(User, c_userWidth);
    mp_list->setRootIsDecorated(false);
    mp_list->setUniformRowHeights(true);
    lp_label->setBuddy(mp_list);
    mp_open = new QPushButton(tr("&Open Chat"));
    mp_open->setEnabled(false);
    QPushButton* const lp_dismiss = new QPushButton(tr("&Dismiss All"));
    mp_open->setObjectName(QStringLiteral("openWaiting"));
    lp_dismiss->setObjectName(QStringLiteral("dismissWaiting"));

    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    UseWholeTab(lp_layout);
    QHBoxLayout* const lp_buttons = new QHBoxLayout;
    lp_layout->addWidget(lp_label);
    lp_layout->addWidget(mp_list);
    lp_layout->addLayout(lp_buttons);
    lp_buttons->addStretch();
    lp_buttons->addWidget(mp_open);
    lp_buttons->addWidget(lp_dismiss);
    setFocusProxy(mp_list);
    hide();

    connect(mp_list, &QTreeWidget::itemActivated, this, &ChatWaitingForm::OnOpen);
    connect(mp_list, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem* ip_row) { mp_open->setEnabled(ip_row != nullptr); });
    connect(mp_open, &QPushButton::clicked, this, &ChatWaitingForm::OnOpen);
    connect(lp_dismiss, &QPushButton::clicked, this, &ChatWaitingForm::OnDismissAll);
}

void ChatWaitingForm::Add(const std::string& i_user, const std::string& i_text) {
    m_messages.emplace_back(i_user, i_text.substr(0, c_keptText));
    Count(i_user, 1);
    if (m_messages.size() > limits::waitingChatMessages) {
        const std::string l_oldest = m_messages.front().first;
        m_messages.pop_front();
        Count(l_oldest, -1);
    }
}

std::vector<std::string> ChatWaitingForm::Take(const std::string& i_user) {
    std::vector<std::string> l_texts;
    if (!m_senders.contains(i_user)) {
        return l_texts;
    }
    std::deque<std::pair<std::string, std::string>> l_others;
    for (auto& [l_user, l_text] : m_messages) {
        if (l_user == i_user) {
            l_texts.push_back(std::move(l_text));
        } else {
            l_others.emplace_back(std::move(l_user), std::move(l_text));
        }
    }
    m_messages = std::move(l_others);
    Count(i_user, -static_cast<int>(l_texts.size()));
    if (m_messages.empty()) {
        Q_EMIT Emptied();
    }
    return l_texts;
}

void ChatWaitingForm::showEvent(QShowEvent* ip_event) {
    QWidget::showEvent(ip_event);
    eventToolBar->RemoveEvent(this);
}

void ChatWaitingForm::OnOpen() {
    const QTreeWidgetItem* const lp_row = mp_list->currentItem();
    const auto l_sender = std::find_if(m_senders.begin(), m_senders.end(),
                                       [&](const auto& i_sender) { return i_sender.second.row == lp_row; });
    if (l_sender != m_senders.end()) {
        Q_EMIT Opened(std::string(l_sender->first));
    }
}

void ChatWaitingForm::OnDismissAll() {
    m_messages.clear();
    m_senders.clear();
    mp_list->clear();
    Q_EMIT Emptied();
}

void ChatWaitingForm::Count(const std::string& i_user, int i_change) {
    Sender& l_sender = m_senders[i_user];
    if (!l_sender.row) {
        l_sender.row = new QTreeWidgetItem(mp_list, {CellText(i_user), QString()});
    }
    l_sender.messages += i_change;
    l_sender.row->setText(Messages, QString::number(l_sender.messages));
    if (l_sender.messages == 0) {
        delete l_sender.row;
        m_senders.erase(i_user);
    }
}
