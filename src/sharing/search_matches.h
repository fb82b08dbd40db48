// Finds the shared files that answer a search text, for a user who may see some of the roots.
//
// Strangers ask hundreds of times a second, so what is cheap comes first: the words, the look-up of their tokens (a
// word that no file has ends the search before anything is allocated), the files that have all tokens, from the rarest
// on, and of each its name and then its rights.
#pragma once

#include "sharing/file_roots.h"
#include "store/data.h"

#include <absl/functional/function_ref.h>

#include <cstddef>
#include <string_view>
#include <vector>

// A search that more files match gets no answer at all.
constexpr std::size_t c_mostSearchMatches = 200;

// Empty when nothing or too much matches, or the text is malformed. i_visibleRoots gives the `shared_folder` items
// that the asking user may see; it is asked once at most, when some file has all the tokens.
std::vector<Item*> FindSearchMatches(std::string_view i_text, absl::FunctionRef<ItemSet()> i_visibleRoots,
                                     FileRoots& io_fileRoots);
