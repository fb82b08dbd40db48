#include "app/log.h"

#include "store/data.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace {

class Recorder : public LogSink {
public:
    void Log(QString i_area, int i_level, QString i_text, ItemPtr i_item) override {
        lines.append(QStringLiteral("%1/%2/%3/%4").arg(i_area).arg(i_level).arg(i_text).arg(i_item ? 1 : 0));
    }
    QStringList lines;
};

} // namespace

TEST(Log, GoesToTheSinkOfTheMomentOrNowhere) {
    const QString l_area = QStringLiteral("server");
    Log(l_area, 1, QStringLiteral("before"), nullptr);
    Recorder l_recorder;
    SetLogSink(&l_recorder);
    Log(l_area, 2, QStringLiteral("during"), nullptr);
    SetLogSink(nullptr);
    Log(l_area, 1, QStringLiteral("after"), nullptr);
    EXPECT_EQ(l_recorder.lines, QStringList(QStringLiteral("server/2/during/0")));
}
