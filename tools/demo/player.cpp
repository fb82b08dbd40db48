#include "player.h"

#include "app/text.h"

#include <QCoreApplication>
#include <QWidget>

#include <cstdio>
#include <utility>

namespace {

void PrintLine(const QString& i_line) {
    std::puts(ToUtf8(i_line).c_str());
    std::fflush(stdout);
}

} // namespace

Player::Player(QWidget& i_window, int i_secondsAtMost) : m_window(i_window), m_secondsAtMost(i_secondsAtMost) {
    connect(&m_lookTimer, &QTimer::timeout, this, &Player::OnLook);
    m_lookTimer.setInterval(20);
}

void Player::Play(std::vector<Step> i_steps) {
    m_steps = std::move(i_steps);
    m_clock.start();
    m_lookTimer.start();
}

void Player::OnLook() {
    const Step& l_step = m_steps[m_next];
    const double l_seconds = static_cast<double>(m_clock.elapsed()) / 1000;
    const Outcome l_outcome = Begin(l_step) ? l_step.look() : Outcome::NotYet;
    if (l_outcome == Outcome::Failed) {
        return Fail(tr("this did not come true: %1").arg(l_step.done));
    }
    if (l_outcome == Outcome::NotYet) {
        if (l_seconds > m_secondsAtMost) {
            Fail(tr("after %1 s still waiting for this: %2").arg(l_seconds, 0, 'f', 0).arg(l_step.done));
        }
        return;
    }
    PrintLine(tr("%1 s  %2").arg(l_seconds, 7, 'f', 2).arg(l_step.done));
    PrintNotes();
    m_hasBegun = false;
    if (++m_next == m_steps.size()) {
        m_lookTimer.stop();
        QCoreApplication::exit(0);
    }
}

// Once for each step. Where no desktop does it, the window becomes active again when a menu or a dialog has closed.
bool Player::Begin(const Step& i_step) {
    if (m_hasBegun) {
        return true;
    }
    if (!m_window.isActiveWindow()) {
        m_window.activateWindow();
        return false;
    }
    m_hasBegun = !i_step.begin || i_step.begin();
    return m_hasBegun;
}

void Player::Fail(const QString& i_why) {
    PrintLine(tr("FAILED: %1").arg(i_why));
    PrintNotes();
    m_lookTimer.stop();
    QCoreApplication::exit(1);
}

void Player::PrintNotes() {
    for (const QString& l_note : m_notes) {
        PrintLine(QStringLiteral("           - ") + l_note);
    }
    m_notes.clear();
}
