#include "store/data_saver.h"

#include <cerrno>
#include <limits>

#include "store/image_sink.h"
#include "store/replaced_file.h"
#include "store/store_loader.h"
#include "store/store_writer.h"

DataSaver* dataSaver = nullptr;

namespace {

SaveResult Commit(ReplacedFile& io_file) {
    SaveResult l_result;
    l_result.isSaved = io_file.Commit();
    l_result.error = io_file.Error();
    l_result.step = io_file.FailedStep();
    return l_result;
}

} // namespace

DataLoadedEventHandler::~DataLoadedEventHandler() {
    if (dataSaver != nullptr)
        dataSaver->RemoveDataLoadedHandler(this);
}

DataSaver::DataSaver() {
    dataSaver = this;
}

DataSaver::~DataSaver() {
    if (dataSaver == this)
        dataSaver = nullptr;
}

void DataSaver::AddSavedType(std::string_view i_type) {
    m_savedTypes.emplace(i_type);
}

void DataSaver::AddSavedByConnectionType(std::string_view i_type, std::string_view i_connectionType) {
    m_savedByConnectionTypes[std::string(i_type)].emplace(i_connectionType);
}

bool DataSaver::IsSaved(std::string_view i_type) const {
    return m_savedTypes.contains(i_type) || m_savedByConnectionTypes.contains(i_type);
}

void DataSaver::AddDataLoadedHandler(DataLoadedEventHandler* ip_handler) {
    m_dataLoadedHandlers.insert(ip_handler);
}

void DataSaver::RemoveDataLoadedHandler(DataLoadedEventHandler* ip_handler) {
    m_dataLoadedHandlers.erase(ip_handler);
}

std::size_t DataSaver::WriteTo(ImageSink& io_image, Data* ip_data) const {
    StoreWriter l_writer(*ip_data, io_image);
    std::map<std::string, Type*> l_types;
    ip_data->GetTypes(l_types);
    for (const auto& [l_name, lp_type] : l_types) {
        if (m_savedTypes.contains(l_name)) {
            l_writer.AddType(lp_type);
        } else if (const auto l_rule = m_savedByConnectionTypes.find(l_name);
                   l_rule != m_savedByConnectionTypes.end()) {
            l_writer.AddTypeByConnection(lp_type, l_rule->second);
        }
    }
    l_writer.Write();
    return l_writer.ItemCount();
}

SaveResult DataSaver::Save(Data* ip_data, const char* ip_path) {
    ReplacedFile l_file(ip_path);
    const std::size_t l_itemCount = l_file.Error() == 0 ? WriteTo(l_file, ip_data) : 0;
    SaveResult l_result = Commit(l_file);
    l_result.itemCount = l_itemCount;
    return l_result;
}

std::string DataSaver::MakeImage(Data* ip_data) const {
    MemoryImage l_image;
    WriteTo(l_image, ip_data);
    return l_image.TakeBytes();
}

SaveResult DataSaver::WriteImage(std::string_view i_image, const char* ip_path) {
    ReplacedFile l_file(ip_path);
    l_file.Write(i_image);
    return Commit(l_file);
}

LoadResult DataSaver::Load(Data* ip_data, const char* ip_path) {
    LoadResult l_result;
    const std::optional<std::vector<char>> l_bytes = ReadWholeFile(ip_path);
    if (l_bytes) {
        StoreLoader l_loader(*ip_data, [this](std::string_view i_name) { return IsSaved(i_name); });
        const bool l_isWhole = l_loader.Load(std::string_view(l_bytes->data(), l_bytes->size()));
        l_result.itemCount = l_loader.ItemCount();
        l_result.leftOutCount = l_loader.LeftOutCount();
        l_result.state = l_isWhole && l_result.leftOutCount == 0 ? LoadResult::Whole : LoadResult::Damaged;
        if (l_result.state == LoadResult::Damaged)
            l_result.keptAside = KeepAside(ip_path);
    } else if (errno != ENOENT) {
        l_result.state = LoadResult::Unreadable;
        l_result.keptAside = KeepAside(ip_path);
    }
    EmitDataLoaded();
    return l_result;
}

void DataSaver::EmitDataLoaded() {
    const std::set<DataLoadedEventHandler*> l_copy = m_dataLoadedHandlers;
    for (DataLoadedEventHandler* lp_handler : l_copy) {
        if (m_dataLoadedHandlers.contains(lp_handler))
            lp_handler->DataLoaded();
    }
}
