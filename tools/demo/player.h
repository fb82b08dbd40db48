// Goes through the steps of a play in the window: each is begun when that is possible, then looked at until what it
// waits for is there.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <vector>

class QWidget;

enum class Outcome { NotYet, Done, Failed };

struct Step {
    QString done;                // printed when it is
    std::function<bool()> begin; // may be missing; false if that is not possible yet
    std::function<Outcome()> look;
};

class Player : public QObject {
    Q_OBJECT

public:
    // The window is to be active when a step begins.
    Player(QWidget& i_window, int i_secondsAtMost);

    // Ends the event loop after the last step: with status 0, or with 1 when one failed or the time is over.
    void Play(std::vector<Step> i_steps);
    // A signal may end the loop before that.
    bool HasSeenAll() const { return m_next == m_steps.size(); }

    // A line below that of the present step, once that is done.
    void Note(const QString& i_detail) { m_notes += i_detail; }

private:
    void OnLook();
    bool Begin(const Step& i_step);
    void Fail(const QString& i_why);
    void PrintNotes();

    QWidget& m_window;
    const int m_secondsAtMost;
    std::vector<Step> m_steps;
    std::size_t m_next = 0;
    bool m_hasBegun = false; // the next step
    QStringList m_notes;
    QElapsedTimer m_clock;
    QTimer m_lookTimer;
};
