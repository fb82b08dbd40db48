// The item store against the literal layout of literal_store.h: entities with six shared attributes each.
//
// usage: bench_store [ENTITIES] [REPEATS]
// ENTITIES is 1,000,000 unless given. Each of the two runs in a process of its own, REPEATS (1) times; the best time
// of each step counts, for what disturbs a measurement only ever adds to it. Beside each ratio stands what it has to
// reach; the exit status is 1 if one falls short.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench_stores.h"

namespace {

enum Step { Build, Get, Displace, Part, FromValue, Subset, Removal, Sweep, Save, Load, Memory, PlainWrite, StepCount };

struct StepInfo {
    const char* name;
    double required; // times better than the literal layout; 0: nothing is required
};

constexpr StepInfo c_steps[StepCount] = {
    {"find-or-create + connect 6 attributes", 0},
    {"get", 5},
    {"connect with displacement", 4},
    {"disconnect", 4},
    {"GetItems from the value's side", 0},
    {"GetItemSubset", 3},
    {"Remove", 5},
    {"sweep", 100},
    {"save", 30},
    {"load", 8},
    {"bytes a connection", 4},
    {"writing and syncing the same bytes plainly", 0},
};
constexpr double c_saveToPlainWrite = 12; // times that a save may take

struct Results {
    double values[StepCount] = {};
};

std::size_t Distinct(int i_attribute, std::size_t i_entities) {
    const std::size_t c_counts[c_attributes] = {i_entities / 2, i_entities / 20, 1000, 100, 14, 2};
    return std::max<std::size_t>(2, std::min(c_counts[i_attribute], i_entities));
}

// A number that looks random but is the same in every run.
std::size_t Scatter(std::size_t i_number) {
    std::uint64_t l_hash = (i_number + 1) * 0x9E3779B97F4A7C15ULL;
    l_hash = (l_hash ^ l_hash >> 29) * 0xBF58476D1CE4E5B9ULL;
    return l_hash ^ l_hash >> 32;
}

std::size_t AttributeValue(std::size_t i_entity, int i_attribute, std::size_t i_entities) {
    if (i_attribute == 1) // files of a folder come one after another
        return i_entity / 20 % Distinct(1, i_entities);
    return Scatter(i_entity * c_attributes + static_cast<std::size_t>(i_attribute)) % Distinct(i_attribute, i_entities);
}

std::string EntityName(std::size_t i_entity) {
    return "/music/some artist/some album/" + std::to_string(i_entity) + ".mp3";
}

double Now(clockid_t i_clock) {
    timespec l_time = {};
    clock_gettime(i_clock, &l_time);
    return static_cast<double>(l_time.tv_sec) + static_cast<double>(l_time.tv_nsec) * 1e-9;
}

// Processor time, so that a machine with other work measures the same; WallSeconds where the disk is waited for.
double Seconds(const std::function<void()>& i_work) {
    const double l_start = Now(CLOCK_PROCESS_CPUTIME_ID);
    i_work();
    return Now(CLOCK_PROCESS_CPUTIME_ID) - l_start;
}

double WallSeconds(const std::function<void()>& i_work) {
    const double l_start = Now(CLOCK_MONOTONIC);
    i_work();
    return Now(CLOCK_MONOTONIC) - l_start;
}

// Memory in use by the process, with what the allocator and the kernel add.
std::size_t ResidentBytes() {
    std::FILE* lp_file = std::fopen("/proc/self/statm", "r");
    std::size_t l_pages = 0;
    if (lp_file == nullptr || std::fscanf(lp_file, "%*u %zu", &l_pages) != 1)
        std::abort();
    std::fclose(lp_file);
    return l_pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// Keeps the answers of the steps in use.
volatile std::size_t g_sum = 0;

template <class Store>
class Workload {
public:
    Workload(std::size_t i_entities, std::string i_path) : m_entities(i_entities), m_path(std::move(i_path)) {}

    Results Run() {
        Results l_results;
        {
            Store l_store;
            m_items.assign(m_entities, nullptr);
            const std::size_t l_before = ResidentBytes();
            l_results.values[Build] = Seconds([&] { BuildAll(l_store); });
            l_results.values[Memory] =
                static_cast<double>(ResidentBytes() - l_before) / static_cast<double>(m_entities * c_attributes);
            Query(l_store, l_results);
            l_results.values[Sweep] = Seconds([&] { g_sum = g_sum + l_store.RemoveDisconnected(); });
            l_results.values[Save] = WallSeconds([&] { l_store.SaveTo(m_path.c_str()); });
            l_results.values[PlainWrite] = WallSeconds([&] { WritePlainly(); });
            Change(l_store, l_results);
        }
        Store l_store;
        l_results.values[Load] = Seconds([&] { l_store.LoadFrom(m_path.c_str()); });
        return l_results;
    }

private:
    using Item = typename Store::Item;

    Item* Value(Store& i_store, std::size_t i_entity, int i_attribute) const {
        const std::size_t l_value = AttributeValue(i_entity, i_attribute, m_entities);
        return i_store.attributes[i_attribute]->GetItem(std::to_string(l_value));
    }
    // The steps on single entities go through them in no order, as the program does.
    Item* Any(std::size_t i_number) { return m_items[Scatter(i_number) % m_items.size()]; }

    void BuildAll(Store& o_store) {
        for (std::size_t l_entity = 0; l_entity < m_entities; ++l_entity) {
            m_items[l_entity] = o_store.entity->GetItem(EntityName(l_entity));
            for (int l_attribute = 0; l_attribute < c_attributes; ++l_attribute)
                m_items[l_entity]->Connect(Value(o_store, l_entity, l_attribute));
        }
    }

    void Query(Store& i_store, Results& o_results) {
        // One attribute after the other of entities in no order, as when rows are sorted by a column.
        std::vector<Item*> l_rows = m_items;
        std::shuffle(l_rows.begin(), l_rows.end(), std::minstd_rand(1));
        o_results.values[Get] = Seconds([&] {
            std::size_t l_sum = 0;
            for (const char* lp_name : c_attributeNames) {
                for (Item* lp_item : l_rows)
                    l_sum += Store::ValueOf(lp_item, lp_name).size();
            }
            g_sum = g_sum + l_sum;
        });
        o_results.values[FromValue] = Seconds([&] {
            for (std::size_t l_number = 0; l_number < 20; ++l_number) {
                for (int l_attribute = 0; l_attribute < c_attributes; ++l_attribute)
                    g_sum = g_sum + Store::CountOwners(Value(i_store, l_number, l_attribute));
            }
        });
        // A folder and a mode, a length and a bitrate: few with many, and some with many.
        o_results.values[Subset] = Seconds([&] {
            for (std::size_t l_number = 0; l_number < 20000; ++l_number)
                g_sum = g_sum + i_store.CountCommon(Value(i_store, l_number, 1), Value(i_store, l_number, 5));
            for (std::size_t l_number = 0; l_number < 20; ++l_number)
                g_sum = g_sum + i_store.CountCommon(Value(i_store, l_number, 3), Value(i_store, l_number, 4));
        });
    }

    void Change(Store& io_store, Results& o_results) {
        const std::size_t l_count = m_entities / 2;
        o_results.values[Displace] = Seconds([&] {
            for (std::size_t l_number = 0; l_number < l_count; ++l_number) {
                Item* lp_item = Any(l_number);
                for (int l_attribute = 2; l_attribute < c_attributes; ++l_attribute)
                    lp_item->Connect(Value(io_store, l_number + 7, l_attribute));
            }
        });
        o_results.values[Part] = Seconds([&] {
            for (std::size_t l_number = 0; l_number < l_count; ++l_number) {
                Item* lp_item = Any(l_number * 3);
                for (const char* lp_name : {"size", "length", "mode"}) {
                    if (Item* lp_value = Store::Has(lp_item, lp_name))
                        lp_item->Disconnect(lp_value);
                }
            }
        });
        // Each second entity, in the order in which they came.
        o_results.values[Removal] = Seconds([&] {
            for (std::size_t l_entity = 0; l_entity < m_entities; l_entity += 2)
                m_items[l_entity]->Remove();
        });
    }

    void WritePlainly() const {
        const std::string l_bytes(std::filesystem::file_size(m_path), 'x');
        const std::string l_path = m_path + ".plain";
        const int l_descriptor = open(l_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        const char* lp_rest = l_bytes.data();
        for (std::size_t l_left = l_bytes.size(); l_left > 0;) {
            const ssize_t l_written = write(l_descriptor, lp_rest, l_left);
            if (l_written <= 0)
                std::abort();
            lp_rest += l_written;
            l_left -= static_cast<std::size_t>(l_written);
        }
        if (fsync(l_descriptor) != 0)
            std::abort();
        close(l_descriptor);
        unlink(l_path.c_str());
    }

    std::size_t m_entities;
    std::string m_path;
    std::vector<Item*> m_items;
};

// In a process of its own, so that neither store finds a heap that the other has used.
template <class Store>
Results RunApart(std::size_t i_entities, const std::string& i_folder) {
    int l_pipe[2];
    if (pipe(l_pipe) != 0)
        std::abort();
    const pid_t l_child = fork();
    if (l_child == 0) {
        const Results l_results = Workload<Store>(i_entities, i_folder + "/image").Run();
        _exit(write(l_pipe[1], &l_results, sizeof l_results) == sizeof l_results ? 0 : 1);
    }
    close(l_pipe[1]);
    Results l_results;
    if (read(l_pipe[0], &l_results, sizeof l_results) != sizeof l_results)
        std::abort();
    close(l_pipe[0]);
    waitpid(l_child, nullptr, 0);
    return l_results;
}

void TakeBest(Results& io_best, const Results& i_results) {
    for (int l_step = 0; l_step < StepCount; ++l_step) {
        double& l_best = io_best.values[l_step];
        l_best = l_best == 0 ? i_results.values[l_step] : std::min(l_best, i_results.values[l_step]);
    }
}

bool Print(const Results& i_literal, const Results& i_compact) {
    bool l_isEnough = true;
    std::printf("%-42s %12s %12s %9s %9s\n", "", "literal", "store", "ratio", "required");
    for (int l_step = 0; l_step < PlainWrite; ++l_step) {
        const double l_ratio = i_literal.values[l_step] / i_compact.values[l_step];
        const double l_required = c_steps[l_step].required;
        const char* lp_unit = l_step == Memory ? " B" : " s";
        std::printf("%-42s %10.4f%s %10.4f%s %8.1fx ", c_steps[l_step].name, i_literal.values[l_step], lp_unit,
                    i_compact.values[l_step], lp_unit, l_ratio);
        if (l_required > 0)
            std::printf("%8.0fx%s", l_required, l_ratio < l_required ? "  SHORT" : "");
        std::printf("\n");
        l_isEnough = l_isEnough && l_ratio >= l_required;
    }
    const double l_times = i_compact.values[Save] / i_compact.values[PlainWrite];
    std::printf("%-42s %12s %10.4f s %8.1fx  at most %.0fx%s\n", "save, to writing the same bytes plainly", "",
                i_compact.values[PlainWrite], l_times, c_saveToPlainWrite,
                l_times > c_saveToPlainWrite ? "  SHORT" : "");
    return l_isEnough && l_times <= c_saveToPlainWrite;
}

} // namespace

int main(int i_count, char** ip_arguments) {
    const std::size_t l_entities = i_count > 1 ? std::strtoul(ip_arguments[1], nullptr, 10) : 1000000;
    const int l_repeats = i_count > 2 ? std::atoi(ip_arguments[2]) : 1;
    if (l_entities < 100 || l_repeats < 1) {
        std::fprintf(stderr, "usage: %s [ENTITIES, at least 100] [REPEATS]\n", ip_arguments[0]);
        return 2;
    }
    std::string l_folder = (std::filesystem::temp_directory_path() / "store-bench-XXXXXX").string();
    if (mkdtemp(l_folder.data()) == nullptr) {
        std::perror(l_folder.c_str());
        return 2;
    }
    Results l_literal;
    Results l_compact;
    for (int l_round = 0; l_round < l_repeats; ++l_round) {
        TakeBest(l_compact, RunApart<CompactStore>(l_entities, l_folder));
        TakeBest(l_literal, RunApart<LiteralStore>(l_entities, l_folder));
    }
    std::filesystem::remove_all(l_folder);
    std::printf("%zu entities, %d attributes each\n", l_entities, c_attributes);
    return Print(l_literal, l_compact) ? 0 : 1;
}
