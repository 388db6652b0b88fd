/// GPIO client: levels of input lines and interrupts on their edges.
///
/// On a Linux host line N is the file gpio/N in the runtime directory. It holds "0" (low) or "1" (high), a newline
/// may follow; a line without a file is high, which is the released state of an active-low line. A write is an
/// edge once the writer closes the file (or moves it into place), and only when the level has really changed.
///
/// A process has one port: gpioport_exit() ends it for every user in the process. All functions may be called from
/// any thread, also from an interrupt callback.
///
/// While the system is short of something, such as descriptors or memory, or the runtime directory cannot be used, an
/// open port tries again by itself: edges are reported late, but not lost. A child of fork() cannot use the port of its
/// parent, and gpioport_exit() leaves it alone there.
#ifndef GPIOPORT_GPIOPORT_CLIENT_H
#define GPIOPORT_GPIOPORT_CLIENT_H

#if defined(__GNUC__)
#define GPIOPORT_API __attribute__((visibility("default")))
#else
#define GPIOPORT_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// Opens the port: makes the line files' directory and starts the interrupt thread. Harmless on an open port.
///
/// @param port  port number; there is one port, every number opens it
/// @return 0 on success; non-zero when there is no thread, which is also logged
GPIOPORT_API int gpioport_request(int port);

/// Reads the present level of a line. The port need not be open.
///
/// @return 0 low, 1 high, negative when the line file is unreadable or holds anything else
GPIOPORT_API int gpioport_get_inout_value(int line);

/// Calls back on edges of a line, starting from its present level; opens the port when it is closed. Where the present
/// level cannot be read, the first one that can counts as an edge.
///
/// The callback runs on the library's own thread, one callback at a time. It should return soon: edges of all lines
/// wait for it, and a level that comes and goes meanwhile is not reported. It must not throw. Registering the same
/// context for the same line again replaces the earlier registration; other contexts are added.
///
/// @param line      line number, 0 or above
/// @param mode      edges of interest: 1 rising, 2 falling, 3 both
/// @param callback  called with the context after each such edge; it reads the level itself
/// @param context   passed through; must stay valid until gpioport_exit() has returned
/// @return 0 on success; non-zero for an unusable argument or when the port cannot be opened
GPIOPORT_API int gpioport_irq_func_register(int line, int mode, void (*callback)(void*), void* context);

/// Closes the port: forgets every registration and ends the interrupt thread. The port may be opened again.
///
/// No callback runs once this has returned. Called from inside a callback it returns at once: that callback is then
/// the last one, and the thread stays, idle, for the next registration or the next gpioport_exit() from outside.
///
/// @return 0 always, also for a port that is not open
GPIOPORT_API int gpioport_exit(void);

#ifdef __cplusplus
}
#endif

#endif
