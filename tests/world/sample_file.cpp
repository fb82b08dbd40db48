#include "world/sample_file.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <vector>

void WriteSampleFile(const QString& i_path, qint64 i_size, quint64 i_seed) {
    EXPECT_TRUE(QDir().mkpath(QFileInfo(i_path).path()));
    QFile l_file(i_path);
    EXPECT_TRUE(l_file.open(QIODevice::WriteOnly));
    std::vector<quint64> l_block(128 * 1024);
    quint64 l_state = i_seed | 1;
    for (qint64 l_left = i_size; l_left > 0;) {
        for (quint64& l_word : l_block) {
            l_state ^= l_state << 13;
            l_state ^= l_state >> 7;
            l_state ^= l_state << 17;
            l_word = l_state;
        }
        const qint64 l_length = std::min(l_left, static_cast<qint64>(l_block.size() * sizeof(quint64)));
        EXPECT_EQ(l_file.write(reinterpret_cast<const char*>(l_block.data()), l_length), l_length);
        l_left -= l_length;
    }
}

QByteArray Sha256(const QString& i_path) {
    QFile l_file(i_path);
    QCryptographicHash l_hash(QCryptographicHash::Sha256);
    return l_file.open(QIODevice::ReadOnly) && l_hash.addData(&l_file) ? l_hash.result() : QByteArray();
}

void SpoilBeginning(const QString& i_path, qint64 i_length) {
    QFile l_file(i_path);
    EXPECT_TRUE(l_file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly));
    EXPECT_EQ(l_file.write(QByteArray(i_length, '\0')), i_length);
}

qint64 SizeOf(const QString& i_path) {
    const QFileInfo l_info(i_path);
    return l_info.exists() ? l_info.size() : -1;
}
