// The last searches that the user typed, each once, for the line to complete. They are saved; switching it off forgets
// them.
#pragma once

#include <string>
#include <vector>

inline constexpr std::size_t c_rememberedSearches = 50;

bool AreSearchesRemembered();
void SetSearchesRemembered(bool i_areRemembered);

// Blank texts are not remembered.
void RememberSearch(const std::string& i_text);
std::vector<std::string> RememberedSearches(); // the latest first
void ForgetSearches();
