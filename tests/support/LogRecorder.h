#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace qvn::test {

/// One lgklog_print call that follows the library's convention: "[%s][%d]" with function and line, then the message.
struct LogLine {
    int level;
    std::string function;
    int line;
    std::string format;
    std::string text;  ///< the formatted message, without function and line
};

/// Stands in for the logging library in the test program that links it.
namespace log_recorder {

void reset();
/// Called with every line, on the thread that logs it.
void listen(std::function<void(const LogLine&)> listener);
std::vector<LogLine> lines();
/// The lines of one function.
std::vector<LogLine> linesOf(const std::string& function);
/// Waits until a function has logged that text; false after a long time.
bool waitForLine(const std::string& function, const std::string& text);

}  // namespace log_recorder

inline bool operator==(const LogLine& a, const LogLine& b) {
    return a.level == b.level && a.function == b.function && a.line == b.line && a.format == b.format &&
           a.text == b.text;
}

inline std::ostream& operator<<(std::ostream& out, const LogLine& line) {
    return out << line.level << " [" << line.function << "][" << line.line << "] \"" << line.format << "\" -> \""
               << line.text << '"';
}

}  // namespace qvn::test
