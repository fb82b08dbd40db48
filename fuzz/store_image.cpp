// A store file of any bytes: read record by record, then loaded into a store, swept, and checked.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "store/data.h"
#include "store/store_image.h"
#include "store/store_loader.h"

namespace {

void CreateTypes(Data& o_data) {
    Type* lp_user = o_data.NewType("user", true, false, true);
    Type* lp_entry = o_data.NewType("entry", true, true, false);
    Type* lp_size = o_data.NewType("size", false, false, true);
    Type* lp_listed = o_data.NewType("listed", false, true, true);
    lp_entry->RelateToType(lp_user, Many, One, false);
    lp_entry->RelateToType(lp_size, Many, One, false);
    lp_user->RelateToType(lp_listed, One, One, true);
    lp_listed->RelateToType(lp_listed, Many, Many, false);
}

// Every record takes bytes, so there are no more of them than bytes.
void ReadRecords(std::string_view i_bytes) {
    StoreImageReader l_reader(i_bytes);
    std::size_t l_left = i_bytes.size();
    for (;;) {
        const StoreImageReader::Record l_record = l_reader.Next();
        if (l_record == StoreImageReader::End || l_record == StoreImageReader::Damage)
            return;
        if (l_reader.BytesLeft() >= l_left || l_reader.Text().find('\0') != std::string_view::npos)
            std::abort();
        l_left = l_reader.BytesLeft();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* ip_data, size_t i_size) {
    const std::string_view l_bytes(reinterpret_cast<const char*>(ip_data), i_size);
    ReadRecords(l_bytes);
    Data l_data;
    CreateTypes(l_data);
    StoreLoader l_loader(l_data, [](std::string_view i_name) { return i_name != "size"; });
    static_cast<void>(l_loader.Load(l_bytes));
    l_data.CheckInvariants();
    l_data.RemoveDisconnectedItems();
    l_data.CheckInvariants();
    return 0;
}
