// Turns the answers of peers into items: one search_results for each answer that brings something new, with one
// search_result for each of its files. A file of a user is there once, under the first search that brought it, however
// many searches are open.
#pragma once

#include "peer/peer_messenger.h"

class SearchReplies : public SearchReplyReceiver {
public:
    ItemPtr TakeSearchReply(ItemPtr i_request, const SearchReply& i_reply) override;
};
