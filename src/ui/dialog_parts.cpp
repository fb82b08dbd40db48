#include "ui/dialog_parts.h"

#include <QDialog>

QLineEdit* NewLineEdit(const char* ip_objectName, const QString& i_text) {
    constexpr int c_digits = 32;
    QLineEdit* const lp_edit = new QLineEdit(i_text);
    lp_edit->setObjectName(QLatin1String(ip_objectName));
    lp_edit->setMinimumWidth(c_digits * lp_edit->fontMetrics().horizontalAdvance(QLatin1Char('0')));
    return lp_edit;
}

QDialogButtonBox* NewButtonBox(QDialog* ip_dialog) {
    QDialogButtonBox* const lp_box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    lp_box->setObjectName(QStringLiteral("buttonBox"));
    QObject::connect(lp_box, &QDialogButtonBox::accepted, ip_dialog, &QDialog::accept);
    QObject::connect(lp_box, &QDialogButtonBox::rejected, ip_dialog, &QDialog::reject);
    return lp_box;
}
