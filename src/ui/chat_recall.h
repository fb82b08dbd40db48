// The lines that the user has written, to be taken up again.
#pragma once

#include <QString>

#include <deque>
#include <optional>

class ChatRecall {
public:
    // The newest; the way through the lines begins anew.
    void Add(const QString& i_line);

    // One line back, one line forward; nothing where there is none. Beyond the newest comes what was being written when
    // the way began.
    std::optional<QString> Older(const QString& i_shown);
    std::optional<QString> Newer();

private:
    static constexpr std::size_t c_lines = 100;

    std::deque<QString> m_lines; // oldest first
    std::size_t m_place = 0;     // of the line shown; behind the last: none of them
    QString m_draft;
};
