#include <httplib.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <utility>

#include "e2e/Desk.h"
#include "e2e/PanelPage.h"
#include "e2e/RawSocket.h"
#include "e2e/WatchOutput.h"

namespace qvn::e2e {
namespace {

using Panel = DeskTest;

/// What the panel of a simulator answers.
class PanelOverHttp : public DeskTest {
protected:
    const std::unique_ptr<Process> simulator = desk.simulator("- --panel 0");
    httplib::Client http{panelUrl(*simulator)};

    RawSocket connected() {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(portOf(panelUrl(*simulator)))));
        const int fd = socket(AF_INET, SOCK_STREAM, 0);
        EXPECT_EQ(connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        return RawSocket(fd);
    }

    /// An open page, as the server sees it; what it has been told is `told`.
    struct Page {
        RawSocket socket;
        std::string told;

        bool waitFor(const std::string& text, std::size_t times = 1) {
            const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(kDeadlineSeconds);
            for (;;) {
                std::size_t found = 0;
                for (std::size_t at = 0; (at = told.find(text, at)) != std::string::npos; ++at) {
                    ++found;
                }
                const std::string more = found < times ? socket.read() : "";
                if (more.empty() || std::chrono::steady_clock::now() > end) {
                    return found >= times;
                }
                told += more;
            }
        }
    };

