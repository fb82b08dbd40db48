#include "ui/folder_chooser.h"

#include <QFileDialog>

void ChooseFolder(QWidget* ip_parent, const QString& i_title, const QString& i_start,
                  std::function<void(const QString& i_path)> i_chosen) {
    QFileDialog* const lp_dialog = new QFileDialog(ip_parent, i_title, i_start);
    lp_dialog->setAttribute(Qt::WA_DeleteOnClose);
    lp_dialog->setFileMode(QFileDialog::Directory);
    lp_dialog->setOption(QFileDialog::ShowDirsOnly);
    QObject::connect(lp_dialog, &QDialog::accepted, ip_parent, [lp_dialog, l_chosen = std::move(i_chosen)] {
        const QStringList l_paths = lp_dialog->selectedFiles();
        if (!l_paths.isEmpty()) {
            l_chosen(l_paths.first());
        }
    });
    lp_dialog->open();
}
