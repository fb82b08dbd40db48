#include "peer/search_reply.h"

bool DecodeSearchReplyHead(InputStream& io_body, SearchReply& o_reply) {
    return io_body.Read(o_reply.user) && io_body.Read(o_reply.token);
}

bool DecodeSearchReplyRest(InputStream& io_body, SearchReply& o_reply) {
    if (!io_body.Read(o_reply.files))
        return false;
    if (!io_body.Read(o_reply.isFree) || !io_body.Read(o_reply.speed) || !io_body.Read(o_reply.uploadsInQueue))
        return true;
    if (!io_body.Read(o_reply.attributeNames))
        o_reply.attributeNames.clear();
    return true;
}

MemStream EncodeSearchReply(const SearchReply& i_reply) {
    MemStream l_body;
    l_body.Write(i_reply.user);
    l_body.Write(i_reply.token);
    l_body.Write(i_reply.files);
    l_body.Write(i_reply.isFree);
    l_body.Write(i_reply.speed);
    l_body.Write(i_reply.uploadsInQueue);
    l_body.Write(i_reply.attributeNames);
    return l_body;
}
