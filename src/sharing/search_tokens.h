// Cuts the place and name of a shared file into the tokens under which a search finds it.
//
// Tokens are bytes, ASCII letters in lower case, at least one byte long, of any number; a byte from 0x80 up is part of
// a token, so that UTF-8 characters stay whole.
#pragma once

#include <absl/functional/function_ref.h>

#include <string>
#include <string_view>

// True for ASCII but letters and digits.
bool IsSearchTokenSeparator(unsigned char i_byte);

class SearchTokenCutter {
public:
    // First the runs without a separator (single words), then the runs without blank, slash and backslash (words with
    // their punctuation), each in order of appearance, the folder before the name. A run that both ways of cutting give
    // is reported the first time only; a word that stands twice in the text is reported twice.
    // The token is valid during the call of i_take. Nothing is allocated once the object has seen its longest text.
    void Cut(std::string_view i_folder, std::string_view i_name, absl::FunctionRef<void(std::string_view)> i_take);

private:
    std::string m_text;
};
