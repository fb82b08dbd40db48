#include "ui/create_room_dialog.h"

#include "app/text.h"
#include "net/server.h"
#include "ui/dialog_parts.h"

#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>

namespace {

constexpr std::size_t c_longestName = 64; // bytes; the server leaves a longer one unanswered

// Blanks at the ends are no part of a room's name.
std::string RoomName(const QString& i_text) {
    return ToUtf8(i_text.trimmed());
}

// Why the server would refuse the name; empty if it would not.
QString Fault(const std::string& i_name) {
    if (i_name.empty()) {
        return CreateRoomDialog::tr("A room needs a name.");
    }
    if (i_name.size() > c_longestName) {
        return CreateRoomDialog::tr("The name is too long: %1 of at most %2 bytes.")
            .arg(i_name.size())
            .arg(c_longestName);
    }
    return {};
}

} // namespace

CreateRoomDialog::CreateRoomDialog(QWidget* ip_parent) : QDialog(ip_parent) {
    setWindowTitle(tr("Create Room"));
    setAttribute(Qt::WA_DeleteOnClose);

    mp_nameEdit = NewLineEdit("roomNameEdit", QString());
    mp_faultLabel = new QLabel;
    mp_faultLabel->setObjectName(QStringLiteral("faultLabel"));
    mp_faultLabel->setTextFormat(Qt::PlainText);

    QFormLayout* const lp_layout = new QFormLayout(this);
    lp_layout->addRow(tr("Room &name"), mp_nameEdit);
    lp_layout->addRow(mp_faultLabel);
    lp_layout->addRow(NewButtonBox(this));
    connect(mp_nameEdit, &QLineEdit::textChanged, this, &CreateRoomDialog::OnNameChanged);
}

// An empty field is no fault of the user's before there was a try.
void CreateRoomDialog::OnNameChanged(const QString& i_name) {
    mp_faultLabel->setText(i_name.isEmpty() ? QString() : Fault(RoomName(i_name)));
}

void CreateRoomDialog::accept() {
    const std::string l_name = RoomName(mp_nameEdit->text());
    const QString l_fault = Fault(l_name);
    if (!l_fault.isEmpty()) {
        mp_faultLabel->setText(l_fault);
        mp_nameEdit->setFocus();
        return;
    }
    QDialog::accept();
    gp_server->EnterRoom(l_name);
}
