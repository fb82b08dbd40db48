#include "app/log.h"

#include "store/data.h"

#include <utility>

namespace {

LogSink* gp_sink = nullptr;

} // namespace

void Log(QString i_area, int i_level, QString i_text, ItemPtr i_item) {
    if (gp_sink) {
        gp_sink->Log(std::move(i_area), i_level, std::move(i_text), i_item);
    }
}

void SetLogSink(LogSink* ip_sink) {
    gp_sink = ip_sink;
}
