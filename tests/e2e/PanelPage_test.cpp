#include <memory>
#include <string>

#include "e2e/Browser.h"
#include "e2e/Desk.h"
#include "e2e/PanelPage.h"
#include "e2e/WatchOutput.h"

namespace qvn::e2e {
namespace {

/// The panel in a browser, which is the same for all of these tests. Whatever a test looks at, no page may have thrown,
/// told an error or asked for something in vain.
class PanelInBrowser : public DeskTest {
protected:
    static void SetUpTestSuite() {
        if (Browser::isInstalled()) {
            browsersDesk = std::make_unique<Desk>();
            browser = std::make_unique<Browser>(*browsersDesk);
        }
    }
    static void TearDownTestSuite() {
        browser.reset();
        browsersDesk.reset();
    }

    void SetUp() override {
        if (!browser) {
            GTEST_SKIP() << "there is no chromium here";
        }
    }
    void TearDown() override {
        if (browser) {
            EXPECT_EQ(browser->takeErrors(), "");
        }
    }

    /// Starts a simulator with a panel, opens that, and waits until it shows the vehicle.
    void open(const std::string& options = "") {
        simulator = desk.simulator("- --panel 0 " + options);
        browser->open(panelUrl(*simulator));
        EXPECT_TRUE(browser->waitFor(kOnline));
    }

    static std::string has(const std::string& selector) { return "document.querySelector(\"" + selector + "\")"; }
    static std::string count(const std::string& selector) {
        return "document.querySelectorAll(\"" + selector + "\").length";
    }
    static std::string textOf(const std::string& selector) { return has(selector) + ".textContent"; }
    static std::string part(const std::string& signal) { return "#car [data-signal=" + signal + "]"; }
    static std::string row(const std::string& signal) { return "#signals [data-signal=" + signal + "]"; }

    static constexpr char kOnline[] = "!document.body.classList.contains('offline')";
    static constexpr char kOffline[] = "document.body.classList.contains('offline')";

