#include "store_file.h"

#include "store/data.h"
#include "store/data_saver.h"
#include "store/replaced_file.h"
#include "store/store_loader.h"

#include <absl/container/flat_hash_map.h>
#include <absl/container/flat_hash_set.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr std::size_t c_mostForeignTypes = 256;

// Declares what a file holds and the program's schema does not know.
class ForeignTypes {
public:
    // False if there are more of them than any program has made.
    [[nodiscard]] bool Declare(std::string_view i_image) {
        StoreImageReader l_reader(i_image);
        Type* lp_type = nullptr;
        for (;;) {
            switch (l_reader.Next()) {
            case StoreImageReader::TypeRecord:
                lp_type = DeclareType(l_reader.TypeName(), l_reader.IsNullType());
                if (m_foreign.size() > c_mostForeignTypes)
                    return false;
                break;
            case StoreImageReader::ItemRecord:
                m_typeOfId.emplace(l_reader.Id(), lp_type);
                break;
            case StoreImageReader::ConnectionRecord:
                DeclareConnection(l_reader.LowId(), l_reader.HighId());
                break;
            case StoreImageReader::End:
            case StoreImageReader::Damage: // the loader tells of it
                return true;
            }
        }
    }

private:
    Type* DeclareType(std::string_view i_name, bool i_isNull) {
        Type* lp_type = d.FindType(i_name);
        if (!lp_type) {
            lp_type = d.NewType(std::string(i_name), true, i_isNull, true);
            m_foreign.insert(lp_type);
        }
        if (!dataSaver->IsSaved(i_name))
            dataSaver->AddSavedType(i_name);
        return lp_type;
    }

    // Relations among the program's own Types are what the program says they are.
    void DeclareConnection(std::int32_t i_low, std::int32_t i_high) {
        const auto l_low = m_typeOfId.find(i_low);
        const auto l_high = m_typeOfId.find(i_high);
        if (l_low == m_typeOfId.end() || l_high == m_typeOfId.end())
            return;
        Type* const lp_a = l_low->second;
        Type* const lp_b = l_high->second;
        if ((!m_foreign.contains(lp_a) && !m_foreign.contains(lp_b)) || lp_a->IsRelated(lp_b))
            return;
        lp_a->RelateToType(lp_b, Many, Many, false);
        KeepBy(lp_a, lp_b);
        KeepBy(lp_b, lp_a);
    }

    // An item that is saved for its connections only is kept by a foreign one too.
    void KeepBy(Type* ip_type, Type* ip_keeper) {
        if (m_foreign.contains(ip_keeper) && !m_foreign.contains(ip_type))
            dataSaver->AddSavedByConnectionType(ip_type->GetName(), ip_keeper->GetName());
    }

    absl::flat_hash_map<std::int32_t, Type*> m_typeOfId;
    absl::flat_hash_set<Type*> m_foreign;
};

} // namespace

LoadedFile LoadStoreFile(const std::string& i_path) {
    const std::optional<std::vector<char>> l_bytes = ReadWholeFile(i_path.c_str());
    if (!l_bytes)
        return errno == ENOENT ? LoadedFile{LoadedFile::Absent, ""}
                               : LoadedFile{LoadedFile::Unreadable, std::strerror(errno)};
    const std::string_view l_image(l_bytes->data(), l_bytes->size());
    const bool l_isDeclared = ForeignTypes().Declare(l_image);
    StoreLoader l_loader(d, [](std::string_view) { return true; });
    const bool l_isLoaded = l_loader.Load(l_image) && l_loader.LeftOutCount() == 0;
    return {l_isDeclared && l_isLoaded ? LoadedFile::Whole : LoadedFile::Damaged, ""};
}

std::optional<std::string> SaveStoreFile(const std::string& i_path) {
    const SaveResult l_result = dataSaver->Save(&d, i_path.c_str());
    if (l_result)
        return std::nullopt;
    return l_result.step + ": " + std::strerror(l_result.error);
}
