// Files that are replaced whole: written beside the old one under another name, synced and renamed over it. Until
// the last step the old file is untouched, and a writer that is killed leaves at most the file beside it, which the
// next one takes over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/image_sink.h"

class ReplacedFile : public ImageSink {
public:
    // Begins to write. A link at the path is followed to the file it names.
    explicit ReplacedFile(const char* ip_path);
    ReplacedFile(const ReplacedFile&) = delete;
    ReplacedFile& operator=(const ReplacedFile&) = delete;
    ~ReplacedFile() override; // without a Commit before it: the old file stays

    // After a failure all of these do nothing.
    void Write(std::string_view i_bytes) override;
    std::uint64_t Position() const override { return m_written + m_buffered; }
    void PatchInt(std::uint64_t i_position, std::int32_t i_number) override;

    // Puts the file in its place, on the disk. False on any failure since the beginning.
    [[nodiscard]] bool Commit();
    // errno of the failure and the step it befell; 0 and empty if there was none.
    int Error() const { return m_error; }
    const std::string& FailedStep() const { return m_step; }

private:
    bool Open();
    bool IsStillInPlace() const;
    void Flush();
    bool Check(bool i_isFine, const char* ip_step);

    std::string m_path;
    std::string m_newPath;
    int m_descriptor = -1;
    std::vector<char> m_buffer;
    std::size_t m_buffered = 0;
    std::uint64_t m_written = 0;
    int m_error = 0;
    std::string m_step;
};

// The path with links at its end followed; also where the last one leads to nothing.
std::string FollowLinks(const char* ip_path);

// The whole of a regular file; nothing, with errno set, if it cannot be read.
std::optional<std::vector<char>> ReadWholeFile(const char* ip_path);

// Gives a damaged file a second name beside it, which survives its replacement, and answers that name; empty if
// none could be given. One copy is kept of each damaged file, and of the latest few such files.
std::string KeepAside(const char* ip_path);
