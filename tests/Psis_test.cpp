#include <gtest/gtest.h>
#include <psis/psis_client.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "support/HostDir.h"

namespace {

constexpr char kNamespace[] = "config_qvn";
constexpr char kOmniview[] = "OMNIVIEW_SYSTEM_VEHICLE_CONFIGURATION_INFORMATION";
constexpr char kReverse[] = "REVERSE_VIDEO";
constexpr int kUnreadable = -1;

/** The key's byte, or kUnreadable. */
int read(const char* ns, const char* key) {
    std::uint8_t value = 0;
    return psisReadKey(ns, key, -1, &value, 1) == 0 ? value : kUnreadable;
}

class Psis : public testing::Test {
protected:
    ~Psis() override { ::unsetenv("QVN_HOST_CONFIG"); }

    std::string useConfig(const std::string& json) {
        const std::filesystem::path file = host_.root() / "named.json";
        writeFile(file, json);
        ::setenv("QVN_HOST_CONFIG", file.c_str(), 1);
        return file.string();
    }

    HostDir host_;
};

}  // namespace

TEST_F(Psis, IsAParkingVehicleWithoutAnyFile) {
    ASSERT_EQ(psisInitClient(), 0);
    EXPECT_EQ(read(kNamespace, kOmniview), 3);
    EXPECT_EQ(read(kNamespace, kReverse), 0);
    EXPECT_EQ(read(kNamespace, "OTHER"), kUnreadable);
}

TEST_F(Psis, PrefersTheNamedFileOverTheOneInTheRuntimeDirectory) {
    writeFile(host_.path() / "vehicle.json", R"({"config_qvn": {"REVERSE_VIDEO": 1}})");
    ASSERT_EQ(psisInitClient(), 0);
    EXPECT_EQ(read(kNamespace, kReverse), 1);
    EXPECT_EQ(read(kNamespace, kOmniview), kUnreadable) << "a file replaces the built-in store as a whole";

    useConfig(R"({"config_qvn": {"REVERSE_VIDEO": 2}, "other": {"REVERSE_VIDEO": 255}, "empty": {}})");
    ASSERT_EQ(psisInitClient(), 0);
    EXPECT_EQ(read(kNamespace, kReverse), 2);
    EXPECT_EQ(read("other", kReverse), 255);
    EXPECT_EQ(read("empty", kReverse), kUnreadable);
    EXPECT_EQ(read("missing", kReverse), kUnreadable);
}

TEST_F(Psis, FillsTheBufferAndRefusesUnusableArguments) {
    useConfig(R"({"config_qvn": {"REVERSE_VIDEO": 2}})");
    ASSERT_EQ(psisInitClient(), 0);
    std::vector<std::uint8_t> buffer(5, 0xEE);
    EXPECT_EQ(psisReadKey(kNamespace, kReverse, -1, buffer.data(), 4), 0);
    EXPECT_EQ(buffer, (std::vector<std::uint8_t>{2, 0, 0, 0, 0xEE}));

    EXPECT_NE(psisReadKey(kNamespace, "OTHER", -1, &buffer[4], 1), 0);
    EXPECT_NE(psisReadKey(kNamespace, kReverse, -1, &buffer[4], 0), 0);
    EXPECT_NE(psisReadKey(kNamespace, kReverse, -1, &buffer[4], -1), 0);
    EXPECT_EQ(buffer[4], 0xEE);
    EXPECT_NE(psisReadKey(kNamespace, kReverse, -1, nullptr, 1), 0);
    EXPECT_NE(psisReadKey(nullptr, kReverse, -1, buffer.data(), 1), 0);
    EXPECT_NE(psisReadKey(kNamespace, nullptr, -1, buffer.data(), 1), 0);
}

TEST_F(Psis, RefusesABrokenFileWithOneLineThatNamesThePlace) {
    const struct {
        const char* json;
        const char* message;
    } cases[] = {
        {"", "parse error at line 1, column 1"},
        {"{\n  \"config_qvn\": {\"REVERSE_VIDEO\" 1}\n}", "parse error at line 2"},
        {"{\"config_qvn\": {\"\xff\": 1}}", "parse error at line 1"},
        {"[]", "expected an object of namespaces"},
        {R"({"config_qvn": 3})", "config_qvn: expected an object of keys"},
        {R"({"config_qvn": {"REVERSE_VIDEO": 256}})", "config_qvn.REVERSE_VIDEO: expected an integer from 0 to 255"},
        {R"({"config_qvn": {"REVERSE_VIDEO": -1}})", "config_qvn.REVERSE_VIDEO: expected an integer from 0 to 255"},
        {R"({"config_qvn": {"REVERSE_VIDEO": 1.5}})", "config_qvn.REVERSE_VIDEO: expected an integer from 0 to 255"},
        {R"({"config_qvn": {"REVERSE_VIDEO": 1e999}})", "number overflow parsing '1e999'"},
        {R"({"a\nb": 3})", "a?b: expected an object of keys"},
        {R"({"config_qvn": {"\u0000\r\u007f": 256}})", "config_qvn.???: expected an integer from 0 to 255"},
        {R"({"config_qvn": {"REVERSE_VIDEO": "1"}})", "config_qvn.REVERSE_VIDEO: expected an integer from 0 to 255"},
    };
    for (const auto& c : cases) {
        useConfig(R"({"config_qvn": {"REVERSE_VIDEO": 1}})");
        ASSERT_EQ(psisInitClient(), 0);
        const std::string file = useConfig(c.json);
        testing::internal::CaptureStderr();
        EXPECT_NE(psisInitClient(), 0) << c.json;
        const std::string log = testing::internal::GetCapturedStderr();
        EXPECT_NE(log.find(file + ": " + c.message), std::string::npos) << log;
        EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
        EXPECT_EQ(read(kNamespace, kReverse), kUnreadable) << "the earlier store is not used any more";
    }
}

TEST_F(Psis, RefusesAFileThatCannotBeRead) {
    const std::string paths[] = {(host_.root() / "missing.json").string(), host_.root().string()};
    const char* const reasons[] = {"No such file or directory", "Is a directory"};
    for (int i = 0; i < 2; ++i) {
        ::setenv("QVN_HOST_CONFIG", paths[i].c_str(), 1);
        testing::internal::CaptureStderr();
        EXPECT_NE(psisInitClient(), 0);
        const std::string log = testing::internal::GetCapturedStderr();
        EXPECT_NE(log.find(paths[i] + ": " + reasons[i] + "; expected a readable JSON file"), std::string::npos) << log;
    }
}

TEST_F(Psis, MayBeReadWhileAnotherThreadInitialises) {
    useConfig(R"({"config_qvn": {"REVERSE_VIDEO": 1}})");
    ASSERT_EQ(psisInitClient(), 0);
    std::thread reader([] {
        for (int i = 0; i < 200; ++i) {
            const int value = read(kNamespace, kReverse);
            ASSERT_EQ(value, 1);
        }
    });
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(psisInitClient(), 0);
    }
    reader.join();
}
