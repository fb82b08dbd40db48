// Strangers ask for words that nobody has hundreds of times a second: each of their searches must cost no memory.
//
// A program of its own, since it counts every allocation of the process; none that a sanitizer takes part in.
#include "sharing/sharing_fixture.h"

#include <atomic>
#include <cstddef>

namespace {

std::atomic<std::size_t> s_allocations = 0;

} // namespace

extern "C" {
void* __libc_malloc(std::size_t i_size);
void* __libc_calloc(std::size_t i_count, std::size_t i_size);
void* __libc_realloc(void* ip_memory, std::size_t i_size);

void* malloc(std::size_t i_size) noexcept {
    ++s_allocations;
    return __libc_malloc(i_size);
}
void* calloc(std::size_t i_count, std::size_t i_size) noexcept {
    ++s_allocations;
    return __libc_calloc(i_count, i_size);
}
void* realloc(void* ip_memory, std::size_t i_size) noexcept {
    ++s_allocations;
    return __libc_realloc(ip_memory, i_size);
}
}

namespace {

class SearchAllocation : public SharingTest {
protected:
    static std::size_t AllocationsOf(const std::string& i_text) {
        const std::string l_user = "a user of some longer name";
        const std::size_t l_before = s_allocations;
        sharedFoldersManager->ProcessSearch(l_user, 1, i_text);
        return s_allocations - l_before;
    }
};

TEST_F(SearchAllocation, NoneForAWordThatNoFileHas) {
    TempTree l_tree;
    l_tree.File("a song of summer.mp3");
    l_tree.File("a song of winter.mp3");
    Share(l_tree.Path())->NewItem("shared_public");
    for (const char* l_text : {"unheard", "song unheard", "unheardofwordsthatarelongerthanashortstringmaybe song",
                               "song unheard -winter *mm \"summer song\"", "song \"", "summer winter"})
        EXPECT_EQ(AllocationsOf(l_text), 0U) << l_text;
    EXPECT_GT(AllocationsOf("song summer"), 0U) << "the count counts";
}

} // namespace
