#include "net/wire.h"

#include <tuple>

bool UserStats::Read(InputStream& io_stream) {
    return io_stream.Read(averageSpeed) && io_stream.Read(statsValue64) && io_stream.Read(sharedFileCount) &&
           io_stream.Read(statsValue32);
}

bool UserStats::Write(OutputStream& o_stream) const {
    return o_stream.Write(averageSpeed) && o_stream.Write(statsValue64) && o_stream.Write(sharedFileCount) &&
           o_stream.Write(statsValue32);
}

bool UserStats::operator==(const UserStats& i_other) const {
    return std::tie(averageSpeed, statsValue64, sharedFileCount, statsValue32) ==
           std::tie(i_other.averageSpeed, i_other.statsValue64, i_other.sharedFileCount, i_other.statsValue32);
}
