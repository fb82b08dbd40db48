// The argument through which text, numbers and addresses reach the store: whatever it is built from, it is text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

// Numbers and pointers become their decimal text (a pointer: of its address). Text is cut at its first zero byte,
// because no value holds one.
// Text is not copied: a Value lives only as long as the call that it is an argument of.
class Value {
public:
    Value(const char* ip_text) : m_text(ip_text != nullptr ? std::string_view(ip_text) : std::string_view()) {}
    Value(std::string_view i_text) : m_text(i_text.substr(0, i_text.find('\0'))) {}
    Value(const std::string& i_text) : Value(std::string_view(i_text)) {}
    Value(int i_number) : Value(static_cast<long long>(i_number)) {}
    Value(unsigned int i_number) : Value(static_cast<unsigned long long>(i_number)) {}
    Value(long i_number) : Value(static_cast<long long>(i_number)) {}
    Value(unsigned long i_number) : Value(static_cast<unsigned long long>(i_number)) {}
    Value(long long i_number);
    Value(unsigned long long i_number);
    template <class T>
    requires(!std::is_same_v<std::remove_cv_t<T>, char>) Value(T* ip_object)
        : Value(static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(ip_object))) {}

    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;

    std::string_view View() const { return m_text; }

private:
    static constexpr int c_longestNumber = 20; // digits of 2^64-1, or of -2^63 with its sign

    char m_digits[c_longestNumber];
    std::string_view m_text;
};
