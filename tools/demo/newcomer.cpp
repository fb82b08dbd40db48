#include "newcomer.h"

#include "app/text.h"
#include "net/server.h"
#include "store/data.h"
#include "transfers/transfer_queue_manager.h"
#include "ui/main_window.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QPixmap>
#include <QTabWidget>

#include <cstdio>

namespace {

// Whoever has come only just now may have missed a search.
constexpr qint64 g_searchAgainAfter = 5000; // ms

// Calls i_use(user, file) for each file of each answer.
template <class Use>
void ForEachAnswer(Use i_use) {
    for (Item* lp_results : g("search_results")) {
        for (Item* lp_file : lp_results->GetItems("search_result"))
            i_use(ItemPtr(lp_results->HasItem("user")), ItemPtr(lp_file));
    }
}

// The demonstration queues one file.
ItemPtr TheDownload() {
    return g("download_entry");
}

std::string DownloadStatus() {
    return TheDownload()["download_entry_status"].AsString();
}

void Print(const QString& i_line) {
    std::puts(ToUtf8(i_line).c_str());
    std::fflush(stdout);
}

} // namespace

Newcomer::Newcomer(MainWindow& i_window, NewcomerOptions i_options)
    : m_window(i_window), m_options(std::move(i_options)) {
    m_steps = {
        {tr("logged in"), [this] { return LookForLogin(); }},
        {tr("the other users are online"), [this] { return LookForUsers(); }},
        {tr("the search for \"%1\" is answered").arg(m_options.search), [this] { return LookForAnswers(); }},
        {tr("a download is queued from the answers"), [this] { return QueueDownload(); }},
        {tr("the download has begun"), [this] { return LookForProgress(); }},
        {tr("the download is complete"), [this] { return LookForCompletion(); }},
        {tr("its SHA-256 is the one of the shared file"), [this] { return CheckDigest(); }},
        {tr("pictures of the window saved"), [this] { return TakePictures(); }},
    };
    // The log tells the download's road, so it is the page worth a picture.
    if (QTabWidget* const lp_diagnostics = m_window.findChild<QTabWidget*>(QStringLiteral("tabWidget"))) {
        lp_diagnostics->setCurrentIndex(lp_diagnostics->count() - 1);
    }
    m_clock.start();
    connect(&m_lookTimer, &QTimer::timeout, this, &Newcomer::OnLook);
    m_lookTimer.start(20);
}

void Newcomer::OnLook() {
    const Step& l_step = m_steps[m_next];
    const double l_seconds = static_cast<double>(m_clock.elapsed()) / 1000;
    switch (l_step.look()) {
    case Outcome::NotYet:
        if (l_seconds > m_options.secondsAtMost) {
            Print(tr("FAILED after %1 s, still waiting for: %2").arg(l_seconds, 0, 'f', 0).arg(l_step.what));
            End(1);
        }
        return;
    case Outcome::Failed:
        Print(tr("FAILED: %1").arg(l_step.what));
        End(1);
        return;
    case Outcome::Done:
        Print(tr("%1 s  %2").arg(l_seconds, 6, 'f', 2).arg(l_step.what));
        if (++m_next == m_steps.size()) {
            End(0);
        }
    }
}

void Newcomer::End(int i_status) {
    m_lookTimer.stop();
    QCoreApplication::exit(i_status);
}

Newcomer::Outcome Newcomer::LookForLogin() {
    return gp_server->IsConnected() ? Outcome::Done : Outcome::NotYet;
}

Newcomer::Outcome Newcomer::LookForUsers() {
    bool l_isEveryoneOnline = true;
    for (const QString& l_user : m_options.users) {
        gp_server->TrackUser(ToUtf8(l_user)); // asks once
        l_isEveryoneOnline = l_isEveryoneOnline && d.GetType("user")->HasItem(ToUtf8(l_user)).IsConnected("is_online");
    }
    return l_isEveryoneOnline ? Outcome::Done : Outcome::NotYet;
}

