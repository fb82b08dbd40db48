// Contract faults: mistakes of our own code, never a result of input. They are tested in every build and stop
// the process with the place and the condition on stderr; nothing recovers from one.
#pragma once

// Writes "FILE:LINE: FUNCTION: Assertion `CONDITION' failed." to stderr and aborts.
[[noreturn]] void ContractFault(const char* ip_file, int i_line, const char* ip_function, const char* ip_condition);

// The condition is reported as it is written; the file without its folders.
#define TIDEWELL_CONTRACT(i_condition)                                                                                 \
    (static_cast<bool>(i_condition) ? void(0) : ContractFault(__FILE__, __LINE__, __func__, #i_condition))

// The same under a file name and a condition text of one's own.
#define TIDEWELL_CONTRACT_AS(i_file, i_condition, i_text)                                                              \
    (static_cast<bool>(i_condition) ? void(0) : ContractFault(i_file, __LINE__, __func__, i_text))

// Faults of the item store are all reported for the file "Data".
#define STORE_CONTRACT(i_condition, i_text) TIDEWELL_CONTRACT_AS("Data", i_condition, i_text)