    Page openPage() {
        Page page{connected(), ""};
        page.socket.write("GET /events HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
        EXPECT_TRUE(page.waitFor("event: state"));
        return page;
    }

    std::string post(const std::string& line) {
        const auto result = http.Post("/line", line, "text/plain");
        return result ? std::to_string(result->status) + " " + result->body : httplib::to_string(result.error());
    }
};

TEST_F(PanelOverHttp, ServesItsPageAndNothingElse) {
    const auto page = http.Get("/");
    ASSERT_TRUE(page);
    EXPECT_EQ(page->status, 200);
    EXPECT_NE(page->body.find("<script type=\"module\" src=\"main.js\">"), std::string::npos);
    EXPECT_EQ(page->get_header_value("Content-Type"), "text/html");
    EXPECT_NE(page->get_header_value("Content-Security-Policy").find("default-src 'none'"), std::string::npos);
    EXPECT_EQ(http.Get("/main.js")->get_header_value("Content-Type"), "text/javascript");
    EXPECT_EQ(http.Get("/../../etc/passwd")->status, 404);
    EXPECT_EQ(http.Get("/line")->status, 404);
    EXPECT_EQ(http.Get("/mainXjs")->status, 404);
    EXPECT_EQ(http.Delete("/")->status, 405);
}

TEST_F(PanelOverHttp, RefusesOtherSites) {
    const httplib::Headers headers[] = {
        {{"Host", "evil.example"}}, {{"Origin", "http://evil.example"}}, {{"Sec-Fetch-Site", "cross-site"}}};
    for (httplib::Headers of : headers) {
        of.emplace("Sec-Fetch-Mode", "navigate");
        EXPECT_EQ(http.Post("/line", of, "service=down", "text/plain")->status, 403) << of.begin()->first;
        int status = 0;
        const auto take = [&](const httplib::Response& response) { return (status = response.status) == 0; };
        http.Get("/events", of, take, [](const char*, std::size_t) { return false; });
        ASSERT_EQ(status, 403) << of.begin()->first;
    }
    EXPECT_EQ(http.Get("/", {{"Sec-Fetch-Site", "cross-site"}, {"Sec-Fetch-Mode", "navigate"}})->status, 200)
        << "a link to the panel";
    EXPECT_EQ(simulator->output().find("service down"), std::string::npos);
}

TEST_F(PanelOverHttp, TellsWhatIsWrongWithALine) {
    EXPECT_EQ(post("BCM1_DrvDoorSts=1\n"), "200 ");
    const std::pair<std::string, std::string> cases[] = {
        {"BCM1_DrvDoorSts=300", "400 value 300 does not fit; expected a whole number from 0 to 255\n"},
        {"BCM1_Door=1", "400 unknown received signal 'BCM1_Door'"},
        {"reverse=1\nreverse=0", "400 several lines came at once; expected one\n"},
        {"pause", "400 there is no trace to pause; start with --play FILE\n"},
        {"speed", "400 '' is not a number; expected a speed\n"},
        {"quit", "400 'quit' is not an event"},
        {std::string("BCM1_DrvDoorSts=1\0", 18), "400 '1?' is not a number; expected a physical value"},
        {std::string(5000, 'x'), "413 the request is too long\n"},
    };
    for (const auto& [line, answer] : cases) {
        EXPECT_EQ(post(line).substr(0, answer.size()), answer) << line.substr(0, 40);
    }
}

TEST_F(PanelOverHttp, EndsAtOnceWhateverIsOpen) {
    std::atomic<bool> done{false};
    std::vector<std::thread> posters;
    for (int i = 0; i < 10; ++i) {
        posters.emplace_back([&] {
            while (!done) {
                httplib::Client(panelUrl(*simulator)).Post("/line", "BCM1_DrvDoorSts=1", "text/plain");
            }
        });
    }
    const RawSocket silent = connected();
    const RawSocket halfway = connected();
    ASSERT_TRUE(halfway.write("GET / HTTP/1.1\r\nHost: 127"));
    EXPECT_EQ(post("reverse=1"), "200 ");
    simulator->signal(SIGTERM);
    EXPECT_EQ(simulator->wait(), 0);
    done = true;
    for (std::thread& poster : posters) {
        poster.join();
    }
}

TEST_F(PanelOverHttp, TellsEveryPageEverything) {
    Page first = openPage();
    // The second page is told all of it at once, before the first is told what has changed.
    const std::pair<std::string, std::string> cases[] = {{"ESP_FD2_VehSpd=4.5", ",4.5,"},
                                                         {"ESP_FD2!timeout", ",true]]"},
                                                         {"reverse=1", "\"event\":\"reverse\""},
                                                         {"reverse=0", "\"reverse\":false"}};
    for (const auto& [line, told] : cases) {
        const std::size_t before = first.told.size();
        EXPECT_EQ(post(line), "200 ");
        EXPECT_TRUE(openPage().waitFor(told)) << line;
        first.told.erase(0, before);
        EXPECT_TRUE(first.waitFor(told)) << line;
    }
}

TEST_F(PanelOverHttp, HoldsAnIdlePageAndNoRequestThatDrips) {
    const RawSocket drips = connected();
    Page page = openPage();
    std::size_t heartbeats = 1;
    while (drips.write("G") && heartbeats < 20) {
        ASSERT_TRUE(page.waitFor("event: state", ++heartbeats)) << "a page must hear of the simulator";
    }
    EXPECT_LT(heartbeats, 20U);
    double last = 0.0;
    for (std::size_t at = 0; (at = page.told.find("\"t\":", at)) != std::string::npos; ++at) {
        const double time = std::stod(page.told.substr(at + 4));
        EXPECT_TRUE(last == 0.0 || time - last < 5.0) << "a page gives a silent stream up";
        last = time;
    }
}

TEST_F(PanelOverHttp, TakesNoEndlessRequest) {
    const RawSocket large = connected();
    std::string complete = "GET / HTTP/1.1\r\nHost: 127.0.0.1\r\n";
    while (complete.size() < 20'000) {
        complete += "X-Filler: " + std::string(100, 'x') + "\r\n";
    }
    large.write(complete + "\r\n");
    EXPECT_EQ(large.read().find("200"), std::string::npos) << "larger than 16 KiB";

    const std::string endless[] = {
        std::string(200'000, 'x'),
        "GET / HTTP/1.1\r\n" + std::string(200'000, 'x'),
        "POST /line HTTP/1.1\r\nHost: 127.0.0.1\r\nTransfer-Encoding: chunked\r\n\r\n30000\r\n" +
            std::string(0x30000, 'x'),
        "POST /other HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 200000\r\n\r\n" + std::string(200'000, 'x'),
    };
    for (const std::string& request : endless) {
        const RawSocket socket = connected();
        socket.write(request);
        EXPECT_TRUE(socket.ends()) << request.substr(0, 20);
    }
    EXPECT_EQ(post("reverse=1"), "200 ");
}

TEST_F(PanelOverHttp, APageThatDoesNotReadDelaysNobody) {
    const std::string url = panelUrl(*simulator);
    std::atomic<bool> done{false};
    std::atomic<int> asleep{0};
    std::vector<std::thread> pages;
    for (int i = 0; i < 32; ++i) {
        pages.emplace_back([&] {
            bool counted = false;
            httplib::Client(url).Get("/events", [&](const char*, std::size_t) {
                asleep += std::exchange(counted, true) ? 0 : 1;
                while (!done) {
                    std::this_thread::yield();
                }
                return false;
            });
        });
    }
    while (asleep < 32) {
        std::this_thread::yield();
    }
    httplib::Client other(url);
    EXPECT_EQ(other.Get("/events")->status, 503) << "too many pages are told";
    simulator->write("BCM1_DrvDoorSts=step 0,1 every 0.001\n");
    const auto application = desk.watch("BCM1_DrvDoorSts");
    EXPECT_TRUE(application->waitForOutput(shown("BCM1_DrvDoorSts", "1 open")));
    EXPECT_EQ(other.Post("/line", "ESP_FD2_VehSpd=9", "text/plain")->status, 200);
    simulator->signal(SIGTERM);
    EXPECT_EQ(simulator->wait(), 0) << "it ends with all of them open";
    done = true;
    for (std::thread& page : pages) {
        page.join();
    }
}

TEST_F(Panel, BearsNamesThatAreNoUtf8) {
    const auto simulator = desk.simulator("--panel 0 --name \"$(printf 'caf\\351')\"");
    httplib::Client http(panelUrl(*simulator));
    std::string events;
    http.Get("/events", [&](const char* part, std::size_t size) {
        events.append(part, size);
        return events.find("event: state") == std::string::npos;
    });
    EXPECT_NE(events.find("\"service\":\"caf\xEF\xBF\xBD\""), std::string::npos) << events.substr(0, 100);
}

TEST_F(Panel, SaysWhereItIsAndWhyNot) {
    const auto first = desk.simulator("--panel 0");
    const auto second = desk.run("can-service-sim --name other --panel " + portOf(panelUrl(*first)));
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_NE(second.errors.find("Address already in use; name another port with --panel PORT"), std::string::npos)
        << second.errors;
    for (const std::string port : {"70000", "65536", "-1", "0x10", "8480x"}) {
        const auto wrong = desk.run("can-service-sim --panel=" + port);
        EXPECT_EQ(wrong.exitCode, 2) << port;
        EXPECT_NE(wrong.errors.find("'" + port + "' is not a port; expected a number from 0 to 65535"),
                  std::string::npos)
            << wrong.errors;
    }
    const auto open = desk.simulator("--name third --panel 0 --panel-address 0.0.0.0");
    EXPECT_FALSE(panelUrl(*open).empty());
    open->signal(SIGTERM);
    EXPECT_EQ(open->wait(), 0);
    EXPECT_NE(open->errors().find("has no password"), std::string::npos) << "a warning";
}

}  // namespace
}  // namespace qvn::e2e
