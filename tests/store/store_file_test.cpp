// The store file: what comes back, what it looks like, and what becomes of files that are damaged, unwritable or
// written by a program that is killed.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "store/data_saver.h"
#include "store/replaced_file.h"
#include "store/store_fixture.h"
#include "store/store_image.h"

using testing::ElementsAre;

namespace {

class LoadedCounter : public DataLoadedEventHandler {
public:
    void DataLoaded() override { ++m_count; }
    int m_count = 0;
};

// A store with all kinds of saved Types, and a saver that knows them.
struct Shelf {
    Shelf() {
        entry->RelateToType(user, Many, One, false);
        entry->RelateToType(size, Many, One, false);
        user->RelateToType(status, Many, One, false);
        user->RelateToType(listed, One, One, true);
        listed->RelateToType(group, Many, Many, false);
        global->RelateToType(value, Many, One, false);
        vglobal->RelateToType(value, Many, One, false);
        link->RelateToType(link, Many, Many, false);
        for (const char* lp_type : {"entry", "global", "group", "listed", "link"})
            saver.AddSavedType(lp_type);
        saver.AddSavedByConnectionType("user", "entry");
        saver.AddSavedByConnectionType("user", "listed");
        saver.AddSavedByConnectionType("size", "entry");
        saver.AddSavedByConnectionType("value", "global");
        saver.AddSavedByConnectionType("value", "no such type");
        saver.AddDataLoadedHandler(&loaded);
    }

    void Fill() {
        const ItemPtr l_bob = user->GetItem("bob");
        l_bob += status->GetItem("away");
        l_bob.NewItem("listed") += group->GetItem("friends");
        l_bob.NewItem("listed") += group->GetItem("foes");
        for (const int l_size : {700, 700, 5}) {
            const ItemPtr l_entry = entry->NewItem();
            l_entry += l_bob;
            l_entry += size->GetItem(l_size);
        }
        user->GetItem("stranger");
        global->GetItem("name")->Connect(value->GetItem("yes"));
        global->GetItem("port")->Connect(value->GetItem("yes"));
        vglobal->GetItem("gone")->Connect(value->GetItem("volatile"));
        global->GetItem("empty")->Connect(value->GetItem(""));
        link->GetItem("a")->Connect(link->GetItem("b"));
        link->GetItem("a")->Connect(link->GetItem("a"));
    }

    Data data;
    LoadedCounter loaded;
    DataSaver saver;
    Type* user = data.NewType("user", true, false, true);
    Type* entry = data.NewType("entry", true, true, false);
    Type* size = data.NewType("size", false, false, true);
    Type* status = data.NewType("status", false, false, true);
    Type* listed = data.NewType("listed", false, true, true);
    Type* group = data.NewType("group", true, false, true);
    Type* global = data.NewType("global", true, false, true);
    Type* vglobal = data.NewType("vglobal", true, false, true);
    Type* value = data.NewType("value", false, false, true);
    Type* link = data.NewType("link", true, false, true);
};

std::string Int(std::int64_t i_number) {
    std::string l_bytes;
    for (int l_byte = 0; l_byte < 4; ++l_byte)
        l_bytes += static_cast<char>(i_number >> (8 * l_byte));
    return l_bytes;
}

std::string Text(std::string_view i_text) {
    return Int(static_cast<std::int64_t>(i_text.size())) + std::string(i_text);
}

// The bytes by the definition of the format: numbers in set order, and a set of pairs of them.
std::string LiteralImage(const Shelf& i_shelf, const std::map<std::string, std::set<std::string>>& i_savedBy) {
    std::map<std::string, Type*> l_types;
    i_shelf.data.GetTypes(l_types);
    std::erase_if(l_types, [&](const auto& i_entry) { return !i_shelf.saver.IsSaved(i_entry.first); });
    std::string l_image = Int(static_cast<std::int64_t>(l_types.size()));
    std::map<Item*, int> l_ids;
    for (const auto& [l_name, lp_type] : l_types) {
        ItemSet l_items = lp_type->GetItems();
        if (const auto l_rule = i_savedBy.find(l_name); l_rule != i_savedBy.end()) {
            ItemSet l_kept;
            for (const std::string& l_other : l_rule->second)
                l_kept.Add(l_items.Connected(l_other));
            l_items = l_kept;
        }
        l_image += Text(l_name) + (lp_type->IsNull() ? '\1' : '\0') + Int(static_cast<std::int64_t>(l_items.size()));
        for (Item* lp_item : l_items) {
            const int l_id = static_cast<int>(l_ids.size()) + 1;
            l_ids[lp_item] = l_id;
            l_image += Int(l_id) + (lp_type->IsNull() ? "" : Text(lp_item->AsView()));
        }
    }
    std::set<std::pair<int, int>> l_pairs;
    for (const auto& [lp_item, l_id] : l_ids) {
        std::map<Type*, ItemSet> l_connected;
        lp_item->GetConnectedItems(l_connected);
        for (const auto& [lp_type, l_items] : l_connected) {
            for (Item* lp_other : l_items) {
                if (const auto l_other = l_ids.find(lp_other); l_other != l_ids.end())
                    l_pairs.emplace(std::minmax(l_id, l_other->second));
            }
        }
    }
    l_image += Int(static_cast<std::int64_t>(l_pairs.size()));
    for (const auto& [l_low, l_high] : l_pairs)
        l_image += Int(l_low) + Int(l_high);
    return l_image;
}

class StoreFileTest : public testing::Test {
protected:
    StoreFileTest() {
        std::string l_folder = (std::filesystem::temp_directory_path() / "store-XXXXXX").string();
        m_folder = mkdtemp(l_folder.data());
        m_path = m_folder / "image";
    }
    ~StoreFileTest() override { std::filesystem::remove_all(m_folder); }

