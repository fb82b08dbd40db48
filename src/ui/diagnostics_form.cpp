#include "ui/diagnostics_form.h"

#include "app/text.h"
#include "net/limits.h"
#include "ui/display_text.h"

#include <QDateTime>
#include <QHeaderView>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

DiagnosticsForm* diagnosticsForm = nullptr;

namespace {

QTreeWidgetItem* TrackedRow(Item* ip_user) {
    return ItemPtr(ip_user).HasItem("track_user_node").AsPointer<QTreeWidgetItem>();
}

void ShowOnline(Item* ip_user, bool i_online) {
    if (QTreeWidgetItem* const lp_row = TrackedRow(ip_user)) {
        lp_row->setText(1, i_online ? DiagnosticsForm::tr("Online") : DiagnosticsForm::tr("Offline"));
    }
}

} // namespace

DiagnosticsForm::DiagnosticsForm(QWidget* ip_parent) : QWidget(ip_parent) {
    diagnosticsForm = this;
    BuildLayout();
    Type* const lp_log = d.NewType("log", true, false, true);
    Type* const lp_logWidget = d.NewType("log_widget", true, false, true);
    lp_log->RelateToType(lp_logWidget, One, One, false);
    SetLogSink(this);
}

DiagnosticsForm::~DiagnosticsForm() {
    SetLogSink(nullptr);
    diagnosticsForm = nullptr;
}

void DiagnosticsForm::BuildLayout() {
    QTabWidget* const lp_tabs = new QTabWidget(this);
    lp_tabs->setObjectName(QStringLiteral("tabWidget"));

    mp_trackedUsersTree = new QTreeWidget;
    mp_trackedUsersTree->setObjectName(QStringLiteral("trackedUsersTree"));
    mp_trackedUsersTree->setAccessibleName(tr("Tracked Users"));
    mp_trackedUsersTree->setHeaderLabels({tr("User"), QString()});
    mp_trackedUsersTree->setColumnWidth(0, 300);
    mp_trackedUsersTree->setColumnWidth(1, 100);
    mp_trackedUsersTree->setRootIsDecorated(false);
    mp_trackedUsersTree->setUniformRowHeights(true);
    lp_tabs->addTab(mp_trackedUsersTree, tr("Tracked Users"));

    mp_logTabWidget = new QTabWidget;
    mp_logTabWidget->setObjectName(QStringLiteral("logTabWidget"));
    lp_tabs->addTab(mp_logTabWidget, tr("Logs"));

    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    lp_layout->addWidget(lp_tabs);
}

void DiagnosticsForm::Init() {
    Type* const lp_node = d.NewType("track_user_node", true, false, true);
    lp_node->RelateToType(d.GetType("user"), One, One, false);

    const auto l_watch = [this](const char* i_type, PathNodeRelation i_relation,
                                void (DiagnosticsForm::*i_method)(Item*)) {
        PathNode* const lp_root = new PathNode(&d, "user");
        new PathNode(lp_root, i_type, i_relation);
        d.AddPathEventHandler(lp_root, MakeHandler(this, i_method));
    };
    l_watch("is_tracked", NewlyConnected, &DiagnosticsForm::OnUserTracked);
    l_watch("is_tracked", NewlyDisconnected, &DiagnosticsForm::OnUserUntracked);
    l_watch("is_online", NewlyConnected, &DiagnosticsForm::OnUserOnline);
    l_watch("is_online", NewlyDisconnected, &DiagnosticsForm::OnUserOffline);
}

void DiagnosticsForm::Log(QString i_area, int i_level, QString i_text, ItemPtr) {
    const QString l_line = QStringLiteral("[%1] %2").arg(QDateTime::currentDateTime().toString(Qt::TextDate),
                                                         QString(3 * qMax(0, i_level - 1), QLatin1Char(' '))) +
                           i_text;
    AreaView(i_area)->appendPlainText(DisplayText(l_line, limits::chatLineText));
}

QPlainTextEdit* DiagnosticsForm::AreaView(const QString& i_area) {
    const ItemPtr l_log = d.GetType("log")->GetItem(ToUtf8(i_area));
    if (QPlainTextEdit* const lp_view = l_log.HasItem("log_widget").AsPointer<QPlainTextEdit>()) {
        return lp_view;
    }
    QPlainTextEdit* const lp_view = new QPlainTextEdit(this);
    lp_view->setReadOnly(true);
    lp_view->setTabChangesFocus(true);
    lp_view->setMaximumBlockCount(limits::logLines);
    lp_view->setAccessibleName(tr("Log of %1").arg(LabelText(ToUtf8(i_area))));
    mp_logTabWidget->addTab(lp_view, TitleText(ToUtf8(i_area)));
    l_log.Connect(d.GetType("log_widget")->GetItem(lp_view));
    return lp_view;
}

void DiagnosticsForm::OnUserTracked(Item* ip_user) {
    QTreeWidgetItem* const lp_row = new QTreeWidgetItem(mp_trackedUsersTree);
    lp_row->setText(0, CellText(ip_user->AsView()));
    ip_user->Connect(d.GetType("track_user_node")->GetItem(lp_row));
    ShowOnline(ip_user, ip_user->IsConnected("is_online"));
}

// The node goes with its row: a user that is not tracked may still come and go.
void DiagnosticsForm::OnUserUntracked(Item* ip_user) {
    delete TrackedRow(ip_user);
    if (const ItemPtr l_node = ItemPtr(ip_user).HasItem("track_user_node")) {
        l_node.Remove();
    }
}

void DiagnosticsForm::OnUserOnline(Item* ip_user) {
    ShowOnline(ip_user, true);
}

void DiagnosticsForm::OnUserOffline(Item* ip_user) {
    ShowOnline(ip_user, false);
}
