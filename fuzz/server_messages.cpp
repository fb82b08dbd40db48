// Every message of the server protocol, both directions. Input: a body, code first. What decodes must be written and
// read again without change.
#include <cstdint>
#include <cstdlib>

#include "../tests/net/message_samples.h"

namespace {

template <class Message>
void DecodeAs(std::int32_t i_code, const uint8_t* ip_data, size_t i_size) {
    if (i_code != Message::code)
        return;
    MemStream l_body;
    l_body.WriteBuffer(ip_data, i_size);
    Message l_message;
    if (!l_body.Read(i_code) || !Decode(l_body, l_message))
        return;
    MemStream l_written = Encode(l_message);
    Message l_again;
    if (!l_written.Read(i_code) || !Decode(l_written, l_again) ||
        Encode(l_again).GetWritten() != l_written.GetWritten())
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* ip_data, size_t i_size) {
    MemStream l_body;
    l_body.WriteBuffer(ip_data, i_size);
    std::int32_t l_code = 0;
    if (!l_body.Read(l_code))
        return 0;
    const auto l_decode = [&]<class Message>(const Message&) { DecodeAs<Message>(l_code, ip_data, i_size); };
    VisitMessagesToServer(l_decode);
    VisitMessagesFromServer(l_decode);
    return 0;
}
