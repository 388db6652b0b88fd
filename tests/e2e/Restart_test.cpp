#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "e2e/Desk.h"
#include "e2e/WatchOutput.h"
#include "support/Scale.h"

namespace qvn::e2e {
namespace {

constexpr int kTraffic = 300;  // values a round
constexpr int kMaxRounds = 20;

using Restart = DeskTest;

unsigned chosenSeed() {
    const char* const given = std::getenv("QVN_TEST_SEED");
    const unsigned seed = given ? static_cast<unsigned>(std::atol(given)) : std::random_device{}();
    std::cout << "QVN_TEST_SEED=" << seed << std::endl;
    return seed;
}

/// The values that one service sends: kTraffic from `first` on; the client has shown `shownTo` before it is killed.
struct Round {
    int first;
    int shownTo;
};

// Half of the services are killed at any moment, the others as soon as the client has shown what its subscribe returned
// and a part of the traffic.
TEST_F(Restart, AWatchMissesNothingOfServicesThatAreKilledAtAnyMoment) {
    std::mt19937 random(chosenSeed());
    const auto watch = desk.start("vehiclectl watch " + kWord + " " + kByte);
    std::vector<Round> rounds;
    const int count = test::scaled(kMaxRounds);
    for (int number = 1; number <= count; ++number) {
        SCOPED_TRACE("round " + std::to_string(number));
        Round round{(number - 1) % kMaxRounds * kTraffic + 1, 0};
        const std::string byte = std::to_string(number % 256);
        const std::string trace = desk.file("a.trace", "(0) " + wordLine(round.first) + "(0) " + kByte + "=" + byte);

        const std::size_t shownBefore = watch->output().size();
        const auto simulator = desk.simulator("- --no-initial --play " + trace);
        simulator->write(wordLines(round.first + 1, round.first + kTraffic - 1));
        if (number == count || random() % 2 == 0) {
            round.shownTo = round.first + static_cast<int>(random() % kTraffic);
            ASSERT_TRUE(waitForValue(*watch, kByte, number % 256, shownBefore));
            ASSERT_TRUE(watch->waitForOutput([&](const std::string& output) {
                const std::vector<int> values = valuesOf(output.substr(shownBefore), kWord);
                return !values.empty() && values.back() >= round.shownTo;
            }));
        } else {
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 10000));
        }
        simulator->signal(SIGKILL);
        ASSERT_EQ(simulator->wait(), -SIGKILL);
        rounds.push_back(round);
    }
    watch->signal(SIGTERM);
    EXPECT_EQ(watch->wait(), 0);

    const std::vector<int> values = valuesOf(watch->output(), kWord);
    auto value = values.begin();
    for (const Round& round : rounds) {
        std::vector<int> ofRound;
        while (value != values.end() && *value >= round.first && *value < round.first + kTraffic) {
            ofRound.push_back(*value++);
        }
        if (ofRound.empty()) {
            EXPECT_EQ(round.shownTo, 0);
            continue;
        }
        EXPECT_EQ(ofRound, range(ofRound.front(), ofRound.back())) << "from the current value on, without a gap";
        EXPECT_GE(ofRound.back(), round.shownTo);
    }
    EXPECT_TRUE(value == values.end()) << "a value of no service: " << *value;
}

}  // namespace
}  // namespace qvn::e2e
