#include "sharing/folder_walk.h"

#include "sharing/folder_listing.h"

#include <absl/container/flat_hash_map.h>

#include <filesystem>
#include <optional>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int c_mostEntries = 8;
constexpr int c_mostEntriesThroughLinks = c_mostEntries - 1; // links never use up the entry by the plain path

// Descriptors of the innermost directories kept open, beside the root's. Few trees are deeper; a deeper one costs
// one walk down from the root for every c_openLevels levels that the walk comes back up.
constexpr std::size_t c_openLevels = 8;

using Identity = std::pair<dev_t, ino_t>;

class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int i_descriptor) : m_descriptor(i_descriptor) {}
    Descriptor(Descriptor&& i_other) noexcept : m_descriptor(std::exchange(i_other.m_descriptor, -1)) {}
    Descriptor& operator=(Descriptor&& i_other) noexcept {
        std::swap(m_descriptor, i_other.m_descriptor);
        return *this;
    }
    ~Descriptor() { Close(); }

    int Get() const { return m_descriptor; }
    bool IsOpen() const { return m_descriptor != -1; }
    void Close() {
        if (IsOpen())
            close(std::exchange(m_descriptor, -1));
    }

private:
    int m_descriptor = -1;
};

Descriptor OpenFolder(int i_parent, const char* ip_name, int i_flags = 0) {
    return Descriptor(openat(i_parent, ip_name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | i_flags));
}

std::optional<Identity> IdentityOf(const Descriptor& i_folder) {
    struct stat l_stat;
    if (!i_folder.IsOpen() || fstat(i_folder.Get(), &l_stat) != 0)
        return std::nullopt;
    return Identity(l_stat.st_dev, l_stat.st_ino);
}

// The path that the entries of the root get: absolute, without "." and "..", without a separator at the end.
std::string CleanPath(const std::string& i_root) {
    std::error_code l_error;
    const std::filesystem::path l_absolute = std::filesystem::absolute(i_root, l_error);
    std::string l_path = (l_error ? std::filesystem::path(i_root) : l_absolute).lexically_normal().native();
    if (l_path.size() > 1 && l_path.ends_with('/'))
        l_path.pop_back();
    return l_path;
}

class Walk {
public:
    explicit Walk(absl::FunctionRef<void(const FolderListing&)> i_visit) : m_visit(i_visit) {}

    void Run(const std::string& i_root);

private:
    // A directory between the root and where the walk stands, with folders still to be entered.
    struct Level {
        Descriptor folder; // closed while the walk is far below
        Identity identity;
        std::size_t pathLength; // of this directory's path, at the front of m_path
        bool throughLink;       // some folder of that path, below the root, is a link
        std::vector<std::string> folders;
        std::size_t next = 0;
    };

    struct Visits {
        int entered = 0;
        int throughLinks = 0; // of those
        bool isAbove = false; // the walk stands in it or below it
    };

    void Enter(Descriptor i_folder, std::string_view i_name, bool i_throughLink);
    bool MayEnter(const Identity& i_identity, bool i_throughLink);
    void EnterNextFolder();
    void Leave();
    bool Reopen(std::size_t i_level);
    std::string NameOf(std::size_t i_level) const;

    absl::FunctionRef<void(const FolderListing&)> m_visit;
    FolderListing m_listing;
    std::string m_path;
    std::vector<Level> m_levels;
    absl::flat_hash_map<Identity, Visits> m_visits;
};

void Walk::Run(const std::string& i_root) {
    m_path = CleanPath(i_root);
    Enter(OpenFolder(AT_FDCWD, i_root.c_str()), i_root, false);
    while (!m_levels.empty()) {
        if (m_levels.back().next < m_levels.back().folders.size())
            EnterNextFolder();
        else
            Leave();
    }
}

bool Walk::MayEnter(const Identity& i_identity, bool i_throughLink) {
    Visits& l_visits = m_visits[i_identity];
    if (l_visits.isAbove || l_visits.entered == c_mostEntries)
        return false;
    if (i_throughLink && l_visits.throughLinks == c_mostEntriesThroughLinks)
        return false;
    ++l_visits.entered;
    l_visits.throughLinks += i_throughLink;
    return true;
}

// m_path has the directory's clean path; i_name is what its listing is to be called.
void Walk::Enter(Descriptor i_folder, std::string_view i_name, bool i_throughLink) {
    const std::optional<Identity> l_identity = IdentityOf(i_folder);
    if (l_identity && !MayEnter(*l_identity, i_throughLink))
        return;
    m_listing.Read(i_folder.Get(), i_name, m_path);
    m_visit(m_listing);
    if (!l_identity || m_listing.Folders().empty())
        return;

    m_visits[*l_identity].isAbove = true;
    m_levels.push_back({std::move(i_folder),
                        *l_identity,
                        m_path.size(),
                        i_throughLink,
                        {m_listing.Folders().begin(), m_listing.Folders().end()}});
    if (m_levels.size() > c_openLevels + 1)
        m_levels[m_levels.size() - 1 - c_openLevels].folder.Close();
}

void Walk::EnterNextFolder() {
    Level& l_level = m_levels.back();
    if (!Reopen(m_levels.size() - 1)) {
        l_level.next = l_level.folders.size();
        return;
    }
    const std::string l_name = std::move(l_level.folders[l_level.next++]);
    m_path.resize(l_level.pathLength);
    if (!m_path.ends_with('/'))
        m_path.push_back('/');
    m_path.append(l_name);
    Descriptor l_folder = OpenFolder(l_level.folder.Get(), l_name.c_str(), O_NOFOLLOW);
    const bool l_isLink = !l_folder.IsOpen();
    if (l_isLink)
        l_folder = OpenFolder(l_level.folder.Get(), l_name.c_str());
    Enter(std::move(l_folder), m_path, l_level.throughLink || l_isLink);
}

void Walk::Leave() {
    m_visits[m_levels.back().identity].isAbove = false;
    m_levels.pop_back();
}

std::string Walk::NameOf(std::size_t i_level) const {
    const std::size_t l_above = m_levels[i_level - 1].pathLength;
    const std::size_t l_begin = l_above + (m_path[l_above - 1] == '/' ? 0 : 1);
    return m_path.substr(l_begin, m_levels[i_level].pathLength - l_begin);
}

// Makes sure that the level's descriptor is open, and reopens the ones just above it on the way. False when some
// directory on the way is no longer the one that was entered.
bool Walk::Reopen(std::size_t i_level) {
    std::size_t l_open = i_level;
    while (!m_levels[l_open].folder.IsOpen())
        --l_open; // the root's descriptor is never closed
    while (l_open < i_level) {
        Descriptor l_folder = OpenFolder(m_levels[l_open].folder.Get(), NameOf(l_open + 1).c_str());
        if (IdentityOf(l_folder) != m_levels[l_open + 1].identity)
            return false;
        m_levels[l_open + 1].folder = std::move(l_folder);
        if (l_open > 0 && l_open + c_openLevels <= i_level)
            m_levels[l_open].folder.Close();
        ++l_open;
    }
    return true;
}

} // namespace

void WalkFolders(const std::string& i_root, absl::FunctionRef<void(const FolderListing&)> i_visit) {
    Walk(i_visit).Run(i_root);
}
