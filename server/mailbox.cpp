#include "server/mailbox.h"

#include "app/text.h"
#include "server/database.h"

#include <QDateTime>
#include <QVariant>

namespace {

// The wire has 32 bits for an id; the data file's go on. The few messages of one reader never meet in the cut ids.
std::int32_t ToWireId(qint64 i_id) {
    return static_cast<std::int32_t>(i_id & 0x7FFFFFFF);
}

} // namespace

Mailbox::Mailbox(Database& i_database, const Limits& i_limits)
    : m_limits(i_limits), m_count(i_database.Connection()), m_insert(i_database.Connection()),
      m_select(i_database.Connection()), m_delete(i_database.Connection()) {
    m_count.prepare(QStringLiteral("SELECT count(*), total(length(text)), total(sender = ?) FROM message "
                                   "WHERE recipient = ?"));
    // The foreign keys refuse a recipient without an account.
    m_insert.prepare(QStringLiteral("INSERT INTO message (recipient, sender, sent, text) VALUES (?, ?, ?, ?)"));
    m_select.setForwardOnly(true);
    m_select.prepare(QStringLiteral("SELECT id, sent, sender, text FROM message WHERE recipient = ? ORDER BY id"));
    m_delete.prepare(QStringLiteral("DELETE FROM message WHERE recipient = ? AND (id & 0x7FFFFFFF) = ?"));
}

bool Mailbox::HasRoomFor(std::string_view i_recipient, std::string_view i_sender, std::size_t i_bytes) {
    m_count.bindValue(0, ToQString(i_sender));
    m_count.bindValue(1, ToQString(i_recipient));
    const bool l_hasRoom = m_count.exec() && m_count.next() && m_count.value(0).toInt() < m_limits.keptMessages &&
                           m_count.value(1).toLongLong() + static_cast<qint64>(i_bytes) <= m_limits.keptBytes &&
                           m_count.value(2).toInt() < m_limits.keptMessagesOfSender;
    m_count.finish();
    return l_hasRoom;
}

std::optional<KeptMessage> Mailbox::Keep(std::string_view i_recipient, std::string_view i_sender,
                                         const std::string& i_text) {
    if (!HasRoomFor(i_recipient, i_sender, i_text.size())) {
        return std::nullopt;
    }
    const auto l_now = static_cast<std::int32_t>(QDateTime::currentSecsSinceEpoch());
    m_insert.bindValue(0, ToQString(i_recipient));
    m_insert.bindValue(1, ToQString(i_sender));
    m_insert.bindValue(2, l_now);
    m_insert.bindValue(3, QByteArray(i_text.data(), static_cast<qsizetype>(i_text.size())));
    if (!m_insert.exec()) {
        return std::nullopt;
    }
    return KeptMessage{ToWireId(m_insert.lastInsertId().toLongLong()), l_now, std::string(i_sender), i_text};
}

std::vector<KeptMessage> Mailbox::Waiting(std::string_view i_recipient) {
    std::vector<KeptMessage> l_messages;
    m_select.bindValue(0, ToQString(i_recipient));
    for (bool l_more = m_select.exec() && m_select.next(); l_more; l_more = m_select.next()) {
        l_messages.push_back({ToWireId(m_select.value(0).toLongLong()), m_select.value(1).toInt(),
                              ToUtf8(m_select.value(2).toString()), m_select.value(3).toByteArray().toStdString()});
    }
    m_select.finish();
    return l_messages;
}

void Mailbox::Acknowledge(std::string_view i_recipient, std::int32_t i_id) {
    m_delete.bindValue(0, ToQString(i_recipient));
    m_delete.bindValue(1, i_id);
    m_delete.exec();
}
