#include "transfers/local_files.h"

#include "app/text.h"

#include <QFile>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Takes the descriptor over, in success and failure.
std::unique_ptr<QFile> WrapRegularFile(int i_descriptor, const QString& i_path, QIODevice::OpenMode i_mode) {
    if (i_descriptor == -1) {
        return nullptr;
    }
    struct stat l_status = {};
    if (fstat(i_descriptor, &l_status) == 0 && S_ISREG(l_status.st_mode)) {
        auto lp_file = std::make_unique<QFile>(i_path);
        if (lp_file->open(i_descriptor, i_mode, QFileDevice::AutoCloseHandle)) {
            return lp_file;
        }
    }
    close(i_descriptor);
    return nullptr;
}

} // namespace

std::unique_ptr<QFile> OpenToSend(const std::string& i_path) {
    return WrapRegularFile(open(i_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC), ToQString(i_path),
                           QIODevice::ReadOnly | QIODevice::Unbuffered);
}

std::unique_ptr<QFile> OpenToAppend(const QString& i_path) {
    const int l_descriptor = open(QFile::encodeName(i_path).constData(),
                                  O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666);
    auto lp_file = WrapRegularFile(l_descriptor, i_path, QIODevice::WriteOnly | QIODevice::Append);
    // Two writers would interleave their bytes. A file system without locks has to do without the guard.
    if (lp_file && flock(lp_file->handle(), LOCK_EX | LOCK_NB) == -1 && errno == EWOULDBLOCK) {
        return nullptr;
    }
    return lp_file;
}

bool RenameWithoutOverwriting(const QString& i_from, const QString& i_to) {
    const QByteArray l_from = QFile::encodeName(i_from);
    const QByteArray l_to = QFile::encodeName(i_to);
    if (renameat2(AT_FDCWD, l_from.constData(), AT_FDCWD, l_to.constData(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    // A file system that cannot promise this: a second name for the file is refused where the name is taken, and a
    // crash in between leaves both names.
    return link(l_from.constData(), l_to.constData()) == 0 && unlink(l_from.constData()) == 0;
}