    static std::string Bytes(const std::filesystem::path& i_path) {
        std::ifstream l_file(i_path, std::ios::binary);
        return {std::istreambuf_iterator<char>(l_file), std::istreambuf_iterator<char>()};
    }
    void Put(std::string_view i_bytes) const {
        std::ofstream(m_path, std::ios::binary | std::ios::trunc).write(i_bytes.data(), std::ssize(i_bytes));
    }
    SaveResult Save(Shelf& i_shelf) const { return i_shelf.saver.Save(&i_shelf.data, m_path.c_str()); }
    // Loads the bytes into a shelf of their own and checks what holds for any bytes.
    LoadResult LoadBytes(std::string_view i_bytes, Shelf& o_shelf) const {
        Put(i_bytes);
        return Load(o_shelf);
    }
    LoadResult Load(Shelf& o_shelf) const {
        const LoadResult l_result = o_shelf.saver.Load(&o_shelf.data, m_path.c_str());
        EXPECT_EQ(o_shelf.loaded.m_count, 1);
        o_shelf.data.CheckInvariants();
        return l_result;
    }
    std::set<std::string> Names() const {
        std::set<std::string> l_names;
        for (const auto& l_entry : std::filesystem::directory_iterator(m_folder))
            l_names.insert(l_entry.path().filename().string());
        return l_names;
    }

