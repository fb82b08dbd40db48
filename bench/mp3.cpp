// How fast MP3 files are scanned: beside a scan byte by byte, and beside a mere read of the same files.
// The files are generated in the folder for temporary files and are in the page cache when they are read.
#include "sharing/mp3_scanner.h"
#include "sharing/mp3_votes.h"

#include "../tests/sharing/mp3_votes_reference.h"
#include "../tests/sharing/temp_tree.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int c_files = 32;
constexpr std::size_t c_fileSize = 4'000'000;
constexpr double c_wantedTimes = 4;

// Frames of 128 kbit/s at 44.1 kHz, their audio data noise.
std::string MakeFile(unsigned i_seed) {
    std::mt19937 l_engine(i_seed);
    std::string l_file(c_fileSize, '\0');
    for (char& l_byte : l_file)
        l_byte = static_cast<char>(l_engine());
    for (std::size_t l_at = 0; l_at + 4 < c_fileSize; l_at += 417)
        l_file.replace(l_at, 4, "\xFF\xFB\x90\x64");
    return l_file;
}

struct Files {
    Files() {
        for (int l_file = 0; l_file < c_files; ++l_file) {
            paths.push_back(tree.Path(std::to_string(l_file) + ".mp3"));
            bytes.push_back(MakeFile(static_cast<unsigned>(l_file)));
            std::ofstream(paths.back(), std::ios::binary) << bytes.back();
        }
    }

    TempTree tree;
    std::vector<std::string> paths;
    std::vector<std::string> bytes;
};

const Files& TheFiles() {
    static const Files s_files;
    return s_files;
}

std::span<const unsigned char> Bytes(const std::string& i_file) {
    return {reinterpret_cast<const unsigned char*>(i_file.data()), i_file.size()};
}

void SetBytes(benchmark::State& io_state) {
    io_state.SetBytesProcessed(io_state.iterations() * std::int64_t{c_files} * std::int64_t{c_fileSize});
}

void BM_MemoryByteByByte(benchmark::State& io_state) {
    for (auto l_step : io_state)
        for (const std::string& l_file : TheFiles().bytes)
            benchmark::DoNotOptimize(MP3VotesReference::Scan(Bytes(l_file)));
    SetBytes(io_state);
}

void BM_MemoryVotes(benchmark::State& io_state) {
    for (auto l_step : io_state) {
        for (const std::string& l_file : TheFiles().bytes) {
            MP3Votes l_votes;
            for (std::size_t l_at = 0; l_at < l_file.size(); l_at += MP3Votes::blockSize)
                l_votes.TakeBlock(Bytes(l_file).subspan(l_at, std::min(MP3Votes::blockSize, l_file.size() - l_at)));
            benchmark::DoNotOptimize(l_votes.Result());
        }
    }
    SetBytes(io_state);
}

void BM_FilesRead(benchmark::State& io_state) {
    std::vector<char> l_block(MP3Votes::blockSize);
    for (auto l_step : io_state) {
        for (const std::string& l_path : TheFiles().paths) {
            const int l_file = open(l_path.c_str(), O_RDONLY | O_CLOEXEC);
            while (read(l_file, l_block.data(), l_block.size()) > 0)
                benchmark::ClobberMemory();
            close(l_file);
        }
    }
    SetBytes(io_state);
}

void BM_FilesScanMP3(benchmark::State& io_state) {
    MP3Scanner l_scanner;
    std::string l_channels;
    int l_version, l_frequency, l_rate;
    bool l_vbr;
    for (auto l_step : io_state)
        for (const std::string& l_path : TheFiles().paths)
            if (!l_scanner.ScanMP3(l_path, l_version, l_channels, l_frequency, l_vbr, l_rate))
                io_state.SkipWithError("no attributes found");
    SetBytes(io_state);
}

// The worst that a file can do: every byte looks like the start of a header.
void BM_MemoryVotesOnlyMarks(benchmark::State& io_state) {
    const std::vector<unsigned char> l_block(MP3Votes::blockSize, 0xFF);
    MP3Votes l_votes;
    for (auto l_step : io_state)
        l_votes.TakeBlock(l_block);
    benchmark::DoNotOptimize(l_votes.Result());
    io_state.SetBytesProcessed(io_state.iterations() * std::int64_t{MP3Votes::blockSize});
}

BENCHMARK(BM_MemoryByteByByte);
BENCHMARK(BM_MemoryVotes);
BENCHMARK(BM_MemoryVotesOnlyMarks);
BENCHMARK(BM_FilesRead);
BENCHMARK(BM_FilesScanMP3);

// Prints as usual and remembers the speeds.
class SpeedReporter : public benchmark::ConsoleReporter {
public:
    SpeedReporter() : ConsoleReporter(OO_None) {}
    // Bytes a second; 0 if it was not run.
    double Speed(const std::string& i_name) const {
        const auto l_place = m_speeds.find(i_name);
        return l_place == m_speeds.end() ? 0 : l_place->second;
    }
    void ReportRuns(const std::vector<Run>& i_runs) override {
        ConsoleReporter::ReportRuns(i_runs);
        for (const Run& l_run : i_runs) {
            if (const auto l_counter = l_run.counters.find("bytes_per_second"); l_counter != l_run.counters.end())
                m_speeds[l_run.run_name.function_name] = l_counter->second;
        }
    }

private:
    std::map<std::string, double> m_speeds;
};

} // namespace

// The files are made before anything is timed.
int main(int i_count, char** ip_arguments) {
    TheFiles();
    benchmark::Initialize(&i_count, ip_arguments);
    SpeedReporter l_reporter;
    benchmark::RunSpecifiedBenchmarks(&l_reporter);
    const double l_slow = l_reporter.Speed("BM_MemoryByteByByte");
    const double l_fast = l_reporter.Speed("BM_MemoryVotes");
    if (l_slow > 0 && l_fast > 0)
        std::printf("%.1f GB/s, %.1f times the scan byte by byte (wanted: %.0f)  %s\n", l_fast / 1e9, l_fast / l_slow,
                    c_wantedTimes, l_fast >= c_wantedTimes * l_slow ? "PASS" : "SHORT");
    const double l_scan = l_reporter.Speed("BM_FilesScanMP3");
    const double l_read = l_reporter.Speed("BM_FilesRead");
    if (l_scan > 0 && l_read > 0)
        std::printf("files: %.1f GB/s, read only %.1f GB/s\n", l_scan / 1e9, l_read / 1e9);
    return 0;
}
