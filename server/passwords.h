// Argon2id hashes of passwords, made and checked on threads of their own: each takes some 50 to 100 ms and 64 MiB,
// which must not hold up the chat.
#pragma once

#include <QObject>
#include <QThreadPool>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

[[nodiscard]] std::optional<std::string> HashPassword(const std::string& i_password); // nullopt: out of memory
[[nodiscard]] bool IsPasswordOf(const std::string& i_hash, const std::string& i_password);

class PasswordWorkers : public QObject {
    Q_OBJECT

public:
    // A question that nobody waits for any more is cancelled by its owner and costs no work.
    using Cancelled = std::shared_ptr<std::atomic<bool>>;

    explicit PasswordWorkers(int i_threads);
    ~PasswordWorkers() override; // waits for the hash being made; what has not begun is dropped

    // The answers come on the caller's thread from the event loop, never from inside the call. A cancelled
    // question is not answered.
    void Hash(std::string i_password, Cancelled i_cancelled, std::function<void(std::optional<std::string>)> i_answer);
    void Check(std::string i_hash, std::string i_password, Cancelled i_cancelled, std::function<void(bool)> i_answer);

private:
    QThreadPool m_pool;
};
