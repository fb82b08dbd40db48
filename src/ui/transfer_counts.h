// The label under a list of transfers: how many files it has, how many of them are selected, and how large those are.
#pragma once

#include <QObject>
#include <QTimer>

class QLabel;
class TransferList;

class TransferCounts : public QObject {
    Q_OBJECT

public:
    // Belongs to the label, follows the list.
    TransferCounts(const TransferList& i_list, QLabel* ip_label);

private:
    void Show();

    const TransferList& m_list;
    QLabel* mp_label;
    QTimer m_soon; // many rows may change in one go
};