    std::filesystem::path m_folder;
    std::filesystem::path m_path;
};

TEST_F(StoreFileTest, WhatIsChosenComesBack) {
    {
        Shelf l_shelf;
        EXPECT_EQ(Load(l_shelf).state, LoadResult::Absent);
        l_shelf.Fill();
        ASSERT_TRUE(Save(l_shelf));
    }
    struct stat l_status = {};
    stat(m_path.c_str(), &l_status);
    EXPECT_EQ(l_status.st_mode & 07777, 0600U);
    EXPECT_THAT(Names(), ElementsAre("image"));

    Shelf l_shelf;
    l_shelf.global->GetItem("name")->Connect(l_shelf.value->GetItem("a default")); // gives way
    EventLog l_log;
    auto* lp_root = new PathNode(ItemPtr(l_shelf.global->GetItem("name")));
    new PathNode(lp_root, "value", Connected);
    l_log.ListenTo(lp_root, l_shelf.data);
    const LoadResult l_result = Load(l_shelf);
    EXPECT_EQ(l_result.state, LoadResult::Whole);
    EXPECT_EQ(l_result.keptAside, "");
    EXPECT_THAT(l_log.Take(), ElementsAre("path name")) << "loading is told like any other change";
    const ItemPtr l_bob = l_shelf.user->HasItem("bob");
    ASSERT_TRUE(l_bob);
    EXPECT_FALSE(l_shelf.user->HasItem("stranger") || l_shelf.status->HasItem("away"));
    EXPECT_EQ(l_bob.CountItems("entry"), 3U);
    EXPECT_EQ(l_shelf.size->HasItem("700").CountItems("entry"), 2U);
    EXPECT_EQ(l_bob["listed"].CountItems("group"), 2U);
    EXPECT_EQ(l_shelf.value->HasItem("yes").CountItems("global"), 2U);
    EXPECT_FALSE(l_shelf.value->HasItem("volatile"));
    EXPECT_TRUE(l_shelf.global->HasItem("empty")["value"]) << "an empty text is a value";
    EXPECT_EQ(l_shelf.link->HasItem("a").CountItems("link"), 2U);
}

TEST_F(StoreFileTest, TheBytesAreThoseOfTheFormat) {
    const std::map<std::string, std::set<std::string>> l_savedBy = {
        {"user", {"entry", "listed"}}, {"size", {"entry"}}, {"value", {"global"}}};
    Shelf l_shelf;
    ASSERT_TRUE(Save(l_shelf));
    EXPECT_EQ(Bytes(m_path), LiteralImage(l_shelf, l_savedBy)) << "Types without items";
    l_shelf.Fill();
    std::minstd_rand l_random(5);
    for (int l_index = 0; l_index < 3000; ++l_index) {
        const ItemPtr l_entry = l_shelf.entry->NewItem();
        l_entry += l_shelf.user->GetItem(static_cast<int>(l_random() % 400));
        l_entry += l_shelf.size->GetItem(static_cast<int>(l_random() % 100));
        if (l_index % 7 == 0)
            l_entry.Remove();
        l_shelf.user->GetItem(static_cast<int>(l_random() % 600))->NewItem("listed") +=
            l_shelf.group->GetItem(static_cast<int>(l_random() % 5));
        l_shelf.link->GetItem(static_cast<int>(l_random() % 100))
            ->Connect(l_shelf.link->GetItem(static_cast<int>(l_random() % 100)));
    }
    ASSERT_TRUE(Save(l_shelf));
    const std::string l_bytes = Bytes(m_path);
    EXPECT_TRUE(l_bytes == LiteralImage(l_shelf, l_savedBy));
    Shelf l_again;
    EXPECT_EQ(LoadBytes(l_bytes, l_again).state, LoadResult::Whole);
    EXPECT_EQ(l_again.user->GetItems().Connected("listed").size(), l_shelf.user->GetItems().Connected("listed").size());
}

TEST_F(StoreFileTest, CutAnywhereItLoadsWhatStandsBefore) {
    Shelf l_shelf;
    l_shelf.Fill();
    ASSERT_TRUE(Save(l_shelf));
    const std::string l_image = Bytes(m_path);
    std::size_t l_lastCount = 0;
    for (std::size_t l_length = 0; l_length < l_image.size(); ++l_length) {
        Shelf l_cut;
        const LoadResult l_result = LoadBytes(l_image.substr(0, l_length), l_cut);
        ASSERT_EQ(l_result.state, LoadResult::Damaged) << l_length;
        ASSERT_GE(l_result.itemCount, l_lastCount);
        l_lastCount = l_result.itemCount;
    }
    EXPECT_EQ(l_lastCount, 16U) << "all items stand before the connections";
    Shelf l_longer;
    EXPECT_EQ(LoadBytes(l_image + '\0', l_longer).state, LoadResult::Damaged) << "bytes left over";
    EXPECT_EQ(l_longer.user->HasItem("bob").CountItems("entry"), 3U);
}

TEST_F(StoreFileTest, AnyBitMayBeFlipped) {
    Shelf l_shelf;
    l_shelf.Fill();
    ASSERT_TRUE(Save(l_shelf));
    const std::string l_image = Bytes(m_path);
    for (std::size_t l_bit = 0; l_bit < l_image.size() * 8; ++l_bit) {
        std::string l_flipped = l_image;
        l_flipped[l_bit / 8] = static_cast<char>(l_flipped[l_bit / 8] ^ 1 << l_bit % 8);
        Shelf l_damaged;
        LoadBytes(l_flipped, l_damaged);
        l_damaged.data.RemoveDisconnectedItems();
    }
    EXPECT_LE(Names().size(), 6U) << "damaged files do not pile up";
}

TEST_F(StoreFileTest, LyingNumbersAreNotBelieved) {
    const std::int64_t c_lies[] = {-1, 0x1FFFF, 0x7FFFFFFF, 0x80000000LL, 0xFFFFFFFFLL};
    const std::string l_type = Text("global") + '\0';
    for (const std::int64_t l_lie : c_lies) {
        for (const std::string& l_image :
             {Int(l_lie), Int(l_lie) + l_type + Int(0), Int(1) + Int(l_lie) + "global", Int(1) + l_type + Int(l_lie),
              Int(1) + l_type + Int(1) + Int(1) + Int(l_lie) + "x", Int(0) + Int(l_lie),
              Int(0) + Int(l_lie) + Int(1)}) {
            Shelf l_shelf;
            EXPECT_EQ(LoadBytes(l_image, l_shelf).state, LoadResult::Damaged);
            EXPECT_EQ(l_shelf.global->CountItems(), 0U);
        }
        // An id may be any number, as long as connections name it.
        Shelf l_shelf;
        const std::string l_image = Int(2) + l_type + Int(1) + Int(l_lie) + Text("k") + Text("value") + '\0' + Int(1) +
                                    Int(2) + Text("v") + Int(1) + Int(l_lie) + Int(2);
        EXPECT_EQ(LoadBytes(l_image, l_shelf).state, LoadResult::Whole);
        EXPECT_EQ(l_shelf.global->HasItem("k")["value"].AsString(), "v");
    }
}

TEST_F(StoreFileTest, WhatDoesNotFitIsLeftOut) {
    // Types: one unknown, one whose null flag disagrees; then two values for one setting, an unrelated pair, and
    // ids that are nowhere.
    const std::string l_image = Int(4) + Text("forgotten") + '\1' + Int(1) + Int(1) + Text("entry") + '\0' + Int(1) +
                                Int(2) + Text("odd") + Text("global") + '\0' + Int(2) + Int(3) + Text("k") + Int(4) +
                                Text("zero\0byte") + Text("value") + '\0' + Int(2) + Int(5) + Text("first") + Int(6) +
                                Text("second") + Int(7) + Int(1) + Int(5) + Int(2) + Int(5) + Int(3) + Int(4) + Int(3) +
                                Int(5) + Int(3) + Int(6) + Int(3) + Int(99) + Int(4) + Int(6);
    Shelf l_shelf;
    const LoadResult l_result = LoadBytes(l_image, l_shelf);
    EXPECT_EQ(l_result.state, LoadResult::Damaged);
    EXPECT_EQ(l_result.leftOutCount, 4U);
    EXPECT_EQ(l_shelf.global->HasItem("k")["value"].AsString(), "first");
    EXPECT_EQ(l_shelf.global->HasItem("zero")["value"].AsString(), "second");
    EXPECT_EQ(l_shelf.entry->CountItems(), 0U);
    EXPECT_EQ(Bytes(l_result.keptAside), l_image);
    ASSERT_TRUE(Save(l_shelf));
    EXPECT_EQ(Bytes(l_result.keptAside), l_image) << "the copy outlives the next save";

    Shelf l_fine;
    EXPECT_EQ(LoadBytes(Int(1) + Text("forgotten") + '\1' + Int(1) + Int(1) + Int(1) + Int(1) + Int(1), l_fine).state,
              LoadResult::Whole)
        << "a Type that is no longer saved is no damage";
}

TEST_F(StoreFileTest, HandlersMayInterfereWithTheLoad) {
    Shelf l_shelf;
    l_shelf.Fill();
    ASSERT_TRUE(Save(l_shelf));
    Shelf l_other;
    // Whoever is listed gets a default group, entries of size 5 are thrown out at once, and "foes" is not wanted.
    Reaction l_defaults([&](Item* ip_item) { ip_item->Connect(l_other.size->GetItem("1")); });
    l_other.entry->m_itemAdded.AddHandler(l_defaults.ForItem());
    Reaction l_cleaner([&](ConnectionInfo i_info) {
        if (i_info.m_itemTo->AsString() == "5")
            i_info.m_itemFrom->Remove();
    });
    l_other.data.AddConnectionEventHandler(l_other.entry, l_other.size, l_cleaner.ForPair());
    Reaction l_hater([&](Item* ip_item) {
        if (ip_item->AsString() == "foes")
            ip_item->Remove();
    });
    l_other.group->m_itemAdded.AddHandler(l_hater.ForItem());
    EXPECT_EQ(Load(l_other).state, LoadResult::Whole);
    EXPECT_EQ(l_other.entry->CountItems(), 2U);
    EXPECT_EQ(l_other.size->HasItem("700").CountItems("entry"), 2U) << "the file displaces the handler's default";
    EXPECT_EQ(l_other.user->HasItem("bob")["listed"].CountItems("group"), 1U);
}

TEST_F(StoreFileTest, EachDamagedFileIsKeptOnce) {
    const auto l_load = [this] {
        Shelf l_shelf;
        return Load(l_shelf).keptAside;
    };
    Put("rubbish");
    const std::string l_first = l_load();
    EXPECT_EQ(Bytes(l_first), "rubbish");
    EXPECT_EQ(l_load(), l_first);
    EXPECT_EQ(Names().size(), 2U);
    Shelf l_shelf;
    for (int l_round = 0; l_round < 10; ++l_round) {
        ASSERT_TRUE(Save(l_shelf));
        Put("other rubbish " + std::to_string(l_round));
        EXPECT_EQ(Bytes(l_load()), "other rubbish " + std::to_string(l_round));
    }
    EXPECT_LE(Names().size(), 6U);
}

TEST_F(StoreFileTest, WhatIsNoFileIsNotRead) {
    ASSERT_EQ(mkfifo(m_path.c_str(), 0600), 0);
    Shelf l_shelf;
    EXPECT_EQ(Load(l_shelf).state, LoadResult::Unreadable) << "and does not hang";
    EXPECT_FALSE(Save(l_shelf));
    EXPECT_TRUE(std::filesystem::is_fifo(m_path));
    std::filesystem::remove(m_path);
    std::filesystem::create_directory(m_path);
    Shelf l_other;
    EXPECT_EQ(Load(l_other).state, LoadResult::Unreadable);
    const SaveResult l_result = Save(l_other);
    EXPECT_FALSE(l_result);
    EXPECT_EQ(l_result.error, EISDIR);
}

TEST_F(StoreFileTest, AFailedSaveLeavesTheOldFileWhole) {
    Shelf l_shelf;
    l_shelf.Fill();
    ASSERT_TRUE(Save(l_shelf));
    const std::string l_before = Bytes(m_path);
    for (int l_index = 0; l_index < 100000; ++l_index)
        l_shelf.global->GetItem(l_index);

    // A full disk, played by a limit on the size of files.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit l_limit = {};
    getrlimit(RLIMIT_FSIZE, &l_limit);
    const rlimit l_small = {10000, l_limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &l_small);
    const SaveResult l_full = Save(l_shelf);
    setrlimit(RLIMIT_FSIZE, &l_limit);
    EXPECT_FALSE(l_full);
    EXPECT_EQ(l_full.error, EFBIG);
    EXPECT_EQ(l_full.step, "write");
    EXPECT_EQ(Bytes(m_path), l_before);
    EXPECT_THAT(Names(), ElementsAre("image")) << "nothing is left beside it";

    EXPECT_FALSE(l_shelf.saver.Save(&l_shelf.data, "/proc/store-image")) << "a folder that takes no files";
    EXPECT_FALSE(l_shelf.saver.Save(&l_shelf.data, (m_folder / "missing" / "image").c_str()));
    if (geteuid() != 0) {
        std::filesystem::permissions(m_path, std::filesystem::perms::owner_read);
        EXPECT_EQ(Save(l_shelf).error, EACCES) << "a file that may not be written is not replaced";
        EXPECT_EQ(Bytes(m_path), l_before);
        std::filesystem::permissions(m_path, std::filesystem::perms::owner_all);
    }
    EXPECT_TRUE(Save(l_shelf)) << "and the next one may do";
}

TEST_F(StoreFileTest, LinksAreFollowed) {
    std::filesystem::create_directory(m_folder / "real");
    std::filesystem::create_symlink("second", m_path);
    std::filesystem::create_symlink("real/image", m_folder / "second");
    Shelf l_shelf;
    l_shelf.Fill();
    for (int l_round = 0; l_round < 2; ++l_round) // first to a target that is not there
        ASSERT_TRUE(Save(l_shelf));
    EXPECT_TRUE(std::filesystem::is_symlink(m_path) && std::filesystem::is_symlink(m_folder / "second"));
    EXPECT_TRUE(std::filesystem::is_regular_file(m_folder / "real" / "image"));
    Shelf l_other;
    EXPECT_EQ(Load(l_other).state, LoadResult::Whole);
    EXPECT_TRUE(l_other.user->HasItem("bob"));
    std::filesystem::remove(m_folder / "second");
    std::filesystem::create_symlink("image", m_folder / "second");
    EXPECT_FALSE(Save(l_shelf)) << "links in a circle";
}

// Saves two different stores in turn until killed.
[[noreturn]] void SaveForEver(const char* ip_path, int i_readyPipe) {
    Shelf l_small;
    l_small.Fill();
    Shelf l_large;
    l_large.Fill();
    for (int l_index = 0; l_index < 20000; ++l_index)
        l_large.global->GetItem(l_index);
    bool l_isTold = false;
    for (;;) {
        for (Shelf* lp_shelf : {&l_small, &l_large}) {
            const bool l_isSaved = bool(lp_shelf->saver.Save(&lp_shelf->data, ip_path));
            if (l_isSaved && !std::exchange(l_isTold, true) && write(i_readyPipe, "x", 1) != 1)
                _exit(1);
        }
    }
}

TEST_F(StoreFileTest, KilledAtAnyMomentTheFileIsWhole) {
    std::minstd_rand l_random(3);
    for (int l_round = 0; l_round < 12; ++l_round) {
        // Two processes at once on one path.
        pid_t l_children[2];
        int l_pipe[2];
        ASSERT_EQ(pipe(l_pipe), 0);
        for (pid_t& l_child : l_children) {
            l_child = fork();
            if (l_child == 0)
                SaveForEver(m_path.c_str(), l_pipe[1]);
        }
        char l_byte = 0;
        ASSERT_EQ(read(l_pipe[0], &l_byte, 1), 1);
        usleep(static_cast<useconds_t>(l_random() % 20000));
        for (const pid_t l_child : l_children) {
            kill(l_child, SIGKILL);
            waitpid(l_child, nullptr, 0);
        }
        close(l_pipe[0]);
        close(l_pipe[1]);
        Shelf l_shelf;
        const LoadResult l_result = Load(l_shelf);
        ASSERT_EQ(l_result.state, LoadResult::Whole);
        ASSERT_TRUE(l_result.itemCount == 16 || l_result.itemCount == 20016) << l_result.itemCount;
        ASSERT_TRUE(Save(l_shelf)) << "what a killed process left behind is no obstacle";
        EXPECT_THAT(Names(), ElementsAre("image"));
    }
}

TEST(StoreImageReaderTest, StaysAtItsEnd) {
    StoreImageReader l_empty({});
    EXPECT_EQ(l_empty.Next(), StoreImageReader::Damage);
    EXPECT_EQ(l_empty.Next(), StoreImageReader::Damage);
    const std::string l_image = Int(0) + Int(0);
    StoreImageReader l_reader(l_image);
    EXPECT_EQ(l_reader.Next(), StoreImageReader::End);
    EXPECT_EQ(l_reader.Next(), StoreImageReader::End);
    const std::string l_flag = Int(1) + Text("t") + '\2' + Int(0) + Int(0);
    StoreImageReader l_odd(l_flag);
    EXPECT_EQ(l_odd.Next(), StoreImageReader::Damage) << "a flag is 0 or 1";
}

} // namespace
