#include "ui/user_list_name_entry.h"

#include "app/text.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>

std::string TypedName(const QLineEdit* ip_edit) {
    const QString l_text = ip_edit->text();
    const qsizetype l_end = l_text.indexOf(QChar(QChar::Null)); // where the store would cut it
    return ToUtf8(l_text.left(l_end).trimmed());
}

NameEntry::NameEntry(const QString& i_editName, const QString& i_placeholder, const QString& i_buttonName,
                     const QString& i_buttonText, QPushButton* ip_usualButton)
    : mp_edit(new QLineEdit), mp_button(new QPushButton(i_buttonText)), mp_usualButton(ip_usualButton) {
    mp_edit->setObjectName(i_editName);
    mp_edit->setPlaceholderText(i_placeholder);
    mp_edit->setAccessibleName(i_placeholder);
    mp_button->setObjectName(i_buttonName);
    mp_button->setAutoDefault(false);
    mp_usualButton->setAutoDefault(false);
    QHBoxLayout* const lp_layout = new QHBoxLayout(this);
    lp_layout->setContentsMargins(0, 0, 0, 0);
    lp_layout->addWidget(mp_edit);
    lp_layout->addWidget(mp_button);
    OnEdited();

    connect(mp_edit, &QLineEdit::textChanged, this, &NameEntry::OnEdited);
    connect(mp_button, &QPushButton::clicked, this, &NameEntry::OnClicked);
}

void NameEntry::OnEdited() {
    const bool l_isNamed = !TypedName(mp_edit).empty();
    mp_button->setEnabled(l_isNamed);
    (l_isNamed ? mp_button : mp_usualButton)->setDefault(true);
}

void NameEntry::OnClicked() {
    const std::string l_name = TypedName(mp_edit);
    mp_edit->clear();
    if (!l_name.empty()) {
        Q_EMIT NameEntered(l_name);
    }
}
