// Every message of the server protocol, both directions: forth and back, cut anywhere, with lengths that lie.
#include "net/message_samples.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

// The fields of a body, behind the code.
MemStream FieldsOf(std::string_view i_body) {
    MemStream l_stream;
    l_stream.WriteBuffer(i_body.data(), i_body.size());
    std::int32_t l_code = 0;
    static_cast<void>(l_stream.Read(l_code));
    return l_stream;
}

template <class Message>
void ExpectRoundTrip(const Message& i_message) {
    SCOPED_TRACE(Message::code);
    MemStream l_body = Encode(i_message);
    std::int32_t l_code = 0;
    ASSERT_TRUE(l_body.Read(l_code));
    EXPECT_EQ(l_code, Message::code);
    Message l_read;
    ASSERT_TRUE(Decode(l_body, l_read));
    EXPECT_EQ(l_body.GetPendingReadLength(), 0);
    EXPECT_EQ(Encode(l_read).GetWritten(), l_body.GetWritten());

    // Bytes behind the last field are left alone.
    std::string l_longer(Encode(i_message).GetWritten());
    if (!std::is_same_v<Message, from_server::RoomJoined>)
        l_longer += "tail";
    MemStream l_fields = FieldsOf(l_longer);
    EXPECT_TRUE(Decode(l_fields, l_read));
}

TEST(MessagesTest, EveryMessageComesBackAsItWent) {
    VisitMessagesToServer([](const auto& i_message) { ExpectRoundTrip(i_message); });
    VisitMessagesFromServer([](const auto& i_message) { ExpectRoundTrip(i_message); });
}

template <class Message>
void ExpectFailureWhereverCut(const Message& i_message) {
    SCOPED_TRACE(Message::code);
    const MemStream l_body = Encode(i_message);
    for (std::size_t l_length = 4; l_length < l_body.GetWritten().size(); ++l_length) {
        MemStream l_fields = FieldsOf(l_body.GetWritten().substr(0, l_length));
        Message l_read;
        EXPECT_FALSE(Decode(l_fields, l_read)) << l_length;
    }
}

TEST(MessagesTest, AMessageCutAnywhereIsMalformed) {
    VisitMessagesToServer([](const auto& i_message) { ExpectFailureWhereverCut(i_message); });
    VisitMessagesFromServer([]<class Message>(const Message& i_message) {
        if constexpr (!std::is_same_v<Message, from_server::RoomJoined>)
            ExpectFailureWhereverCut(i_message);
    });
    ExpectFailureWhereverCut(SampleRoomJoined(false));
}

// Any four bytes of a message may be the length or count that lies.
template <class Message>
void DecodeWithLies(const Message& i_message) {
    const std::string l_body(Encode(i_message).GetWritten());
    for (const std::uint32_t l_lie : {0U, 1U, 0xFFFFFFFFU, 0x1FFFFU, 0x20000U, 0x20001U, 0x7FFFFFFFU, 0x80000000U}) {
        for (std::size_t l_place = 4; l_place + 4 <= l_body.size(); ++l_place) {
            std::string l_lying = l_body;
            l_lying.replace(l_place, 4, reinterpret_cast<const char*>(&l_lie), 4);
            MemStream l_fields = FieldsOf(l_lying);
            Message l_read;
            // Whatever was taken is sound enough to be written and read again.
            if (Decode(l_fields, l_read)) {
                MemStream l_again = FieldsOf(Encode(l_read).GetWritten());
                Message l_twice;
                EXPECT_TRUE(Decode(l_again, l_twice)) << Message::code << " at " << l_place;
            }
        }
    }
}

TEST(MessagesTest, LyingNumbersAnywhereAreSurvived) {
    VisitMessagesToServer([](const auto& i_message) { DecodeWithLies(i_message); });
    VisitMessagesFromServer([](const auto& i_message) { DecodeWithLies(i_message); });
}

// Written field by field here, so that an order mistaken in both codecs shows.
TEST(MessagesTest, FieldsStandInTheirOrderOnTheWire) {
    MemStream l_request;
    l_request.Write(std::int32_t{18});
    l_request.Write(std::string("bob"));
    l_request.Write(std::string("F"));
    l_request.Write(std::uint32_t{0x0A000001});
    l_request.Write(std::int32_t{2236});
    l_request.Write(std::uint32_t{0x80000001});
    l_request.Write(true);
    EXPECT_EQ(Encode(from_server::PeerConnectionRequest{"bob", "F", {0x0A000001, 2236}, 0x80000001, true}).GetWritten(),
              l_request.GetWritten());

    const from_server::RoomJoined l_sample = SampleRoomJoined(true);
    MemStream l_room;
    l_room.Write(std::int32_t{14});
    l_room.Write(l_sample.room);
    l_room.Write(l_sample.users);
    l_room.Write(l_sample.statuses);
    l_room.Write(l_sample.stats);
    l_room.Write(l_sample.freeSlots);
    l_room.Write(l_sample.countries);
    l_room.Write(*l_sample.owner);
    l_room.Write(l_sample.operators);
    EXPECT_EQ(Encode(l_sample).GetWritten(), l_room.GetWritten());
}

TEST(MessagesTest, ARoomWithoutOwnerKeepsItsLists) {
    const std::string l_whole(Encode(SampleRoomJoined(true)).GetWritten());
    const std::size_t l_ownerAt = Encode(SampleRoomJoined(false)).GetWritten().size();
    for (std::size_t l_length = l_ownerAt; l_length < l_whole.size(); ++l_length) {
        MemStream l_fields = FieldsOf(l_whole.substr(0, l_length));
        from_server::RoomJoined l_room;
        static_cast<void>(Decode(l_fields, l_room));
        EXPECT_EQ(l_room.countries, (std::vector<std::string>{"FR", "DE"}));
        EXPECT_EQ(l_room.owner.has_value(), l_length >= l_ownerAt + 4 + 5) << l_length;
    }
}

TEST(MessagesTest, ARoomsListOfStatsMayEndEarly) {
    MemStream l_room;
    l_room.Write(std::string("lobby"));
    l_room.Write(std::vector<std::string>{"alice"});
    l_room.Write(std::vector<std::int32_t>{2});
    l_room.Write(std::uint32_t{0x20001}); // over the limit: the list is empty, the message goes on
    l_room.Write(std::vector<std::int32_t>{0});
    l_room.Write(std::vector<std::string>{"FR"});
    l_room.Write(std::string("carol"));
    l_room.Write(std::set<std::string>{});
    from_server::RoomJoined l_read;
    EXPECT_FALSE(Decode(l_room, l_read)) << "malformed for a side that is strict";
    EXPECT_TRUE(l_read.stats.empty());
    EXPECT_EQ(l_read.countries, std::vector<std::string>{"FR"});
    EXPECT_EQ(l_read.owner, "carol");
}

TEST(MessagesTest, PossibleParentsBeforeTheCutAreKept) {
    const MemStream l_body = Encode(from_server::DNetPossibleParents{{{"bob", {1, 2}}, {"dave", {3, 4}}}});
    MemStream l_fields = FieldsOf(l_body.GetWritten().substr(0, l_body.GetWritten().size() - 1));
    from_server::DNetPossibleParents l_read;
    EXPECT_FALSE(Decode(l_fields, l_read));
    ASSERT_EQ(l_read.parents.size(), 1U);
    EXPECT_EQ(l_read.parents.front().first, "bob");
}

} // namespace
