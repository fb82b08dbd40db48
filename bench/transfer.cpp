// How fast one file goes from one process to another over loopback with no limit set: the client's two workers against
// the plainest pair that there is, a loop of read and write with 8 KiB blocks on either side. Prints the ratio of the
// speeds, the CPU seconds per GiB of both sides, and how late the event loop of a process answers while it receives
// three files at full speed.
//
//   bench_transfer [MiB a file] [rounds] [folder]
#include "transfers/download_thread.h"
#include "transfers/local_files.h"
#include "transfers/upload_thread.h"

#include "app/text.h"

#include <QCoreApplication>
#include <QFile>
#include <QTcpSocket>

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <netinet/in.h>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr long long kMebibyte = 1 << 20;

struct Job {
    long long size; // bytes
    std::string source;
    std::string target; // a prefix: one file a connection
};

// What a side reports when it is done.
struct Usage {
    double seconds = 0; // from the connection to the last byte; of the receiver
    double cpu = 0;     // of the whole process, user and system
    double longest = 0; // milliseconds the event loop was late at most
};

[[noreturn]] void Fail(const char* ip_what) {
    std::perror(ip_what);
    std::exit(1);
}

double Since(Clock::time_point i_start) {
    return std::chrono::duration<double>(Clock::now() - i_start).count();
}

double CpuSeconds() {
    rusage l_usage = {};
    getrusage(RUSAGE_SELF, &l_usage);
    const auto l_seconds = [](const timeval& i_time) {
        return static_cast<double>(i_time.tv_sec) + static_cast<double>(i_time.tv_usec) / 1e6;
    };
    return l_seconds(l_usage.ru_utime) + l_seconds(l_usage.ru_stime);
}

// --- The plain pair -----------------------------------------------------------------------------------------------

void Copy(int i_from, int i_to, long long i_size) {
    char l_block[8192];
    while (i_size > 0) {
        const ssize_t l_got = read(i_from, l_block, static_cast<size_t>(std::min<long long>(i_size, sizeof l_block)));
        if (l_got <= 0) {
            Fail("read");
        }
        for (ssize_t l_done = 0; l_done < l_got;) {
            const ssize_t l_written = write(i_to, l_block + l_done, static_cast<size_t>(l_got - l_done));
            if (l_written <= 0) {
                Fail("write");
            }
            l_done += l_written;
        }
        i_size -= l_got;
    }
}

void SendPlainly(const Job& i_job, int i_socket, Usage&) {
    const int l_file = open(i_job.source.c_str(), O_RDONLY);
    Copy(l_file, i_socket, i_job.size);
    char l_end = 0;
    static_cast<void>(read(i_socket, &l_end, 1)); // until the other side closes
}

