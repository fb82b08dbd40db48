// Completes user names in a line being written, in rounds: each further step puts the next name that fits in the place
// of the last one.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

class ChatCompletion {
public:
    struct Line {
        QString text;
        qsizetype cursor = 0;

        friend bool operator==(const Line&, const Line&) = default;
    };

    // i_names is asked at the first step of a round. What stands before the cursor, from the beginning of a word on, is
    // taken for the beginning of a name, in whatever case; names may have blanks, so the longest that fits counts.
    // A line that is not the one answered last begins a new round. Nothing: no name fits.
    std::optional<Line> Step(const Line& i_line, const std::function<QStringList()>& i_names, bool i_isBackwards);

    // Whether the line is the one answered last, so that a step would go on with the round.
    bool IsUnderWay(const Line& i_line) const { return !m_names.isEmpty() && i_line == m_answer; }

private:
    bool Begin(const Line& i_line, const QStringList& i_names);

    QStringList m_names; // that fit, in alphabetic order; empty without a round
    qsizetype m_index = 0;
    QString m_before; // the name
    QString m_behind;
    Line m_answer;
};
