#include "app/settings.h"

#include "store/data.h"
#include "store/data_saver.h"

#include <QTemporaryDir>

#include <limits>

#include <gtest/gtest.h>

namespace {

class SettingsTest : public testing::Test {
protected:
    SettingsTest() { Renew(); }

    // As if the program were started anew.
    void Renew() {
        mp_saver.reset();
        std::destroy_at(&d);
        std::construct_at(&d);
        mp_saver = std::make_unique<DataSaver>();
        CreateSettingsTypes();
    }

    std::unique_ptr<DataSaver> mp_saver;
};

} // namespace

TEST_F(SettingsTest, AbsentUntilThereIsAValue) {
    EXPECT_FALSE(HasSetting("port"));
    EXPECT_EQ(SettingText("port"), "");
    EXPECT_EQ(SettingNumber("port"), std::nullopt);
    EXPECT_FALSE(IsSettingYes("port"));
    EXPECT_TRUE(d.GetType("global")->GetItems().empty()) << "asking made an item";

    d.GetType("global")->GetItem("port"); // the item alone is no value
    EXPECT_FALSE(HasSetting("port"));
    SetDefaultSetting("port", 2235);
    EXPECT_EQ(SettingNumber("port"), 2235);
    SetDefaultSetting("port", 1);
    EXPECT_EQ(SettingText("port"), "2235");
}

TEST_F(SettingsTest, OneValueEachAndTextsThatAreNoNumbers) {
    SetSetting("flag", "yes");
    EXPECT_TRUE(IsSettingYes("flag"));
    SetSetting("flag", "Yes");
    EXPECT_FALSE(IsSettingYes("flag"));
    EXPECT_EQ(d.GetType("global")->GetItem("flag")->CountItems("global_value"), 1u);
    SetSetting("flag", "");
    EXPECT_TRUE(HasSetting("flag")) << "empty text is a value";

    for (const char* lp_text : {"", "ten", "10x", "9223372036854775808", "0x10"}) {
        SCOPED_TRACE(lp_text);
        SetSetting("number", lp_text);
        EXPECT_EQ(SettingNumber("number"), std::nullopt);
    }
    SetSetting("number", -5);
    EXPECT_EQ(SettingNumber("number"), -5);
}

TEST_F(SettingsTest, CountersRunOnAndSurviveDamage) {
    EXPECT_EQ(TakeCounter("counter"), 1);
    EXPECT_EQ(TakeCounter("counter"), 2);
    SetSetting("counter", "many");
    EXPECT_EQ(TakeCounter("counter"), 1);
    SetSetting("counter", std::numeric_limits<long long>::max());
    EXPECT_EQ(TakeCounter("counter"), 1);
    EXPECT_EQ(TakeCounter("counter"), 2);
}

TEST_F(SettingsTest, SavedOnesComeBackAndThoseOfTheRunDoNot) {
    const QTemporaryDir l_folder;
    const std::string l_path = l_folder.filePath(QStringLiteral("store")).toStdString();
    SetSetting("username", "Ada");
    SetSetting("nickname", "Ada"); // shares the value
    d.GetType("vglobal")->GetItem("wait")->Connect(d.GetType("global_value")->GetItem(7));
    ASSERT_TRUE(mp_saver->Save(&d, l_path.c_str()));
    Renew();
    ASSERT_EQ(mp_saver->Load(&d, l_path.c_str()).state, LoadResult::Whole);
    EXPECT_EQ(SettingText("username"), "Ada");
    EXPECT_EQ(SettingText("nickname"), "Ada");
    EXPECT_FALSE(d.GetType("vglobal")->HasItem("wait"));
    EXPECT_FALSE(d.GetType("global_value")->HasItem(7));
}
