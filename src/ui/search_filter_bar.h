// The line above a search's results that narrows them: a text, and four small choices whose first is "any".
#pragma once

#include "ui/search_filter.h"

#include <QWidget>

class QComboBox;
class QHBoxLayout;
class QLineEdit;

class SearchFilterBar : public QWidget {
    Q_OBJECT

public:
    explicit SearchFilterBar(QWidget* ip_parent);

    QLineEdit* Edit() const { return mp_edit; }
    const SearchFilter& Filter() const { return m_filter; }
    void SetText(const QString& i_text) { m_filter.SetText(i_text); }
    // Everything is to be seen again.
    void Clear();

Q_SIGNALS:
    // One of the choices. The text's own signal comes from its edit.
    void Chosen();

private:
    QComboBox* AddChoice(QHBoxLayout* ip_layout, const char* ip_name, const QString& i_label);
    void OnChoice();

    QLineEdit* mp_edit;
    QComboBox* mp_size;
    QComboBox* mp_kind;
    QComboBox* mp_bitRate;
    QComboBox* mp_slot;
    SearchFilter m_filter;
};
