// Settings: items of Type "global" (saved) keyed by name, each connected to at most one "global_value" that holds its
// text; "vglobal" is the same for values that last as long as the run. A setting without a value is absent, and so is,
// for those who ask for a number, one whose text is no number.
#pragma once

#include <optional>
#include <string>
#include <string_view>

class Value;

// Creates the Types with their relations and tells dataSaver what is saved. Needs only the store and dataSaver.
void CreateSettingsTypes();

bool HasSetting(std::string_view i_key);
std::string SettingText(std::string_view i_key); // empty if absent
std::optional<long long> SettingNumber(std::string_view i_key);
bool IsSettingYes(std::string_view i_key);

void SetSetting(std::string_view i_key, const Value& i_value);
// Only if the setting has no value yet.
void SetDefaultSetting(std::string_view i_key, const Value& i_value);

// The next number of a running counter: answers the stored number, 1 if there is none, and stores its successor.
long long TakeCounter(std::string_view i_key);
