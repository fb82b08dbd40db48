#include "ui/size_manager.h"

#include "store_test.h"
#include "ui/resizable_window.h"
#include "ui/window_place.h"

#include <QGuiApplication>
#include <QHeaderView>
#include <QScreen>
#include <QSplitter>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

namespace {

// A window that tells of itself as the main window does.
class PlacedWindow : public QWidget {
public:
    class Proxy : public ResizableWindow {
    public:
        explicit Proxy(QWidget& io_window) : m_window(io_window) {}
        int GetX() override { return m_window.geometry().x(); }
        int GetY() override { return m_window.geometry().y(); }
        int GetWidth() override { return m_window.width(); }
        int GetHeight() override { return m_window.height(); }
        void SetPosition(int i_x, int i_y) override { m_window.setGeometry(i_x, i_y, GetWidth(), GetHeight()); }
        void SetSize(int i_width, int i_height) override { m_window.resize(i_width, i_height); }

    private:
        QWidget& m_window;
    };

    PlacedWindow() { setGeometry(10, 20, 300, 200); }

    Proxy m_proxy{*this};

protected:
    void moveEvent(QMoveEvent*) override { Q_EMIT m_proxy.WindowMoved(geometry().x(), geometry().y()); }
    void resizeEvent(QResizeEvent*) override { Q_EMIT m_proxy.WindowResized(width(), height()); }
};

std::unique_ptr<QTreeWidget> MakeTree() {
    auto l_tree = std::make_unique<QTreeWidget>();
    l_tree->setColumnCount(3);
    l_tree->header()->setMinimumSectionSize(10);
    sizeManager->RegisterTreeWidget(QStringLiteral("list"), l_tree.get());
    return l_tree;
}

std::vector<int> Columns(const std::unique_ptr<QTreeWidget>& i_tree) {
    return {i_tree->columnWidth(0), i_tree->columnWidth(1)};
}

class SizeManagerTest : public StoreTest {
protected:
    SizeManagerTest() { m_manager = std::make_unique<SizeManager>(nullptr); }

    // What a second run of the program finds. The widgets of the first are gone by then.
    void Restart() {
        const std::string l_path = m_folder.filePath(QStringLiteral("store")).toStdString();
        d.RemoveDisconnectedItems();
        ASSERT_TRUE(m_saver.Save(&d, l_path.c_str()));
        m_manager.reset();
        RenewStore();
        m_manager = std::make_unique<SizeManager>(nullptr);
        ASSERT_EQ(m_saver.Load(&d, l_path.c_str()).state, LoadResult::Whole);
    }

    static void Put(const char* i_owner, const char* i_name, const char* i_type, const Value& i_value) {
        d.GetType(i_owner)->GetItem(i_name)->Connect(d.GetType(i_type)->GetItem(i_value));
    }

    // One stored column, as a damaged file may have it.
    static void PutColumn(const Value& i_number, const Value& i_size) {
        const ItemPtr l_column = d.GetType("sizer_tree")->GetItem("list")->NewItem("sizer_tree_column");
        l_column.Connect(d.GetType("sizer_tree_column_number")->GetItem(i_number));
        l_column.Connect(d.GetType("sizer_size")->GetItem(i_size));
    }

    std::unique_ptr<SizeManager> m_manager;

private:
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(SizeManagerTest, WindowComesBackWhereItWasLeft) {
    {
        PlacedWindow l_window;
        sizeManager->RegisterResizableWindow(QStringLiteral("main"), &l_window.m_proxy);
        l_window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&l_window));
        l_window.setGeometry(70, 80, 400, 350);
        l_window.setGeometry(70, 80, 410, 360);
        EXPECT_EQ(d.GetType("sizer_width")->CountItems(), 1) << "what a drag leaves behind goes at once";
        EXPECT_EQ(d.GetType("sizer_window_widget")->CountItems(), 1);
    }
    EXPECT_EQ(d.GetType("sizer_window_widget")->CountItems(), 0);
    Restart();
    PlacedWindow l_window;
    sizeManager->RegisterResizableWindow(QStringLiteral("main"), &l_window.m_proxy);
    EXPECT_EQ(l_window.geometry(), QRect(70, 80, 410, 360));
}

TEST_F(SizeManagerTest, WindowNeverOpensOutOfSightOrReach) {
    struct Case {
        const char* x;
        const char* y;
        const char* width;
        const char* height;
    };
    const QRect l_screen = QGuiApplication::primaryScreen()->availableGeometry();
    for (const Case& l_case :
         {Case{"5000", "100", "300", "200"}, Case{"-290", "100", "300", "200"}, Case{"100", "-150", "300", "200"},
          Case{"100", "795", "300", "200"}, Case{"99999999999999999999", "100", "300", "200"}, Case{"x", "", "-1", "0"},
          Case{"0", "0", "2147483647", "1000000"}, Case{"900000", "-900000", "1", "1"}}) {
        for (const auto& [l_type, l_value] :
             {std::pair("sizer_x", l_case.x), std::pair("sizer_y", l_case.y), std::pair("sizer_width", l_case.width),
              std::pair("sizer_height", l_case.height)}) {
            Put("sizer_window", "main", l_type, l_value);
        }
        PlacedWindow l_window;
        sizeManager->RegisterResizableWindow(QStringLiteral("main"), &l_window.m_proxy);
        const QRect l_edge = QRect(l_window.geometry().topLeft(), QSize(l_window.width(), 32)).intersected(l_screen);
        EXPECT_GE(l_edge.width(), 64) << l_case.x;
        EXPECT_GE(l_edge.height(), 16) << l_case.y;
        EXPECT_GE(l_window.width(), 100) << l_case.width;
        EXPECT_LE(l_window.width(), 4096) << l_case.width;
        EXPECT_LE(l_window.height(), 4096) << l_case.height;
    }
    // Partly outside, or larger than the screen, is how some people like it.
    const QRect l_wide(-100, 300, 2 * l_screen.width(), 300);
    EXPECT_EQ(VisiblePlace(l_wide), l_wide.topLeft());
    EXPECT_EQ(BearableSize(l_wide.size()), l_wide.size());
}

