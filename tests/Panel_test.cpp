#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "can-service-sim/panel/EventLog.h"
#include "can-service-sim/panel/IpAddress.h"
#include "can-service-sim/panel/PageStream.h"
#include "can-service-sim/panel/RequestGuard.h"
#include "can-service-sim/panel/SampleHistory.h"

namespace qvn::tools {
namespace {

TEST(RequestGuard, LetsOnlyThePanelsOwnPageIn) {
    const struct {
        RequestOrigin request;
        std::string refusal;  // its begin; empty: let in
    } cases[] = {
        {{"127.0.0.1:8480", "", ""}, ""},
        {{"localhost:8480", "http://localhost:8480", "same-origin"}, ""},
        {{"LocalHost", "", "none"}, ""},
        {{"[::1]:8480", "http://[::1]:8480", ""}, ""},
        {{"192.168.1.7:9000", "", ""}, ""},
        {{"desk7:8480", "http://DESK7:8480", ""}, ""},
        {{"", "", ""}, "the host '' is none of this machine's"},
        {{"evil.example:8480", "", ""}, "the host 'evil.example' is none of this machine's"},
        {{"127.0.0.1.evil.example", "", ""}, "the host '127.0.0.1.evil.example' is none"},
        {{"localhost.evil.example:80", "", ""}, "the host 'localhost.evil.example' is none"},
        {{"2130706433:8480", "", ""}, "the host '2130706433' is none"},
        {{"[evil.example]:8480", "", ""}, "the host 'evil.example' is none"},
        {{"127.0.0.1:8480", "http://evil.example", ""}, "a page of 'http://evil.example' asks"},
        {{"127.0.0.1:8480", "http://127.0.0.1:9999", ""}, "a page of 'http://127.0.0.1:9999' asks"},
        {{"127.0.0.1:8480", "https://127.0.0.1:8480", ""}, "a page of 'https://127.0.0.1:8480' asks"},
        {{"127.0.0.1:8480", "null", ""}, "a page of 'null' asks"},
        {{std::string("127.0.0.1\0.evil", 15), "", ""}, "the host '127.0.0.1?.evil' is none"},
        {{"127.0.0.1:8480", "", "cross-site"}, "a page of another site asks"},
        {{"127.0.0.1:8480", "", "same-site"}, "a page of another site asks"},
    };
    for (const auto& [request, expected] : cases) {
        const std::string reason = refusal(request, "desk7");
        EXPECT_EQ(reason.substr(0, expected.size()), expected) << request.host << " " << request.origin;
        EXPECT_EQ(reason.empty(), expected.empty()) << request.host << ": " << reason;
    }
    EXPECT_FALSE(refusal({":8480", "", ""}, "").empty()) << "a machine without a name";
}

TEST(IpAddress, IsKnownAndWhetherOnlyThisMachineReachesIt) {
    for (const char* const address : {"127.0.0.1", "127.9.9.9", "::1", "0:0:0:0:0:0:0:1"}) {
        EXPECT_TRUE(isAddress(address) && isLoopback(address)) << address;
    }
    for (const char* const address : {"0.0.0.0", "::", "192.168.1.1"}) {
        EXPECT_TRUE(isAddress(address) && !isLoopback(address)) << address;
    }
    for (const char* const text : {"", "localhost", "127.1", "127.0.0.1:80", "[::1]"}) {
        EXPECT_FALSE(isAddress(text) || isLoopback(text)) << text;
    }
}

PageStream::Text text(const std::string& content) {
    return std::make_shared<const std::string>(content);
}

TEST(PageStream, HandsTextsOverInOrder) {
    PageStream page;
    std::thread writer([&page] {
        for (int i = 0; i < 50; ++i) {
            page.put(text(std::to_string(i)));
        }
        page.end();
    });
    std::string all;
    std::vector<PageStream::Text> texts;
    for (bool more = true; more;) {
        more = page.take(&texts);
        for (const PageStream::Text& part : texts) {
            all += *part + " ";
        }
    }
    writer.join();
    EXPECT_EQ(all.substr(0, 10) + all.substr(all.size() - 6), "0 1 2 3 4 48 49 ");
}

TEST(PageStream, GivesUpAPageThatTakesNothing) {
    PageStream page;
    int put = 0;
    while (!page.ended() && put < 100'000) {
        page.put(text("x"));
        ++put;
    }
    EXPECT_LT(put, 1000);
    std::vector<PageStream::Text> texts;
    EXPECT_FALSE(page.take(&texts));
}

TEST(EventLog, KeepsSetsWhateverElseHappens) {
    EventLog log;
    const char* const ofSets[] = {"set", "ignored set", "answer", "no answer"};
    for (const char* const kind : ofSets) {
        log.add({{"event", kind}});
    }
    for (int i = 0; i < 1000; ++i) {
        log.add({{"event", "message"}});
    }
    Json events = log.since(0);
    ASSERT_EQ(events.size(), 304U);
    EXPECT_EQ(events.at(3), (Json{{"event", "no answer"}, {"n", 4}}));
    EXPECT_EQ(events.at(4)["n"], 705);
    for (int i = 0; i < 1000; ++i) {
        log.add({{"event", "set"}});
    }
    EXPECT_EQ(log.since(0).size(), 600U);
    EXPECT_EQ(log.since(2002).size(), 2U);
    EXPECT_EQ(log.last(), 2004U);
}

TEST(SampleHistory, IsTheLastMinuteOfWhatMoved) {
    SampleHistory history(3);
    EXPECT_EQ(history.size(), 0U);
    for (int second = 0; second < 61; ++second) {
        history.add([&](std::size_t signal) {
            return signal == 1 ? Json(second) : signal == 2 ? Json(second < 1) : Json();
        });
    }
    EXPECT_EQ(history.size(), 60U);
    const Json moved = history.moved();
    ASSERT_EQ(moved.size(), 1U) << "the third has been the same for a minute";
    EXPECT_EQ(moved[0][0], 1);
    EXPECT_EQ(moved[0][1].front(), 1);
    EXPECT_EQ(moved[0][1].back(), 60);
}

}  // namespace
}  // namespace qvn::tools
