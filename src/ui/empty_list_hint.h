#pragma once

#include <QLabel>

class QAbstractItemView;

// A sentence in the middle of a list that has no rows. Belongs to the list, follows its rows and its size, and takes no
// clicks. The view must have its model.
class EmptyListHint : public QLabel {
    Q_OBJECT

public:
    EmptyListHint(QAbstractItemView* ip_view, const QString& i_sentence);

    bool eventFilter(QObject* ip_watched, QEvent* ip_event) override;

private:
    void Update();

    QAbstractItemView* mp_view;
};
