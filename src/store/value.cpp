#include "store/value.h"

#include <charconv>

Value::Value(long long i_number) {
    const std::to_chars_result l_result = std::to_chars(m_digits, m_digits + c_longestNumber, i_number);
    m_text = std::string_view(m_digits, static_cast<std::size_t>(l_result.ptr - m_digits));
}

Value::Value(unsigned long long i_number) {
    const std::to_chars_result l_result = std::to_chars(m_digits, m_digits + c_longestNumber, i_number);
    m_text = std::string_view(m_digits, static_cast<std::size_t>(l_result.ptr - m_digits));
}
