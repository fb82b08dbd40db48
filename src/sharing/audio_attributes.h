// What lists and search replies tell of a shared file beside its name and size.
#pragma once

#include "peer/file_records.h"
#include "store/data.h"

#include <optional>
#include <string_view>

struct AudioAttributes {
    std::optional<int> bitRate; // kbit/s
    std::optional<bool> isVariable;
};

// What the scanner found; nothing for a file that it has not read.
AudioAttributes AudioAttributesOf(const Item* ip_file);

// "mp3" with the attributes for a name that ends so, in any case; empty for every other name.
AttributeMap AttributesToSend(std::string_view i_name, const AudioAttributes& i_audio);
