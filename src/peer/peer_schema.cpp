#include "peer/peer_schema.h"

#include "store/data.h"

namespace {

struct TypeRow {
    const char* name;
    bool isRoot;
    bool isNull;
    bool autoCreate;
};

struct RelationRow {
    const char* from;
    const char* to;
    OneOrMany typeFrom;
    OneOrMany typeTo;
    bool owns = false;
};

constexpr TypeRow types[] = {
    {"uninitialized_socket", true, false, false},
    {"peer_socket", true, false, false},
    {"connection_open_time", false, false, true},
    {"last_activity_time", true, false, true},
    {"peer_connection_request", true, true, false},
    {"peer_connection_request_id", false, false, true},
    {"peer_connection_type", false, false, true},
    {"peer_connection_request_socket", true, false, false},
    {"user_address", false, false, true},
    {"user_port", false, false, true},
    {"socket_creation_time", false, false, true},
    {"search_request", true, false, false},
    {"search_request_text", false, false, true},
    {"wishlist_search", false, true, true},
    {"search_results", true, true, true},
    {"search_result", false, true, true},
    {"search_results_user_available", false, false, true},
    {"search_results_uploads_in_queue", false, false, true},
    {"search_result_file_name", false, false, true},
    {"search_result_file_folder", false, false, true},
    {"search_result_file_size", false, false, true},
    {"mpeg_version", false, false, true},
    {"channel_mode", false, false, true},
    {"audio_frequency", false, false, true},
    {"bitrate_mode", false, false, true},
    {"bitrate", false, false, true},
    {"length_seconds", false, false, true},
    {"unsent_message", true, false, true},
    {"send_order", false, false, true},
    {"send_time", false, false, true},
    {"connect_to_peer_request", true, true, true},
    {"connect_to_peer_request_status", false, false, true},
    {"connect_to_peer_request_socket", true, false, true},
    {"indirect_connect_to_peer_request", true, false, true},
    {"search_results_user_speed", false, false, true},
};

constexpr RelationRow relations[] = {
    {"peer_socket", "user", Many, One},
    {"peer_socket", "connection_open_time", Many, One},
    {"peer_socket", "last_activity_time", Many, One},
    {"peer_connection_request", "peer_connection_request_id", Many, One},
    {"peer_connection_request", "peer_connection_request_socket", One, One},
    {"peer_connection_request", "user", Many, One},
    {"peer_connection_request", "peer_connection_type", Many, One},
    {"peer_connection_request_socket", "socket_creation_time", Many, One},
    {"user", "user_address", Many, One},
    {"user", "user_port", Many, One},
    {"search_request", "search_request_text", Many, One},
    {"search_request", "wishlist_search", Many, One},
    {"search_request", "search_results", One, Many, true},
    {"search_results", "search_result", One, Many, true},
    {"search_results", "user", Many, One},
    {"search_results", "search_results_user_available", Many, One},
    {"search_results", "search_results_user_speed", Many, One},
    {"search_results", "search_results_uploads_in_queue", Many, One},
    {"search_result", "search_result_file_name", Many, One},
    {"search_result", "search_result_file_folder", Many, One},
    {"search_result", "search_result_file_size", Many, One},
    {"search_result", "bitrate_mode", Many, One},
    {"search_result", "bitrate", Many, One},
    {"search_result", "length_seconds", Many, One},
    {"unsent_message", "user", Many, One},
    {"unsent_message", "send_order", One, One},
    {"unsent_message", "send_time", Many, One},
    {"connect_to_peer_request", "connect_to_peer_request_status", Many, One},
    {"connect_to_peer_request", "connect_to_peer_request_socket", One, One},
    {"connect_to_peer_request", "user", Many, One},
    {"connect_to_peer_request", "peer_connection_type", Many, One},
    {"connect_to_peer_request", "indirect_connect_to_peer_request", One, One},
    {"connect_to_peer_request_socket", "socket_creation_time", Many, One},
    {"indirect_connect_to_peer_request", "send_time", Many, One},
    {"connect_to_peer_request_socket", "user", Many, One},
    {"connect_to_peer_request_socket", "peer_connection_type", Many, One},
    {"indirect_connect_to_peer_request", "user", Many, One},
    {"indirect_connect_to_peer_request", "peer_connection_type", Many, One},
};

} // namespace

void CreatePeerTypes() {
    for (const TypeRow& l_row : types)
        d.NewType(l_row.name, l_row.isRoot, l_row.isNull, l_row.autoCreate);
    for (const RelationRow& l_row : relations)
        d.GetType(l_row.from)->RelateToType(d.GetType(l_row.to), l_row.typeFrom, l_row.typeTo, l_row.owns);
}
