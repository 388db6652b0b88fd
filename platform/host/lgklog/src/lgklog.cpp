#include "lgklog/lgklog.h"

#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

constexpr int kMostSevere = 0;
constexpr int kMostDetailed = 5;
constexpr int kDefaultLimit = 1;

spdlog::level::level_enum severityOf(int level) {
    static constexpr spdlog::level::level_enum kSeverities[] = {spdlog::level::critical, spdlog::level::err,
                                                                spdlog::level::warn,     spdlog::level::info,
                                                                spdlog::level::debug,    spdlog::level::trace};
    return kSeverities[std::clamp(level, kMostSevere, kMostDetailed)];
}

/// The level as QVN_LOG_LEVEL has it. A letter would call start-up notices errors, since both have level 1.
class LevelDigit : public spdlog::custom_flag_formatter {
public:
    void format(const spdlog::details::log_msg& message, const std::tm&, spdlog::memory_buf_t& line) override {
        line.push_back(static_cast<char>('0' + spdlog::level::critical - message.level));
    }
    std::unique_ptr<spdlog::custom_flag_formatter> clone() const override { return std::make_unique<LevelDigit>(); }
};

class Log {
public:
    Log() : mLogger(makeLogger(std::make_shared<spdlog::sinks::stderr_sink_mt>())) {
        openFile(std::getenv("QVN_LOG_FILE"));
        setLimit(std::getenv("QVN_LOG_LEVEL"));
    }

    bool enabled(int level) const { return level <= mLimit; }

    void write(spdlog::level::level_enum severity, spdlog::string_view_t text) { mLogger->log(severity, text); }

private:
    static std::unique_ptr<spdlog::logger> makeLogger(spdlog::sink_ptr sink) {
        auto logger = std::make_unique<spdlog::logger>("lgklog", std::move(sink));
        auto formatter = std::make_unique<spdlog::pattern_formatter>();
        formatter->add_flag<LevelDigit>('*').set_pattern("%Y-%m-%d %H:%M:%S.%e %* %P/%t %v");
        logger->set_formatter(std::move(formatter));
        logger->set_level(spdlog::level::trace);
        logger->flush_on(spdlog::level::trace);
        return logger;
    }

    void openFile(const char* path) {
        if (path == nullptr || *path == '\0') {
            return;
        }
        try {
            // Opening a FIFO would wait for a reader, which may never come.
            if (std::filesystem::is_fifo(path)) {
                throw std::invalid_argument(std::string(path) + " is a FIFO, not a file");
            }
            mLogger = makeLogger(std::make_shared<spdlog::sinks::basic_file_sink_mt>(path));
        } catch (const std::exception& problem) {
            write(spdlog::level::warn, std::string("QVN_LOG_FILE: ") + problem.what() + "; logging to stderr");
        }
    }

    void setLimit(const char* text) {
        if (text == nullptr || *text == '\0') {
            return;
        }
        if (text[0] >= '0' + kMostSevere && text[0] <= '0' + kMostDetailed && text[1] == '\0') {
            mLimit = text[0] - '0';
        } else {
            write(spdlog::level::warn, std::string("QVN_LOG_LEVEL is \"") + text + "\", expected 0 to 5; using 1");
        }
    }

    std::unique_ptr<spdlog::logger> mLogger;
    int mLimit = kDefaultLimit;
};

/// Never destroyed: threads that outlive main() may still log.
Log& processLog() {
    static Log& log = *new Log;
    return log;
}

/// Line breaks inside a message become blanks, so that a line of the log is always one message.
spdlog::string_view_t asOneLine(char* text, std::size_t size) {
    while (size > 0 && (text[size - 1] == '\n' || text[size - 1] == '\r')) {
        --size;
    }
    std::replace(text, text + size, '\n', ' ');
    return {text, size};
}

int print(Log& log, int level, const char* format, va_list arguments) {
    char shortText[512];
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(shortText, sizeof shortText, format, arguments);
    const std::size_t size = length < 0 ? 0 : static_cast<std::size_t>(length);
    if (length >= 0 && size < sizeof shortText) {
        log.write(severityOf(level), asOneLine(shortText, size));
    } else if (length >= 0) {
        std::string longText(size + 1, '\0');
        std::vsnprintf(&longText[0], longText.size(), format, again);
        log.write(severityOf(level), asOneLine(&longText[0], size));
    }
    va_end(again);
    return length;
}

}  // namespace

int lgklog_print(int level, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    int result = -1;
    try {
        Log& log = processLog();
        result = log.enabled(level) ? print(log, level, format, arguments) : 0;
    } catch (...) {
        // Out of memory: the caller learns by the result that the message is lost.
    }
    va_end(arguments);
    return result;
}
