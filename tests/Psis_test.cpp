#include <gtest/gtest.h>
#include <psis/psis_client.h>
#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "support/HostDir.h"
#include "support/Resources.h"

namespace {

constexpr char kNamespace[] = "config_qvn";
constexpr char kOmniview[] = "OMNIVIEW_SYSTEM_VEHICLE_CONFIGURATION_INFORMATION";
constexpr char kReverse[] = "REVERSE_VIDEO";
constexpr char kReverseIsOne[] = R"({"config_qvn": {"REVERSE_VIDEO": 1}})";
constexpr int kUnreadable = -1;

/// The key's byte, or kUnreadable.
int read(const char* ns, const char* key) {
    std::uint8_t value = 0;
    return psisReadKey(ns, key, -1, &value, 1) == 0 ? value : kUnreadable;
}

class Psis : public testing::Test {
protected:
    std::string useFile(const std::string& path) {
        ::setenv("QVN_HOST_CONFIG", path.c_str(), 1);
        return path;
    }
    std::string useConfig(const std::string& json) {
        writeFile(mHost.root() / "named.json", json);
        return useFile(mHost.root() / "named.json");
    }

    HostDir mHost;
};

}  // namespace

TEST_F(Psis, ReadsTheNamedFileElseThatOfTheRuntimeDirectoryElseItsOwnStore) {
    useFile("");  // counts as no name
    ASSERT_EQ(psisInitClient(), 0);
    EXPECT_EQ(read(kNamespace, kOmniview), 3);
    EXPECT_EQ(read(kNamespace, kReverse), 0);
    EXPECT_EQ(read(kNamespace, "OTHER"), kUnreadable);

    writeFile(mHost.path() / "vehicle.json", kReverseIsOne);
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
    useConfig(kReverseIsOne);
    ASSERT_EQ(psisInitClient(), 0);
    std::vector<std::uint8_t> buffer(5, 0xEE);
    EXPECT_EQ(psisReadKey(kNamespace, kReverse, -1, buffer.data(), 4), 0);
    EXPECT_EQ(buffer, (std::vector<std::uint8_t>{1, 0, 0, 0, 0xEE}));

    EXPECT_NE(psisReadKey(kNamespace, "OTHER", -1, &buffer[4], 1), 0);
    EXPECT_NE(psisReadKey(kNamespace, kReverse, -1, &buffer[4], 0), 0);
    EXPECT_NE(psisReadKey(kNamespace, kReverse, -1, &buffer[4], -1), 0);
    EXPECT_EQ(buffer[4], 0xEE);
    EXPECT_NE(psisReadKey(kNamespace, kReverse, -1, nullptr, 1), 0);
    EXPECT_NE(psisReadKey(nullptr, kReverse, -1, buffer.data(), 1), 0);
    EXPECT_NE(psisReadKey(kNamespace, nullptr, -1, buffer.data(), 1), 0);
}

TEST_F(Psis, RefusesABrokenFileWithOneLineThatNamesThePlace) {
    const auto refuses = [](const std::string& file, const std::string& complaint) {
        const std::string log = qvn::test::logOf([] { EXPECT_NE(psisInitClient(), 0); });
        EXPECT_NE(log.find(" psis: " + file + ": " + complaint), std::string::npos) << log;
        EXPECT_EQ(qvn::test::count(log, "\n"), 1U) << log;
        EXPECT_EQ(read(kNamespace, kReverse), kUnreadable) << "the earlier store is not used any more";
    };
    const std::string range = "config_qvn.REVERSE_VIDEO: expected an integer from 0 to 255";
    const struct {
        const char* json;
        std::string complaint;
    } cases[] = {
        {"", "parse error at line 1, column 1"},
        {"{\n  \"config_qvn\": {\"REVERSE_VIDEO\" 1}\n}", "parse error at line 2"},
        {"{\"config_qvn\": {\"\xff\": 1}}", "parse error at line 1"},
        {"[]", "expected an object of namespaces"},
        {R"({"config_qvn": 3})", "config_qvn: expected an object of keys"},
        {R"({"config_qvn": {"REVERSE_VIDEO": 256}})", range},
        {R"({"config_qvn": {"REVERSE_VIDEO": -1}})", range},
        {R"({"config_qvn": {"REVERSE_VIDEO": 1.5}})", range},
        {R"({"config_qvn": {"REVERSE_VIDEO": "1"}})", range},
        {R"({"config_qvn": {"REVERSE_VIDEO": 1e999}})", "number overflow parsing '1e999'"},
        {R"({"a\nb": 3})", "a?b: expected an object of keys"},
        {R"({"config_qvn": {"\u0000\r\u007f": 256}})", "config_qvn.???: expected an integer from 0 to 255"},
    };
    for (const auto& c : cases) {
        useConfig(kReverseIsOne);
        ASSERT_EQ(psisInitClient(), 0);
        refuses(useConfig(c.json), c.complaint);
    }
    refuses(useFile(mHost.root() / "missing.json"), "No such file or directory; expected a readable JSON file");
    refuses(useFile(mHost.root()), "not a file; expected a readable JSON file");
    const std::filesystem::path fifo = mHost.root() / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    refuses(useFile(fifo), "not a file; expected a readable JSON file");
}

TEST_F(Psis, MayBeReadWhileAnotherThreadInitialises) {
    useConfig(kReverseIsOne);
    ASSERT_EQ(psisInitClient(), 0);
    std::thread reader([] {
        for (int i = 0; i < 200; ++i) {
            ASSERT_EQ(read(kNamespace, kReverse), 1);
        }
    });
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(psisInitClient(), 0);
    }
    reader.join();
}
