#include "vehiclectl/WatchView.h"

#include <gtest/gtest.h>

#include <cmath>

#define NCURSES_NOMACROS
#include <curses.h>

#include "support/Updates.h"
#include "vehiclectl/Periods.h"
#include "vehiclectl/WatchKeys.h"

namespace qvn::tools {
namespace {

using platform::vehicle::Reception;

class WatchViewTest : public testing::Test {
protected:
    void value(const std::string& name, int number, double at) { table.apply(updates.value(name, number, at)); }
    const PropertyRow& of(const std::string& name) { return table.of(propertyNamed(name)); }
    std::string rows(double at) {
        view.refresh(static_cast<long>(at * kSecond));
        std::string names;
        for (const PropertyRow& row : view.rows()) {
            names += row.info->name.substr(row.info->name.find('_') + 1) + " ";
        }
        return names;
    }

    const std::vector<const PropertyInfo*> properties = {&propertyNamed("DCT5_TGS_LEVER"),
                                                         &propertyNamed("BCM1_TrunkSts"), &propertyNamed("EPB1_EPBSts"),
                                                         &propertyNamed("BCM1_DrvDoorSts")};
    Updates updates;
    PropertyTable table{properties};
    WatchView view{table, properties};
};

TEST_F(WatchViewTest, WhatChangesComesFirstAndKeepsItsPlace) {
    for (const char* const name : {"EPB1_EPBSts", "BCM1_TrunkSts", "BCM1_DrvDoorSts", "DCT5_TGS_LEVER"}) {
        value(name, 0, 10);
    }
    table.apply(updates.reception("BCM1_TrunkSts", Reception::TimedOut));
    EXPECT_EQ(rows(11), "TGS_LEVER TrunkSts EPBSts DrvDoorSts ") << "first values and a status are no change";
    value("BCM1_DrvDoorSts", 1, 11);
    value("BCM1_TrunkSts", 0, 11.5);  // a repeat
    value("EPB1_EPBSts", 1, 12);
    EXPECT_EQ(rows(12), "EPBSts DrvDoorSts TGS_LEVER TrunkSts ");
    value("BCM1_DrvDoorSts", 2, 12.5);
    value("EPB1_EPBSts", 2, 12.6);
    value("BCM1_DrvDoorSts", 3, 12.7);
    EXPECT_EQ(rows(12.8), "EPBSts DrvDoorSts TGS_LEVER TrunkSts ") << "by the begin of their activity";
    value("EPB1_EPBSts", 3, 15);
    EXPECT_EQ(rows(17), "EPBSts DrvDoorSts TGS_LEVER TrunkSts ");
    value("BCM1_DrvDoorSts", 4, 18.5);
    EXPECT_EQ(rows(18.5), "DrvDoorSts EPBSts TGS_LEVER TrunkSts ");
    view.sortBy(WatchView::Sort::Name);
    EXPECT_EQ(rows(19), "DrvDoorSts TrunkSts TGS_LEVER EPBSts ");
    view.sortBy(WatchView::Sort::Age);
    EXPECT_EQ(rows(19), "DrvDoorSts EPBSts TrunkSts TGS_LEVER ");
}

TEST_F(WatchViewTest, FilterFreezeAndScroll) {
    view.filter("bcm1");
    EXPECT_EQ(rows(1), "TrunkSts DrvDoorSts ");
    view.filter("*_TGS_*");
    EXPECT_EQ(rows(1), "TGS_LEVER ");
    view.filter("");
    view.freeze(true);
    value("BCM1_DrvDoorSts", 1, 2);
    value("BCM1_DrvDoorSts", 2, 2);
    EXPECT_EQ(rows(2), "TGS_LEVER TrunkSts EPBSts DrvDoorSts ");
    EXPECT_EQ(view.time(), kSecond);
    view.freeze(false);
    EXPECT_EQ(rows(2), "DrvDoorSts TGS_LEVER TrunkSts EPBSts ");
    view.scroll(1);
    EXPECT_EQ(view.top(2), 1U);
    view.scroll(100);
    EXPECT_EQ(view.top(2), 2U);
    view.scroll(-1);
    EXPECT_EQ(view.top(2), 1U) << "from where it ended";
    EXPECT_EQ(view.top(4), 0U);
}

TEST_F(WatchViewTest, KeysScrollSortFilterAndFreeze) {
    WatchKeys keys(view);
    const auto press = [&](const std::vector<int>& all) {
        for (const int key : all) {
            keys.take(key, 2);
        }
        rows(1);
        return view.top(1);
    };
    const std::pair<std::vector<int>, std::size_t> scrolls[] = {
        {{KEY_DOWN}, 1},  {{'j'}, 2},     {{KEY_UP}, 1}, {{'k'}, 0},      {{KEY_NPAGE}, 2}, {{'j'}, 3},
        {{KEY_PPAGE}, 1}, {{KEY_END}, 3}, {{KEY_UP}, 2}, {{KEY_HOME}, 0}, {{'x'}, 0}};
    for (const auto& [pressed, top] : scrolls) {
        EXPECT_EQ(press(pressed), top) << pressed.front();
    }
    for (const auto sort : {WatchView::Sort::Name, WatchView::Sort::Age, WatchView::Sort::Change}) {
        press({'s'});
        EXPECT_EQ(view.sort(), sort);
    }
    press({'f'});
    EXPECT_TRUE(view.frozen());
    press({' '});
    EXPECT_FALSE(view.frozen());
    const struct {
        std::vector<int> pressed;
        std::string filter;
        bool editing;
    } edits[] = {{{'/', 'q', 's', ' '}, "qs", true},
                 {{KEY_BACKSPACE, 0x7F, '\b'}, "", true},
                 {{'e', 'p', '\r'}, "ep", false},
                 {{'/', '1', '\n'}, "ep1", false},
                 {{'/', 'x', KEY_ENTER}, "ep1x", false},
                 {{'/', 27}, "", false},
                 {{'/', 'a', KEY_UP, KEY_ENTER}, "a", false},
                 {{27}, "", false}};
    for (const auto& [pressed, filter, editing] : edits) {
        press(pressed);
        EXPECT_EQ(view.filter(), filter);
        EXPECT_EQ(keys.editing(), editing) << filter;
    }
    EXPECT_FALSE(keys.ended()) << "the q was a letter of the filter";
    press({'q'});
    EXPECT_TRUE(keys.ended());
}

TEST_F(WatchViewTest, TheRateIsThatOfTheLastValues) {
    EXPECT_EQ(of("EPB1_EPBSts").arrivals.rate(0), 0.0);
    for (int i = 0; i <= 97; ++i) {  // the first one, three times as many as are kept, and one
        value("EPB1_EPBSts", 1, 1.3 + i * 0.1);
    }
    EXPECT_NEAR(of("EPB1_EPBSts").arrivals.rate(11 * kSecond), 10.0, 0.01);
    EXPECT_NEAR(of("EPB1_EPBSts").arrivals.rate(13 * kSecond), 1.0, 0.01) << "it has stopped";
    EXPECT_EQ(of("EPB1_EPBSts").arrivals.rate(17 * kSecond), 0.0);
}

TEST(PropertyTableTest, TellsWhatIsNew) {
    const char* const name = "EPB1_EPBSts";
    PropertyTable table({&propertyNamed(name)});
    Updates updates;
    const struct {
        PropertyState update;
        bool repeated, changed;
        const char* row;
    } cases[] = {
        {updates.value(name, 2, 5), false, true, "2 available >5.0 s"},
        {updates.value(name, 2, 5.5), true, false, "2 available 4.5 s"},
        {updates.reception(name, Reception::TimedOut), false, true, "2 timed out 4.5 s"},
        {updates.reception(name, Reception::TimedOut), false, false, "2 timed out 4.5 s"},
        {updates.value(name, 3, 6), true, true, "3 available 4.0 s"},
        {updates.reception(name, Reception::ServiceAway), false, false, "3 stale 4.0 s"},
        {updates.value(name, 3, 7), false, false, "3 available >3.0 s"},
        {updates.value(name, 3, 8), true, false, "3 available 2.0 s"},
        {updates.reception(name, Reception::TimedOut), false, true, "3 timed out 2.0 s"},
        {updates.reception(name, Reception::ServiceAway), false, false, "3 stale 2.0 s"},
        {updates.value(name, 4, 9), false, true, "4 available >1.0 s"},
    };
    for (const auto& [update, repeated, changed, expected] : cases) {
        const News news = table.apply(update);
        EXPECT_EQ(news.repeated, repeated) << expected;
        EXPECT_EQ(news.changed, changed) << expected;
        const PropertyRow& row = table.of(propertyNamed(name));
        EXPECT_EQ(valueText(*row.info, row.state).substr(0, 1) + " " + statusText(row.state) + " " +
                      ageText(row, 10 * kSecond),
                  expected);
    }
}

TEST(PropertyTableTest, KnowsTheFirstValueOfEachSwitchOfAProperty) {
    PropertyTable table({&propertyNamed("CSA3_*")});
    const PropertyRow& row = table.of(propertyNamed("CSA3_*"));
    Updates updates;
    for (const int direction : {1000, 1001, 1002}) {
        table.apply(updates.value("CSA3_*", 0, 1 + direction * 1e-6, direction));
    }
    EXPECT_EQ(valueText(*row.info, row.state), "0 dir. 1002");
    EXPECT_EQ(ageText(row, 3 * kSecond), ">2.0 s");
    EXPECT_EQ(row.arrivals.rate(2 * kSecond), 0.0);
    table.apply(updates.value("CSA3_*", 1, 2, 1001));
    EXPECT_EQ(ageText(row, 3 * kSecond), "1.0 s");
}

TEST(PeriodsTest, AreMeasuredBetweenValues) {
    Periods periods;
    for (const long at : {1000L, 1010L, 1030L, 1030L, 1060L}) {  // the same time twice is no period
        periods.add(at * 1'000'000);
    }
    EXPECT_EQ(periods.count(), 3);
    EXPECT_DOUBLE_EQ(periods.mean(), 20);
    EXPECT_DOUBLE_EQ(periods.rate(), 50);
    EXPECT_EQ(periods.shortest(), 10);
    EXPECT_EQ(periods.longest(), 30);
    EXPECT_NEAR(periods.deviation(), std::sqrt(200.0 / 3), 1e-9);
}

}  // namespace
}  // namespace qvn::tools