void ReceivePlainly(const Job& i_job, const std::vector<int>& i_sockets, Usage& o_usage) {
    const auto l_start = Clock::now();
    const int l_file = open((i_job.target + "0").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    Copy(i_sockets[0], l_file, i_job.size);
    close(l_file);
    o_usage.seconds = Since(l_start);
}

// --- The workers --------------------------------------------------------------------------------------------------

QCoreApplication& Application() {
    static int l_count = 1;
    static char l_name[] = "bench_transfer";
    static char* l_arguments[] = {l_name, nullptr};
    static QCoreApplication l_application(l_count, l_arguments);
    return l_application;
}

void SendByWorker(const Job& i_job, int i_socket, Usage&) {
    Application();
    auto* const lp_socket = new QTcpSocket;
    lp_socket->setSocketDescriptor(i_socket);
    const auto lp_file = OpenToSend(i_job.source);
    UploadThread l_thread(
        lp_socket, lp_file.get(), 1, [] { return 0; }, TransferThread::kStallLimit);
    QObject::connect(&l_thread, &UploadThread::UploadComplete, [] { QCoreApplication::exit(0); });
    QObject::connect(&l_thread, &UploadThread::UploadError, [] { QCoreApplication::exit(1); });
    l_thread.Begin();
    if (QCoreApplication::exec() != 0) {
        Fail("upload");
    }
    l_thread.wait();
}

// Asks the main thread every millisecond and notes how long the answer takes.
class Prober {
public:
    Prober() : m_thread([this] { Ask(); }) {}
    ~Prober() {
        m_isOver = true;
        m_thread.join();
    }
    double Longest() const { return m_longest; }

private:
    void Ask() {
        while (!m_isOver) {
            const auto l_asked = Clock::now();
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [this, l_asked] { m_longest = std::max(m_longest, Since(l_asked) * 1000); }, Qt::QueuedConnection);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    double m_longest = 0; // main thread
    std::atomic<bool> m_isOver = false;
    std::thread m_thread;
};

void ReceiveByWorkers(const Job& i_job, const std::vector<int>& i_sockets, Usage& o_usage) {
    Application();
    const auto l_start = Clock::now();
    std::vector<std::unique_ptr<QFile>> l_files;
    std::vector<std::unique_ptr<DownloadThread>> l_threads;
    std::size_t l_running = i_sockets.size();
    for (const int l_descriptor : i_sockets) {
        auto* const lp_socket = new QTcpSocket;
        lp_socket->setSocketDescriptor(l_descriptor);
        while (lp_socket->bytesAvailable() < 4) {
            lp_socket->waitForReadyRead();
        }
        lp_socket->read(4);
        lp_socket->write(QByteArray(8, '\0'));
        l_files.push_back(OpenToAppend(ToQString(i_job.target + std::to_string(l_files.size()))));
        l_threads.push_back(std::make_unique<DownloadThread>(lp_socket, l_files.back().get(), i_job.size, 0));
        QObject::connect(l_threads.back().get(), &DownloadThread::DownloadError, [] { QCoreApplication::exit(1); });
        QObject::connect(l_threads.back().get(), &DownloadThread::DownloadComplete, [&] {
            if (--l_running == 0) {
                QCoreApplication::exit(0);
            }
        });
        l_threads.back()->Begin();
    }
    {
        Prober l_prober;
        if (QCoreApplication::exec() != 0) {
            Fail("download");
        }
        o_usage.longest = l_prober.Longest();
    }
    for (const auto& lp_thread : l_threads) {
        lp_thread->wait();
    }
    o_usage.seconds = Since(l_start);
}

// --- Running both sides -------------------------------------------------------------------------------------------

using Sender = std::function<void(const Job&, int, Usage&)>;
using Receiver = std::function<void(const Job&, const std::vector<int>&, Usage&)>;

// A process of its own that does the work and writes its usage to the pipe it answers with.
int Spawn(const std::function<void(Usage&)>& i_work) {
    int l_pipe[2];
    if (pipe(l_pipe) != 0) {
        Fail("pipe");
    }
    if (fork() == 0) {
        Usage l_usage;
        i_work(l_usage);
        l_usage.cpu = CpuSeconds();
        static_cast<void>(!write(l_pipe[1], &l_usage, sizeof l_usage));
        _exit(0);
    }
    close(l_pipe[1]);
    return l_pipe[0];
}

Usage Collect(int i_pipe) {
    Usage l_usage;
    if (read(i_pipe, &l_usage, sizeof l_usage) != sizeof l_usage) {
        Fail("a side failed");
    }
    close(i_pipe);
    wait(nullptr);
    return l_usage;
}

struct Result {
    Usage sender; // the first of them
    Usage receiver;
};

Result Run(const Job& i_job, int i_count, const Sender& i_send, const Receiver& i_receive) {
    const int l_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in l_address = {};
    l_address.sin_family = AF_INET;
    l_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t l_length = sizeof l_address;
    auto* const lp_address = reinterpret_cast<sockaddr*>(&l_address);
    if (bind(l_listener, lp_address, l_length) != 0 || listen(l_listener, i_count) != 0 ||
        getsockname(l_listener, lp_address, &l_length) != 0) {
        Fail("listen");
    }
    std::vector<int> l_senders;
    for (int l_sender = 0; l_sender < i_count; ++l_sender) {
        l_senders.push_back(
            Spawn([&](Usage& o_usage) { i_send(i_job, accept(l_listener, nullptr, nullptr), o_usage); }));
    }
    const int l_receiver = Spawn([&](Usage& o_usage) {
        std::vector<int> l_sockets;
        for (int l_count = 0; l_count < i_count; ++l_count) {
            l_sockets.push_back(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
            if (connect(l_sockets.back(), lp_address, l_length) != 0) {
                Fail("connect");
            }
        }
        i_receive(i_job, l_sockets, o_usage);
    });
    close(l_listener);
    Result l_result;
    l_result.receiver = Collect(l_receiver);
    for (const int l_sender : l_senders) {
        l_result.sender = Collect(l_sender);
    }
    for (int l_file = 0; l_file < i_count; ++l_file) {
        unlink((i_job.target + std::to_string(l_file)).c_str());
    }
    return l_result;
}

void MakeSource(const Job& i_job) {
    std::FILE* const lp_file = std::fopen(i_job.source.c_str(), "wb");
    if (lp_file == nullptr) {
        Fail("source file");
    }
    const std::vector<char> l_piece(kMebibyte, 'x');
    for (long long l_written = 0; l_written < i_job.size; l_written += kMebibyte) {
        std::fwrite(l_piece.data(), 1, l_piece.size(), lp_file);
    }
    std::fclose(lp_file);
    sync(); // nothing is left to be written when the clock starts
}

Result Median(std::vector<Result> io_results) {
    std::sort(io_results.begin(), io_results.end(),
              [](const Result& i_a, const Result& i_b) { return i_a.receiver.seconds < i_b.receiver.seconds; });
    return io_results[io_results.size() / 2];
}

double Print(const char* ip_name, const Job& i_job, const Result& i_result) {
    const double l_gibibytes = static_cast<double>(i_job.size) / (1024.0 * kMebibyte);
    const double l_speed = 1024 * l_gibibytes / i_result.receiver.seconds;
    std::printf("%-32s %8.0f MiB/s   CPU s/GiB: sender %.3f, receiver %.3f\n", ip_name, l_speed,
                i_result.sender.cpu / l_gibibytes, i_result.receiver.cpu / l_gibibytes);
    return l_speed;
}

} // namespace

int main(int i_count, char** ip_arguments) {
    const long long l_mebibytes = i_count > 1 ? std::atoll(ip_arguments[1]) : 1024;
    const int l_rounds = i_count > 2 ? std::atoi(ip_arguments[2]) : 5;
    std::string l_folder = i_count > 3 ? ip_arguments[3] : "/tmp";
    l_folder += "/tidewell-bench-" + std::to_string(getpid());
    const Job l_job = {l_mebibytes * kMebibyte, l_folder + "-source", l_folder + "-target-"};
    MakeSource(l_job);

    std::vector<Result> l_plain;
    std::vector<Result> l_workers;
    for (int l_round = 0; l_round < l_rounds; ++l_round) { // in turn, so that both see the same machine
        l_plain.push_back(Run(l_job, 1, SendPlainly, ReceivePlainly));
        l_workers.push_back(Run(l_job, 1, SendByWorker, ReceiveByWorkers));
    }
    std::printf("one file of %lld MiB, median of %d rounds\n", l_mebibytes, l_rounds);
    const double l_plainSpeed = Print("plain blocking 8 KiB pair", l_job, Median(l_plain));
    const double l_workerSpeed = Print("UploadThread, DownloadThread", l_job, Median(l_workers));
    std::printf("%.2f times the plain pair (wanted: 1 or more)  %s\n", l_workerSpeed / l_plainSpeed,
                l_workerSpeed >= l_plainSpeed ? "PASS" : "SHORT");

    const Result l_three = Run(l_job, 3, SendByWorker, ReceiveByWorkers);
    std::printf("three at once: %.0f MiB/s in all, the event loop answers within %.1f ms (wanted: 50 or less)  %s\n",
                3 * static_cast<double>(l_mebibytes) / l_three.receiver.seconds, l_three.receiver.longest,
                l_three.receiver.longest <= 50 ? "PASS" : "SHORT");
    unlink(l_job.source.c_str());
    return 0;
}
