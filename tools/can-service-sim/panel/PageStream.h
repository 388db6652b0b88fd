#pragma once

#include <condition_variable>
#include <memory>
#include <string>
#include <vector>

#include "sync/Mutex.h"

namespace qvn::tools {

/// What one open page is still to be told. The event loop puts texts in, a thread of the HTTP server takes them out,
/// and neither waits for the other: a page that takes nothing is given up, and gets the whole state when it connects
/// again.
class PageStream {
public:
    /// A text that all pages share.
    using Text = std::shared_ptr<const std::string>;

    /// Adds a text. When too many wait, the stream ends instead.
    void put(Text text);
    /// Takes all texts that wait; waits itself for the first one, but not for long.
    /// @return false when the stream has ended
    bool take(std::vector<Text>* texts);

    void end();
    bool ended() const;

private:
    mutable sync::Mutex mMutex;
    std::condition_variable mChanged;
    std::vector<Text> mWaiting QVN_GUARDED_BY(mMutex);
    bool mEnded QVN_GUARDED_BY(mMutex) = false;
};

}  // namespace qvn::tools