Newcomer::Outcome Newcomer::LookForAnswers() {
    for (const QString& l_user : m_options.users) {
        if (d.GetType("user")->HasItem(ToUtf8(l_user)).IsConnected("search_results")) {
            continue;
        }
        if (m_searchedAt < 0 || m_clock.elapsed() - m_searchedAt > g_searchAgainAfter) {
            gp_server->FileSearch(ToUtf8(m_options.search), false);
            m_searchedAt = m_clock.elapsed();
        }
        return Outcome::NotYet;
    }
    ForEachAnswer([](const ItemPtr& i_user, const ItemPtr& i_file) {
        Print(tr("          %1: %2 (%3 bytes)")
                  .arg(ToQString(i_user.AsView()), ToQString(i_file["search_result_file_name"].AsView()),
                       ToQString(i_file["search_result_file_size"].AsView())));
    });
    return Outcome::Done;
}

Newcomer::Outcome Newcomer::QueueDownload() {
    ForEachAnswer([this](const ItemPtr& i_user, const ItemPtr& i_file) {
        if (ToQString(i_user.AsView()) == m_options.users.first() &&
            ToQString(i_file["search_result_file_name"].AsView()) == m_options.name) {
            transferQueueManager->AddDownload(i_user.AsString(), i_file["search_result_file_name"].AsString(),
                                              i_file["search_result_file_folder"].AsString(),
                                              i_file["search_result_file_size"].ToInt64().value_or(0), 0);
        }
    });
    return TheDownload() ? Outcome::Done : Outcome::Failed;
}

// A small file may be complete before anyone looks.
Newcomer::Outcome Newcomer::LookForProgress() {
    const std::string l_status = DownloadStatus();
    return l_status == "downloading" || l_status == "complete" ? Outcome::Done : Outcome::NotYet;
}

Newcomer::Outcome Newcomer::LookForCompletion() {
    const std::string l_status = DownloadStatus();
    if (l_status == "denied" || l_status == "local error") {
        return Outcome::Failed;
    }
    return l_status == "complete" ? Outcome::Done : Outcome::NotYet;
}

Newcomer::Outcome Newcomer::CheckDigest() {
    QFile l_file(m_options.file);
    QCryptographicHash l_hash(QCryptographicHash::Sha256);
    const bool l_read = l_file.open(QIODevice::ReadOnly) && l_hash.addData(&l_file);
    const QString l_digest = QString::fromLatin1(l_hash.result().toHex());
    Print(tr("          %1").arg(l_read ? l_digest : tr("%1 cannot be read").arg(m_options.file)));
    return l_read && l_digest == m_options.sha256 ? Outcome::Done : Outcome::Failed;
}

// A page that has just been turned up is laid out when the event loop comes back, so one look turns, the next one
// shoots.
Newcomer::Outcome Newcomer::TakePictures() {
    QTabWidget* const lp_tabs = m_window.findChild<QTabWidget*>(QStringLiteral("tabControl"));
    if (!lp_tabs || !QDir().mkpath(m_options.pictureFolder)) {
        return Outcome::Failed;
    }
    if (lp_tabs->currentIndex() != m_pictures) {
        lp_tabs->setCurrentIndex(m_pictures);
        return Outcome::NotYet;
    }
    if (!SavePicture(QStringLiteral("%1-%2").arg(m_pictures + 1).arg(lp_tabs->tabText(m_pictures).toLower()))) {
        return Outcome::Failed;
    }
    return ++m_pictures == lp_tabs->count() ? Outcome::Done : Outcome::NotYet;
}

bool Newcomer::SavePicture(const QString& i_name) {
    const QString l_path = QStringLiteral("%1/%2.png").arg(m_options.pictureFolder, i_name);
    Print(tr("          %1").arg(l_path));
    return m_window.grab().save(l_path);
}
