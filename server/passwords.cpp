#include "server/passwords.h"

#include <sodium.h>

#include <algorithm>
#include <array>

std::optional<std::string> HashPassword(const std::string& i_password) {
    std::array<char, crypto_pwhash_STRBYTES> l_hash{};
    if (crypto_pwhash_str(l_hash.data(), i_password.data(), i_password.size(), crypto_pwhash_OPSLIMIT_INTERACTIVE,
                          crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0) {
        return std::nullopt;
    }
    return std::string(l_hash.data());
}

bool IsPasswordOf(const std::string& i_hash, const std::string& i_password) {
    return crypto_pwhash_str_verify(i_hash.c_str(), i_password.data(), i_password.size()) == 0;
}

PasswordWorkers::PasswordWorkers(int i_threads) {
    // One core stays for the event loop where there is more than one.
    m_pool.setMaxThreadCount(std::clamp(QThread::idealThreadCount() - 1, 1, i_threads));
}

PasswordWorkers::~PasswordWorkers() {
    m_pool.clear();
    m_pool.waitForDone();
}

void PasswordWorkers::Hash(std::string i_password, Cancelled i_cancelled,
                           std::function<void(std::optional<std::string>)> i_answer) {
    m_pool.start([this, l_password = std::move(i_password), l_cancelled = std::move(i_cancelled),
                  l_answer = std::move(i_answer)] {
        if (!*l_cancelled) {
            QMetaObject::invokeMethod(
                this,
                [l_cancelled, l_answer, l_hash = HashPassword(l_password)] {
                    if (!*l_cancelled) {
                        l_answer(l_hash);
                    }
                },
                Qt::QueuedConnection);
        }
    });
}

void PasswordWorkers::Check(std::string i_hash, std::string i_password, Cancelled i_cancelled,
                            std::function<void(bool)> i_answer) {
    m_pool.start([this, l_hash = std::move(i_hash), l_password = std::move(i_password),
                  l_cancelled = std::move(i_cancelled), l_answer = std::move(i_answer)] {
        if (!*l_cancelled) {
            QMetaObject::invokeMethod(
                this,
                [l_cancelled, l_answer, l_right = IsPasswordOf(l_hash, l_password)] {
                    if (!*l_cancelled) {
                        l_answer(l_right);
                    }
                },
                Qt::QueuedConnection);
        }
    });
}
