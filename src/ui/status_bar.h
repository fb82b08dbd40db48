// The foot of the window: the state of the connection on the left, how others can reach us on the right.
#pragma once

#include <QStatusBar>

class QLabel;

class StatusBar : public QStatusBar {
    Q_OBJECT

public:
    explicit StatusBar(QWidget* ip_parent);

    // Sentences to show as they are; foreign parts have gone through DisplayText.
    void ShowConnection(const QString& i_text);
    void ShowListening(const QString& i_text);

private:
    QLabel* mp_connection = nullptr;
    QLabel* mp_listening = nullptr;
};
