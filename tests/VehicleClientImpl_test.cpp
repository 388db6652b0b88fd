#include "client/VehicleClientImpl.h"

#include <sys/resource.h>

#include <system_error>

#include "support/CoreTest.h"
#include "support/FakeClock.h"
#include "tables/SignalTable.h"

namespace {

using namespace qvn::test;

const char kOmniview[] = "OMNIVIEW_SYSTEM_VEHICLE_CONFIGURATION_INFORMATION";
const char kReverseVideo[] = "REVERSE_VIDEO";

const LogLine kStart = {1, "initVariant", 51, "[%s][%d]Init persistency client.\n", "Init persistency client.\n"};
const LogLine kKeyFailed = {1, "readKey", 92, "[%s][%d]Unable to get key value!Error[%d], set default vaule = [0]!\n",
                            "Unable to get key value!Error[1], set default vaule = [0]!\n"};
const LogLine kDefault = {1, "initVariant", 78,
                          "[%s][%d]not get AVM,RVC,HAP config words, error! so set use AVM as default config words!\n",
                          "not get AVM,RVC,HAP config words, error! so set use AVM as default config words!\n"};
const LogLine kDone = {3, "initVariant", 81, "[%s][%d]Init persistency client finished.\n",
                       "Init persistency client finished.\n"};

class VehicleClientImplTest : public CoreTest {};

TEST_F(VehicleClientImplTest, TheVariantChoosesTheFunction) {
    const struct {
        int omniview;  // negative: the key cannot be read
        int reverse;
        FUNCTION_TYPE function;
        std::vector<LogLine> log;
    } cases[] = {
        {3, 0, FUNCTION_TYPE_HAP, {kStart, kDone}},
        {3, 1, FUNCTION_TYPE_HAP, {kStart, kDone}},
        {2, 2, FUNCTION_TYPE_AVM, {kStart, kDone}},
        {0, 1, FUNCTION_TYPE_RVC, {kStart, kDone}},
        {0, 3, FUNCTION_TYPE_RVC, {kStart, kDone}},
        {1, 2, FUNCTION_TYPE_RVC, {kStart, kDone}},
        {1, 0, FUNCTION_TYPE_AVM, {kStart, kDefault, kDone}},
        {0, 4, FUNCTION_TYPE_AVM, {kStart, kDefault, kDone}},
        {255, 255, FUNCTION_TYPE_AVM, {kStart, kDefault, kDone}},
        {-1, 2, FUNCTION_TYPE_RVC, {kStart, kKeyFailed, kDone}},
        {3, -1, FUNCTION_TYPE_HAP, {kStart, kKeyFailed, kDone}},
        {-1, -1, FUNCTION_TYPE_AVM, {kStart, kKeyFailed, kKeyFailed, kDefault, kDone}},
    };
    for (const auto& [omniview, reverse, function, log] : cases) {
        SCOPED_TRACE(std::to_string(omniview) + " " + std::to_string(reverse));
        FakePsis::reset();
        log_recorder::reset();
        if (omniview >= 0) {
            FakePsis::instance().keys[kOmniview] = static_cast<unsigned char>(omniview);
        }
        if (reverse >= 0) {
            FakePsis::instance().keys[kReverseVideo] = static_cast<unsigned char>(reverse);
        }
        TestCore fresh;
        EXPECT_TRUE(fresh.initVariant());
        EXPECT_EQ(fresh.functionType, function);
        EXPECT_EQ(log_recorder::lines(), log);
        EXPECT_EQ(FakePsis::instance().asked, (std::vector<std::string>{std::string("config_qvn/") + kOmniview,
                                                                        std::string("config_qvn/") + kReverseVideo}));
    }
}

TEST_F(VehicleClientImplTest, WithoutPersistencyNothingIsServed) {
    FakePsis::instance().initResult = -1;
    startCore();
    const std::vector<LogLine> expected = {
        kStart,
        {1, "initVariant", 54, "[%s][%d]Unable to initialize persistency!\n", "Unable to initialize persistency!\n"},
        {1, "init", 40, "[%s][%d]vehicle client initialize error!\n", "vehicle client initialize error!\n"}};
    EXPECT_EQ(log_recorder::lines(), expected);
    EXPECT_EQ(core->functionType, FUNCTION_TYPE_NONE);
    EXPECT_TRUE(core->cache().empty());

    log_recorder::reset();
    EXPECT_FALSE(subscribe({0x21600E24}));
    bool yes = true;
    std::vector<int> integers = {1};
    std::vector<long> longs = {1};
    std::vector<float> floats = {1};
    std::vector<unsigned char> bytes = {1};
    EXPECT_FALSE(core->setBoolProperty(0x21403033, yes));
    EXPECT_FALSE(core->setInt32Property(0x21403033, integers));
    EXPECT_FALSE(core->setInt64Property(0x21403033, longs));
    EXPECT_FALSE(core->setFloatProperty(0x21403033, floats));
    EXPECT_FALSE(core->setByteProperty(0x21403033, bytes));
    const std::vector<LogLine> refusals = log_recorder::lines();
    ASSERT_EQ(refusals.size(), 6u);
    for (const LogLine& line : refusals) {
        EXPECT_EQ(line.level, 1);
        EXPECT_NE(line.text.find("vehicle client is not initialized"), std::string::npos) << line;
    }

    VehiclePropValue value = intValue(0x21403033, 1);
    EXPECT_FALSE(core->setPropValue(0x21403033, &value));
    EXPECT_FALSE(core->getPropValue(0x21403033, &value));
    EXPECT_EQ(core->getPropertyType(0x21403033), 7);
    EXPECT_TRUE(core->unsubscribe(nullptr, {}));
    core->stop();
}

TEST_F(VehicleClientImplTest, ALackOfDescriptorsAtTheStartIsAnExceptionAndPasses) {
    TestCore first;
    FakePsis::instance().initResult = 1;
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none{0, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_THROW(first.init(), std::system_error);
    setrlimit(RLIMIT_NOFILE, &limit);

    FakePsis::instance().initResult = 0;
    startCore();
    EXPECT_TRUE(core->subscribe(nullptr, {}, nullptr));
}

TEST_F(VehicleClientImplTest, EveryFunctionHasACacheRecordForEachRowOfItsTable) {
    const std::pair<FUNCTION_TYPE, const VehilceClientInfo*> tables[] = {{FUNCTION_TYPE_AVM, avm_signal_table},
                                                                         {FUNCTION_TYPE_RVC, rvc_signal_table},
                                                                         {FUNCTION_TYPE_HAP, hap_signal_table},
                                                                         {FUNCTION_TYPE_DMS, dms_signal_table},
                                                                         {FUNCTION_TYPE_OMS, oms_signal_table}};
    for (const auto& [function, table] : tables) {
        TestCore fresh;
        fresh.initSignalTable(function);
        EXPECT_EQ(fresh.signalTable, table);
        ASSERT_EQ(fresh.cache().size(), qvn::tables::kSignalTableRows);
        const VehicleClientProperty& first = fresh.cache().front();
        EXPECT_EQ(first.propValue.prop, 0x21600E24);
        EXPECT_EQ(first.propValue.areaId, 0x01000000);
        EXPECT_EQ(first.propValue.timestamp, 0);
        EXPECT_EQ(first.propertyType, 5);
        EXPECT_EQ(fresh.cache().back().propValue.prop, 0x21400E1E);
        EXPECT_EQ(fresh.cache().back().propertyType, 3);
    }
    TestCore none;
    none.initSignalTable(FUNCTION_TYPE_NONE);
    EXPECT_TRUE(none.cache().empty());
}

TEST_F(VehicleClientImplTest, TimestampsAreMonotonicNanoseconds) {
    TestCore fresh;
    long stamp = -1;
    {
        const FakeClock clock(2, 5);
        EXPECT_TRUE(fresh.getTimestamp(stamp));
        EXPECT_EQ(stamp, 2000000005);
    }
    const FakeClock broken;
    EXPECT_FALSE(fresh.getTimestamp(stamp));
    EXPECT_EQ(stamp, 2000000005);
}

TEST_F(VehicleClientImplTest, DestructionUnderTrafficIsSafe) {
    server = std::make_unique<CanServiceDouble>();
    for (std::size_t round = 1; round <= 20; ++round) {
        startCore();
        subscribe({0x21400E20});
        ASSERT_TRUE(server->waitForSubscriptions(round));
        for (int i = 0; i < 200; ++i) {
            server->signal(0x031902D0, "\x01");
        }
        core.reset();
        const std::size_t delivered = Application::changes.entries().size();
        server->signal(0x031902D0, "\x01");
        EXPECT_EQ(Application::changes.entries().size(), delivered);
    }
}

}  // namespace
