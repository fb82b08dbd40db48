// Tells what a rescan of the shared folders has found.
#pragma once

#include <QDialog>

class QPlainTextEdit;

class SharedFilesRescannedDialog : public QDialog {
    Q_OBJECT

public:
    // Frees itself when it is closed.
    explicit SharedFilesRescannedDialog(QWidget* ip_parent);

    void Append(const QString& i_line);

private:
    QPlainTextEdit* mp_plainTextEdit = nullptr;
};
