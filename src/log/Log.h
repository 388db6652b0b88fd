#ifndef LOG_LOG_H
#define LOG_LOG_H

#include <lgklog/lgklog.h>
#include <vehicle/VehicleProperty.h>

#include <cstdint>

namespace lgk {

/// Severity of a log line. The library itself writes Error (errors and a few start-up notices) and Info.
enum class LogLevel : std::int32_t { Fatal, Error, Warning, Info, Debug, Verbose, Trace };

/// The logging library's level for a severity, which must be one of the seven.
QVN_VEHICLE_API int covertLogLevel(LogLevel level);

}  // namespace lgk

namespace qvn {
namespace log {

/// Every format starts with "[%s][%d]": the calling function's bare name and a line number.
template <class... Args>
void print(lgk::LogLevel level, const char* function, int line, const char* format, Args... args) {
    lgklog_print(lgk::covertLogLevel(level), format, function, line, args...);
}

}  // namespace log
}  // namespace qvn

// level, format, arguments of the message
#define QVN_LOG(level, ...) ::qvn::log::print(::lgk::LogLevel::level, __func__, __LINE__, __VA_ARGS__)
// The same with a line number that log analysis relies on and that does not move with the source.
#define QVN_LOG_AT(level, line, ...) ::qvn::log::print(::lgk::LogLevel::level, __func__, line, __VA_ARGS__)

#endif  // LOG_LOG_H
