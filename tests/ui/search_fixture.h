// The search page on show, and what of its trees tests look at.
#pragma once

#include "search_page.h"

#include <QAction>
#include <QLabel>
#include <QTest>

#include <gmock/gmock.h>

class SearchTest : public testing::Test {
protected:
    void SetUp() override {
        m_page.mp_form->Init();
        m_page.m_window->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_page.m_window.get()));
    }

    // An answer, and its rows in their tree.
    void Reply(unsigned int i_token, const std::string& i_user, std::vector<FileInfo> i_files,
               SearchPage::Answer i_answer = SearchPage::Answer()) {
        m_page.Reply(i_token, i_user, std::move(i_files), i_answer);
        ASSERT_TRUE(QTest::qWaitFor([this] { return m_page.IsPlaced(); }, 30'000));
    }

    // Each row from top to bottom, two blanks a level: "anna Y 1.0", "folder", "file 1,234".
    static std::vector<std::string> Rows(const QTreeWidget* ip_tree) {
        std::vector<std::string> l_rows;
        CollectRows(ip_tree->invisibleRootItem(), std::string(), l_rows);
        return l_rows;
    }
    static QTreeWidgetItem* Row(QTreeWidget* ip_tree, const char* ip_text) {
        for (const int l_column :
             {SearchResultListItem::User, SearchResultListItem::Folder, SearchResultListItem::File}) {
            const auto l_found =
                ip_tree->findItems(QLatin1String(ip_text), Qt::MatchExactly | Qt::MatchRecursive, l_column);
            if (!l_found.isEmpty()) {
                return l_found.constFirst();
            }
        }
        ADD_FAILURE() << "no row " << ip_text;
        std::abort();
    }
    static std::vector<std::string> Downloads() {
        std::vector<std::string> l_texts;
        for (const Item* lp_entry : g("download_entry").SortNumericBy("download_order", true)) {
            l_texts.push_back(
                lp_entry->HasItem("user").AsString() + "|" + lp_entry->HasItem("remote_folder").AsString() + "|" +
                lp_entry->HasItem("file_name").AsString() + "|" + lp_entry->HasItem("file_size").AsString() + "|" +
                lp_entry->HasItem("subfolder_save_level").AsString());
        }
        return l_texts;
    }
    // Presses the button of the tool bar that bears the text.
    static void Press(const char* ip_text) {
        for (QAction* lp_action : actionBar->actions()) {
            if (lp_action->text() == QLatin1String(ip_text)) {
                lp_action->trigger();
                return;
            }
        }
        ADD_FAILURE() << "no button " << ip_text;
    }
    static void SelectOnly(QTreeWidget* ip_tree, std::initializer_list<QTreeWidgetItem*> i_rows) {
        ip_tree->setFocus();
        ip_tree->clearSelection();
        for (QTreeWidgetItem* lp_row : i_rows) {
            lp_row->setSelected(true);
        }
    }
    QString Counts(int i_tab = 0) {
        return m_page.Tab(i_tab)->findChild<QLabel*>(QStringLiteral("searchCounts"))->text();
    }

    SearchPage m_page;

private:
    static void CollectRows(const QTreeWidgetItem* ip_parent, const std::string& i_indent,
                            std::vector<std::string>& o_rows) {
        for (int l_row = 0; l_row < ip_parent->childCount(); ++l_row) {
            const QTreeWidgetItem* const lp_row = ip_parent->child(l_row);
            if (lp_row->isHidden()) {
                continue;
            }
            QStringList l_cells;
            for (int l_column = 0; l_column < lp_row->treeWidget()->columnCount(); ++l_column) {
                if (!lp_row->text(l_column).isEmpty()) {
                    l_cells.append(lp_row->text(l_column));
                }
            }
            o_rows.push_back(i_indent + l_cells.join(QLatin1Char(' ')).toStdString());
            CollectRows(lp_row, i_indent + "  ", o_rows);
        }
    }
};
