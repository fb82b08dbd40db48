// What of the store outlives the process, and the file that holds it.
//
// The file, all integers 32 bits signed, least significant byte first, a string its byte count and its bytes:
//   type count; per saved Type, in byte order of the names: name string, null flag (1 byte), item count, and per
//   item: id, value string unless the Type is null;
//   connection count; per connection: low id, high id; ascending by both.
// Ids count from 1 in the order of writing.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "store/data.h"

class ImageSink;

// Told once loading has ended, also when there was nothing to load.
class DataLoadedEventHandler {
public:
    DataLoadedEventHandler() = default;
    DataLoadedEventHandler(const DataLoadedEventHandler&) = default;
    DataLoadedEventHandler& operator=(const DataLoadedEventHandler&) = default;
    virtual ~DataLoadedEventHandler(); // out of the books of the global dataSaver
    virtual void DataLoaded() = 0;
};

struct SaveResult {
    bool isSaved = false;      // if not, the old file is as it was
    int error = 0;             // errno of the step that failed
    std::string step;          // and its name, for the log
    std::size_t itemCount = 0; // items written; only by Save

    explicit operator bool() const { return isSaved; }
};

struct LoadResult {
    enum State {
        Absent,    // no file: a first start
        Whole,     // all of it is in the store
        Damaged,   // what read cleanly before the damage, and fits, is in the store
        Unreadable // there is a file, but it could not be read
    };
    State state = Absent;
    std::string keptAside;        // path of the copy kept of a damaged file; empty if none could be kept
    std::size_t itemCount = 0;    // item records taken
    std::size_t leftOutCount = 0; // records that were clean but did not fit
};

class DataSaver {
public:
    DataSaver(); // becomes the global dataSaver
    ~DataSaver();
    DataSaver(const DataSaver&) = delete;
    DataSaver& operator=(const DataSaver&) = delete;

    // All items of the Type are saved.
    void AddSavedType(std::string_view i_type);
    // Items of the first Type are saved while they are connected to an item of the second. A Type that is also
    // saved whole is saved whole.
    void AddSavedByConnectionType(std::string_view i_type, std::string_view i_connectionType);
    bool IsSaved(std::string_view i_type) const;
    void AddDataLoadedHandler(DataLoadedEventHandler* ip_handler); // not owned
    void RemoveDataLoadedHandler(DataLoadedEventHandler* ip_handler);

    // Replaces the file as a whole or leaves it as it was; its mode is 0600. A link is followed, a file that may
    // not be written is not replaced. Blocks until the bytes are on the disk.
    [[nodiscard]] SaveResult Save(Data* ip_data, const char* ip_path);
    // The same in two steps, of which the second may run on another thread: the bytes of the file, and writing them.
    std::string MakeImage(Data* ip_data) const;
    [[nodiscard]] static SaveResult WriteImage(std::string_view i_image, const char* ip_path);
    // By the ordinary operations, so handlers see everything come; then EmitDataLoaded, in every case. A damaged
    // file is kept aside under another name.
    [[nodiscard]] LoadResult Load(Data* ip_data, const char* ip_path);
    void EmitDataLoaded();

private:
    std::size_t WriteTo(ImageSink& io_image, Data* ip_data) const;

    std::set<std::string, std::less<>> m_savedTypes;
    std::map<std::string, std::set<std::string>, std::less<>> m_savedByConnectionTypes;
    std::set<DataLoadedEventHandler*> m_dataLoadedHandlers;
};

extern DataSaver* dataSaver;
