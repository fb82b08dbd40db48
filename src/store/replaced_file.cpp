#include "store/replaced_file.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t c_bufferSize = 256 * 1024;
constexpr mode_t c_ownerOnly = 0600; // the store holds the password

std::string FolderOf(const std::string& i_path) {
    const std::size_t l_slash = i_path.rfind('/');
    if (l_slash == std::string::npos)
        return ".";
    return l_slash == 0 ? "/" : i_path.substr(0, l_slash);
}

bool WriteFully(int i_descriptor, const char* ip_bytes, std::size_t i_size) {
    while (i_size > 0) {
        const ssize_t l_written = write(i_descriptor, ip_bytes, i_size);
        if (l_written < 0 && errno == EINTR)
            continue;
        if (l_written <= 0)
            return false;
        ip_bytes += l_written;
        i_size -= static_cast<std::size_t>(l_written);
    }
    return true;
}

bool CopyFile(const std::string& i_from, const std::string& i_to) {
    const std::optional<std::vector<char>> l_bytes = ReadWholeFile(i_from.c_str());
    if (!l_bytes)
        return false;
    const int l_descriptor = open(i_to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, c_ownerOnly);
    if (l_descriptor < 0)
        return false;
    const bool l_isFine = WriteFully(l_descriptor, l_bytes->data(), l_bytes->size()) && fsync(l_descriptor) == 0;
    close(l_descriptor);
    if (!l_isFine)
        unlink(i_to.c_str());
    return l_isFine;
}

} // namespace

std::string FollowLinks(const char* ip_path) {
    constexpr int c_mostLinks = 40;
    std::string l_path = ip_path;
    for (int l_link = 0; l_link < c_mostLinks; ++l_link) {
        char l_target[PATH_MAX];
        const ssize_t l_length = readlink(l_path.c_str(), l_target, sizeof l_target);
        if (l_length <= 0)
            break;
        const std::string_view l_view(l_target, static_cast<std::size_t>(l_length));
        l_path = l_view.front() == '/' ? std::string(l_view) : FolderOf(l_path) + '/' + std::string(l_view);
    }
    return l_path;
}

ReplacedFile::ReplacedFile(const char* ip_path)
    : m_path(FollowLinks(ip_path)), m_newPath(m_path + ".new"), m_buffer(c_bufferSize) {
    struct stat l_status = {};
    if (lstat(m_path.c_str(), &l_status) == 0) {
        errno = S_ISDIR(l_status.st_mode) ? EISDIR : EINVAL;
        if (!Check(S_ISREG(l_status.st_mode), "open") || !Check(access(m_path.c_str(), W_OK) == 0, "open"))
            return;
    }
    Check(Open(), "open");
}

ReplacedFile::~ReplacedFile() {
    if (m_descriptor < 0)
        return;
    if (IsStillInPlace())
        unlink(m_newPath.c_str());
    close(m_descriptor);
}

bool ReplacedFile::Open() {
    // Two programs may save to one path at once. Who holds the lock on the file of that name writes; the other
    // fails, and whoever got the lock on a file that was renamed meanwhile begins again.
    for (;;) {
        m_descriptor = open(m_newPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, c_ownerOnly);
        if (m_descriptor < 0)
            return false;
        const bool l_isLocked = flock(m_descriptor, LOCK_EX | LOCK_NB) == 0;
        const int l_error = errno;
        if (l_isLocked && IsStillInPlace())
            return ftruncate(m_descriptor, 0) == 0 && fchmod(m_descriptor, c_ownerOnly) == 0;
        close(m_descriptor);
        m_descriptor = -1;
        errno = l_error;
        if (!l_isLocked)
            return false;
    }
}

bool ReplacedFile::IsStillInPlace() const {
    struct stat l_open = {};
    struct stat l_named = {};
    return fstat(m_descriptor, &l_open) == 0 && lstat(m_newPath.c_str(), &l_named) == 0 &&
           l_open.st_ino == l_named.st_ino && l_open.st_dev == l_named.st_dev;
}

