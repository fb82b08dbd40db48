#pragma once

#include <QWidget>

#include <string>

class QLineEdit;
class QPushButton;

// What was typed as a name: trimmed, and as the store can hold it; empty for none.
std::string TypedName(const QLineEdit* ip_edit);

// A line for a new name with the button that takes it, in a dialog. While something stands in the line, Return presses
// that button, else the dialog's usual one.
class NameEntry : public QWidget {
    Q_OBJECT

public:
    NameEntry(const QString& i_editName, const QString& i_placeholder, const QString& i_buttonName,
              const QString& i_buttonText, QPushButton* ip_usualButton);

Q_SIGNALS:
    // Never empty. The line has been cleared.
    void NameEntered(std::string i_name);

private:
    void OnEdited();
    void OnClicked();

    QLineEdit* mp_edit;
    QPushButton* mp_button;
    QPushButton* mp_usualButton;
};
