#include "sharing/audio_attributes.h"

#include "app/text.h"

AudioAttributes AudioAttributesOf(const Item* ip_file) {
    AudioAttributes l_audio;
    if (const auto l_bitRate = ip_file->HasItem("bitrate").ToInt64())
        l_audio.bitRate = static_cast<int>(*l_bitRate);
    if (const ItemPtr l_mode = ip_file->HasItem("bitrate_mode"))
        l_audio.isVariable = l_mode.AsView() == "vbr";
    return l_audio;
}

AttributeMap AttributesToSend(std::string_view i_name, const AudioAttributes& i_audio) {
    AttributeMap l_map;
    if (GetFileExtension(i_name) != "mp3")
        return l_map;
    l_map.extension = "mp3";
    if (i_audio.bitRate)
        l_map.attributes.emplace_back(FileAttributeBitRate, *i_audio.bitRate);
    if (i_audio.isVariable)
        l_map.attributes.emplace_back(FileAttributeVariableBitRate, *i_audio.isVariable ? 1 : 0);
    return l_map;
}
