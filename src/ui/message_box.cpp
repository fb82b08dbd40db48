#include "ui/message_box.h"

#include <QMessageBox>

QMessageBox* OpenMessage(QWidget* ip_parent, const QString& i_title, const QString& i_text) {
    QMessageBox* const lp_box = new QMessageBox(QMessageBox::Information, i_title, i_text, QMessageBox::Ok, ip_parent);
    lp_box->setAttribute(Qt::WA_DeleteOnClose);
    lp_box->setTextFormat(Qt::PlainText);
    lp_box->open();
    return lp_box;
}