TEST_F(SizeManagerTest, TreesOfOneNameMoveTogetherAndComeBack) {
    {
        auto l_first = MakeTree();
        auto l_second = MakeTree();
        EXPECT_EQ(d.GetType("sizer_tree_column")->CountItems(), 2) << "the last column stretches";
        l_first->setColumnWidth(0, 61);
        EXPECT_EQ(l_second->columnWidth(0), 61);
        l_second->setColumnWidth(1, 61);
        EXPECT_THAT(Columns(l_first), testing::ElementsAre(61, 61));
        l_second->setColumnWidth(0, 62);
        EXPECT_TRUE(d.GetType("sizer_size")->HasItem(61)) << "the other column still has it";
        l_second->setColumnWidth(1, 63);
        EXPECT_EQ(d.GetType("sizer_size")->CountItems(), 2);

        l_first.reset();
        EXPECT_EQ(d.GetType("sizer_tree_widget")->CountItems(), 1);
        l_second->setColumnWidth(1, 64);
        auto l_third = MakeTree();
        EXPECT_THAT(Columns(l_third), testing::ElementsAre(62, 64));
    }
    Restart();
    EXPECT_THAT(Columns(MakeTree()), testing::ElementsAre(62, 64));
}

TEST_F(SizeManagerTest, ColumnsOfADamagedFileCountAsFarAsTheyMakeSense) {
    PutColumn("0", "71");
    PutColumn("1", "72");
    PutColumn("1", "72");
    PutColumn("1", "-5");
    PutColumn("7", "73");
    PutColumn("-1", "74");
    PutColumn("99999999999999999999", "75");
    PutColumn("one", "76");
    PutColumn("0", "2147483648");
    auto l_tree = MakeTree();
    EXPECT_THAT(Columns(l_tree), testing::ElementsAre(71, 72));
    l_tree->setColumnWidth(1, 90); // finds several to write to
    l_tree.reset();
    EXPECT_THAT(Columns(MakeTree()), testing::ElementsAre(71, 90));
}

TEST_F(SizeManagerTest, SplittersOfOneNameMoveTogetherAndComeBack) {
    const auto l_make = [](QSplitter& io_splitter, QList<int> i_defaults) {
        io_splitter.setHandleWidth(0);
        io_splitter.addWidget(new QTreeWidget);
        io_splitter.addWidget(new QTreeWidget);
        io_splitter.resize(400, 100);
        io_splitter.setSizes({200, 200});
        sizeManager->RegisterSplitter(QStringLiteral("panes"), &io_splitter, i_defaults);
        io_splitter.show();
    };
    QList<int> l_left;
    {
        QSplitter l_first;
        QSplitter l_second;
        l_make(l_first, {300, 100});
        EXPECT_EQ(l_first.sizes(), (QList<int>{200, 200})) << "what is stored for others";
        l_make(l_second, {});
        EXPECT_EQ(l_second.sizes(), (QList<int>{300, 100}));
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&l_first));
        QTest::mousePress(l_first.handle(1), Qt::LeftButton, Qt::NoModifier, QPoint(0, 50));
        QTest::mouseMove(l_first.handle(1), QPoint(-90, 50));
        QTest::mouseRelease(l_first.handle(1), Qt::LeftButton, Qt::NoModifier, QPoint(0, 50));
        ASSERT_LT(l_first.sizes().at(0), 190);
        EXPECT_EQ(l_second.sizes(), l_first.sizes());
        l_left = l_first.sizes();
    }
    EXPECT_EQ(d.GetType("sizer_splitter_widget")->CountItems(), 0);
    Restart();
    QSplitter l_splitter;
    l_make(l_splitter, {});
    EXPECT_EQ(l_splitter.sizes(), l_left);

    // Panes that are all shut, or sizes that are none, leave it as it is.
    for (const char* lp_size : {"0", "wide", "-3", "99999999999999999999"}) {
        for (Item* const lp_pane : g("sizer_splitter_index")) {
            lp_pane->Connect(d.GetType("sizer_size")->GetItem(lp_size));
        }
        QSplitter l_other;
        l_make(l_other, {});
        EXPECT_EQ(l_other.sizes(), (QList<int>{200, 200})) << lp_size;
    }
}
