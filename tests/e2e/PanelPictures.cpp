// Takes the pictures of the panel that the documents show; scripts/pictures runs it with the folder for them.

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

#include "e2e/Browser.h"
#include "e2e/PanelPage.h"

namespace qvn::e2e {
namespace {

void require(bool condition, const std::string& what) {
    if (!condition) {
        throw std::runtime_error("it does not come to: " + what);
    }
}

void takePictures(const std::string& folder) {
    const Desk desk;
    const auto simulator = desk.simulator("- --panel 0 --play " QVN_PARKING_TRACE);
    const auto client = desk.watch("--json ESP_FD2_VehSpd");
    Browser browser(desk);
    browser.open(panelUrl(*simulator));
    const auto scene = [&](const std::string& name, const std::string& lines, const std::string& condition) {
        simulator->write(lines);
        require(browser.waitFor(condition), name + ": " + condition);
        // The next second's picture of the list, and the end of what still moves.
        browser.evaluate("new Promise((done) => setTimeout(done, 1500))");
        browser.screenshot(folder + "/panel-" + name + ".png");
    };
    scene("parked", "pause\nseek 9\nBCM1_DrvDoorSts=1\nHAP_FD3_RPAS_ObjRLMidlAr1=0\nHAP_FD3_RPAS_ObjRLCornrAr1=0\n",
          "document.querySelector('[data-signal=BCM1_DrvDoorSts].on')");
    scene("reversing",
          "seek 7.1\nBCM3_LasHdLmpSts=1\nR_PBox1_LTurnLmpSts_R_Pbox=1\nHAP_FD3_APS_ObjLeSideAr5=4\n"
          "HAP_FD3_RPAS_ObjRLCornrAr2=2\nHAP_FD3_RPAS_ObjRLMidlAr2=5\nCSA2_SteerWheelAng=300\n",
          "document.querySelector('[data-signal=HAP_FD3_APS_ObjLeSideAr5].on')");
    const auto find = [&](const std::string& words) {
        browser.evaluate("{ const search = document.querySelector('#search'); search.value = '" + words +
                         "'; search.oninput(); }");
    };
    find("door");
    scene("lost-message", "HAP_FD3!timeout\nBCM1!timeout\n", "document.querySelectorAll('.chip.stale').length === 2");
    simulator->write("HAP_FD3!ok\nBCM1!ok\n");
    browser.useDark(true);
    find("rear left");
    desk.run("vehiclectl set HUT6_CarMdlDispCmd 1");
    desk.run("vehiclectl set HUT33_P2P_PrkgDirectSwtCmd 2");
    desk.run("vehiclectl set HUT32_XLvl 3");
    scene("dark", "", "document.querySelectorAll('#log li.set').length >= 3");
    browser.useDark(false);
    browser.resize(420, 1100);
    scene("narrow", "", "true");
}

}  // namespace
}  // namespace qvn::e2e

int main(int argc, char** argv) {
    try {
        qvn::e2e::takePictures(argc > 1 ? argv[1] : ".");
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "panel_pictures: %s\n", error.what());
        return 1;
    }
}
