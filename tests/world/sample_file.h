// Files with bytes that compress and repeat nowhere, and their digests.
#pragma once

#include <QByteArray>
#include <QString>

// Makes the file and the folders above it. The content follows from the seed.
void WriteSampleFile(const QString& i_path, qint64 i_size, quint64 i_seed);
QByteArray Sha256(const QString& i_path); // empty when the file cannot be read
// Zeros over the first bytes; the size stays.
void SpoilBeginning(const QString& i_path, qint64 i_length);
qint64 SizeOf(const QString& i_path); // -1 if there is no such file
