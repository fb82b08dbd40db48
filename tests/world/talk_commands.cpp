#include "world/talk_commands.h"

#include "app/text.h"
#include "hands/hands.h"
#include "store/data.h"
#include "ui/chat_edit.h"
#include "ui/chat_form.h"
#include "ui/chat_view.h"
#include "ui/event_tool_bar.h"
#include "ui/ignore_list.h"
#include "ui/main_window.h"
#include "ui/room_form.h"
#include "ui/room_user_list.h"
#include "ui/room_user_list_item.h"

#include <QAction>
#include <QJsonArray>
#include <QKeySequence>

namespace {

QWidget* RoomOf(const std::string& i_room) {
    return d.GetType("room")->HasItem(i_room).HasItem("room_form").AsPointer<RoomForm>();
}

QWidget* TalkOf(const std::string& i_kind, const std::string& i_name) {
    return i_kind == "room" ? RoomOf(i_name) : mainWindow->GetChatForm(i_name);
}

QJsonValue Shown(QWidget* ip_talk) {
    return ip_talk ? ip_talk->findChild<ChatView*>()->toPlainText() : QString();
}

QJsonValue Write(QWidget* ip_talk, const std::string& i_text) {
    if (!ip_talk)
        return false;
    ChatEdit* const lp_edit = ip_talk->findChild<ChatEdit*>();
    if (!hands::Activate(lp_edit))
        return false;
    hands::TurnTo(lp_edit);
    hands::Type(lp_edit, ToQString(i_text));
    hands::Press(Qt::Key_Return, lp_edit);
    return true;
}

QJsonArray ListedUsers(const std::string& i_room) {
    QJsonArray l_names;
    if (const QWidget* const lp_form = RoomOf(i_room)) {
        const QTreeWidget* const lp_list = lp_form->findChild<RoomUserList*>();
        for (int l_row = 0; l_row < lp_list->topLevelItemCount(); ++l_row)
            l_names.append(lp_list->topLevelItem(l_row)->text(QRoomUserListItemWidget::User));
    }
    return l_names;
}

QJsonArray Alerts() {
    QJsonArray l_texts;
    for (const QAction* lp_action : eventToolBar->actions()) {
        if (!lp_action->text().isEmpty())
            l_texts.append(lp_action->text());
    }
    return l_texts;
}

} // namespace

void AddTalkCommands(Commands& io_commands) {
    io_commands["shown"] = [](const Arguments& i_words) { return Shown(TalkOf(i_words.at(1), i_words.at(2))); };
    io_commands["write"] = [](const Arguments& i_words) {
        return Write(TalkOf(i_words.at(1), i_words.at(2)), i_words.at(3));
    };
    io_commands["listed"] = [](const Arguments& i_words) { return ListedUsers(i_words.at(1)); };
    io_commands["alerts"] = [](const Arguments&) { return Alerts(); };
    io_commands["ignore"] = [](const Arguments& i_words) {
        SetIgnored(i_words.at(1), true);
        return true;
    };
}
