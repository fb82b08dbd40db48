// A strip at the foot of the window with one sentence that the user should read once: hidden until then, and
// again when the user has dismissed it or what was wrong is right again.
#pragma once

#include <QToolBar>

class QLabel;

class NoticeBar : public QToolBar {
    Q_OBJECT

public:
    explicit NoticeBar(QWidget* ip_parent);

    // Shows the sentence, in place of an earlier one. Foreign parts have gone through DisplayText.
    void ShowNotice(const QString& i_sentence);

private:
    QLabel* mp_label = nullptr;
};
