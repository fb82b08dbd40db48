// The line to write in. Tab completes names, Shift+Tab goes back through them, and both move the focus as usual where
// there is nothing to complete. Up and Down take up earlier lines.
#pragma once

#include "ui/chat_completion.h"
#include "ui/chat_recall.h"

#include <QLineEdit>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

class ChatEdit : public QLineEdit {
    Q_OBJECT

public:
    // i_names: those to complete from, asked at the first Tab. What cannot be shown as it is is not offered.
    ChatEdit(std::function<std::vector<std::string_view>()> i_names, QWidget* ip_parent);

    // The text that was written, in UTF-8, which can be recalled from now on; the line is empty after it.
    std::string TakeLine();

Q_SIGNALS:
    // A key that leafs through the chat's text was pressed, -1 for a page up, 1 for a page down.
    void PageWanted(int i_direction);

protected:
    bool event(QEvent* ip_event) override;
    void keyPressEvent(QKeyEvent* ip_event) override;

private:
    bool Complete(bool i_isBackwards);
    QStringList OfferedNames() const;

    const std::function<std::vector<std::string_view>()> m_names;
    ChatCompletion m_completion;
    ChatRecall m_recall;
};
