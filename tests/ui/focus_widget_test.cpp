#include "ui/focus_widget.h"

#include <QLineEdit>
#include <QTabWidget>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

TEST(FocusWidget, SelectsTheTabAroundAtEachLevel) {
    QTabWidget l_outer;
    QTabWidget* const lp_inner = new QTabWidget;
    QWidget* const lp_page = new QWidget;
    QLineEdit* const lp_edit = new QLineEdit;
    (new QVBoxLayout(lp_page))->addWidget(lp_edit);
    lp_inner->addTab(new QWidget, QStringLiteral("other"));
    lp_inner->addTab(lp_page, QStringLiteral("page"));
    l_outer.addTab(new QWidget, QStringLiteral("other"));
    l_outer.addTab(lp_inner, QStringLiteral("inner"));
    l_outer.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&l_outer));

    FocusWidget(lp_edit);
    EXPECT_EQ(l_outer.currentWidget(), lp_inner);
    EXPECT_EQ(lp_inner->currentWidget(), lp_page);
    EXPECT_TRUE(QTest::qWaitFor([&] { return lp_edit->hasFocus(); }));

    // The same under its other name, for a page itself.
    l_outer.setCurrentIndex(0);
    FocusWidgetAndParents(lp_page);
    EXPECT_EQ(l_outer.currentWidget(), lp_inner);
}
