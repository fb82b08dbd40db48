// The one logging call. There is no log file: the window shows the lines, one page per area.
#pragma once

#include <QString>

class ItemPtr;

// i_level is the nesting depth, 1 for top level. i_item is what the message is about, or null. Main thread only.
// Without a sink the line is dropped.
void Log(QString i_area, int i_level, QString i_text, ItemPtr i_item);

class LogSink {
public:
    virtual ~LogSink() = default;
    virtual void Log(QString i_area, int i_level, QString i_text, ItemPtr i_item) = 0;
};

// The sink is not owned; it takes itself out with null before it dies.
void SetLogSink(LogSink* ip_sink);
