#include "ui/shares_form.h"

#include "app/text.h"
#include "ui/action_set_tool_bar.h"
#include "ui/display_text.h"
#include "ui/empty_tabs_hint.h"
#include "ui/share_form.h"
#include "ui/tab_closer.h"

#include <QShortcut>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

void CreateShareNodeTypes() {
    const auto l_create = [](const char* ip_name, const char* ip_shown) {
        d.NewType(ip_name, true, false, true)->RelateToType(d.GetType(ip_shown), One, One, false);
    };
    l_create("user_share_tab", "user_share");
    l_create("user_share_folder_node", "user_share_folder");
    l_create("user_share_file_node", "user_share_file");
}

} // namespace

SharesForm::SharesForm(QWidget* ip_parent) : QWidget(ip_parent), mp_tabControl(new QTabWidget) {
    mp_tabControl->setObjectName(QStringLiteral("tabControl"));
    mp_tabControl->setTabsClosable(true);
    mp_tabControl->tabBar()->setAccessibleName(tr("Share lists"));
    new TabCloser(mp_tabControl);
    new EmptyTabsHint(mp_tabControl, tr("No share lists are open. \"Browse user's files\" in the menu of a user asks "
                                        "for one; it opens here when it has arrived."));
    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    lp_layout->addWidget(mp_tabControl);

    QShortcut* const lp_close = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_W), this);
    lp_close->setContext(Qt::WidgetWithChildrenShortcut);
    connect(lp_close, &QShortcut::activated, this, [this] { OnTabCloseRequested(mp_tabControl->currentIndex()); });
}

void SharesForm::Init() {
    CreateShareNodeTypes();
    PathNode* const lp_share = new PathNode(d, "user_share");
    new PathNode(lp_share, "user_share_loaded", Connected);
    d.AddPathEventHandler(lp_share, MakeHandler(this, &SharesForm::OnUserShare));

    const auto l_add = [](const char* ip_set, const char* ip_id, const QString& i_text, const char* ip_icon,
                          bool i_needsSelection) {
        actionBar->AddSetAction(ip_set, ip_id, ToUtf8(i_text), ip_icon, i_needsSelection);
    };
    l_add("share_folders", "download_share_folder", tr("Download Folder"), ":/icons/transfer_icon", true);
    l_add("share_folders", "expand_level", tr("Expand Level"), ":/icons/browse_icon", false);
    l_add("share_folders", "collapse_all", tr("Collapse All"), ":/icons/browse_icon", false);
    l_add("share_folders", "expand_all", tr("Expand All"), ":/icons/browse_icon", false);
    l_add("share_files", "download_share_file", tr("Download File"), ":/icons/transfer_icon", true);

    connect(mp_tabControl, &QTabWidget::tabCloseRequested, this, &SharesForm::OnTabCloseRequested);
    connect(actionBar, &ActionSetToolBar::ActionTriggered, this, &SharesForm::OnToolBarActionTriggered);
    actionBar->AutoFocusTabWidget(mp_tabControl);
}

void SharesForm::OnUserShare(Item* ip_share) {
    const std::string l_user = ItemPtr(ip_share)["user"].AsString();
    ShareForm* const lp_form = new ShareForm(ip_share, this);
    const int l_index = mp_tabControl->addTab(lp_form, TitleText(l_user));
    mp_tabControl->setTabToolTip(l_index, ToolTipText(l_user));
}

void SharesForm::OnTabCloseRequested(int i_index) {
    if (ShareForm* const lp_form = qobject_cast<ShareForm*>(mp_tabControl->widget(i_index))) {
        mp_tabControl->removeTab(i_index);
        lp_form->Delete();
    }
}

void SharesForm::OnToolBarActionTriggered(std::string i_id) {
    ShareForm* const lp_form = CurrentForm();
    if (!lp_form) {
        return;
    }
    if (i_id == "expand_level") {
        lp_form->ExpandLevel();
    } else if (i_id == "collapse_all") {
        lp_form->CollapseAll();
    } else if (i_id == "expand_all") {
        lp_form->ExpandAll();
    }
}

ShareForm* SharesForm::CurrentForm() const {
    return qobject_cast<ShareForm*>(mp_tabControl->currentWidget());
}