void ReplacedFile::Write(std::string_view i_bytes) {
    while (!i_bytes.empty() && m_error == 0) {
        const std::size_t l_size = std::min(i_bytes.size(), m_buffer.size() - m_buffered);
        std::memcpy(m_buffer.data() + m_buffered, i_bytes.data(), l_size);
        m_buffered += l_size;
        i_bytes.remove_prefix(l_size);
        if (m_buffered == m_buffer.size())
            Flush();
    }
}

void ReplacedFile::PatchInt(std::uint64_t i_position, std::int32_t i_number) {
    const std::array<char, 4> l_bytes = Encode(i_number);
    Flush();
    if (m_error == 0)
        Check(pwrite(m_descriptor, l_bytes.data(), l_bytes.size(), static_cast<off_t>(i_position)) ==
                  static_cast<ssize_t>(l_bytes.size()),
              "write");
}

void ReplacedFile::Flush() {
    if (m_error == 0 && m_buffered > 0)
        Check(WriteFully(m_descriptor, m_buffer.data(), m_buffered), "write");
    m_written += m_buffered;
    m_buffered = 0;
}

bool ReplacedFile::Commit() {
    Flush();
    if (m_error != 0 || !Check(fsync(m_descriptor) == 0, "sync") ||
        !Check(rename(m_newPath.c_str(), m_path.c_str()) == 0, "rename"))
        return false;
    close(m_descriptor);
    m_descriptor = -1;
    // The rename is on the disk only once its folder is. The file is whole in either case.
    if (const int l_folder = open(FolderOf(m_path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); l_folder >= 0) {
        fsync(l_folder);
        close(l_folder);
    }
    return true;
}

bool ReplacedFile::Check(bool i_isFine, const char* ip_step) {
    if (!i_isFine) {
        m_error = errno != 0 ? errno : EIO;
        m_step = ip_step;
    }
    return i_isFine;
}

std::optional<std::vector<char>> ReadWholeFile(const char* ip_path) {
    // Without O_NONBLOCK a FIFO of that name would hang the start.
    const int l_descriptor = open(ip_path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (l_descriptor < 0)
        return std::nullopt;
    struct stat l_status = {};
    std::optional<std::vector<char>> l_bytes;
    int l_error = EINVAL;
    if (fstat(l_descriptor, &l_status) == 0 && S_ISREG(l_status.st_mode)) {
        l_bytes.emplace(static_cast<std::size_t>(l_status.st_size));
        std::size_t l_read = 0;
        while (l_read < l_bytes->size()) {
            const ssize_t l_got = read(l_descriptor, l_bytes->data() + l_read, l_bytes->size() - l_read);
            if (l_got < 0 && errno == EINTR)
                continue;
            if (l_got < 0) {
                l_error = errno;
                l_bytes.reset();
                break;
            }
            if (l_got == 0) {
                l_bytes->resize(l_read);
                break;
            }
            l_read += static_cast<std::size_t>(l_got);
        }
    }
    close(l_descriptor);
    errno = l_error;
    return l_bytes;
}

std::string KeepAside(const char* ip_path) {
    constexpr int c_mostKept = 5;
    const std::string l_path = FollowLinks(ip_path);
    struct stat l_damaged = {};
    if (lstat(l_path.c_str(), &l_damaged) != 0 || !S_ISREG(l_damaged.st_mode))
        return {};
    std::string l_name;
    for (int l_number = 1; l_number <= c_mostKept; ++l_number) {
        l_name = l_path + ".damaged" + (l_number > 1 ? "." + std::to_string(l_number) : "");
        struct stat l_kept = {};
        if (lstat(l_name.c_str(), &l_kept) != 0)
            break;
        if (l_kept.st_ino == l_damaged.st_ino && l_kept.st_dev == l_damaged.st_dev)
            return l_name; // kept at an earlier start, and not saved since
        if (l_number == c_mostKept)
            unlink(l_name.c_str());
    }
    if (link(l_path.c_str(), l_name.c_str()) == 0 || CopyFile(l_path, l_name)) {
        chmod(l_name.c_str(), c_ownerOnly);
        return l_name;
    }
    return {};
}
