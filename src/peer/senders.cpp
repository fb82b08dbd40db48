// The messages that are sent by one line; all wait for a connection when there is none.
#include "peer/peer_messenger_private.h"

#include "app/settings.h"
#include "peer/peer_messages.h"

void PeerMessenger::GetUserSharedFiles(const std::string& i_user) {
    SendMessage(i_user, Encode(ShareListRequest()));
}

void PeerMessenger::QueueDownload(const std::string& i_user, const std::string& i_file) {
    SendMessage(i_user, Encode(QueueUpload{i_file}));
}

unsigned int PeerMessenger::RequestUpload(const std::string& i_user, const std::string& i_file, long long i_size) {
    const auto l_token = static_cast<unsigned int>(TakeCounter("transfer_req_counter"));
    SendMessage(i_user, Encode(TransferRequest{TransferRequest::offersUpload, l_token, i_file, i_size}));
    return l_token;
}

void PeerMessenger::AcceptTransferRequest(const std::string& i_user, unsigned int i_token, bool i_hasSize,
                                          long long i_size) {
    SendMessage(i_user, Encode(TransferResponse{i_token, true, i_hasSize, i_size, {}}));
}

void PeerMessenger::DenyTransferRequest(const std::string& i_user, unsigned int i_token, const std::string& i_reason) {
    SendMessage(i_user, Encode(TransferResponse{i_token, false, false, 0, i_reason}));
}

void PeerMessenger::DenyUpload(const std::string& i_user, const std::string& i_file, const std::string& i_reason) {
    SendMessage(i_user, Encode(UploadDenial{i_file, i_reason}));
}
