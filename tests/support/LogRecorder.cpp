#include "support/LogRecorder.h"

#include <lgklog/lgklog.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <new>

#include "support/Journal.h"

namespace qvn::test::log_recorder {

namespace {

std::mutex mutex;
Journal<LogLine> recorded;
std::function<void(const LogLine&)> listener;

}  // namespace

void reset() {
    const std::lock_guard<std::mutex> lock(mutex);
    recorded.clear();
    listener = nullptr;
}

void listen(std::function<void(const LogLine&)> newListener) {
    const std::lock_guard<std::mutex> lock(mutex);
    listener = std::move(newListener);
}

std::vector<LogLine> lines() {
    return recorded.entries();
}

bool waitForLine(const std::string& function, const std::string& text) {
    std::size_t seen = 0;
    return recorded.waitUntil([&](const std::vector<LogLine>& all) {
        while (seen < all.size()) {
            const LogLine& line = all[seen++];
            if (line.function == function && line.text == text) {
                return true;
            }
        }
        return false;
    });
}

std::vector<LogLine> linesOf(const std::string& function) {
    std::vector<LogLine> found;
    for (const LogLine& line : lines()) {
        if (line.function == function) {
            found.push_back(line);
        }
    }
    return found;
}

void record(LogLine line) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (listener) {
        listener(line);
    }
    recorded.add(std::move(line));
}

}  // namespace qvn::test::log_recorder

extern "C" __attribute__((visibility("default"))) int lgklog_print(int level, const char* format, ...) try {
    constexpr char kPrefix[] = "[%s][%d]";
    if (std::strncmp(format, kPrefix, sizeof(kPrefix) - 1) != 0) {
        return 0;  // a line of the host platform
    }
    std::array<char, 1024> text{};
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);

    va_start(arguments, format);
    const std::string function = va_arg(arguments, const char*);
    const int line = va_arg(arguments, int);
    va_end(arguments);

    const std::size_t prefix = std::string("[][]").size() + function.size() + std::to_string(line).size();
    qvn::test::log_recorder::record({level, function, line, format, std::string(text.data()).substr(prefix)});
    return length;
} catch (const std::bad_alloc&) {
    return -1;  // a test of a lack of memory; a log throws nothing
}
