#include "sharing/mp3_scanner.h"

#include "sharing/mp3_votes.h"

#include <QMutexLocker>

#include <algorithm>
#include <array>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class FileDescriptor {
public:
    explicit FileDescriptor(int i_descriptor) : m_descriptor(i_descriptor) {}
    ~FileDescriptor() {
        if (m_descriptor != -1)
            close(m_descriptor);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int Get() const { return m_descriptor; }

private:
    const int m_descriptor;
};

// -1 if it is no regular file or cannot be told.
off_t RegularFileSize(int i_descriptor) {
    struct stat l_stat;
    return fstat(i_descriptor, &l_stat) == 0 && S_ISREG(l_stat.st_mode) ? l_stat.st_size : -1;
}

// Less than i_wanted only at the end of the file. -1 on an error.
ssize_t ReadBlock(int i_descriptor, unsigned char* op_bytes, std::size_t i_wanted) {
    std::size_t l_have = 0;
    while (l_have < i_wanted) {
        const ssize_t l_read = read(i_descriptor, op_bytes + l_have, i_wanted - l_have);
        if (l_read == 0)
            break;
        if (l_read > 0)
            l_have += static_cast<std::size_t>(l_read);
        else if (errno != EINTR)
            return -1;
    }
    return static_cast<ssize_t>(l_have);
}

// Reads no further than i_size, so that a file that keeps growing comes to an end. False on a read error.
bool TakeFile(int i_descriptor, off_t i_size, MP3Votes& io_votes) {
    std::array<unsigned char, MP3Votes::blockSize> l_block;
    for (off_t l_left = i_size; l_left > 0;) {
        const auto l_wanted = static_cast<std::size_t>(std::min<off_t>(l_left, MP3Votes::blockSize));
        const ssize_t l_read = ReadBlock(i_descriptor, l_block.data(), l_wanted);
        if (l_read < 0)
            return false;
        io_votes.TakeBlock({l_block.data(), static_cast<std::size_t>(l_read)});
        if (static_cast<std::size_t>(l_read) < l_wanted)
            break;
        l_left -= l_read;
    }
    return true;
}

} // namespace

bool MP3Scanner::ScanMP3(const std::string& i_path, int& o_mpegVersion, std::string& o_channelMode,
                         int& o_frequencyIndex, bool& o_vbr, int& o_bitrate) {
    if (IsQuitting())
        return false;
    // Not blocking: opening a FIFO would wait for its writer.
    const FileDescriptor l_file(open(i_path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (l_file.Get() == -1)
        return false;
    o_bitrate = -1;
    const off_t l_size = RegularFileSize(l_file.Get());
    MP3Votes l_votes;
    if (l_size <= 0 || !TakeFile(l_file.Get(), l_size, l_votes))
        return false;
    const std::optional<MP3Attributes> l_attributes = l_votes.Result();
    if (!l_attributes)
        return false;
    o_mpegVersion = l_attributes->mpegVersion;
    o_channelMode = l_attributes->channelMode;
    o_frequencyIndex = l_attributes->frequencyIndex;
    o_vbr = l_attributes->vbr;
    o_bitrate = l_attributes->bitrate;
    return true;
}

void MP3Scanner::OnMP3ScanRequired(QString i_path) {
    int l_mpegVersion, l_frequencyIndex, l_bitrate;
    std::string l_channelMode;
    bool l_vbr;
    if (ScanMP3(i_path.toLatin1().toStdString(), l_mpegVersion, l_channelMode, l_frequencyIndex, l_vbr, l_bitrate))
        Q_EMIT MP3Scanned(i_path, l_mpegVersion, QString::fromStdString(l_channelMode), l_frequencyIndex, l_vbr,
                          l_bitrate);
}

void MP3Scanner::Quit() {
    const QMutexLocker l_lock(&m_quitMutex);
    m_quit = true;
}

bool MP3Scanner::IsQuitting() const {
    const QMutexLocker l_lock(&m_quitMutex);
    return m_quit;
}
