#include "window_test.h"

#include "app/log.h"
#include "net/limits.h"

#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTreeWidget>

namespace {

class DiagnosticsFormTest : public WindowTest {
protected:
    DiagnosticsFormTest() { Open(); }

    QPlainTextEdit* View(const QString& i_area) {
        QTabWidget* const lp_tabs = Find<QTabWidget>("logTabWidget");
        for (int l_index = 0; l_index < lp_tabs->count(); ++l_index) {
            if (lp_tabs->tabText(l_index) == i_area) {
                return qobject_cast<QPlainTextEdit*>(lp_tabs->widget(l_index));
            }
        }
        return nullptr;
    }
    void LogLine(const QString& i_text, int i_level = 1) { Log(c_area, i_level, i_text, nullptr); }
    QStringList Lines() { return View(c_area)->toPlainText().split(QLatin1Char('\n')); }

    // No manager speaks in this area by itself.
    const QString c_area = QStringLiteral("MP3 Scanning");
};

std::string Rows(QTreeWidget* ip_tree) {
    std::string l_rows;
    for (int l_row = 0; l_row < ip_tree->topLevelItemCount(); ++l_row) {
        const QTreeWidgetItem* const lp_row = ip_tree->topLevelItem(l_row);
        l_rows += lp_row->text(0).toStdString() + ":" + lp_row->text(1).toStdString() + " ";
    }
    return l_rows;
}

} // namespace

TEST_F(DiagnosticsFormTest, LinesCarryTimeAndIndentAndAreasComeAsTheySpeak) {
    QTabWidget* const lp_tabs = Find<QTabWidget>("logTabWidget");
    const int l_before = lp_tabs->count();
    LogLine(QStringLiteral("outer"));
    Log(QStringLiteral("Wish List"), 1, QStringLiteral("other"), nullptr);
    LogLine(QStringLiteral("inner"), 3);
    EXPECT_EQ(lp_tabs->count(), l_before + 2);
    EXPECT_EQ(lp_tabs->tabText(l_before), c_area);
    EXPECT_EQ(lp_tabs->tabText(l_before + 1).toStdString(), "Wish List");

    ASSERT_EQ(Lines().size(), 2);
    const QRegularExpression l_shape(QStringLiteral("^\\[([^\\]]+)\\] ( *)(\\w+)$"));
    const QRegularExpressionMatch l_outer = l_shape.match(Lines().at(0));
    const QRegularExpressionMatch l_inner = l_shape.match(Lines().at(1));
    EXPECT_TRUE(QDateTime::fromString(l_outer.captured(1), Qt::TextDate).isValid());
    EXPECT_EQ(l_outer.captured(2).size(), 0);
    EXPECT_EQ(l_inner.captured(2).size(), 6);
    EXPECT_EQ(l_inner.captured(3).toStdString(), "inner");
}

TEST_F(DiagnosticsFormTest, ForeignTextStaysTextOnOneLine) {
    LogLine(QStringLiteral("<img src=\"file:/dev/zero\"> <b>bold</b>\nsecond\u202E"));
    LogLine(QString(131'072, QLatin1Char('x')));
    ASSERT_EQ(Lines().size(), 2);
    EXPECT_TRUE(
        Lines().at(0).endsWith(QStringLiteral("<img src=\"file:/dev/zero\"> <b>bold</b>[U+000A]second[U+202E]")));
    EXPECT_EQ(Lines().at(1).size(), limits::chatLineText);
}

TEST_F(DiagnosticsFormTest, KeepsTheLatestLines) {
    for (int l_line = 0; l_line < limits::logLines + 10; ++l_line) {
        LogLine(QString::number(l_line));
    }
    const QStringList l_lines = Lines();
    EXPECT_EQ(l_lines.size(), limits::logLines);
    EXPECT_TRUE(l_lines.first().endsWith(QStringLiteral(" 10")));
    EXPECT_TRUE(l_lines.last().endsWith(QStringLiteral(" 5009")));
}

TEST_F(DiagnosticsFormTest, TrackedUsersComeAndGoWithTheirRows) {
    QTreeWidget* const lp_tree = Find<QTreeWidget>("trackedUsersTree");
    const ItemPtr l_ada = d.GetType("user")->GetItem("ada");
    const ItemPtr l_eve = d.GetType("user")->GetItem("eve");
    l_eve.NewItem("is_online");
    EXPECT_EQ(Rows(lp_tree), "");
    l_ada.NewItem("is_tracked");
    l_eve.NewItem("is_tracked");
    EXPECT_EQ(Rows(lp_tree), "ada:Offline eve:Online ");
    l_ada.NewItem("is_online");
    l_eve.Disconnect("is_online");
    EXPECT_EQ(Rows(lp_tree), "ada:Online eve:Offline ");

    l_eve.Disconnect("is_tracked");
    EXPECT_EQ(Rows(lp_tree), "ada:Online ");
    // Someone untracked has no row to write to any more.
    l_eve.NewItem("is_online");
    l_eve.NewItem("is_tracked");
    EXPECT_EQ(Rows(lp_tree), "ada:Online eve:Online ");
}

TEST_F(DiagnosticsFormTest, WithoutTheWindowLinesAreDropped) {
    LogLine(QStringLiteral("seen"));
    Close();
    Log(c_area, 1, QStringLiteral("unseen"), nullptr);
}
