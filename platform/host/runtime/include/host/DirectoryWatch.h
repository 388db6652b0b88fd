#pragma once

#include <string>
#include <vector>

namespace qvn {
namespace host {

/**
 * Reports the names that change in one directory, through a file descriptor that an event loop can wait on.
 *
 * A name is reported when it is created, closed after writing, moved in or out, or deleted. The watch follows the
 * path: while the directory does not exist it waits, without polling, for it to be made.
 *
 * Not thread-safe: one thread uses a watch at a time.
 */
class DirectoryWatch {
public:
    struct Changes {
        std::vector<std::string> names;  ///< in order of occurrence, a name may repeat
        bool directoryGone = false;      ///< the directory was removed or moved away
        bool rescan = false;             ///< it was made (again), or changes were lost: look at everything in it
    };

    DirectoryWatch() = default;
    ~DirectoryWatch();

    DirectoryWatch(const DirectoryWatch&) = delete;
    DirectoryWatch& operator=(const DirectoryWatch&) = delete;

    /**
     * Watches a directory from now on, in place of the one watched before.
     *
     * @return false when the system has no watch to give; errno tells why. A directory that does not exist yet, or
     *         a symbolic link in its place, is no failure: present() is false until a directory is there.
     */
    bool open(const std::string& directory);

    /** Stops watching. */
    void close();

    /** Readable while changes wait; -1 when closed. Stays the same from open() to the next open() or close(). */
    int fd() const { return fd_; }

    /** Whether the directory existed at the last open() or drain(). */
    bool present() const { return present_; }

    /** Takes the changes since the last call. Never blocks. */
    Changes drain();

private:
    bool settle();

    std::string directory_;
    std::string watched_;  // the directory itself, or its nearest ancestor that exists
    int fd_ = -1;
    int watch_ = -1;
    bool present_ = false;
};

}  // namespace host
}  // namespace qvn
