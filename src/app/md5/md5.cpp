#include "app/md5/md5.h"

#include "store/contract.h"

#include <algorithm>

MD5::MD5() : m_hash(QCryptographicHash::Md5) {}

MD5::MD5(std::istream& i_stream) : MD5() {
    std::array<char, 8192> l_block;
    while (i_stream.read(l_block.data(), l_block.size()), i_stream.gcount() > 0) {
        update(std::string_view(l_block.data(), static_cast<std::size_t>(i_stream.gcount())));
    }
    finalize();
}

MD5::MD5(std::FILE* ip_file) : MD5() {
    std::array<char, 8192> l_block;
    while (const std::size_t l_count = std::fread(l_block.data(), 1, l_block.size(), ip_file)) {
        update(std::string_view(l_block.data(), l_count));
    }
    finalize();
}

void MD5::update(std::string_view i_bytes) {
    TIDEWELL_CONTRACT(!m_finalized);
    m_hash.addData(QByteArrayView(i_bytes.data(), static_cast<qsizetype>(i_bytes.size())));
}

void MD5::finalize() {
    TIDEWELL_CONTRACT(!m_finalized);
    m_finalized = true;
}

std::array<unsigned char, 16> MD5::raw_digest() const {
    TIDEWELL_CONTRACT(m_finalized);
    const QByteArray l_digest = m_hash.result();
    std::array<unsigned char, 16> l_result = {};
    std::copy(l_digest.begin(), l_digest.end(), l_result.begin());
    return l_result;
}

std::string MD5::hex_digest() const {
    TIDEWELL_CONTRACT(m_finalized);
    return m_hash.result().toHex().toStdString();
}