    static inline std::unique_ptr<Desk> browsersDesk;
    static inline std::unique_ptr<Browser> browser;
    std::unique_ptr<Process> simulator;
};

TEST_F(PanelInBrowser, PartsOfTheVehicleAreTurnedWhereTheyAre) {
    open();
    const struct {
        std::string signal;
        std::string place;  // in the picture
    } doors[] = {{"BCM1_DrvDoorSts", "left front"},
                 {"BCM1_LRDoorSts", "left rear"},
                 {"BCM1_PassengerDoorSts", "right front"},
                 {"BCM1_RRDoorSts", "right rear"}};
    const auto application = desk.watch(
        "BCM1_DrvDoorSts BCM1_LRDoorSts BCM1_PassengerDoorSts BCM1_RRDoorSts BCM1_TrunkSts "
        "HAP_FD3_RPAS_ObjRLMidlAr2");
    for (const auto& [signal, place] : doors) {
        EXPECT_EQ(browser->evaluate("{ const box = " + has(part(signal)) +
                                    ".getBoundingClientRect(); const picture = " + has("#car") +
                                    ".getBoundingClientRect(); (box.right < picture.x + picture.width / 2 ? 'left' : "
                                    "'right') + (box.bottom < picture.y + picture.height / 2 + 10 ? ' front' : "
                                    "' rear') }"),
                  place)
            << signal;
        browser->click(part(signal));
        EXPECT_TRUE(application->waitForOutput(shown(signal, "1 open"))) << signal;
        EXPECT_TRUE(browser->waitFor(has(part(signal) + ".on"))) << signal;
    }
    browser->click(part("BCM1_LRDoorSts"));
    EXPECT_TRUE(browser->waitFor("!" + has(part("BCM1_LRDoorSts") + ".on"))) << "a second click closes it";
    EXPECT_EQ(browser->evaluate(count("#car .part.on .door")), 3);
    browser->click(part("BCM1_TrunkSts"));
    EXPECT_TRUE(browser->waitFor(has(part("BCM1_TrunkSts") + ".on")));

    browser->click(part("BCM3_LasHdLmpSts"));
    EXPECT_TRUE(browser->waitFor(count("#car .beam.on") + " === 2"));

    const std::string zone = part("HAP_FD3_RPAS_ObjRLMidlAr2");
    const auto isAt = [&](const std::string& level) { return has(zone + "[data-level='" + level + "']"); };
    browser->click(zone);
    EXPECT_TRUE(application->waitForOutput(shown("HAP_FD3_RPAS_ObjRLMidlAr2", "4"))) << "in the middle of the zone";
    EXPECT_TRUE(browser->waitFor(isAt("4")));
    for (const auto& [key, level] : {std::pair("ArrowDown", "3"), {"ArrowUp", "4"}, {"Delete", "0"}, {"Enter", "1"}}) {
        browser->evaluate(has(zone) + ".focus()");
        browser->press(key);
        EXPECT_TRUE(browser->waitFor(isAt(level))) << key;
    }
    simulator->write("HAP_FD3_RPAS_ObjRLMidlAr2=4\n");
    EXPECT_TRUE(browser->waitFor(isAt("4")));
    browser->click(zone);
    EXPECT_TRUE(browser->waitFor(isAt("0"))) << "a click on an obstacle takes it away";
}

TEST_F(PanelInBrowser, WheelsTurnToTheSideOfTheSteeringWheel) {
    open();
    for (const auto& [side, turned, bent] : {std::tuple("1", "10", ">"), {"0", "-10", "<"}}) {
        simulator->write(std::string("DCT5_TGS_LEVER=R\nCSA2_SteerWheelAng=160\nCSA2_SteerWheelAngSign=") + side +
                         "\n");
        for (const std::string wheel : {"ABS1_FLWheelSpd", "ABS1_FRWheelSpd"}) {
            EXPECT_TRUE(browser->waitFor(has(part(wheel) + " .tyre") + ".getAttribute('transform') === 'rotate(" +
                                         turned + ")'"))
                << wheel << " " << turned;
        }
        EXPECT_EQ(browser->evaluate(has(part("ABS2_RLWheelSpd") + " .tyre") + ".getAttribute('transform')"), nullptr);
        EXPECT_TRUE(browser->waitFor("((line) => line.getPointAtLength(line.getTotalLength()).x " + std::string(bent) +
                                     " line.getPointAtLength(0).x)(" + has("#car .course.on") + ")"))
            << "the course in reverse";
    }
    simulator->write("ABS1_FLWheelSpd=7\n");
    EXPECT_TRUE(
        browser->waitFor("[...document.querySelectorAll('.wheel-speed')].map((of) => of.textContent).join() === "
                         "'7,,,'"));
}

TEST_F(PanelInBrowser, EverySignalIsTurnedInTheList) {
    open();
    const auto application = desk.watch("ESP_FD2_VehSpd");
    const std::string speed = row("ESP_FD2_VehSpd");
    browser->press("/");
    browser->enter("#search", "vehspd km/h");
    EXPECT_EQ(browser->evaluate(count("#signals .row:not([hidden])")), 1);
    browser->click(speed + " .name");
    for (const std::string value : {"4.5", "9"}) {
        browser->enter(".editor input[type=range]", value);
        EXPECT_TRUE(application->waitForOutput(shown("ESP_FD2_VehSpd", value + " km/h")));
        EXPECT_TRUE(browser->waitFor(textOf(speed + " .value") + " === '" + value + " km/h'"));
    }
    simulator->write("ESP_FD2_VehSpd=13.5\n");
    EXPECT_TRUE(browser->waitFor(textOf(speed + " .value") + " === '13.5 km/h'"));
    EXPECT_EQ(browser->evaluate(has(".editor input[type=range]") + ".value"), "9") << "it is held";
    browser->evaluate(has(".editor input[type=range]") + ".onchange()");

    browser->enter(".editor input[type=number]", "18");
    simulator->write("ESP_FD2_VehSpd=2.25 every 0.02\n");
    EXPECT_TRUE(browser->waitFor(textOf(speed + " .value") + " === '2.25 km/h'"));
    EXPECT_TRUE(browser->waitFor(has(".editor input[type=range]") + ".value === '2.25'"));
    EXPECT_EQ(browser->evaluate(has(".editor input[type=number]") + ".value"), "18") << "what a person types stays";
    EXPECT_TRUE(browser->waitFor("!['the last minute', 'the last minute: 0 to 0'].includes(" + has(speed + " canvas") +
                                 ".title)"))
        << "the last minute grows";
    browser->evaluate(has(".editor input[type=number]") + ".focus()");
    browser->press("Enter");
    EXPECT_TRUE(application->waitForOutput(shown("ESP_FD2_VehSpd", "18 km/h")));
    simulator->write("ESP_FD2_VehSpd=4.5\n");
    EXPECT_TRUE(browser->waitFor(has(".editor input[type=number]") + ".value === '4.5'")) << "it has been set";
    browser->click(speed + " .name");
    EXPECT_EQ(browser->evaluate(count(".editor")), 0);
}

TEST_F(PanelInBrowser, KeysDoWhatTheHelpSays) {
    open("--play " + desk.file("a.trace", "(0) DCT5_TGS_LEVER=P\n(1000) reverse=0\n"));
    browser->press("/");
    EXPECT_EQ(browser->evaluate("document.activeElement.id"), "search");
    const auto focused = "document.activeElement.closest('.row')?.dataset.signal";
    browser->enter("#search", "door");
    browser->press("ArrowDown");
    const auto first = browser->evaluate(focused);
    browser->press("ArrowDown");
    EXPECT_NE(browser->evaluate(focused), first);
    browser->press("ArrowUp");
    EXPECT_EQ(browser->evaluate(focused), first);
    browser->evaluate("document.activeElement.click()");
    EXPECT_EQ(browser->evaluate(count(".editor")), 1);
    browser->press("Escape");
    EXPECT_EQ(browser->evaluate(count(".editor")), 0);

    browser->press("r");
    EXPECT_TRUE(simulator->waitForOutput("reverse engaged"));
    EXPECT_TRUE(browser->waitFor(has("#reverse[aria-checked=true]")));
    browser->click("#reverse");
    EXPECT_TRUE(simulator->waitForOutput("reverse released"));
    browser->evaluate("document.activeElement.blur()");
    browser->press(" ");
    EXPECT_TRUE(browser->waitFor(has("#play.paused")));
    browser->press("?");
    EXPECT_EQ(browser->evaluate(has("#help") + ".open"), true);
}

TEST_F(PanelInBrowser, ShowsClientsAndTheirSetsWithWhatTheRulesAnswer) {
    open();
    const auto application = desk.watch("ESP_FD2_VehSpd");
    EXPECT_TRUE(browser->waitFor(textOf("#clients summary") + " !== 'no client'"));
    browser->click("#clients summary");
    browser->evaluate("window.before = " + textOf("#clients ul"));
    EXPECT_TRUE(browser->waitFor(textOf("#clients ul") + " !== window.before")) << "how long they are there";

    EXPECT_EQ(desk.run("vehiclectl set HUT6_CarMdlDispCmd 1").exitCode, 0);
    EXPECT_EQ(desk.run("vehiclectl set HUT32_XLvl 3").exitCode, 0);
    EXPECT_TRUE(browser->waitFor(textOf("#log li.set:last-child") + ".includes('HAP_FD2_CarMdlDispSts = 1')"));
    EXPECT_TRUE(browser->waitFor(count("#log li.set") + " === 2"));
    const std::string log = browser->evaluate(has("#log ol") + ".innerText");
    EXPECT_NE(log.find("HUT6_CarMdlDispCmd = 1"), std::string::npos) << log;
    EXPECT_LT(log.find("HUT32_XLvl = 3"), log.find("no rule answers it")) << log;
    browser->click("#service");
    EXPECT_TRUE(simulator->waitForOutput("service down"));
    browser->click("#all-events");
    EXPECT_TRUE(browser->waitFor(textOf("#log li:first-child") + ".includes('service down')"));
}

TEST_F(PanelInBrowser, ATimeOutGreysWhatTheMessageCarries) {
    open();
    const auto application = desk.watch("HAP_FD3_RPAS_ObjRLMidlAr1");
    browser->click(".chip[data-message=HAP_FD3]");
    EXPECT_TRUE(application->waitForOutput("timed out"));
    EXPECT_TRUE(browser->waitFor(has(".chip.stale[data-message=HAP_FD3]")));
    EXPECT_TRUE(browser->waitFor(has(".group.stale [data-signal=HAP_FD3_RPAS_ObjRLMidlAr1]")));
    EXPECT_TRUE(browser->waitFor(has("#car .stale[data-signal=HAP_FD3_RPAS_ObjRLMidlAr1]")));
    EXPECT_EQ(browser->evaluate(count(".chip.stale")), 1);
    EXPECT_EQ(browser->evaluate(has(part("HAP_FD3_RPAS_ObjRLMidlAr1")) + ".getAttribute('aria-label')"),
              "obstacle, rear: 0, timed out\nHAP_FD3_RPAS_ObjRLMidlAr1");
    EXPECT_EQ(browser->evaluate(has(".group.stale header") + ".innerText.replace(/\\s+/g, ' ')"),
              "HAP_FD3 timed out receive it again");
    browser->click(".group.stale .turn");
    EXPECT_TRUE(browser->waitFor("!" + has(".stale")));
    EXPECT_TRUE(simulator->waitForOutput("HAP_FD3 ok"));
    simulator->write("EPB1!silence\nESP_FD2_VehSpd!freeze\n");
    EXPECT_TRUE(browser->waitFor(has(".chip[data-message=EPB1][data-fault=silent]")));
    EXPECT_TRUE(browser->waitFor(has("[data-signal=ESP_FD2_VehSpd] .name[data-fault=frozen]")));
}

TEST_F(PanelInBrowser, PlaysPausesAndMovesInATrace) {
    open("--play " + desk.file("a.trace", "(0) DCT5_TGS_LEVER=P\n(500) DCT5_TGS_LEVER=R\n(1000) reverse=0\n"));
    browser->click("#play");
    EXPECT_TRUE(browser->waitFor(has("#play.paused")));
    browser->enter("#position", "600");
    browser->evaluate(has("#position") + ".onchange()");
    EXPECT_TRUE(browser->waitFor(textOf("#car .gear") + " === 'R'"));
    EXPECT_TRUE(browser->waitFor(textOf("#time") + " === '600.0 of 1000.0 s'"));
    simulator->write("seek 1000\n");
    EXPECT_TRUE(browser->waitFor(has("#position") + ".value === '1000'")) << "nobody holds it";
    browser->click("#play");
    EXPECT_TRUE(browser->waitFor(textOf("#car .gear") + " === 'P'")) << "from the beginning again";
    EXPECT_EQ(browser->takeErrors(), "");
    browser->enter("#line input", "speed fast");
    browser->click("#line button");
    EXPECT_TRUE(browser->waitFor(textOf("#toast:not([hidden])") + ".startsWith(\"'fast' is not a number\")"));
    EXPECT_NE(browser->takeErrors().find("400 (Bad Request)"), std::string::npos);
    EXPECT_EQ(browser->evaluate(has("#line input") + ".value"), "speed fast") << "to be mended";
    browser->enter("#line input", "speed 2");
    browser->click("#line button");
    EXPECT_TRUE(browser->waitFor(has("#speed") + ".value === '2' && " + has("#line input") + ".value === ''"));
}

TEST_F(PanelInBrowser, WhatAPersonDoesGoesOnWhenTheStreamIsBack) {
    open();
    simulator->write("reverse=1\nreverse=0\n");
    browser->click("#all-events");
    browser->enter("#search", "speed");
    browser->click(row("ESP_FD2_VehSpd") + " .name");
    browser->enter(".editor input[type=number]", "12");
    EXPECT_TRUE(browser->waitFor(textOf("#log li:first-child") + ".includes('reverse released')"));
    const auto log = browser->evaluate(textOf("#log ol"));

    const auto hide = [](const std::string& hidden) {
        return "Object.defineProperty(document, 'hidden', {value: " + hidden +
               ", configurable: true}); document.dispatchEvent(new Event('visibilitychange'))";
    };
    browser->evaluate(hide("true"));
    EXPECT_EQ(browser->evaluate(kOffline), true) << "who does not look gives the connection back";
    simulator->write("DCT5_TGS_LEVER=R\n");
    browser->evaluate(hide("false"));
    EXPECT_TRUE(browser->waitFor(kOnline));
    EXPECT_TRUE(browser->waitFor(textOf("#car .gear") + " === 'R'"));
    EXPECT_EQ(browser->evaluate(textOf("#log ol")), log) << "nothing is told twice";
    EXPECT_EQ(browser->evaluate(has("#search") + ".value"), "speed");
    EXPECT_EQ(browser->evaluate(has(".editor input[type=number]") + ".value"), "12");
}

TEST_F(PanelInBrowser, SaysThatTheSimulatorIsGoneAndConnectsAgainWhenItIsBack) {
    open();
    const std::string port = portOf(panelUrl(*simulator));
    simulator.reset();
    EXPECT_TRUE(browser->waitFor(kOffline));
    EXPECT_EQ(browser->evaluate(has("main") + ".inert"), true);
    for (const auto& [width, height] : {std::pair(1500, 500), {420, 700}}) {
        browser->resize(width, height);
        browser->evaluate("window.scrollTo(0, document.body.scrollHeight)");
        EXPECT_TRUE(browser->waitFor("window.scrollY > 100 && document.elementFromPoint(100, " + has("#banner") +
                                     ".getBoundingClientRect().y + 10)?.id === 'banner'"))
            << "in sight, " << width << " wide";
    }
    simulator = desk.simulator("- --panel " + port);
    simulator->write("DCT5_TGS_LEVER=R\n");
    EXPECT_TRUE(browser->waitFor(std::string(kOnline) + " && " + textOf("#car .gear") + " === 'R'"));
    EXPECT_NE(browser->takeErrors().find("net::ERR_"), std::string::npos) << "of the time without it";
}

}  // namespace
}  // namespace qvn::e2e
