#include "vehiclectl/SetGoal.h"

#include <gtest/gtest.h>

#include "desk/BadInput.h"
#include "support/ErrorOf.h"
#include "vehiclectl/PropertySelection.h"

namespace qvn::tools {
namespace {

TEST(SetGoal, TakesWholeNumbersOfTheRangeAndNames) {
    const PropertyInfo& display = propertyNamed("HUT6_CarMdlDispCmd");
    const PropertyInfo& shifted = propertyNamed("DMS_FD1_HeadPosnX");
    const struct {
        const PropertyInfo& property;
        std::string text, result;
    } cases[] = {
        {display, "0", "0"},
        {display, "255", "255"},
        {display, "0x10", "16"},
        {display, "-1", "value -1 does not fit HUT6_CarMdlDispCmd; expected a whole number from 0 to 255"},
        {display, "256", "value 256 does not fit HUT6_CarMdlDispCmd; expected a whole number from 0 to 255"},
        {display, "1.5", "value 1.5 does not fit HUT6_CarMdlDispCmd; expected a whole number from 0 to 255"},
        {display, "1e99", "value 1e99 does not fit HUT6_CarMdlDispCmd; expected a whole number from 0 to 255"},
        {display, "x", "'x' is not a number; expected the value to set"},
        {shifted, "-500", "-500"},
        {shifted, "65036", "value 65036 does not fit DMS_FD1_HeadPosnX; expected a whole number from -500 to 65035"},
        {propertyNamed("ESP_FD2_VehSpd"), "1", "ESP_FD2_VehSpd is only reported by the vehicle; it cannot be set"},
    };
    for (const auto& [property, text, result] : cases) {
        std::string value;
        const std::string error = errorOf([&, &p = property, &t = text] { value = std::to_string(valueToSet(p, t)); });
        EXPECT_EQ(value.empty() ? error : value, result) << text;
    }
}

TEST(SetGoal, IsOnePropertyAndItsValue) {
    const std::pair<const char*, const char*> cases[] = {
        {"ESP_FD2_VehSpd", "'ESP_FD2_VehSpd' is nothing to wait for; expected PROPERTY=VALUE"},
        {"HUT6_CarMdlDispCmd=1", "HUT6_CarMdlDispCmd can only be set; the vehicle never reports it"},
        {"ESP_FD2_*=1", "'ESP_FD2_*=1' means 2 properties; expected one to wait for"},
        {"DCT5_TGS_LEVER=X", "'X' is not a number; expected a value after '=' or one of: P, R"},
        {"DCT5_TGS_LEVER=", "'' is not a number; expected a value after '=' or one of: P, R"},
    };
    for (const auto& [text, error] : cases) {
        EXPECT_EQ(errorOf([&text = text] { readGoal(text); }), error);
    }
}

TEST(PropertySelection, NamesEachOnceWhereItIsNamedFirst) {
    const auto selected = [](const std::vector<std::string>& names) {
        std::string text;
        for (const PropertyInfo* const property : receivedProperties(names)) {
            text += property->name + " ";
        }
        return text;
    };
    EXPECT_EQ(selected({"ESP_FD2_VehSpdVld", "QVN_GET_esp_fd2*", "0x21600E1F", "BCM1_Trunk?ts"}),
              "ESP_FD2_VehSpdVld ESP_FD2_VehSpd BCM1_TrunkSts ");
    EXPECT_EQ(receivedProperties().size(), 150U);
    EXPECT_EQ(receivedProperties({"*"}).size(), 150U) << "none that can only be set";
}

}  // namespace
}  // namespace qvn::tools
