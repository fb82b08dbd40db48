// The "Diagnostics" page: one plain text view per log area, made at the area's first line, and the users whose state
// the server reports to us. Nothing here outlives the run.
#pragma once

#include "app/log.h"
#include "store/data.h"

#include <QWidget>

class QPlainTextEdit;
class QTabWidget;
class QTreeWidget;
class QTreeWidgetItem;

class DiagnosticsForm : public QWidget, public DataHandler, public LogSink {
    Q_OBJECT

public:
    // Becomes the sink of Log() for as long as it lives. The Types of the log are created here, since managers may
    // speak from their first line on.
    explicit DiagnosticsForm(QWidget* ip_parent);
    ~DiagnosticsForm() override;

    // After the Type "user" exists.
    void Init();

    void Log(QString i_area, int i_level, QString i_text, ItemPtr i_item) override;

private:
    void BuildLayout();
    QPlainTextEdit* AreaView(const QString& i_area);

    void OnUserTracked(Item* ip_user);
    void OnUserUntracked(Item* ip_user);
    void OnUserOnline(Item* ip_user);
    void OnUserOffline(Item* ip_user);

    QTreeWidget* mp_trackedUsersTree = nullptr;
    QTabWidget* mp_logTabWidget = nullptr;
};

extern DiagnosticsForm* diagnosticsForm;
