#include "ui/shared_files_rescanned_dialog.h"

#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QVBoxLayout>

SharedFilesRescannedDialog::SharedFilesRescannedDialog(QWidget* ip_parent) : QDialog(ip_parent) {
    setWindowTitle(tr("Shared Files Rescanned"));
    setAttribute(Qt::WA_DeleteOnClose);
    resize(360, 160);

    mp_plainTextEdit = new QPlainTextEdit;
    mp_plainTextEdit->setObjectName(QStringLiteral("plainTextEdit"));
    mp_plainTextEdit->setAccessibleName(tr("Result of the rescan"));
    mp_plainTextEdit->setReadOnly(true);
    mp_plainTextEdit->setTabChangesFocus(true);
    QDialogButtonBox* const lp_buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    lp_buttons->setObjectName(QStringLiteral("buttonBox"));
    connect(lp_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    lp_layout->addWidget(mp_plainTextEdit);
    lp_layout->addWidget(lp_buttons);
}

void SharedFilesRescannedDialog::Append(const QString& i_line) {
    mp_plainTextEdit->appendPlainText(i_line);
}
