#include "peer/init_frame.h"

InitFrame DecodeInitFrame(InputStream& io_body) {
    bool l_isDirect = false;
    if (!io_body.Read(l_isDirect))
        return InitFault::NoDirection;
    if (!l_isDirect) {
        IndirectAnswer l_answer;
        if (!io_body.Read(l_answer.token))
            return InitFault::NoToken;
        return l_answer;
    }
    DirectInit l_init;
    std::int32_t l_dropped = 0;
    if (!io_body.Read(l_init.user) || !io_body.Read(l_init.type) || !io_body.Read(l_dropped))
        return InitFault::NoIdentity;
    return l_init;
}

MemStream EncodeInitFrame(const DirectInit& i_init) {
    MemStream l_body;
    l_body.Write(true);
    l_body.Write(i_init.user);
    l_body.Write(i_init.type);
    l_body.Write(std::int32_t{0});
    return l_body;
}

MemStream EncodeInitFrame(const IndirectAnswer& i_answer) {
    MemStream l_body;
    l_body.Write(false);
    l_body.Write(i_answer.token);
    return l_body;
}
