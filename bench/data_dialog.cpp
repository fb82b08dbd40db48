// The store browser on a Type of a million items: how long opening it, selecting the Type, filtering and following
// additions hold up the window, beside a plain list widget that takes the same items at once.
#include "ui/data_dialog.h"

#include "app/settings.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QListWidget>
#include <QTreeWidget>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>

namespace {

constexpr int c_items = 1'000'000;
constexpr int c_additionsASecond = 10'000;
constexpr int c_seconds = 5;
constexpr double c_wantedBlock = 200; // ms

double Milliseconds(const QElapsedTimer& i_clock) {
    return static_cast<double>(i_clock.nsecsElapsed()) / 1e6;
}

// Runs the event loop until the condition holds; the longest turn of it.
template <class Condition>
double LongestTurn(Condition i_isOver) {
    double l_longest = 0;
    while (!i_isOver()) {
        QElapsedTimer l_clock;
        l_clock.start();
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        l_longest = std::max(l_longest, Milliseconds(l_clock));
    }
    return l_longest;
}

double Settle() {
    int l_turns = 0;
    return LongestTurn([&l_turns] { return ++l_turns > 20; });
}

template <class Work>
double Block(Work i_work) {
    QElapsedTimer l_clock;
    l_clock.start();
    i_work();
    return std::max(Milliseconds(l_clock), Settle());
}

bool g_isGood = true;

void Print(const char* ip_what, double i_milliseconds) {
    const bool l_isGood = i_milliseconds <= c_wantedBlock;
    g_isGood = g_isGood && l_isGood;
    std::printf("%-44s %9.1f ms  (at most %.0f)%s\n", ip_what, i_milliseconds, c_wantedBlock,
                l_isGood ? "" : "  MISSED");
}

double PlainListTime() {
    QListWidget l_list;
    l_list.show();
    return Block([&l_list] {
        for (Item* lp_item : g("file").GetItems("name")) {
            l_list.addItem(QString::fromUtf8(lp_item->AsCStr()));
        }
    });
}

// A hundred at a time, as a busy network would bring them.
double Follow(Type* ip_type) {
    double l_longest = 0;
    QElapsedTimer l_clock;
    l_clock.start();
    for (int l_added = 0; l_added < c_additionsASecond * c_seconds;) {
        if (Milliseconds(l_clock) * c_additionsASecond / 1000 < l_added) {
            QCoreApplication::processEvents();
            continue;
        }
        QElapsedTimer l_turn;
        l_turn.start();
        for (int l_count = 0; l_count < 100; ++l_count) {
            ip_type->NewItem("added " + std::to_string(l_added++));
        }
        QCoreApplication::processEvents();
        l_longest = std::max(l_longest, Milliseconds(l_turn));
    }
    const double l_took = Milliseconds(l_clock);
    std::printf("%d additions took %.0f ms, which is %.0f a second\n", c_additionsASecond * c_seconds, l_took,
                c_additionsASecond * c_seconds * 1000 / l_took);
    return l_longest;
}

void Fill() {
    CreateSettingsTypes();
    Type* const lp_file = d.NewType("file", true, false, true);
    Type* const lp_name = d.NewType("name", false, false, true);
    lp_file->RelateToType(lp_name, One, Many, false);
    Item* const lp_owner = lp_file->GetItem("all");
    for (int l_number = 0; l_number < c_items; ++l_number) {
        lp_owner->Connect(lp_name->NewItem("Some Artist - Some Song, take " + std::to_string(l_number) + ".ogg"));
    }
}

} // namespace

int main(int i_count, char** ip_arguments) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication l_application(i_count, ip_arguments);
    const DataSaver l_saver;
    Fill();
    std::printf("a Type of %d items; the longest time without an answer to the user\n", c_items);

    DataDialog* lp_dialog = nullptr;
    Print("opening", Block([&lp_dialog] {
              lp_dialog = new DataDialog(&d, nullptr);
              lp_dialog->show();
          }));
    QTreeWidget* const lp_types = lp_dialog->findChild<QTreeWidget*>(QStringLiteral("typeList"));
    QListWidget* const lp_items = lp_dialog->findChild<QListWidget*>(QStringLiteral("itemList"));
    QLineEdit* const lp_filter = lp_dialog->findChild<QLineEdit*>(QStringLiteral("itemFilter"));
    const auto l_select = [lp_types](const char* ip_name) {
        lp_types->setCurrentItem(lp_types->findItems(QLatin1String(ip_name), Qt::MatchExactly).first());
    };
    Print("selecting the Type", Block([&] { l_select("name"); }));
    Print("scrolling to the end, ten times", Block([lp_items] {
              for (int l_time = 0; l_time < 10; ++l_time) {
                  lp_items->scrollToBottom();
              }
          }));
    lp_filter->setText(QStringLiteral("TAKE 77777"));
    QElapsedTimer l_clock;
    l_clock.start();
    Print("filtering", LongestTurn([lp_items] { return lp_items->count() == 11; }));
    std::printf("the filter was through after %.0f ms\n", Milliseconds(l_clock));
    lp_filter->clear();
    LongestTurn([lp_items] { return lp_items->count() == 1000; });
    Print("following additions", Follow(d.GetType("name")));
    l_select("file");
    Print("showing an item with a million connections",
          Block([lp_dialog, lp_items] { lp_dialog->OnItemClicked(lp_items->item(0)); }));
    Print("closing", Block([lp_dialog] { lp_dialog->close(); }));
    std::printf("yardstick: a plain list takes the items at once in %.0f ms\n", PlainListTime());
    return g_isGood ? EXIT_SUCCESS : EXIT_FAILURE;
}
