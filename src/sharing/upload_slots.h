// What a search reply tells of the upload queue, which stands above sharing.
#pragma once

class UploadSlots {
public:
    virtual ~UploadSlots() = default;
    // An upload would start at once.
    virtual bool IsFreeToUpload() = 0;
    virtual int QueuedUploadCount() = 0;
};
