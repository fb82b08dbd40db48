// The MD5 digest of RFC 1321. Not for secrets: the network's login asks for it.
#pragma once

#include <QCryptographicHash>

#include <array>
#include <cstdio>
#include <istream>
#include <string>
#include <string_view>

class MD5 {
public:
    MD5();
    // These digest everything up to the end of the stream or file and are finalized then. A read error ends the input.
    explicit MD5(std::istream& i_stream);
    explicit MD5(std::FILE* ip_file);

    // Contract faults: update or finalize after finalize, a digest before it.
    void update(std::string_view i_bytes);
    void finalize();

    std::array<unsigned char, 16> raw_digest() const;
    std::string hex_digest() const; // 32 lower-case digits

private:
    QCryptographicHash m_hash;
    bool m_finalized = false;
};
