/// Logging: one printf-style call, one line a message.
///
/// On a Linux host the lines go to stderr, or are appended to the file that $QVN_LOG_FILE names. $QVN_LOG_LEVEL
/// (0 to 5, default 1) is the most detailed level that is printed. Both are read once, at the first message.
#ifndef LGKLOG_LGKLOG_H
#define LGKLOG_LGKLOG_H

#if defined(__GNUC__)
#define LGKLOG_API __attribute__((visibility("default")))
#define LGKLOG_PRINTF __attribute__((format(printf, 2, 3)))
#else
#define LGKLOG_API
#define LGKLOG_PRINTF
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// Prints one message, as one line whether or not it ends with a newline. Nothing is formatted for a level that is
/// off. Any thread may call it, also while the process exits; a line is written out when the call returns.
///
/// @param level   0 (most severe) to 5 (most detailed); a value outside counts as the nearer end
/// @param format  printf format of the arguments that follow
/// @return the number of characters of the message, 0 when its level is off, negative when it cannot be formatted
LGKLOG_API int lgklog_print(int level, const char* format, ...) LGKLOG_PRINTF;

#ifdef __cplusplus
}
#endif

#endif
