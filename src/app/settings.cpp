#include "app/settings.h"

#include "store/data.h"
#include "store/data_saver.h"

#include <limits>

namespace {

ItemPtr SettingValue(std::string_view i_key) {
    return d.GetType("global")->HasItem(i_key).HasItem("global_value");
}

} // namespace

void CreateSettingsTypes() {
    Type* const lp_global = d.NewType("global", true, false, true);
    Type* const lp_runGlobal = d.NewType("vglobal", true, false, true);
    Type* const lp_value = d.NewType("global_value", false, false, true);
    lp_global->RelateToType(lp_value, Many, One, false);
    lp_runGlobal->RelateToType(lp_value, Many, One, false);
    dataSaver->AddSavedType("global");
    dataSaver->AddSavedByConnectionType("global_value", "global");
}

bool HasSetting(std::string_view i_key) {
    return static_cast<bool>(SettingValue(i_key));
}

std::string SettingText(std::string_view i_key) {
    return SettingValue(i_key).AsString();
}

std::optional<long long> SettingNumber(std::string_view i_key) {
    return SettingValue(i_key).ToInt64();
}

bool IsSettingYes(std::string_view i_key) {
    return SettingValue(i_key).AsView() == "yes";
}

void SetSetting(std::string_view i_key, const Value& i_value) {
    d.GetType("global")->GetItem(i_key)->Connect(d.GetType("global_value")->GetItem(i_value));
}

void SetDefaultSetting(std::string_view i_key, const Value& i_value) {
    if (!HasSetting(i_key)) {
        SetSetting(i_key, i_value);
    }
}

long long TakeCounter(std::string_view i_key) {
    constexpr long long l_highest = std::numeric_limits<long long>::max();
    long long l_number = SettingNumber(i_key).value_or(1);
    if (l_number == l_highest) { // only a damaged or edited file gets here
        l_number = 1;
    }
    SetSetting(i_key, Value(l_number + 1));
    return l_number;
}
